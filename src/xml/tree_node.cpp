#include "xml/tree_node.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string_view>
#include <utility>

namespace {

unsigned char foldAscii(unsigned char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<unsigned char>(c - 'A' + 'a') : c;
}

bool lessIgnoringCase(const std::string* a, const std::string* b) {
  size_t n = std::min(a->size(), b->size());
  for (size_t i = 0; i < n; ++i) {
    unsigned char x = foldAscii(static_cast<unsigned char>((*a)[i]));
    unsigned char y = foldAscii(static_cast<unsigned char>((*b)[i]));
    if (x != y)
      return x < y;
  }
  return a->size() < b->size();
}

// Length of the white space or line break (ASCII or Unicode, UTF-8 encoded)
// that starts at `at`, or 0.
size_t spaceAt(std::string_view s, size_t at) {
  auto byte = [&](size_t i) { return static_cast<unsigned char>(s[i]); };
  unsigned char c = byte(at);
  if (c == ' ' || (c >= '\t' && c <= '\r'))
    return 1;
  size_t left = s.size() - at;
  if (c == 0xC2 && left >= 2 && (byte(at + 1) == 0x85 || byte(at + 1) == 0xA0))
    return 2;
  if (left < 3)
    return 0;
  unsigned char c1 = byte(at + 1);
  unsigned char c2 = byte(at + 2);
  if (c == 0xE1 && c1 == 0x9A && c2 == 0x80)
    return 3;  // U+1680
  if (c == 0xE2 && c1 == 0x80 &&
      ((c2 >= 0x80 && c2 <= 0x8A) || c2 == 0xA8 || c2 == 0xA9 || c2 == 0xAF)) {
    return 3;  // U+2000..200A, 2028, 2029, 202F
  }
  if (c == 0xE2 && c1 == 0x81 && c2 == 0x9F)
    return 3;  // U+205F
  if (c == 0xE3 && c1 == 0x80 && c2 == 0x80)
    return 3;  // U+3000
  return 0;
}

std::string_view trimmed(std::string_view s) {
  size_t begin = 0;
  while (begin < s.size()) {
    size_t n = spaceAt(s, begin);
    if (n == 0)
      break;
    begin += n;
  }
  // Scan forward so multi-byte spaces at the end are recognised too.
  size_t end = begin;
  for (size_t i = begin; i < s.size();) {
    size_t n = spaceAt(s, i);
    if (n == 0) {
      ++i;
      while (i < s.size() && (static_cast<unsigned char>(s[i]) & 0xC0) == 0x80)
        ++i;
      end = i;
    } else {
      i += n;
    }
  }
  return s.substr(begin, end - begin);
}

using Link = const std::shared_ptr<TreeNode>*;

// Pushes the links to the children of `node` so that popping yields them in
// order.
void pushChildren(std::vector<Link>& stack, const TreeNode& node) {
  for (auto it = node.end(); it != node.begin();)
    stack.push_back(&*--it);
}

// Calls visit(node) for every node below `top` in pre-order.
template <class Visit>
void forEachBelow(const TreeNode& top, Visit visit) {
  std::vector<Link> stack;
  pushChildren(stack, top);
  while (!stack.empty()) {
    const std::shared_ptr<TreeNode>& node = *stack.back();
    stack.pop_back();
    visit(node);
    pushChildren(stack, *node);
  }
}

}  // namespace

std::shared_ptr<TreeNode> TreeNode::treeNode() {
  return std::make_shared<TreeNode>(Token{});
}

TreeNode::~TreeNode() {
  // Children that die with this node hand their own children to this loop
  // before they go, so no destructor ever runs more than one level deep.
  if (!children_)
    return;
  Children doomed = std::move(*children_);
  while (!doomed.empty()) {
    std::shared_ptr<TreeNode> node = std::move(doomed.back());
    doomed.pop_back();
    if (node && node.use_count() == 1 && node->children_) {
      for (auto& child : *node->children_)
        doomed.push_back(std::move(child));
      node->children_->clear();
    }
  }
}

void TreeNode::appendToLeafvalue(std::string_view text) {
  if (leafvalue_) {
    leafvalue_->append(text);
  } else {
    leafvalue_.emplace(text);
  }
}

