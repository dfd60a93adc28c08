#include "document/ItemCircles.h"

#include <utility>
#include <vector>

#include "document/NodeArchiving.h"
#include "platform/archive/FieldReader.h"

namespace tavlin {

namespace {

enum class State : uint8_t { unmet, onPath, done };

/// A node or a list of children whose elements are being looked at.
struct Step {
  uint32_t number;
  std::vector<uint32_t> elements;
  size_t next;
};

bool isNode(const ns::KeyedArchive& archive, uint32_t number) {
  const ns::KeyedArchive::Entry entry = archive.entry(number);
  if (entry.kind != ns::KeyedArchive::EntryKind::instance) return false;
  const ns::ClassCoding* coding = archive.record(number, entry.object).archivedClass->coding;
  return coding && coding->kind == ns::Kind::object && !coding->fields.empty();
}

}  // namespace

void refuseItemCircles(const ns::KeyedArchive& archive) {
  // lists are met like nodes, so that one that many nodes share is looked at once
  std::vector<State> states(archive.objectCount());
  std::vector<Step> path;
  const auto enterNode = [&](uint32_t number) {
    states[number] = State::onPath;
    const uint32_t list = ns::FieldReader(archive, number).reference(kChildrenKey);
    path.push_back({number, {}, 0});
    if (list != 0) path.back().elements.push_back(list);
  };
  const auto enterList = [&](uint32_t number) {
    states[number] = State::onPath;
    path.push_back(
        {number, archive.elementNumbers(archive.record(number), "NS.objects", "NS.object."), 0});
  };
  for (const uint32_t object : archive.findings().objects) {
    if (states[object] != State::unmet || !isNode(archive, object)) continue;
    enterNode(object);
    bool isAtNode = true;  // what is on the path last
    while (!path.empty()) {
      Step& step = path.back();
      if (step.next == step.elements.size()) {
        states[step.number] = State::done;
        path.pop_back();
        isAtNode = !isAtNode;
        continue;
      }
      const uint32_t next = step.elements[step.next++];
      if (states[next] == State::onPath) {
        throw ns::ArchiveException("keyed archive: an item of the outline is contained in itself");
      }
      if (states[next] == State::done) continue;
      if (isAtNode) {
        enterList(next);
      } else if (isNode(archive, next)) {
        enterNode(next);
      } else {
        continue;
      }
      isAtNode = !isAtNode;
    }
  }
}

}  // namespace tavlin
