#include "platform/foundation/ContainerBodies.h"

#include <algorithm>

#include "platform/foundation/StringBody.h"

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
    const std::span<const Entry> mine = a.entries();
    const std::span<const Entry> theirs = b.entries();
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
  if (a.isString() && b.isString()) {
    return static_cast<const StringBody&>(*a.body()).hasTextOf(
        static_cast<const StringBody&>(*b.body()));
  }
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

namespace {

size_t hashOfAddress(const Value& value) {
  return reinterpret_cast<uintptr_t>(value.body().get()) * 0x9E3779B97F4A7C15U;
}

/// A hash that is the same for what areSameKey() takes for one key: containers that have to be the
/// very same one are told apart by their address.
size_t hashOfKey(const Value& key) {
  if (key.isDictionary()) return hashOfAddress(key);
  if (!key.isArray()) return key.hash();
  const Array array = key.array();
  size_t hash = array.count();
  for (const Value& each : array) {
    hash = hash * 31 + (isContainer(each) ? hashOfAddress(each) : each.hash());
  }
  return hash;
}

/// Whether comparing two keys may take long, and equal hashes do not say that they are equal.
bool isCompound(const Value& key) {
  switch (key.kind()) {
    case Kind::record:
    case Kind::font:
    case Kind::color:
    case Kind::paragraphStyle:
    case Kind::attributedString:
    case Kind::array:
      return true;
    default:
      return false;
  }
}

}  // namespace

bool DictionaryBody::isEqual(const ValueBody& other) const { return equalContainers(*this, other); }
size_t DictionaryBody::hash() const { return keyCount() * 31 + 2; }

Ref<DictionaryBody> DictionaryBody::make(size_t room) {
  const bool isApart = room > kSearched;
  const size_t own = isApart ? 0 : room;
  Ref<DictionaryBody> made(new (own * sizeof(Entry)) DictionaryBody(own));
  if (isApart) {
    made->rare().many = std::make_unique<Many>();
    made->many()->entries.reserve(room);
  }
  return made;
}

Ref<DictionaryBody> DictionaryBody::remake(DictionaryBody& body, size_t more) {
  constexpr size_t kUsual = 4;
  const std::span<const Entry> entries = body.entries();
  const size_t needed = entries.size() + more;
  const size_t room = needed <= kUsual ? kUsual : std::max(needed, kSearched);
  Ref<DictionaryBody> made = make(room);
  if (body.archivedClass()) made->setArchivedClass(body.archivedClass());
  for (Entry& entry : body.slots()) made->add(body.isShared() ? entry : std::move(entry));
  return made;
}

DictionaryBody::~DictionaryBody() { std::destroy_n(own(), count_); }

DictionaryBody::Rare& DictionaryBody::rare() {
  if (!rare_) rare_ = std::make_unique<Rare>();
  return *rare_;
}

const ClassRef& DictionaryBody::archivedClass() const {
  static const ClassRef none;
  return rare_ ? rare_->archivedClass : none;
}

void DictionaryBody::setArchivedClass(ClassRef archivedClass) {
  if (rare_ || archivedClass) rare().archivedClass = std::move(archivedClass);
}

void DictionaryBody::setOrigin(Ref<const Origin> origin) {
  if (rare_ || origin) rare().origin = std::move(origin);
}

size_t DictionaryBody::count() const {
  const Many* const apart = many();
  if (!apart) return count_;
  return apart->entries.size() - (apart->index ? apart->index->holes.size() : 0);
}

std::span<const Entry> DictionaryBody::entries() const {
  const Many* const apart = many();
  if (apart && apart->index && !apart->index->holes.empty()) closeHoles();
  return slots();
}

DictionaryBody::Index& DictionaryBody::index() const {
  Many& apart = *many();
  if (!apart.index) {
    const std::vector<Entry>& entries = apart.entries;
    auto index = std::make_unique<Index>();
    index->positions.reserve(entries.size());
    for (size_t i = 0; i < entries.size(); ++i) {
      const Value& key = entries[i].first;
      const size_t hash = hashOfKey(key);
      const bool isFirst = indexedPosition(entries, *index, key, hash) == entries.size();
      if (isFirst) index->add(key, hash, i);
    }
    apart.index = std::move(index);
  }
  return *apart.index;
}