const TreeNode::Children& TreeNode::list() const {
  static const Children kNone;
  return children_ ? *children_ : kNone;
}

std::shared_ptr<TreeNode> TreeNode::back() const {
  return size() == 0 ? nullptr : children_->back();
}

bool TreeNode::contains(const TreeNode* node) const {
  return std::any_of(begin(), end(), [&](const auto& child) { return child.get() == node; });
}

std::vector<std::string> TreeNode::keys() const {
  std::vector<std::string> result;
  for (const auto& child : *this) {
    if (child->key_)
      result.push_back(*child->key_);
  }
  return result;
}

std::vector<std::string> TreeNode::allKeys() const {
  std::vector<std::string> result;
  forEachBelow(*this, [&](const auto& node) {
    if (node->key_)
      result.push_back(*node->key_);
  });
  return result;
}

std::vector<std::string> TreeNode::leaves() const {
  std::vector<std::string> result;
  for (const auto& child : *this) {
    if (child->leafvalue_)
      result.push_back(*child->leafvalue_);
  }
  return result;
}

std::vector<std::string> TreeNode::allLeaves() const {
  std::vector<std::string> result;
  forEachBelow(*this, [&](const auto& node) {
    if (node->leafvalue_)
      result.push_back(*node->leafvalue_);
  });
  return result;
}

std::vector<std::string> TreeNode::uniqArray(const std::vector<std::string>& array) {
  std::vector<const std::string*> sorted;
  sorted.reserve(array.size());
  for (const auto& s : array)
    sorted.push_back(&s);
  std::stable_sort(sorted.begin(), sorted.end(), lessIgnoringCase);
  std::vector<std::string> result;
  for (const std::string* s : sorted) {
    if (result.empty() || result.back() != *s)
      result.push_back(*s);
  }
  return result;
}

const std::shared_ptr<TreeNode>* TreeNode::firstChild(const std::string& key) const {
  for (const auto& child : *this) {
    if (child->key_ == key)
      return &child;
  }
  return nullptr;
}

std::shared_ptr<TreeNode> TreeNode::objectForKey(const std::string& key) const {
  // Each node, in pre-order from this one, first offers its direct children.
  if (Link found = firstChild(key))
    return *found;
  std::vector<Link> stack;
  pushChildren(stack, *this);
  while (!stack.empty()) {
    const TreeNode& node = **stack.back();
    stack.pop_back();
    if (Link found = node.firstChild(key))
      return *found;
    pushChildren(stack, node);
  }
  return nullptr;
}

std::optional<std::string> TreeNode::leafForKey(const std::string& key) const {
  auto node = objectForKey(key);
  return node ? node->leafvalue_ : std::nullopt;
}

std::vector<std::shared_ptr<TreeNode>> TreeNode::objectsForKey(const std::string& key) const {
  std::vector<std::shared_ptr<TreeNode>> result;
  forEachBelow(*this, [&](const auto& node) {
    if (node->key_ == key)
      result.push_back(node);
  });
  return result;
}

std::vector<std::string> TreeNode::leavesForKey(const std::string& key) const {
  std::vector<std::string> result;
  forEachBelow(*this, [&](const auto& node) {
    if (node->key_ == key && node->leafvalue_)
      result.push_back(*node->leafvalue_);
  });
  return result;
}

std::shared_ptr<TreeNode> TreeNode::objectForKeys(const std::vector<std::string>& keys) {
  if (keys.empty())
    return shared_from_this();
  Link link = nullptr;
  const TreeNode* node = this;
  for (const auto& key : keys) {
    link = node->firstChild(key);
    if (!link)
      return nullptr;
    node = link->get();
  }
  return *link;
}

std::shared_ptr<const TreeNode> TreeNode::objectForKeys(
    const std::vector<std::string>& keys) const {
  return const_cast<TreeNode*>(this)->objectForKeys(keys);  // reads only
}

std::optional<std::string> TreeNode::leafForKeys(const std::vector<std::string>& keys) const {
  auto node = objectForKeys(keys);
  return node ? node->leafvalue_ : std::nullopt;
}

void TreeNode::dumpAtIndent(int indent, std::string& into) const {
  dumpWalk(indent, into, nullptr);
}

