#include "kit/foundation/xml_event_parser.h"

#include <expat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>

#include "kit/foundation/read_file.h"
#include "kit/foundation/strings.h"

namespace kit {
namespace {

// expat copies what it is given into its own buffer, so the document goes in
// slices small enough to keep that buffer in cache.
constexpr size_t kSliceBytes = size_t{256} << 10;

// The local path of a file URL ("file:///a%20b" is "/a b"), or nullopt for a
// file URL that names another host or is malformed.
std::optional<std::string> filePath(std::string_view url) {
  std::string_view rest = url.substr(std::strlen("file://"));
  if (startsWithIgnoringCase(rest, "localhost/"))
    rest.remove_prefix(std::strlen("localhost"));
  if (rest.empty() || rest.front() != '/')
    return std::nullopt;
  std::string path;
  path.reserve(rest.size());
  for (size_t i = 0; i < rest.size(); ++i) {
    if (rest[i] != '%') {
      path += rest[i];
      continue;
    }
    if (i + 2 >= rest.size())
      return std::nullopt;
    int hi = hexDigitValue(rest[i + 1]);
    int lo = hexDigitValue(rest[i + 2]);
    if (hi < 0 || lo < 0)
      return std::nullopt;
    path += static_cast<char>(hi * 16 + lo);
    i += 2;
  }
  if (path.find('\0') != std::string::npos)
    return std::nullopt;
  return path;
}

}  // namespace

size_t XmlAttributes::size() const {
  size_t count = 0;
  while (pairs_[2 * count])
    ++count;
  return count;
}

std::optional<std::string_view> XmlAttributes::valueFor(std::string_view name) const {
  for (const char* const* p = pairs_; *p; p += 2) {
    if (name == *p)
      return std::string_view(p[1]);
  }
  return std::nullopt;
}

void XmlEventParserDelegate::parserDidStartElement(XmlEventParser&, std::string_view,
                                                   std::optional<std::string_view>,
                                                   std::optional<std::string_view>,
                                                   const XmlAttributes&) {}
void XmlEventParserDelegate::parserDidEndElement(XmlEventParser&, std::string_view,
                                                 std::optional<std::string_view>,
                                                 std::optional<std::string_view>) {}
void XmlEventParserDelegate::parserFoundCharacters(XmlEventParser&, std::string_view) {}

// The state of one parse, handed to expat as its user data. A delegate's
// exception must not unwind through expat's C frames: it is kept here, the
// parse is stopped, and parse() rethrows it once expat is done.
struct XmlEventParser::Callbacks {
  XmlEventParser& self;
  XmlEventParserDelegate& delegate;
  XML_Parser expat;
  bool inCdata = false;
  std::exception_ptr failure;

  template <class Call>
  static void guarded(void* userData, Call call) {
    auto& cb = *static_cast<Callbacks*>(userData);
    try {
      call(cb);
    } catch (...) {
      cb.failure = std::current_exception();
      XML_StopParser(cb.expat, XML_FALSE);
    }
  }

