#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

// One element of an XML document: its name (key), its text (leafvalue) and
// its child elements in document order. Parents own their children; the
// link up is weak. Query results share nodes with the tree. A node also acts
// as the list of its children (size, [], back, begin/end, contains).
//
// Every walk is iterative, and so is destruction: a tree of any depth can be
// queried, dumped, torn down and freed without exhausting the stack. A tree
// must stay a tree: no null entries in a children list, no node below
// itself. Single-threaded.
class TreeNode : public std::enable_shared_from_this<TreeNode> {
 public:
  using Children = std::vector<std::shared_ptr<TreeNode>>;
  using const_iterator = Children::const_iterator;

 private:
  struct Token {
    explicit Token() = default;
  };

 public:
  // A new node with all four fields nil. Nodes exist only as shared_ptrs.
  static std::shared_ptr<TreeNode> treeNode();
  explicit TreeNode(Token) {}
  ~TreeNode();
  TreeNode(const TreeNode&) = delete;
  TreeNode& operator=(const TreeNode&) = delete;

  // Nil at the top, and once the parent is gone.
  std::shared_ptr<TreeNode> parent() const { return parent_.lock(); }
  void setParent(const std::shared_ptr<TreeNode>& parent) { parent_ = parent; }
  void setParent(std::weak_ptr<TreeNode> parent) { parent_ = std::move(parent); }
  // Nil until set (the loader always sets one, possibly empty).
  const std::optional<Children>& children() const { return children_; }
  std::optional<Children>& children() { return children_; }
  void setChildren(std::optional<Children> children) { children_ = std::move(children); }
  const std::optional<std::string>& key() const { return key_; }
  void setKey(std::optional<std::string> key) { key_ = std::move(key); }
  const std::optional<std::string>& leafvalue() const { return leafvalue_; }
  void setLeafvalue(std::optional<std::string> leafvalue) { leafvalue_ = std::move(leafvalue); }
  // Adds text to the end of the value (which becomes the text when nil), in
  // amortised constant time per byte.
  void appendToLeafvalue(std::string_view text);

  // The children list, empty when nil. operator[] requires index < size();
  // back() is nil for an empty list.
  size_t size() const { return children_ ? children_->size() : 0; }
  const std::shared_ptr<TreeNode>& operator[](size_t index) const { return (*children_)[index]; }
  std::shared_ptr<TreeNode> back() const;
  const_iterator begin() const { return list().begin(); }
  const_iterator end() const { return list().end(); }
  // By identity.
  bool contains(const TreeNode* node) const;

  // No child (nil children included).
  bool isLeaf() const { return size() == 0; }
  bool hasLeafValue() const { return leafvalue_.has_value(); }

  // Every query looks only below this node, never at its own key or value,
  // and compares keys exactly. Nodes without a key contribute no key.
  // "All" lists and objectsForKey walk the subtree in pre-order: a child,
  // everything below it, then the next child.
  std::vector<std::string> keys() const;
  std::vector<std::string> allKeys() const;
  std::vector<std::string> uniqKeys() const { return uniqArray(keys()); }
  std::vector<std::string> uniqAllKeys() const { return uniqArray(allKeys()); }
  std::vector<std::string> leaves() const;
  std::vector<std::string> allLeaves() const;

  // Sorted ignoring ASCII case (stable, so strings equal apart from case keep
  // their order), then each string dropped when exactly equal to the last one
  // kept.
  static std::vector<std::string> uniqArray(const std::vector<std::string>& array);

  // The first node with the key: all direct children are tried before any
  // grandchild, then each child's subtree is searched the same way, in child
  // order. Nil if none.
  std::shared_ptr<TreeNode> objectForKey(const std::string& key) const;
  std::optional<std::string> leafForKey(const std::string& key) const;
  std::vector<std::shared_ptr<TreeNode>> objectsForKey(const std::string& key) const;
  std::vector<std::string> leavesForKey(const std::string& key) const;

  // Follows the path one level per key, always into the first child with
  // that key, never trying a later sibling when the rest of the path is
  // missing below it. This node for an empty path; nil when the path breaks.
  std::shared_ptr<TreeNode> objectForKeys(const std::vector<std::string>& keys);
  std::shared_ptr<const TreeNode> objectForKeys(const std::vector<std::string>& keys) const;
  std::optional<std::string> leafForKeys(const std::vector<std::string>& keys) const;

  // Appends one line per node of the subtree, in pre-order, starting at
  // depth `indent`: "--" per level above zero, then "[%2d] Key: <key> ",
  // then "(<value trimmed of white space>)" when there is a value, then a
  // line break. A nil key prints as "(null)".
  void dumpAtIndent(int indent, std::string& into) const;
  std::string dump() const;
  // The same lines written to `out` as they are made, a piece at a time:
  // memory stays flat however long the dump (a deep tree's grows with the
  // square of its depth). Stops once `out` fails.
  void dumpAtIndent(int indent, std::ostream& out) const;

  // Key -> value of the direct children that have a value; later children
  // win over earlier ones with the same key.
  std::map<std::string, std::string> dictionaryForChildren() const;

  // Breaks every link of the subtree: each node, children first, removes
  // itself from its parent's list and forgets its parent. Nodes that nobody
  // else holds are freed. Lists that were nil stay nil.
  void teardown();

 private:
  // The dump's walk: lines go to `into`; `flush` is offered it whenever it
  // holds a piece and may empty it, or return false to stop the walk.
  void dumpWalk(int indent, std::string& into,
                const std::function<bool(std::string&)>& flush) const;

  const Children& list() const;
  // The link to the first child with the key, or null.
  const std::shared_ptr<TreeNode>* firstChild(const std::string& key) const;

  std::weak_ptr<TreeNode> parent_;
  std::optional<Children> children_;
  std::optional<std::string> key_;
  std::optional<std::string> leafvalue_;
  bool tearingDown_ = false;
};
