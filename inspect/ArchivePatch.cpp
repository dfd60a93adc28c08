#include "inspect/ArchivePatch.h"

#include <algorithm>

namespace tavlin {

ArchivePatch::ArchivePatch(std::shared_ptr<const ns::KeyedArchive> archive)
    : archive_(std::move(archive)) {}

ArchivePatch::Entry ArchivePatch::addCopy(uint32_t number) {
  added_.push_back({number});
  return {true, static_cast<uint32_t>(added_.size() - 1)};
}

ArchivePatch::Entry ArchivePatch::addRecord(ns::ClassRef archivedClass) {
  added_.push_back({0, std::move(archivedClass)});
  return {true, static_cast<uint32_t>(added_.size() - 1)};
}

ArchivePatch::Entry ArchivePatch::addScalar(ns::Value value) {
  added_.push_back({0, nullptr, std::move(value)});
  return {true, static_cast<uint32_t>(added_.size() - 1)};
}

void ArchivePatch::change(Entry record, const std::string& key, Change change) {
  Changes& changes = record.isNew ? added_[record.id].changes : changes_[record.id];
  const auto known = std::ranges::find(changes, key, &Changes::value_type::first);
  if (known == changes.end()) {
    changes.emplace_back(key, std::move(change));
  } else {
    known->second = std::move(change);
  }
}

void ArchivePatch::setReference(Entry record, const char* key, Entry target) {
  change(record, key, {Change::What::reference, target});
}

void ArchivePatch::setReferences(Entry record, const char* key, std::vector<Entry> targets) {
  change(record, key, {Change::What::references, {}, std::move(targets)});
}

void ArchivePatch::setScalar(Entry record, const char* key, ns::Value value) {
  change(record, key, {Change::What::scalar, {}, {}, std::move(value)});
}

void ArchivePatch::remove(Entry record, const std::string& key) {
  change(record, key, {Change::What::removal});
}

}  // namespace tavlin
