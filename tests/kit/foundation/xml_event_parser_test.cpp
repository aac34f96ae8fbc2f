#include "kit/foundation/xml_event_parser.h"

#include <gmock/gmock.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

namespace kit {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// Writes each event as a short line: "<name k=v>", "text", "</name>".
class RecordingDelegate final : public XmlEventParserDelegate {
 public:
  void parserDidStartElement(XmlEventParser&, std::string_view elementName,
                             std::optional<std::string_view> namespaceURI,
                             std::optional<std::string_view> qualifiedName,
                             const XmlAttributes& attributes) override {
    std::string line = "<" + std::string(elementName);
    for (size_t i = 0; i < attributes.size(); ++i) {
      line += " " + std::string(attributes.name(i)) + "=" + std::string(attributes.value(i));
    }
    if (namespaceURI || qualifiedName)
      line += " (namespaced)";
    events.push_back(line + ">");
    lastWasText = false;
  }
  void parserDidEndElement(XmlEventParser&, std::string_view elementName,
                           std::optional<std::string_view>,
                           std::optional<std::string_view>) override {
    events.push_back("</" + std::string(elementName) + ">");
    lastWasText = false;
    if (throwAtEnd)
      throw std::runtime_error("delegate gave up");
  }
  void parserFoundCharacters(XmlEventParser&, std::string_view string) override {
    // Text may come in pieces; join neighbouring pieces to keep lines stable.
    if (!events.empty() && lastWasText) {
      events.back() += string;
    } else {
      events.emplace_back(string);
    }
    lastWasText = true;
  }

  std::vector<std::string> events;
  bool throwAtEnd = false;

 private:
  bool lastWasText = false;
};

class XmlEventParserTest : public ::testing::Test {
 protected:
  // Parses `text` and returns whether it was well-formed.
  bool parse(std::string_view text) {
    XmlEventParser parser(text);
    parser.setDelegate(&delegate);
    bool ok = parser.parse();
    error = parser.parserError();
    return ok;
  }

  std::string writeFile(const std::string& text) {
    char path[] = "/tmp/xml-event-XXXXXX";
    int fd = mkstemp(path);
    close(fd);
    std::ofstream(path, std::ios::binary) << text;
    files_.push_back(path);
    return path;
  }
  ~XmlEventParserTest() override {
    for (const auto& file : files_)
      unlink(file.c_str());
  }

  RecordingDelegate delegate;
  std::optional<std::string> error;

 private:
  std::vector<std::string> files_;
};

class CannedHttpClient final : public HttpClient {
 public:
  HttpResponse get(const HttpRequest& request) override {
    last = request;
    return reply;
  }
  HttpRequest last;
  HttpResponse reply;
};

TEST_F(XmlEventParserTest, ReportsElementsAttributesAndDecodedTextInDocumentOrder) {
  EXPECT_TRUE(
      parse("<?xml version='1.0'?><!-- note --><r a='1' b='&lt;'>x &amp; y<?pi data?>"
            "<ns:c xmlns:ns='urn:n'/>z</r>"));
  EXPECT_THAT(delegate.events,
              ElementsAre("<r a=1 b=<>", "x & y", "<ns:c xmlns:ns=urn:n>", "</ns:c>", "z", "</r>"));
  EXPECT_FALSE(error);
}

TEST_F(XmlEventParserTest, AttributeLookupIsExact) {
  const char* pairs[] = {"database", "1", "data", "2", "Data", "3", nullptr};
  XmlAttributes attributes(pairs);
  EXPECT_EQ(attributes.size(), 3u);
  EXPECT_EQ(attributes.valueFor("data"), "2");
  EXPECT_EQ(attributes.valueFor("dat"), std::nullopt);
  EXPECT_EQ(attributes.valueFor("DATA"), std::nullopt);
}

TEST_F(XmlEventParserTest, MalformedInputFailsAfterReportingWhatCameBefore) {
  EXPECT_FALSE(parse("<r>\n<a>x</b></r>"));
  EXPECT_THAT(delegate.events, ElementsAre("<r>", "\n", "<a>", "x"));
  ASSERT_TRUE(error);
  EXPECT_THAT(*error, HasSubstr("line 2, column"));
  EXPECT_THAT(*error, HasSubstr("mismatched tag"));

  EXPECT_FALSE(parse(""));
  EXPECT_TRUE(parse("<ok/>"));
  EXPECT_FALSE(error);  // cleared by the successful parse
  XmlEventParser withoutDelegate("<a>");
  EXPECT_FALSE(withoutDelegate.parse());
}

TEST_F(XmlEventParserTest, ADelegateExceptionStopsTheParseAndSurfaces) {
  delegate.throwAtEnd = true;
  EXPECT_THROW(parse("<r><a/><b/></r>"), std::runtime_error);
  EXPECT_THAT(delegate.events, ElementsAre("<r>", "<a>", "</a>"));
}

TEST_F(XmlEventParserTest, UrlsAreReadFromDiskOrHttpWithinTheSizeCap) {
  CannedHttpClient http;
  std::string path = writeFile("<r>0123456789</r>");
  for (const std::string& url : {path, "file://" + path}) {
    auto parser = XmlEventParser::withContentsOfURL(url, http);
    ASSERT_TRUE(parser) << url;
    parser->setDelegate(&delegate);
    EXPECT_TRUE(parser->parse());
  }
  EXPECT_TRUE(XmlEventParser::withContentsOfURL(path, http, 17));
  EXPECT_FALSE(XmlEventParser::withContentsOfURL(path, http, 16));

  http.reply = {true, 200, "<r/>", ""};
  EXPECT_TRUE(XmlEventParser::withContentsOfURL("HTTPS://host.test/x.xml", http, 1000));
  EXPECT_EQ(http.last.url, "HTTPS://host.test/x.xml");
  EXPECT_EQ(http.last.maxBodyBytes, 1000u);
  http.reply = {false, 500, "", "server error"};
  EXPECT_FALSE(XmlEventParser::withContentsOfURL("http://host.test/x.xml", http));
  EXPECT_FALSE(XmlEventParser::withContentsOfURL("gopher://host.test/x.xml", http));
  EXPECT_FALSE(XmlEventParser::withContentsOfURL("file://" + path + "%zz", http));
}

}  // namespace
}  // namespace kit
