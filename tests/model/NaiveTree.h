#pragma once

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace tavlin::testing {

/// The editing contract of the tree controller over plain numbers, written down without any
/// thought for speed.  Node 0 is the root, -1 is none.
class NaiveTree {
 public:
  struct Node {
    int parent = -1;
    std::vector<int> children;
    int64_t cache = 0;
    bool flag = false;
    bool operator==(const Node&) const = default;
  };

  std::vector<Node> nodes{1};
  std::vector<int> posts;  ///< the senders, in order

  int makeNode() {
    nodes.emplace_back();
    return static_cast<int>(nodes.size()) - 1;
  }
  Node& at(int id) { return nodes[static_cast<size_t>(id)]; }
  [[nodiscard]] const Node& at(int id) const { return nodes[static_cast<size_t>(id)]; }
  [[nodiscard]] int parentOf(int id) const { return id < 0 ? -1 : at(id).parent; }

  /// The child at an index, or none.
  [[nodiscard]] int childAt(int parent, uint64_t index) const {
    const auto& list = at(parent).children;
    return index < list.size() ? list[index] : -1;
  }

  int64_t indexOf(int parent, int child) {
    if (parent < 0) return 0;
    Node& node = at(parent);
    if (child < 0) return -1;
    for (const int64_t step : {0, 1, -1}) {
      if (childAt(parent, static_cast<uint64_t>(node.cache + step)) == child) {
        return node.cache += step;
      }
    }
    const auto found = std::ranges::find(node.children, child);
    if (found == node.children.end()) return -1;
    return node.cache = found - node.children.begin();
  }

  void insert(int parent, int child, uint64_t index) {
    auto& list = at(parent).children;
    list.insert(list.begin() + static_cast<ptrdiff_t>(std::min<uint64_t>(index, list.size())),
                child);
    at(child).parent = parent;
    posts.push_back(parent);
  }

  void remove(int parent, int child) {
    std::erase(at(parent).children, child);
    posts.push_back(parent);
  }

  void deleteItem(int item) {
    if (item <= 0 || at(item).parent < 0) return;
    const int parent = at(item).parent;
    at(item).parent = -1;
    remove(parent, item);
  }

  /// False, with everything as it was, when an index is out of range in the end.  What was deleted
  /// until then is posted, and posted again once for each parent when it has come back, the one
  /// that was posted last first.
  bool moveAll(const std::vector<int>& items, int parent, const std::vector<uint64_t>& indexes) {
    const std::vector<Node> before = nodes;
    std::vector<int> changed;  // a deletion of what is not listed posts and changes nothing
    for (const int item : items) {
      const int owner = parentOf(item);
      if (owner >= 0 && std::ranges::count(at(owner).children, item) > 0) changed.push_back(owner);
      deleteItem(item);
    }
    auto list = at(parent).children;
    for (size_t i = 0; i < items.size(); ++i) {
      if (indexes[i] > list.size()) {
        nodes = before;
        std::set<int> posted;
        for (auto node = changed.rbegin(); node != changed.rend(); ++node) {
          if (posted.insert(*node).second) posts.push_back(*node);
        }
        return false;
      }
      list.insert(list.begin() + static_cast<ptrdiff_t>(indexes[i]), items[i]);
    }
    at(parent).children = list;
    for (const int item : items) at(item).parent = parent;
    posts.push_back(parent);
    return true;
  }

  void indent(int item) {
    if (item < 0) return;
    const int parent = at(item).parent;
    const int64_t index = indexOf(parent, item);
    if (index == 0) return;
    const int previous = childAt(parent, static_cast<uint64_t>(index - 1));
    const int former = at(item).parent;
    at(item).parent = -1;
    remove(former, item);
    if (previous >= 0) insert(previous, item, at(previous).children.size());
  }

  /// False when the item has no parent.
  bool outdent(int item) {
    if (item < 0) return true;
    const int parent = at(item).parent;
    if (parent < 0) return false;
    if (parent == 0) return true;
    remove(parent, item);
    const int grandparent = at(parent).parent;
    if (grandparent >= 0) {
      insert(grandparent, item, static_cast<uint64_t>(indexOf(grandparent, parent) + 1));
    }
    return true;
  }

  [[nodiscard]] bool hasCircle() const {
    std::set<int> done;
    for (int id = 0; id < static_cast<int>(nodes.size()); ++id) {
      std::set<int> path;
      if (meetsItself(id, path, done)) return true;
    }
    return false;
  }

 private:
  bool meetsItself(int id, std::set<int>& path, std::set<int>& done) const {
    if (done.contains(id)) return false;
    if (!path.insert(id).second) return true;
    for (const int child : at(id).children) {
      if (meetsItself(child, path, done)) return true;
    }
    path.erase(id);
    done.insert(id);
    return false;
  }
};

}  // namespace tavlin::testing
