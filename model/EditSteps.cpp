#include "model/EditSteps.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <string>
#include <unordered_set>

#include "model/OLNode.h"
#include "platform/foundation/Log.h"

namespace tavlin {
namespace {

/// Where an entry is now: at its place, or wherever an observer has moved it to.
size_t placeNow(const OLNodeList& list, const EditSteps::Entry& entry) {
  if (entry.place < list.size() && list[entry.place] == entry.item) return entry.place;
  const auto last = std::find(list.rbegin(), list.rend(), entry.item);
  return last == list.rend() ? EditSteps::kNoPlace : static_cast<size_t>(list.rend() - last) - 1;
}

void erase(OLNodeList& list, std::vector<size_t> places) {
  std::ranges::sort(places);
  OLNodeList kept;
  kept.reserve(list.size());
  auto next = places.begin();
  for (size_t i = 0; i < list.size(); ++i) {
    bool isErased = false;
    for (; next != places.end() && *next == i; ++next) isErased = true;
    if (!isErased) kept.push_back(std::move(list[i]));
  }
  list.swap(kept);
}

void insert(OLNodeList& list, const std::vector<EditSteps::Entry>& entries) {
  OLNodeList merged;
  merged.reserve(list.size() + entries.size());
  auto other = list.begin();
  for (const EditSteps::Entry& entry : entries) {
    while (merged.size() < entry.place && other != list.end()) {
      merged.push_back(std::move(*other++));
    }
    merged.push_back(entry.item);
  }
  merged.insert(merged.end(), std::move_iterator(other), std::move_iterator(list.end()));
  list.swap(merged);
}

}  // namespace

void EditSteps::noteInsertion(const std::shared_ptr<OLNode>& parent, std::vector<Entry> entries) {
  Insertion step{parent, std::move(entries), {}};
  step.formerParents.reserve(step.entries.size());
  for (const Entry& entry : step.entries) {
    step.formerParents.push_back(entry.item ? entry.item->parent() : nullptr);
  }
  steps_.emplace_back(std::move(step));
}

void EditSteps::noteRemoval(const std::shared_ptr<OLNode>& parent, std::vector<Entry> entries) {
  if (entries.empty()) return;
  const bool isLinkKept = entries.front().item->parent() == parent;
  steps_.emplace_back(Removal{parent, std::move(entries), isLinkKept});
}

void EditSteps::noteFlags(const std::shared_ptr<OLNode>& item) {
  steps_.emplace_back(Flags{item, item->isExpanded_, item->isOutlineStyle_});
}

void EditSteps::noteValue(const std::shared_ptr<OLNode>& item, const ns::Value& key) {
  const ns::Dictionary* data = item->loadedData();
  steps_.emplace_back(
      Value{item, key, data ? data->objectForKey(key) : ns::Value(), data != nullptr});
}

bool EditSteps::Insertion::takeBack() const {
  std::vector<size_t> places;
  for (size_t i = 0; i < entries.size(); ++i) {
    const auto& item = entries[i].item;
    if (!item || !item->isLinkedTo(parent)) continue;
    const size_t place = placeNow(parent->children(), entries[i]);
    if (place != kNoPlace) places.push_back(place);
  }
  if (places.empty()) return false;
  for (size_t i = 0; i < entries.size(); ++i) {
    const auto& item = entries[i].item;
    if (item && item->isLinkedTo(parent)) item->parent_ = formerParents[i];
  }
  erase(parent->editChildren(), std::move(places));
  return true;
}

bool EditSteps::Removal::takeBack() const {
  const std::shared_ptr<OLNode> linked = isLinkKept ? parent : nullptr;
  std::vector<Entry> listed;
  OLNodeList unlisted;
  for (const Entry& entry : entries) {
    if (entry.item->parent() != linked) continue;
    if (entry.place == kNoPlace) {
      unlisted.push_back(entry.item);
    } else {
      listed.push_back(entry);
    }
  }
  for (const auto& item : unlisted) item->parent_ = parent;
  for (const Entry& entry : listed) entry.item->parent_ = parent;
  if (listed.empty()) return false;
  insert(parent->editChildren(), listed);
  return true;
}

void EditSteps::Flags::takeBack() const {
  item->isExpanded_ = isExpanded;
  item->isOutlineStyle_ = isOutlineStyle;
}

void EditSteps::Value::takeBack() const {
  item->setDataForKey(former, key);
  if (!hadData && item->editData().empty()) item->setData(std::nullopt);
}

OLNodeList EditSteps::takeBack(size_t start) {
  OLNodeList changed;
  OLNodeList relisted;
  std::unordered_set<const OLNode*> known;
  std::unordered_set<const OLNode*> knownRelisted;
  while (steps_.size() > start) {
    const Step step = std::move(steps_.back());
    steps_.pop_back();
    std::visit(
        [&](const auto& one) {
          if constexpr (requires { one.parent; }) {
            if (one.takeBack() && knownRelisted.insert(one.parent.get()).second) {
              relisted.push_back(one.parent);
            }
          } else {
            one.takeBack();
            if (known.insert(one.item.get()).second) changed.push_back(one.item);
          }
        },
        step);
  }
  for (const auto& node : relisted) {
    try {
      node->postDidChangeChildrenCount();
    } catch (const std::exception& exception) {
      ns::log(std::string("an observer failed while an edit was taken back: ") + exception.what());
    } catch (...) {
      ns::log("an observer failed while an edit was taken back");
    }
  }
  std::ranges::copy_if(relisted, std::back_inserter(changed),
                       [&](const auto& node) { return known.insert(node.get()).second; });
  return changed;
}

}  // namespace tavlin
