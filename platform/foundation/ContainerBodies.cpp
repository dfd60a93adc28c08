#include "platform/foundation/ContainerBodies.h"

#include <algorithm>

namespace ns {

namespace {

using Entry = DictionaryBody::Entry;

bool isContainer(const Value& value) { return value.isArray() || value.isDictionary(); }

/// A hash that is cheap and the same for equal values, whatever is inside.
size_t shallowHash(const Value& value) {
  return value.isNumber() || value.isString() ? value.hash() : static_cast<size_t>(value.kind());
}

/// Sets of things taken to be equal.  Two that are in one set need no further look: where the
/// comparison ends well, everything in a set is equal; where it does not, nothing matters.
class EqualSets {
 public:
  /// Puts two into one set; false when they were already.
  bool unite(const ValueBody* a, const ValueBody* b) {
    a = representative(a);
    b = representative(b);
    if (a == b) return false;
    parents_[a] = b;
    return true;
  }

 private:
  const ValueBody* representative(const ValueBody* body) {
    for (;;) {
      const auto at = parents_.find(body);
      if (at == parents_.end()) return body;
      // Shorten the way for the next one.
      const auto next = parents_.find(at->second);
      if (next == parents_.end()) return at->second;
      at->second = next->second;
      body = next->second;
    }
  }

  std::unordered_map<const ValueBody*, const ValueBody*> parents_;
};

class Comparison {
 public:
  bool areEqual(const ValueBody& a, const ValueBody& b) {
    pending_.emplace_back(&a, &b);
    while (!pending_.empty()) {
      const auto [left, right] = pending_.back();
      pending_.pop_back();
      const bool mayBeEqual =
          left->kind() == Kind::array
              ? compare(static_cast<const ArrayBody&>(*left), static_cast<const ArrayBody&>(*right))
              : compare(static_cast<const DictionaryBody&>(*left),
                        static_cast<const DictionaryBody&>(*right));
      if (!mayBeEqual) return false;
    }
    return true;
  }

 private:
  /// False when two values differ; containers wait for their turn.
  bool compare(const Value& a, const Value& b) {
    if (a.body() == b.body()) return true;
    const bool isShort =
        a.kind() != b.kind() || a.isNumber() || (a.isString() && a.string().length() < kLong);
    if (isShort) return a == b;
    if (!sets_.unite(a.body().get(), b.body().get())) return true;
    if (!isContainer(a)) return a == b;
    pending_.emplace_back(a.body().get(), b.body().get());
    return true;
  }

  bool compare(const ArrayBody& a, const ArrayBody& b) {
    if (a.values.size() != b.values.size()) return false;
    for (size_t i = 0; i < a.values.size(); ++i) {
      if (!compare(a.values[i], b.values[i])) return false;
    }
    return true;
  }

  bool compare(const DictionaryBody& a, const DictionaryBody& b) {
    if (a.keyCount() != b.keyCount()) return false;
    const bool hasRepeatedKeys = a.keyCount() != a.count() || b.keyCount() != b.count();
    const std::vector<Entry>& mine = a.entries();
    const std::vector<Entry>& theirs = b.entries();
    for (size_t i = 0; i < mine.size(); ++i) {
      const auto& [key, value] = mine[i];
      const Value* other = nullptr;
      if (hasRepeatedKeys) {
        if (a.find(key) != &value) continue;  // an earlier entry has the key
        other = b.find(key);
      } else {
        // Usually both have their keys in the same order.
        const bool isInPlace = i < theirs.size() && areSameKey(theirs[i].first, key);
        other = isInPlace ? &theirs[i].second : b.find(key);
      }
      if (other == nullptr || !compare(value, *other)) return false;
    }
    return true;
  }

  // Text shorter than this is compared again rather than remembered.
  static constexpr size_t kLong = 256;