void TreeNode::dumpAtIndent(int indent, std::ostream& out) const {
  std::string piece;
  const auto flush = [&out](std::string& lines) {
    out.write(lines.data(), static_cast<std::streamsize>(lines.size()));
    lines.clear();
    return static_cast<bool>(out);
  };
  dumpWalk(indent, piece, flush);
  flush(piece);
}

void TreeNode::dumpWalk(int indent, std::string& into,
                        const std::function<bool(std::string&)>& flush) const {
  constexpr size_t kPieceBytes = 64 * 1024;
  // Depths are wide so that a child of a node at INT_MAX does not overflow.
  std::vector<std::pair<const TreeNode*, long long>> stack{{this, indent}};
  while (!stack.empty()) {
    if (flush && into.size() >= kPieceBytes && !flush(into))
      return;
    auto [node, depth] = stack.back();
    stack.pop_back();
    if (depth > 0)
      into.append(2 * static_cast<size_t>(depth), '-');
    char head[40];
    int n = std::snprintf(head, sizeof head, "[%2lld] Key: ", depth);
    into.append(head, static_cast<size_t>(n));
    into.append(node->key_ ? *node->key_ : "(null)");
    into += ' ';
    if (node->leafvalue_) {
      into += '(';
      into.append(trimmed(*node->leafvalue_));
      into += ')';
    }
    into += '\n';
    for (auto it = node->end(); it != node->begin();)
      stack.emplace_back((--it)->get(), depth + 1);
  }
}

std::string TreeNode::dump() const {
  std::string out;
  dumpAtIndent(0, out);
  return out;
}

std::map<std::string, std::string> TreeNode::dictionaryForChildren() const {
  std::map<std::string, std::string> result;
  for (const auto& child : *this) {
    if (child->key_ && child->leafvalue_)
      result[*child->key_] = *child->leafvalue_;
  }
  return result;
}

void TreeNode::teardown() {
  // Post-order: a node finishes once all its children have, by unlinking
  // from its parent and forgetting it. A list that the walk is still going
  // through is never edited under it: removals from a node whose frame is
  // open wait in `leaving` until that frame closes, then go in one sweep,
  // which is O(n log n) for n children rather than O(n^2). For any tree
  // this ends exactly as unlinking at once while walking snapshots would.
  struct Frame {
    TreeNode* node;
    size_t next;
    size_t leavingFrom;
  };
  auto keepAlive = weak_from_this().lock();
  std::vector<Frame> frames{{this, 0, 0}};
  std::vector<std::pair<TreeNode*, TreeNode*>> leaving;  // (list owner, node)
  auto byNode = [](const auto& a, const auto& b) {
    return std::less<TreeNode*>()(a.second, b.second);
  };
  tearingDown_ = true;
  while (!frames.empty()) {
    Frame& top = frames.back();
    TreeNode* node = top.node;
    if (node->children_ && top.next < node->children_->size()) {
      TreeNode* child = (*node->children_)[top.next++].get();
      if (!child->tearingDown_) {  // a node listed below itself is not walked again
        child->tearingDown_ = true;
        frames.push_back({child, 0, leaving.size()});
      }
      continue;
    }
    auto first = leaving.begin() + static_cast<std::ptrdiff_t>(top.leavingFrom);
    auto mine = std::partition(first, leaving.end(),
                               [&](const auto& entry) { return entry.first != node; });
    if (mine != leaving.end() && node->children_) {
      std::sort(mine, leaving.end(), byNode);
      std::erase_if(*node->children_, [&](const auto& child) {
        return std::binary_search(mine, leaving.end(), std::pair(node, child.get()), byNode);
      });
    }
    leaving.erase(mine, leaving.end());
    std::shared_ptr<TreeNode> parent = node->parent_.lock();
    node->parent_.reset();
    node->tearingDown_ = false;
    frames.pop_back();
    if (!parent)
      continue;
    if (parent->tearingDown_) {
      leaving.emplace_back(parent.get(), node);
    } else if (parent->children_) {
      std::erase_if(*parent->children_, [&](const auto& sibling) { return sibling.get() == node; });
    }
  }
}
