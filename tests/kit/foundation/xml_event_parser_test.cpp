#include "kit/foundation/xml_event_parser.h"

#include <gmock/gmock.h>

#include <fstream>
#include <stdexcept>

#include "kit/foundation/temp_dir.h"

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
    const auto path = dir.path() / std::to_string(files++);
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
  }

  RecordingDelegate delegate;
  std::optional<std::string> error;

  TempDir dir;
  int files = 0;
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
            "<ns:c xmlns:ns='urn:n'/><![CDATA[dropped]]>z</r>"));
  EXPECT_THAT(delegate.events,
              ElementsAre("<r a=1 b=<>", "x & y", "<ns:c xmlns:ns=urn:n>", "</ns:c>", "z", "</r>"));
  EXPECT_FALSE(error);

  const char* pairs[] = {"database", "1", "data", "2", nullptr};
  EXPECT_EQ(XmlAttributes(pairs).valueFor("data"), "2");
  EXPECT_EQ(XmlAttributes(pairs).valueFor("dat"), std::nullopt);
}

TEST_F(XmlEventParserTest, ExternalEntitiesAreNeverRead) {
  std::string secret = writeFile("secret-text");
  parse("<!DOCTYPE r [<!ENTITY x SYSTEM 'file://" + secret + "'>]><r>&x;</r>");
  for (const auto& event : delegate.events)
    EXPECT_EQ(event.find("secret-text"), std::string::npos) << event;
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

  delegate.throwAtEnd = true;  // a delegate's exception stops the parse and surfaces
  EXPECT_THROW(parse("<r><a/><b/></r>"), std::runtime_error);
}

TEST_F(XmlEventParserTest, UrlsAreReadFromDiskOrHttpWithinTheSizeCap) {
  CannedHttpClient http;
  std::string path = writeFile("<r>0123456789</r>");
  EXPECT_TRUE(XmlEventParser::withContentsOfURL("file://" + path, http, 17));
  EXPECT_FALSE(XmlEventParser::withContentsOfURL(path, http, 16));

  http.reply = {true, 200, "<r/>", ""};
  EXPECT_TRUE(XmlEventParser::withContentsOfURL("HTTPS://host.test/x.xml", http, 1000));
  EXPECT_EQ(http.last.maxBodyBytes, 1000u);
  http.reply = {false, 500, "", "server error"};
  EXPECT_FALSE(XmlEventParser::withContentsOfURL("http://host.test/x.xml", http));
  EXPECT_FALSE(XmlEventParser::withContentsOfURL("gopher://host.test/x.xml", http));
}

}  // namespace
}  // namespace kit
