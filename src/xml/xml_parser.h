#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/http.h"
#include "kit/foundation/log.h"
#include "kit/foundation/xml_event_parser.h"
#include "xml/tree_node.h"

// Reads an XML document into a tree of TreeNodes: one node per element, keyed
// by its name, whose value gathers the element's "data" attribute and then
// all of its own character data, untrimmed. Returns the top element's node,
// which the caller owns. A document that fails to parse logs
// "parse xml error" and still yields what was built before the error.
// One parse at a time per loader; the log and HTTP client are borrowed and
// outlive it.
class XMLParser final : public kit::XmlEventParserDelegate {
 public:
  XMLParser(kit::Log& log, kit::HttpClient& http) : log_(log), http_(http) {}
  // Stops being the shared instance if it is.
  ~XMLParser() override;
  XMLParser(const XMLParser&) = delete;
  XMLParser& operator=(const XMLParser&) = delete;

  // The shared loader: the one its owner (the program) made shared with
  // setSharedInstance(). REQUIRES: one is set. Main thread only.
  static XMLParser& sharedInstance();
  // Makes `parser` (borrowed; nullptr clears) the shared loader.
  static void setSharedInstance(XMLParser* parser);

  // A plain path, a file:// URL or an http(s) URL. Nil (after the log line)
  // when the document cannot be read.
  std::shared_ptr<TreeNode> parseXMLFromURL(std::string_view url);
  std::shared_ptr<TreeNode> parseXMLFromData(std::string_view data);
  // Runs `parser` (null counts as a failed parse) with this loader as its
  // delegate.
  std::shared_ptr<TreeNode> parse(kit::XmlEventParser* parser);

  void parserDidStartElement(kit::XmlEventParser& parser, std::string_view elementName,
                             std::optional<std::string_view> namespaceURI,
                             std::optional<std::string_view> qualifiedName,
                             const kit::XmlAttributes& attributes) override;
  void parserDidEndElement(kit::XmlEventParser& parser, std::string_view elementName,
                           std::optional<std::string_view> namespaceURI,
                           std::optional<std::string_view> qualifiedName) override;
  void parserFoundCharacters(kit::XmlEventParser& parser, std::string_view string) override;

  // The open elements during a parse, below a holder node at index 0. After
  // a parse it keeps what was left open until the next parse.
  const std::vector<std::shared_ptr<TreeNode>>& stack() const { return stack_; }

 private:
  kit::Log& log_;
  kit::HttpClient& http_;
  std::vector<std::shared_ptr<TreeNode>> stack_;
  bool borrowing_ = false;  // see parse()
};