size_t DictionaryBody::indexedPosition(std::span<const Entry> entries, const Index& index,
                                       const Value& key, size_t hash) {
  const auto [from, to] = index.positions.equal_range(hash);
  for (auto at = from; at != to; ++at) {
    if (areSameKey(entries[at->second].first, key)) return at->second;
  }
  if (!isCompound(key)) return entries.size();
  const auto [first, last] = index.positions.equal_range(hashOfAddress(key));
  for (auto at = first; at != last; ++at) {
    if (entries[at->second].first.body() == key.body()) return at->second;
  }
  return entries.size();
}

void DictionaryBody::Index::add(const Value& key, size_t hash, size_t position) {
  const bool isOneOfMany = isCompound(key) && positions.count(hash) >= kMostAlike;
  positions.emplace(isOneOfMany ? hashOfAddress(key) : hash, position);
}

void DictionaryBody::Index::remove(const Value& key, size_t position) {
  for (const size_t hash : {hashOfKey(key), hashOfAddress(key)}) {
    const auto [from, to] = positions.equal_range(hash);
    const auto at =
        std::find_if(from, to, [&](const auto& each) { return each.second == position; });
    if (at == to) continue;
    positions.erase(at);
    return;
  }
}

size_t DictionaryBody::position(const Value& key) const {
  const std::span<const Entry> entries = slots();
  if (isLong()) return indexedPosition(entries, index(), key, hashOfKey(key));
  size_t at = 0;
  while (at < entries.size() && !areSameKey(entries[at].first, key)) ++at;
  return at;
}

const Value* DictionaryBody::find(const Value& key) const {
  const size_t at = position(key);
  return at < slots().size() ? &slots()[at].second : nullptr;
}

size_t DictionaryBody::keyCount() const {
  if (isLong()) return index().positions.size();
  if (keyCount_ == kNotCounted) {
    const std::span<const Entry> entries = slots();
    size_t keys = 0;
    for (size_t i = 0; i < entries.size(); ++i) keys += position(entries[i].first) == i ? 1 : 0;
    keyCount_ = static_cast<uint8_t>(keys);
  }
  return keyCount_;
}

void DictionaryBody::add(Entry entry) {
  keyCount_ = kNotCounted;
  if (Many* const apart = many()) {
    if (apart->index) {
      apart->index->add(entry.first, hashOfKey(entry.first), apart->entries.size());
    }
    apart->entries.push_back(std::move(entry));
  } else {
    new (own() + count_) Entry(std::move(entry));
    ++count_;
  }
}

void DictionaryBody::replace(const Value& key, Value value) {
  slots()[position(key)].second = std::move(value);
}

void DictionaryBody::remove(const Value& key) {
  if (isLong() && keyCount() != count()) dropRepeatedKeys();
  keyCount_ = kNotCounted;
  if (!isLong()) {
    const auto isRemoved = [&key](const Entry& entry) { return areSameKey(entry.first, key); };
    if (Many* const apart = many()) {
      std::erase_if(apart->entries, isRemoved);
    } else {
      Entry* const end = std::remove_if(own(), own() + count_, isRemoved);
      std::destroy(end, own() + count_);
      count_ = static_cast<uint8_t>(end - own());
    }
    return;
  }
  const size_t at = position(key);
  const std::span<Entry> entries = slots();
  if (at == entries.size()) return;
  Index& index = this->index();
  index.remove(entries[at].first, at);
  index.holes.push_back(at);
  entries[at] = {};
  if (index.holes.size() > entries.size() / 2) closeHoles();
}

void DictionaryBody::removeAll() {
  keyCount_ = kNotCounted;
  std::destroy_n(own(), std::exchange(count_, uint8_t{0}));
  if (many()) *many() = {};
}

void DictionaryBody::closeHoles() const {
  Many& apart = *many();
  std::vector<Entry>& entries = apart.entries;
  std::vector<size_t>& holes = apart.index->holes;
  std::sort(holes.begin(), holes.end());
  auto hole = holes.begin();
  size_t end = 0;
  for (size_t i = 0; i < entries.size(); ++i) {
    if (hole != holes.end() && *hole == i) {
      ++hole;
    } else {
      if (end != i) entries[end] = std::move(entries[i]);
      ++end;
    }
  }
  entries.resize(end);
  apart.index.reset();
}

/// Leaves the entries of a long one that look-ups find.
void DictionaryBody::dropRepeatedKeys() {
  Many& apart = *many();
  std::vector<Entry> firsts;
  for (size_t i = 0; i < apart.entries.size(); ++i) {
    if (position(apart.entries[i].first) == i) firsts.push_back(apart.entries[i]);
  }
  apart.entries = std::move(firsts);
  apart.index.reset();
  keyCount_ = kNotCounted;
}

}  // namespace ns
