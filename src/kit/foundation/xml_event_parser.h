#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kit/foundation/http.h"
#include "kit/foundation/result.h"

namespace kit {

class XmlEventParser;

// The attributes of one start tag, as name/value pairs in document order.
// A view into the parser's buffers: valid only during the callback that
// received it.
class XmlAttributes {
 public:
  // `pairs` is a null-terminated array: name, value, name, value, ..., null.
  explicit XmlAttributes(const char* const* pairs) : pairs_(pairs) {}

  size_t size() const;
  std::string_view name(size_t index) const { return pairs_[2 * index]; }
  std::string_view value(size_t index) const { return pairs_[2 * index + 1]; }
  // The value of the attribute with exactly this name, or nullopt.
  std::optional<std::string_view> valueFor(std::string_view name) const;

 private:
  const char* const* pairs_;
};

// What an XmlEventParser reports, in document order. Every operation has an
// empty default body, so a delegate overrides only what it needs. Names
// arrive as written ("ns:item"): there is no namespace processing, so the
// namespace URI and the qualified name are always nullopt.
class XmlEventParserDelegate {
 public:
  virtual ~XmlEventParserDelegate() = default;
  virtual void parserDidStartElement(XmlEventParser& parser, std::string_view elementName,
                                     std::optional<std::string_view> namespaceURI,
                                     std::optional<std::string_view> qualifiedName,
                                     const XmlAttributes& attributes);
  virtual void parserDidEndElement(XmlEventParser& parser, std::string_view elementName,
                                   std::optional<std::string_view> namespaceURI,
                                   std::optional<std::string_view> qualifiedName);
  // Text in pieces, entities already replaced. One run of text may arrive in
  // several calls. CDATA sections are not reported.
  virtual void parserFoundCharacters(XmlEventParser& parser, std::string_view string);
};

// The platform's event-driven XML parser: runs synchronously over a whole
// document and reports to a non-owning delegate. Safe for untrusted input:
// external entities and external DTDs are never loaded, and entity
// expansion is bounded (a document that amplifies too much fails). Nesting
// depth is not limited here; consumers that build trees must cope with it.
class XmlEventParser {
 public:
  // Documents read from a URL larger than this are refused.
  static constexpr size_t kMaxUrlBytes = size_t{64} << 20;

  // Parses `data`, which the caller keeps alive until parse() returns.
  explicit XmlEventParser(std::string_view data);
  ~XmlEventParser();
  XmlEventParser(const XmlEventParser&) = delete;
  XmlEventParser& operator=(const XmlEventParser&) = delete;

  // A parser over the document at `url`: a plain path or a file:// URL
  // naming a regular file, or an http(s) URL fetched through `http`. Null
  // when the document cannot be read, exceeds maxBytes, or the scheme is
  // anything else.
  static std::unique_ptr<XmlEventParser> withContentsOfURL(std::string_view url, HttpClient& http,
                                                           size_t maxBytes = kMaxUrlBytes);
  // The same, saying why the document could not be read when it cannot.
  static Result<std::unique_ptr<XmlEventParser>> openURL(std::string_view url, HttpClient& http,
                                                         size_t maxBytes = kMaxUrlBytes);

  // Borrowed; may be null (then the document is only checked).
  void setDelegate(XmlEventParserDelegate* delegate) { delegate_ = delegate; }

  // Runs the whole document through the delegate. True when it was
  // well-formed; on failure the delegate has seen everything up to the
  // error. An exception thrown by the delegate stops the parse and is
  // rethrown here.
  bool parse();

  // "line L, column C: reason" for the last failed parse, else nullopt.
  const std::optional<std::string>& parserError() const { return error_; }

 private:
  struct Callbacks;

  std::string owned_;  // the bytes, when read from a URL
  std::string_view data_;
  XmlEventParserDelegate* delegate_ = nullptr;
  std::optional<std::string> error_;
};

}  // namespace kit
