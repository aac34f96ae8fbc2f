#include "xml/tree_node.h"

#include <gmock/gmock.h>

#include "xml_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TreeNodeTest = XmlTest;

TEST_F(TreeNodeTest, SearchesTryEveryDirectChildFirstThenEachSubtreeInTurnButNeverTheNodeAsked) {
  EXPECT_EQ(loadXml("<r><c1><k data='grandchild'/></c1><k data='child'/></r>")->leafForKey("k"),
            "child");
  EXPECT_EQ(
      loadXml("<r><c1><x><k data='c1'/></x></c1><c2><k data='c2'/></c2></r>")->leafForKey("k"),
      "c1");
  auto top = loadXml("<k data='self'><a data='1'/></k>");
  EXPECT_FALSE(top->objectForKey("k"));
  EXPECT_THAT(top->objectsForKey("k"), IsEmpty());
  EXPECT_FALSE(top->objectForKey("A"));  // keys compare exactly
  EXPECT_EQ(top->leafForKey("a"), "1");
}

TEST_F(TreeNodeTest, PathLookupFollowsTheFirstMatchingChildWithoutBacktracking) {
  auto top = loadXml("<r data='top'><a><x data='no b here'/></a><a><b data='found'/></a></r>");
  EXPECT_EQ(top->objectForKeys({}), top);
  EXPECT_EQ(valueAt(*top, {}), "top");
  EXPECT_EQ(valueAt(*top, {"a", "x"}), "no b here");
  EXPECT_EQ(valueAt(*top, {"a", "b"}), "<nil>");  // the second <a> is never tried
  EXPECT_EQ(valueAt(*top, {"b"}), "<nil>");       // only direct children per step
  EXPECT_EQ(valueAt(*top, {"a", "x", "y"}), "<nil>");
}

TEST_F(TreeNodeTest, ListsOfTheWholeSubtreeAreInPreOrder) {
  auto top = loadXml("<r><a data='a1'><b data='b1'/><a data='a2'/></a><b/><c><a/></c></r>");
  EXPECT_THAT(top->keys(), ElementsAre("a", "b", "c"));
  EXPECT_THAT(top->allKeys(), ElementsAre("a", "b", "a", "b", "c", "a"));
  EXPECT_THAT(top->leaves(), ElementsAre("a1"));
  EXPECT_THAT(top->allLeaves(), ElementsAre("a1", "b1", "a2"));
  auto as = top->objectsForKey("a");
  ASSERT_EQ(as.size(), 3u);
  EXPECT_EQ(as[1], (*(*top)[0])[1]);
  EXPECT_THAT(top->leavesForKey("a"), ElementsAre("a1", "a2"));  // the third <a> has no value
  EXPECT_THAT(top->uniqAllKeys(), ElementsAre("a", "b", "c"));
}

TEST_F(TreeNodeTest, UniqArraySortsIgnoringCaseAndDropsOnlyAdjacentExactDuplicates) {
  EXPECT_THAT(TreeNode::uniqArray({"b", "a", "B", "a"}), ElementsAre("a", "b", "B"));
  EXPECT_THAT(TreeNode::uniqArray({"a", "A", "a"}), ElementsAre("a", "A", "a"));
  EXPECT_THAT(TreeNode::uniqArray({"", "", "x"}), ElementsAre("", "x"));
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
  // White space and line breaks of every kind are trimmed at both ends.
  top = loadXml("<r>\n\t <a> \r\n in  side \u00a0\u3000</a><b>   </b><c>\u2028x\u2029</c></r>");
  EXPECT_EQ(top->dump(),
            "[ 0] Key: r ()\n"
            "--[ 1] Key: a (in  side)\n"
            "--[ 1] Key: b ()\n"
            "--[ 1] Key: c (x)\n");
  std::string into = "before\n";
  top->objectForKey("c")->dumpAtIndent(-1, into);
  EXPECT_EQ(into, "before\n[-1] Key: c (x)\n");
}

TEST_F(TreeNodeTest, TeardownUnlinksTheSubtreeAndTakesItOutOfItsParent) {
  auto top = loadXml("<r><a><b/><c><d/></c></a><e/></r>");
  auto a = top->objectForKey("a"), c = top->objectForKey("c"), d = top->objectForKey("d");
  a->teardown();
  EXPECT_THAT(top->keys(), ElementsAre("e"));
  for (const auto& node : {a, c, d}) {
    EXPECT_FALSE(node->parent()) << *node->key();
    EXPECT_TRUE(node->children() && node->isLeaf()) << *node->key();
  }
  top->teardown();
  EXPECT_TRUE(top->isLeaf());
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
