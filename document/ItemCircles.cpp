#include "document/ItemCircles.h"

#include <vector>

#include "platform/foundation/Exception.h"

namespace tavlin {

namespace {

// Marks kept in the index caches while the walk lasts.
constexpr int64_t kUnmet = 0;
constexpr int64_t kOnPath = -1;
constexpr int64_t kDone = -2;

struct Step {
  OLNode* node;
  size_t next;
};

}  // namespace

void refuseItemCircles(const std::shared_ptr<OLNode>& root) {
  if (!root) return;
  std::vector<OLNode*> met;
  std::vector<Step> path;
  bool isCircle = false;
  const auto enter = [&](OLNode* node) {
    met.push_back(node);
    if (node->countChildren() == 0) {
      node->setCacheIndexOfChild(kDone);
    } else {
      node->setCacheIndexOfChild(kOnPath);
      path.push_back({node, 0});
    }
  };
  enter(root.get());
  while (!path.empty() && !isCircle) {
    Step& step = path.back();
    const OLNodeList& children = step.node->children();
    if (step.next == children.size()) {
      step.node->setCacheIndexOfChild(kDone);
      path.pop_back();
      continue;
    }
    OLNode* child = children[step.next++].get();
    const int64_t mark = child->cacheIndexOfChild();
    if (mark == kUnmet) enter(child);
    isCircle = mark == kOnPath;
  }
  for (OLNode* node : met) node->setCacheIndexOfChild(kUnmet);
  if (!isCircle) return;
  std::vector<std::shared_ptr<ns::Object>> kept;
  kept.reserve(met.size());
  for (OLNode* node : met) kept.push_back(node->shared_from_this());
  for (OLNode* node : met) node->setChildren(std::nullopt);
  throw ns::ArchiveException("keyed archive: an item of the outline is contained in itself");
}

}  // namespace tavlin
