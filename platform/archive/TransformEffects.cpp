#include "platform/archive/TransformEffects.h"

#include <algorithm>
#include <utility>

#include "platform/archive/ArchiveCheck.h"
#include "platform/archive/KeyedArchive.h"

namespace ns {

namespace {

/// Marks the arrays and dictionaries that hold what is marked, at any depth.
void markHolders(const KeyedArchive& archive, std::vector<uint32_t> pending,
                 std::vector<bool>& marked) {
  const std::vector<bool> reached = reachedNumbers(archive);
  std::vector<std::pair<uint32_t, uint32_t>> holders;  // element, container
  for (uint32_t number = 1; number < archive.objectCount(); ++number) {
    if (!reached[number]) continue;
    const KeyedArchive::Entry entry = archive.entry(number);
    if (entry.kind != KeyedArchive::EntryKind::instance) continue;
    const KeyedArchive::Record held = archive.record(number, entry.object);
    const Kind kind = held.archivedClass->kind();
    if (kind != Kind::array && kind != Kind::dictionary) continue;
    for (const uint32_t each : archive.elementNumbers(held, "NS.objects", "NS.object.")) {
      holders.emplace_back(each, number);
    }
  }
  std::ranges::sort(holders);
  while (!pending.empty()) {
    const uint32_t number = pending.back();
    pending.pop_back();
    for (auto it = std::ranges::lower_bound(holders, std::pair{number, 0U});
         it != holders.end() && it->first == number; ++it) {
      if (marked[it->second]) continue;
      marked[it->second] = true;
      pending.push_back(it->second);
    }
  }
}

}  // namespace

bool TransformEffects::changesAnything(const KeyedArchive& archive,
                                       const ValueTransform& transform) {
  return !changesOf(archive, transform).nothing;
}

bool TransformEffects::changes(const KeyedArchive& archive, const ValueTransform& transform,
                               uint32_t number) {
  const Changes& changes = changesOf(archive, transform);
  return !changes.nothing && changes.changed[number];
}

bool TransformEffects::changesText(const ValueTransform& transform,
                                   const StoredArchive::Object& text) {
  const StoredText stored = StoredArchive::textOf(text);
  if (stored.bytes.size() < kLongText) return transform.changesText(stored);
  const auto [found, isNew] = longTexts_.try_emplace({TextKey(text), &transform}, false);
  if (isNew) found->second = transform.changesText(stored);
  return found->second;
}

bool TransformEffects::mayChangeAttributedStrings(const KeyedArchive& archive,
                                                  const ValueTransform& transform) {
  const auto known = attributedStringChanges_.find(transform.attributedStringRule());
  if (known != attributedStringChanges_.end()) return known->second;
  // within a decoder fonts may appear as records that only stand for them
  if (archive.decoded().isInDecoder()) return true;
  const bool mayChange = transform.mayChangeAttributedStrings(archive);
  attributedStringChanges_.emplace(transform.attributedStringRule(), mayChange);
  return mayChange;
}

const TransformEffects::Changes& TransformEffects::changesOf(const KeyedArchive& archive,
                                                             const ValueTransform& transform) {
  const auto known = changes_.find(&transform);
  if (known != changes_.end()) return known->second;
  std::vector<uint32_t> texts = changedTexts(archive, transform);
  Changes& changes = changes_[&transform];
  changes.nothing = texts.empty();
  if (changes.nothing) return changes;
  changes.changed.assign(archive.objectCount(), false);
  for (const uint32_t number : texts) changes.changed[number] = true;
  markHolders(archive, std::move(texts), changes.changed);
  return changes;
}

std::vector<uint32_t> TransformEffects::changedTexts(const KeyedArchive& archive,
                                                     const ValueTransform& transform) {
  std::vector<uint32_t> changed;
  for (const uint32_t number : archive.findings().markedTexts) {
    const std::optional<StoredArchive::Object> text = archive.storedText(number);
    if (text && changesText(transform, *text)) changed.push_back(number);
  }
  if (!mayChangeAttributedStrings(archive, transform)) return changed;
  for (const uint32_t number : archive.findings().attributedStrings) {
    const Value before = archive.value(number);
    if (!(transform.attributedString(before).body() == before.body())) changed.push_back(number);
  }
  return changed;
}

}  // namespace ns
