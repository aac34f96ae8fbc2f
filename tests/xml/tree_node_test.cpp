#include "xml/tree_node.h"

#include <gmock/gmock.h>

#include "xml_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Strings = std::vector<std::string>;

class TreeNodeTest : public XmlTest {
 protected:
  // Every node of the subtree below `top`.
  static std::vector<std::shared_ptr<TreeNode>> everyNodeBelow(const TreeNode& top) {
    std::vector<std::shared_ptr<TreeNode>> nodes;
    for (const auto& key : top.uniqAllKeys()) {
      for (auto& node : top.objectsForKey(key))
        nodes.push_back(node);
    }
    return nodes;
  }
};

TEST_F(TreeNodeTest, AFreshNodeIsAnEmptyLeafThatFindsNothing) {
  auto node = TreeNode::treeNode();
  EXPECT_FALSE(node->parent());
  EXPECT_FALSE(node->children().has_value());
  EXPECT_FALSE(node->key().has_value());
  EXPECT_FALSE(node->hasLeafValue());
  EXPECT_TRUE(node->isLeaf());
  EXPECT_EQ(node->size(), 0u);
  EXPECT_EQ(node->begin(), node->end());
  EXPECT_FALSE(node->back());
  EXPECT_THAT(node->keys(), IsEmpty());
  EXPECT_THAT(node->allLeaves(), IsEmpty());
  EXPECT_THAT(node->objectsForKey("a"), IsEmpty());
  EXPECT_FALSE(node->objectForKey("a"));
  EXPECT_FALSE(node->objectForKeys({"a"}));
  EXPECT_THAT(node->dictionaryForChildren(), IsEmpty());
  EXPECT_EQ(node->dump(), "[ 0] Key: (null) \n");
}

TEST_F(TreeNodeTest, ObjectForKeyTriesEveryDirectChildBeforeAnyGrandchild) {
  auto top = loadXml("<r><c1><k data='grandchild'/></c1><k data='child'/></r>");
  EXPECT_EQ(top->leafForKey("k"), "child");
}

TEST_F(TreeNodeTest, ObjectForKeySearchesTheFirstSubtreeFullyBeforeTheNext) {
  auto top = loadXml("<r><c1><x><k data='deep in c1'/></x></c1><c2><k data='in c2'/></c2></r>");
  EXPECT_EQ(top->leafForKey("k"), "deep in c1");
}

TEST_F(TreeNodeTest, QueriesNeverLookAtTheNodeAskedAndCompareKeysExactly) {
  auto top = loadXml("<k data='self'><a data='1'/></k>");
  EXPECT_FALSE(top->objectForKey("k"));
  EXPECT_THAT(top->objectsForKey("k"), IsEmpty());
  EXPECT_THAT(top->allKeys(), ElementsAre("a"));
  EXPECT_FALSE(top->objectForKey("A"));
  EXPECT_EQ(top->leafForKey("a"), "1");
  EXPECT_FALSE(top->leafForKey("missing"));
}

TEST_F(TreeNodeTest, PathLookupFollowsTheFirstMatchingChildWithoutBacktracking) {
  auto top = loadXml("<r data='top'><a><x data='no b here'/></a><a><b data='found'/></a></r>");
  EXPECT_EQ(top->objectForKeys({}), top);
  EXPECT_EQ(valueAt(*top, {}), "top");
  EXPECT_EQ(valueAt(*top, {"a", "x"}), "no b here");
  EXPECT_EQ(valueAt(*top, {"a", "b"}), "<nil>");  // the second <a> is never tried
  EXPECT_EQ(valueAt(*top, {"b"}), "<nil>");       // only direct children per step
  EXPECT_EQ(valueAt(*top, {"a", "x", "y"}), "<nil>");
  EXPECT_EQ(top->objectForKeys({"a"}), (*top)[0]);
}

TEST_F(TreeNodeTest, ListsOfTheWholeSubtreeAreInPreOrder) {
  auto top = loadXml("<r><a data='a1'><b data='b1'/><a data='a2'/></a><b/><c><a/></c></r>");
  EXPECT_THAT(top->keys(), ElementsAre("a", "b", "c"));
  EXPECT_THAT(top->allKeys(), ElementsAre("a", "b", "a", "b", "c", "a"));
  EXPECT_THAT(top->leaves(), ElementsAre("a1"));
  EXPECT_THAT(top->allLeaves(), ElementsAre("a1", "b1", "a2"));
  auto as = top->objectsForKey("a");
  ASSERT_EQ(as.size(), 3u);
  EXPECT_EQ(as[0], (*top)[0]);
  EXPECT_EQ(as[1], (*(*top)[0])[1]);
  EXPECT_THAT(top->leavesForKey("a"), ElementsAre("a1", "a2"));  // the third <a> has no value
  EXPECT_THAT(top->uniqAllKeys(), ElementsAre("a", "b", "c"));
}