  static void onStart(void* userData, const XML_Char* name, const XML_Char** atts) {
    guarded(userData, [&](Callbacks& cb) {
      cb.delegate.parserDidStartElement(cb.self, name, std::nullopt, std::nullopt,
                                        XmlAttributes(atts));
    });
  }
  static void onEnd(void* userData, const XML_Char* name) {
    guarded(userData, [&](Callbacks& cb) {
      cb.delegate.parserDidEndElement(cb.self, name, std::nullopt, std::nullopt);
    });
  }
  static void onCharacters(void* userData, const XML_Char* text, int length) {
    guarded(userData, [&](Callbacks& cb) {
      if (cb.inCdata)
        return;
      cb.delegate.parserFoundCharacters(cb.self,
                                        std::string_view(text, static_cast<size_t>(length)));
    });
  }
  static void onCdataStart(void* userData) { static_cast<Callbacks*>(userData)->inCdata = true; }
  static void onCdataEnd(void* userData) { static_cast<Callbacks*>(userData)->inCdata = false; }
};

XmlEventParser::XmlEventParser(std::string_view data) : data_(data) {}

XmlEventParser::~XmlEventParser() = default;

std::unique_ptr<XmlEventParser> XmlEventParser::withContentsOfURL(std::string_view url,
                                                                  HttpClient& http,
                                                                  size_t maxBytes) {
  Result<std::unique_ptr<XmlEventParser>> parser = openURL(url, http, maxBytes);
  return parser ? std::move(*parser) : nullptr;
}

Result<std::unique_ptr<XmlEventParser>> XmlEventParser::openURL(std::string_view url,
                                                                HttpClient& http, size_t maxBytes) {
  Result<std::string> bytes = Error{"not a file path or an http(s) or file:// URL"};
  if (startsWithIgnoringCase(url, "http://") || startsWithIgnoringCase(url, "https://")) {
    HttpRequest request;
    request.url = std::string(url);
    request.maxBodyBytes = maxBytes;
    HttpResponse response = http.get(request);
    if (!response.ok)
      bytes = Error{response.error.empty() ? "no reply" : response.error};
    else if (response.body.size() > maxBytes)
      bytes = Error{"larger than " + std::to_string(maxBytes) + " bytes"};
    else
      bytes = std::move(response.body);
  } else if (startsWithIgnoringCase(url, "file://")) {
    if (auto path = filePath(url))
      bytes = readSmallFileOrWhy(*path, maxBytes);
    else
      bytes = Error{"a file URL of another host, or malformed"};
  } else if (url.find("://") == std::string_view::npos && !url.empty() &&
             url.find('\0') == std::string_view::npos) {
    bytes = readSmallFileOrWhy(std::string(url), maxBytes);
  }
  if (!bytes)
    return Error{bytes.error()};
  auto parser = std::make_unique<XmlEventParser>(std::string_view());
  parser->owned_ = std::move(*bytes);
  parser->data_ = parser->owned_;
  return parser;
}

bool XmlEventParser::parse() {
  error_.reset();
  std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> expat(XML_ParserCreate(nullptr),
                                                                     &XML_ParserFree);
  if (!expat) {
    error_ = "out of memory";
    return false;
  }
  XmlEventParserDelegate ignoring;
  Callbacks callbacks{*this, delegate_ ? *delegate_ : ignoring, expat.get(), false, nullptr};
  // No external-entity handler: external entities and DTDs are skipped, never
  // fetched. Parameter entities stay off. The amplification limits and the
  // reparse deferral keep the library's defaults.
  XML_SetParamEntityParsing(expat.get(), XML_PARAM_ENTITY_PARSING_NEVER);
  XML_SetUserData(expat.get(), &callbacks);
  XML_SetElementHandler(expat.get(), &Callbacks::onStart, &Callbacks::onEnd);
  XML_SetCharacterDataHandler(expat.get(), &Callbacks::onCharacters);
  XML_SetCdataSectionHandler(expat.get(), &Callbacks::onCdataStart, &Callbacks::onCdataEnd);

  bool ok = true;
  size_t offset = 0;
  do {
    size_t slice = std::min(kSliceBytes, data_.size() - offset);
    bool last = offset + slice == data_.size();
    if (XML_Parse(expat.get(), data_.data() + offset, static_cast<int>(slice),
                  last ? XML_TRUE : XML_FALSE) != XML_STATUS_OK) {
      ok = false;
      break;
    }
    offset += slice;
  } while (offset < data_.size());

  if (callbacks.failure)
    std::rethrow_exception(callbacks.failure);
  if (!ok) {
    char where[64];
    std::snprintf(where, sizeof where, "line %lu, column %lu: ",
                  static_cast<unsigned long>(XML_GetCurrentLineNumber(expat.get())),
                  static_cast<unsigned long>(XML_GetCurrentColumnNumber(expat.get())));
    error_ = std::string(where) + XML_ErrorString(XML_GetErrorCode(expat.get()));
  }
  return ok;
}

}  // namespace kit
