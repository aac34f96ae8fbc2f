// Arbitrary bytes through the loader, then every query of the tree it built,
// with cross-checks between queries, then teardown. Any crash, sanitizer
// report, leak or broken cross-check is a finding.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "kit/foundation/http.h"
#include "kit/foundation/log.h"
#include "xml/xml_parser.h"

namespace {

class NullLog final : public kit::Log {
 public:
  void write(std::string_view) override {}
};

class NoHttp final : public kit::HttpClient {
 public:
  kit::HttpResponse get(const kit::HttpRequest&) override { return {}; }
};

void check(bool condition) {
  if (!condition)
    std::abort();
}

// Every query once, with a few consistency checks between their answers.
void query(TreeNode& top) {
  auto keys = top.keys();
  auto allKeys = top.allKeys();
  check(keys.size() == top.size());
  check(top.uniqKeys().size() <= keys.size());
  auto uniqAll = top.uniqAllKeys();
  check(uniqAll.size() <= allKeys.size());
  check(top.leaves().size() <= keys.size());
  auto allLeaves = top.allLeaves();
  check(allLeaves.size() <= allKeys.size());
  check(top.dictionaryForChildren().size() <= keys.size());

  // A few keys from the tree and one that is in no tree.
  std::vector<std::string> probes(uniqAll.begin(),
                                  uniqAll.begin() + std::min<size_t>(uniqAll.size(), 4));
  probes.push_back("\x01 not a name");
  for (const auto& key : probes) {
    auto found = top.objectForKey(key);
    auto all = top.objectsForKey(key);
    check(static_cast<size_t>(std::count(allKeys.begin(), allKeys.end(), key)) == all.size());
    check((found != nullptr) == !all.empty());
    if (found)
      check(found->key() == key);
    check(top.leafForKey(key) == (found ? found->leafvalue() : std::nullopt));
    check(top.leavesForKey(key).size() <= all.size());
  }

  // The path along the first children reaches the node the walk reached.
  std::vector<std::string> path;
  const TreeNode* node = &top;
  while (node->size() > 0 && path.size() < 64) {
    node = (*node)[0].get();
    path.push_back(*node->key());
  }
  check(top.objectForKeys(path).get() == node);
  check(top.leafForKeys(path) == node->leafvalue());
  check(top.objectForKeys({}).get() == &top);

  std::string dump = top.dump();
  check(dump.rfind("[ 0] Key: ", 0) == 0);
  std::string shifted;
  top.dumpAtIndent(-2, shifted);
  check(shifted.rfind("[-2] Key: ", 0) == 0);
  for (const auto& child : top)
    check(top.contains(child.get()) && child->parent().get() == &top);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static NullLog log;
  static NoHttp http;
  XMLParser loader(log, http);
  auto top = loader.parseXMLFromData(std::string_view(reinterpret_cast<const char*>(data), size));
  if (!top)
    return 0;
  query(*top);

  auto everything = top->objectsForKey(top->allKeys().empty() ? "" : top->allKeys().back());
  if (top->size() > 0) {
    auto first = (*top)[0];
    first->teardown();
    check(!top->contains(first.get()) && !first->parent() && first->isLeaf());
  }
  top->teardown();
  check(top->isLeaf());
  for (const auto& node : everything)
    check(!node->parent() && node->isLeaf());
  return 0;
}