TEST_F(TreeNodeTest, UniqArraySortsIgnoringCaseAndDropsOnlyAdjacentExactDuplicates) {
  EXPECT_THAT(TreeNode::uniqArray({"b", "a", "B", "a"}), ElementsAre("a", "b", "B"));
  EXPECT_THAT(TreeNode::uniqArray({"a", "A", "a"}), ElementsAre("a", "A", "a"));
  EXPECT_THAT(TreeNode::uniqArray({"Zeta", "alpha", "Beta", "alpha"}),
              ElementsAre("alpha", "Beta", "Zeta"));
  EXPECT_THAT(TreeNode::uniqArray({"", "", "x"}), ElementsAre("", "x"));
  EXPECT_THAT(TreeNode::uniqArray({}), IsEmpty());
}

TEST_F(TreeNodeTest, DictionaryForChildrenKeepsTheLastValuePerKeyAndOnlyDirectChildren) {
  auto top = loadXml("<r><x>1</x><y/><x>2</x><z><deep>3</deep></z></r>");
  EXPECT_EQ(top->dictionaryForChildren(), (std::map<std::string, std::string>{{"x", "2"}}));
}

TEST_F(TreeNodeTest, DumpPrintsOneLinePerNodeWithDepthKeyAndTrimmedValue) {
  auto top = loadXml("<config><name>abc</name><list><item>1</item></list></config>");
  EXPECT_EQ(top->dump(),
            "[ 0] Key: config \n"
            "--[ 1] Key: name (abc)\n"
            "--[ 1] Key: list \n"
            "----[ 2] Key: item (1)\n");
}

TEST_F(TreeNodeTest, DumpTrimsWhiteSpaceAndLineBreaksOfEveryKindAtBothEnds) {
  auto top = loadXml(
      "<r>\n\t <a> \r\n in  side \u00a0\u3000</a><b>   </b><c>\u2028x\u2029</c><d>\u00e9</d></r>");
  EXPECT_EQ(top->dump(),
            "[ 0] Key: r ()\n"
            "--[ 1] Key: a (in  side)\n"
            "--[ 1] Key: b ()\n"
            "--[ 1] Key: c (x)\n"
            "--[ 1] Key: d (\u00e9)\n");
}

TEST_F(TreeNodeTest, DumpAtIndentAppendsAtTheGivenDepth) {
  auto top = loadXml("<a><b/></a>");
  std::string into = "before\n";
  top->dumpAtIndent(2, into);
  EXPECT_EQ(into, "before\n----[ 2] Key: a \n------[ 3] Key: b \n");
  into.clear();
  top->dumpAtIndent(-1, into);
  EXPECT_EQ(into, "[-1] Key: a \n[ 0] Key: b \n");
  into.clear();
  top->dumpAtIndent(123, into);
  EXPECT_EQ(into.substr(246), "[123] Key: a \n" + std::string(248, '-') + "[124] Key: b \n");
}

TEST_F(TreeNodeTest, ANodeStandsInForItsListOfChildren) {
  auto top = loadXml("<r><a/><b/><c/></r>");
  ASSERT_EQ(top->size(), 3u);
  EXPECT_EQ((*top)[1]->key(), "b");
  EXPECT_EQ(top->back()->key(), "c");
  Strings seen;
  for (const auto& child : *top)
    seen.push_back(*child->key());
  EXPECT_THAT(seen, ElementsAre("a", "b", "c"));
  EXPECT_TRUE(top->contains((*top)[2].get()));
  EXPECT_FALSE(top->contains(top.get()));
  EXPECT_FALSE(top->contains(TreeNode::treeNode().get()));
  EXPECT_FALSE(top->isLeaf());
  EXPECT_TRUE((*top)[0]->isLeaf());
  EXPECT_EQ((*top)[0]->parent(), top);
}

TEST_F(TreeNodeTest, TeardownUnlinksEveryNodeOfTheTree) {
  auto top = loadXml("<r><a><b/><c><d/></c></a><e/></r>");
  auto nodes = everyNodeBelow(*top);
  ASSERT_EQ(nodes.size(), 5u);
  top->teardown();
  EXPECT_FALSE(top->parent());
  for (const auto& node : nodes) {
    EXPECT_FALSE(node->parent()) << *node->key();
    ASSERT_TRUE(node->children().has_value()) << *node->key();
    EXPECT_TRUE(node->isLeaf()) << *node->key();
  }
  EXPECT_TRUE(top->children().has_value());
  EXPECT_TRUE(top->isLeaf());
}

TEST_F(TreeNodeTest, TeardownOfASubtreeTakesItOutOfItsParentOnly) {
  auto top = loadXml("<r><a><b/></a><c/></r>");
  auto a = top->objectForKey("a");
  auto b = top->objectForKey("b");
  a->teardown();
  EXPECT_THAT(top->keys(), ElementsAre("c"));
  EXPECT_FALSE(a->parent());
  EXPECT_FALSE(b->parent());
  EXPECT_TRUE(a->isLeaf());
  EXPECT_EQ(top->objectForKey("c")->parent(), top);
}

TEST_F(TreeNodeTest, NodesKeptByTheCallerOutliveTheirTreeWithTheirSubtree) {
  auto top = loadXml("<r><a><b data='kept'/></a></r>");
  auto a = top->objectForKey("a");
  top.reset();
  EXPECT_FALSE(a->parent());
  EXPECT_EQ(a->leafForKey("b"), "kept");
  EXPECT_EQ(a->objectForKey("b")->parent(), a);
}

}  // namespace
