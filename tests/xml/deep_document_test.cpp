// Trees far deeper than any call stack: every walk, teardown and the
// destructor must be iterative. A recursive version dies long before these
// depths, sooner still under the sanitizers.

#include <gmock/gmock.h>

#include "xml_fixture.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::Pointee;
using ::testing::Property;
using ::testing::StartsWith;

constexpr int kDepth = 1'000'000;

class DeepDocumentTest : public XmlTest {
 protected:
  // <a><a>...<a data="bottom"/>...</a></a>, kDepth elements in one chain.
  static const std::string& chain() {
    static const std::string text = [] {
      std::string s;
      s.reserve(kDepth * 7 + 32);
      for (int i = 1; i < kDepth; ++i)
        s += "<a>";
      s += "<a data=\"bottom\"/>";
      for (int i = 1; i < kDepth; ++i)
        s += "</a>";
      return s;
    }();
    return text;
  }

  std::shared_ptr<TreeNode> loadChain() {
    auto top = loadXml(chain());
    EXPECT_FALSE(logged("parse xml error"));
    return top;
  }
};

TEST_F(DeepDocumentTest, AMillionLevelsAnswerEveryQueryAndAreFreed) {
  auto top = loadChain();
  ASSERT_TRUE(top);
  EXPECT_THAT(top->keys(), ElementsAre("a"));
  auto keys = top->allKeys();
  EXPECT_EQ(keys.size(), static_cast<size_t>(kDepth - 1));
  EXPECT_THAT(top->uniqAllKeys(), ElementsAre("a"));
  EXPECT_THAT(top->allLeaves(), ElementsAre("bottom"));
  EXPECT_THAT(top->leavesForKey("a"), ElementsAre("bottom"));
  EXPECT_FALSE(top->objectForKey("missing"));
  auto nodes = top->objectsForKey("a");
  EXPECT_EQ(nodes.size(), static_cast<size_t>(kDepth - 1));
  EXPECT_EQ(top->leafForKeys(std::vector<std::string>(kDepth - 1, "a")), "bottom");
  EXPECT_FALSE(top->objectForKeys(std::vector<std::string>(kDepth, "a")));
  EXPECT_TRUE(top->dictionaryForChildren().empty());

  // The dump of a chain grows with the square of its depth from depth 0;
  // starting far below zero keeps it to one short line per node.
  std::string dump;
  top->dumpAtIndent(-kDepth, dump);
  EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), kDepth);
  EXPECT_THAT(dump, StartsWith("[-1000000] Key: a \n[-999999] Key: a \n"));
  EXPECT_THAT(dump, EndsWith("\n[-2] Key: a \n[-1] Key: a (bottom)\n"));

  std::weak_ptr<TreeNode> bottom = nodes.back();
  nodes.clear();
  top.reset();
  EXPECT_TRUE(bottom.expired());
}

TEST_F(DeepDocumentTest, AMillionLevelsBuiltByCodeTearDownAndAreFreed) {
  auto top = TreeNode::treeNode();
  std::shared_ptr<TreeNode> middle;
  auto node = top;
  for (int depth = 1; depth < kDepth; ++depth) {
    auto child = TreeNode::treeNode();
    child->setKey("a");
    child->setChildren(TreeNode::Children());
    child->setParent(node);
    node->setChildren(TreeNode::Children{child});
    node = child;
    if (depth == kDepth / 2)
      middle = child;
  }
  std::weak_ptr<TreeNode> bottom = node;
  node.reset();
  top->teardown();
  EXPECT_TRUE(top->isLeaf());
  EXPECT_FALSE(middle->parent());
  EXPECT_TRUE(middle->isLeaf());
  EXPECT_TRUE(bottom.expired());  // nothing held it once unlinked
}

TEST_F(DeepDocumentTest, AWideTreeTearsDownInOneSweep) {
  std::string doc = "<r>";
  for (int i = 0; i < 100'000; ++i)
    doc += "<c/>";
  auto top = loadXml(doc + "</r>");
  auto children = top->objectsForKey("c");
  top->teardown();
  EXPECT_TRUE(top->isLeaf());
  EXPECT_THAT(children, Each(Pointee(Property(&TreeNode::isLeaf, true))));
  EXPECT_FALSE(children.back()->parent());
}

}  // namespace
