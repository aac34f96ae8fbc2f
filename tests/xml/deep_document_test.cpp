// Trees far deeper than any call stack: every walk, teardown and the
// destructor must be iterative. A recursive version dies long before these
// depths, sooner still under the sanitizers.

#include <gmock/gmock.h>

#include "xml_fixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::StartsWith;

constexpr int kDepth = 1'000'000;

using DeepDocumentTest = XmlTest;

TEST_F(DeepDocumentTest, AMillionLevelsAnswerEveryQueryTearDownAndAreFreed) {
  // <a><a>...<a data="bottom"/>...</a></a>, kDepth elements in one chain.
  std::string chain;
  for (int i = 1; i < kDepth; ++i)
    chain += "<a>";
  chain += "<a data=\"bottom\"/>";
  for (int i = 1; i < kDepth; ++i)
    chain += "</a>";
  auto top = loadXml(chain);
  ASSERT_TRUE(top);
  EXPECT_FALSE(logged("parse xml error"));
  EXPECT_EQ(top->allKeys().size(), static_cast<size_t>(kDepth - 1));
  EXPECT_THAT(top->uniqAllKeys(), ElementsAre("a"));
  EXPECT_THAT(top->allLeaves(), ElementsAre("bottom"));
  EXPECT_FALSE(top->objectForKey("missing"));
  auto nodes = top->objectsForKey("a");
  EXPECT_EQ(nodes.size(), static_cast<size_t>(kDepth - 1));
  EXPECT_EQ(top->leafForKeys(std::vector<std::string>(kDepth - 1, "a")), "bottom");
  EXPECT_FALSE(top->objectForKeys(std::vector<std::string>(kDepth, "a")));

  // The dump of a chain grows with the square of its depth from depth 0;
  // starting far below zero keeps it to one short line per node.
  std::string dump;
  top->dumpAtIndent(-kDepth, dump);
  EXPECT_EQ(std::count(dump.begin(), dump.end(), '\n'), kDepth);
  EXPECT_THAT(dump, StartsWith("[-1000000] Key: a \n[-999999] Key: a \n"));
  EXPECT_THAT(dump, EndsWith("\n[-2] Key: a \n[-1] Key: a (bottom)\n"));

  // Tearing down the lower half frees it at once; dropping the top frees the rest.
  std::weak_ptr<TreeNode> bottom = nodes.back(), upper = nodes[kDepth / 4];
  auto middle = nodes[kDepth / 2];
  nodes.clear();
  middle->teardown();
  EXPECT_TRUE(middle->isLeaf() && !middle->parent());
  EXPECT_TRUE(bottom.expired());
  top.reset();
  EXPECT_TRUE(upper.expired());
}

}  // namespace
