#include "xml/xml_parser.h"

std::shared_ptr<TreeNode> XMLParser::parseXMLFromURL(std::string_view url) {
  kit::Result<std::unique_ptr<kit::XmlEventParser>> parser =
      kit::XmlEventParser::openURL(url, http_);
  if (!parser) {
    auto nothing = parse(nullptr);
    log_.write("cannot read " + std::string(url) + ": " + parser.error());
    return nothing;
  }
  return parse(parser->get());
}

std::shared_ptr<TreeNode> XMLParser::parseXMLFromData(std::string_view data) {
  kit::XmlEventParser parser(data);
  return parse(&parser);
}

std::shared_ptr<TreeNode> XMLParser::parse(kit::XmlEventParser* parser) {
  stack_.clear();
  auto holder = TreeNode::treeNode();
  holder->setChildren(TreeNode::Children());
  stack_.push_back(holder);

  bool ok = false;
  if (parser) {
    // While the parser runs, each open element is owned by its parent's list
    // and nothing else can touch the tree, so the stack may borrow them
    // (this spares two atomic count updates per element). It owns them
    // again as soon as the parser returns, however it returns.
    struct Borrowing {
      XMLParser& self;
      kit::XmlEventParser& parser;
      ~Borrowing() {
        parser.setDelegate(nullptr);
        self.borrowing_ = false;
        for (auto& entry : self.stack_) {
          if (entry && entry.use_count() == 0)
            entry = entry->weak_from_this().lock();
        }
      }
    } borrowing{*this, *parser};
    borrowing_ = true;
    parser->setDelegate(this);
    ok = parser->parse();
  }
  if (!ok)
    log_.write("parse xml error");

  std::shared_ptr<TreeNode> result = holder->back();
  holder->setChildren(std::nullopt);
  holder->setParent(nullptr);
  holder->setLeafvalue(std::nullopt);
  holder->setKey(std::nullopt);
  if (result)
    result->setParent(nullptr);
  return result;
}

void XMLParser::parserDidStartElement(kit::XmlEventParser&, std::string_view elementName,
                                      std::optional<std::string_view>,
                                      std::optional<std::string_view> qualifiedName,
                                      const kit::XmlAttributes& attributes) {
  auto node = TreeNode::treeNode();
  node->setKey(std::string(qualifiedName.value_or(elementName)));
  if (auto data = attributes.valueFor("data"))
    node->setLeafvalue(std::string(*data));
  node->setChildren(TreeNode::Children());
  if (stack_.empty()) {
    stack_.push_back(std::move(node));
    return;
  }
  const std::shared_ptr<TreeNode>& parent = stack_.back();
  node->setParent(parent->weak_from_this());
  auto& siblings = parent->children();
  if (!siblings) {
    stack_.push_back(std::move(node));
    return;
  }
  if (siblings->empty())
    siblings->reserve(4);  // most elements with children have several
  siblings->push_back(std::move(node));
  const std::shared_ptr<TreeNode>& added = siblings->back();
  stack_.push_back(borrowing_ ? std::shared_ptr<TreeNode>(std::shared_ptr<TreeNode>(), added.get())
                              : added);
}

void XMLParser::parserDidEndElement(kit::XmlEventParser&, std::string_view,
                                    std::optional<std::string_view>,
                                    std::optional<std::string_view>) {
  if (!stack_.empty())
    stack_.pop_back();
}

void XMLParser::parserFoundCharacters(kit::XmlEventParser&, std::string_view string) {
  if (!stack_.empty())
    stack_.back()->appendToLeafvalue(string);
}