  std::vector<std::pair<const ValueBody*, const ValueBody*>> pending_;
  EqualSets sets_;
};

}  // namespace

bool equalContainers(const ValueBody& a, const ValueBody& b) { return Comparison().areEqual(a, b); }

bool areSameKey(const Value& a, const Value& b) {
  if (a.body() == b.body()) return true;
  if (!isContainer(a) || !isContainer(b)) return a == b;
  if (!a.isArray() || !b.isArray()) return false;
  const auto isSame = [](const Value& x, const Value& y) {
    return x.body() == y.body() || (!isContainer(x) && x == y);
  };
  const Array first = a.array();
  const Array second = b.array();
  return std::equal(first.begin(), first.end(), second.begin(), second.end(), isSame);
}

bool ArrayBody::isEqual(const ValueBody& other) const { return equalContainers(*this, other); }

size_t ArrayBody::hash() const {
  constexpr size_t kEnough = 16;
  size_t hash = values.size();
  for (size_t i = 0; i < std::min(values.size(), kEnough); ++i) {
    hash = hash * 31 + shallowHash(values[i]);
  }
  return hash;
}

bool DictionaryBody::isEqual(const ValueBody& other) const { return equalContainers(*this, other); }
size_t DictionaryBody::hash() const { return keyCount() * 31 + 2; }

bool DictionaryBody::isLong() const {
  constexpr size_t kSearched = 8;
  return entries_.size() > kSearched;
}

void DictionaryBody::makeIndex() const {
  auto index = std::make_unique<Index>();
  index->positions.reserve(entries_.size());
  for (size_t i = 0; i < entries_.size(); ++i) {
    const Value& key = entries_[i].first;
    const size_t hash = key.hash();
    const bool isFirst = indexedPosition(*index, key, hash) == entries_.size();
    if (isFirst) index->positions.emplace(hash, i);
  }
  index_ = std::move(index);
}

size_t DictionaryBody::indexedPosition(const Index& index, const Value& key, size_t hash) const {
  const auto [from, to] = index.positions.equal_range(hash);
  for (auto at = from; at != to; ++at) {
    if (areSameKey(entries_[at->second].first, key)) return at->second;
  }
  return entries_.size();
}

size_t DictionaryBody::position(const Value& key) const {
  if (!isLong()) {
    const auto at = std::find_if(entries_.begin(), entries_.end(), [&key](const Entry& entry) {
      return areSameKey(entry.first, key);
    });
    return static_cast<size_t>(at - entries_.begin());
  }
  if (!index_) makeIndex();
  return indexedPosition(*index_, key, key.hash());
}

const Value* DictionaryBody::find(const Value& key) const {
  const size_t at = position(key);
  return at < entries_.size() ? &entries_[at].second : nullptr;
}

size_t DictionaryBody::keyCount() const {
  if (entries_.empty()) return 0;
  if (isLong()) {
    if (!index_) makeIndex();
    return index_->positions.size();
  }
  if (keyCount_ == kNotCounted) {
    size_t keys = 0;
    for (size_t i = 0; i < entries_.size(); ++i) keys += position(entries_[i].first) == i ? 1 : 0;
    keyCount_ = static_cast<uint8_t>(keys);
  }
  return keyCount_;
}

void DictionaryBody::assign(std::vector<Entry> entries) {
  entries_ = std::move(entries);
  index_.reset();
  keyCount_ = kNotCounted;
}

void DictionaryBody::set(const Value& key, Value value) {
  const size_t at = position(key);
  if (at < entries_.size()) {
    entries_[at].second = std::move(value);
    return;
  }
  keyCount_ = kNotCounted;
  entries_.emplace_back(key, std::move(value));
  if (index_) index_->positions.emplace(entries_.back().first.hash(), entries_.size() - 1);
}

void DictionaryBody::remove(const Value& key) {
  if (isLong() && keyCount() != count()) dropRepeatedKeys();
  keyCount_ = kNotCounted;
  if (!isLong()) {
    std::erase_if(entries_, [&key](const Entry& entry) { return areSameKey(entry.first, key); });
    return;
  }
  const size_t at = position(key);
  if (at == entries_.size()) return;
  const auto [from, to] = index_->positions.equal_range(key.hash());
  index_->positions.erase(
      std::find_if(from, to, [at](const auto& each) { return each.second == at; }));
  index_->holes.push_back(at);
  entries_[at] = {};
  if (index_->holes.size() > entries_.size() / 2) closeHoles();
}

void DictionaryBody::closeHoles() const {
  std::vector<size_t>& holes = index_->holes;
  std::sort(holes.begin(), holes.end());
  auto hole = holes.begin();
  size_t end = 0;
  for (size_t i = 0; i < entries_.size(); ++i) {
    if (hole != holes.end() && *hole == i) {
      ++hole;
    } else {
      if (end != i) entries_[end] = std::move(entries_[i]);
      ++end;
    }
  }
  entries_.resize(end);
  index_.reset();
}

/// Leaves the entries that look-ups find.
void DictionaryBody::dropRepeatedKeys() {
  std::vector<Entry> firsts;
  for (size_t i = 0; i < entries_.size(); ++i) {
    if (position(entries_[i].first) == i) firsts.push_back(entries_[i]);
  }
  assign(std::move(firsts));
}

}  // namespace ns
