#include "platform/foundation/Dictionary.h"

#include "platform/foundation/ContainerBodies.h"

namespace ns {

namespace {

// Up to this many entries a search is as fast as an index.
constexpr size_t kSearched = 8;

const DictionaryBody& bodyOf(const Ref<const ValueBody>& body) {
  return static_cast<const DictionaryBody&>(*body);
}

/// The body for changes: its own, without the origin that it no longer matches.
DictionaryBody& editable(Ref<const ValueBody>& body) {
  if (body->isShared()) {
    auto* copy = new DictionaryBody();
    Ref<const ValueBody> holder(copy);
    copy->entries = bodyOf(body).entries;
    copy->archivedClass = bodyOf(body).archivedClass;
    body = std::move(holder);
  }
  // bodies are made as mutable objects; handles only see them as constants
  auto& mine = const_cast<DictionaryBody&>(bodyOf(body));
  mine.origin = {};
  return mine;
}

}  // namespace

size_t DictionaryBody::find(const Value& key) const {
  if (entries.size() <= kSearched) {
    for (size_t i = 0; i < entries.size(); ++i) {
      if (entries[i].first == key) return i;
    }
    return entries.size();
  }
  if (index.empty()) {
    index.reserve(entries.size());
    for (size_t i = 0; i < entries.size(); ++i) index.emplace(entries[i].first.hash(), i);
  }
  size_t first = entries.size();
  const auto [from, to] = index.equal_range(key.hash());
  for (auto it = from; it != to; ++it) {
    if (it->second < first && entries[it->second].first == key) first = it->second;
  }
  return first;
}

Dictionary::Dictionary() : body_(new DictionaryBody()) {}
Dictionary::Dictionary(std::initializer_list<Entry> entries)
    : Dictionary(std::vector<Entry>(entries)) {}
Dictionary::Dictionary(std::vector<Entry> entries) : Dictionary() {
  editable(body_).entries = std::move(entries);
}

Dictionary DictionaryAccess::make(std::vector<Dictionary::Entry> entries, ClassRef archivedClass,
                                  Ref<const Origin> origin) {
  Dictionary dictionary(std::move(entries));
  DictionaryBody& body = editable(dictionary.body_);
  body.archivedClass = std::move(archivedClass);
  body.origin = std::move(origin);
  return dictionary;
}

const Origin* DictionaryAccess::origin(const Dictionary& dictionary) {
  return bodyOf(dictionary.body_).origin.get();
}

const std::vector<Dictionary::Entry>& Dictionary::entries() const {
  return bodyOf(body_).entries;
}

Value Dictionary::objectForKey(const Value& key) const {
  const size_t at = bodyOf(body_).find(key);
  return at < count() ? entries()[at].second : Value();
}

Value Dictionary::objectForKey(std::string_view utf8Key) const {
  if (count() > kSearched) return objectForKey(Value(String(utf8Key)));
  for (const Entry& entry : entries()) {
    if (entry.first.isString() && entry.first.string() == utf8Key) return entry.second;
  }
  return {};
}

bool Dictionary::contains(const Value& key) const { return bodyOf(body_).find(key) < count(); }

void Dictionary::setObjectForKey(Value value, const Value& key) {
  if (value.isNone()) return removeObjectForKey(key);
  const size_t at = bodyOf(body_).find(key);
  DictionaryBody& body = editable(body_);
  if (at < body.entries.size()) {
    body.entries[at].second = std::move(value);
    return;
  }
  body.entries.emplace_back(key, std::move(value));
  if (!body.index.empty()) body.index.emplace(key.hash(), body.entries.size() - 1);
}

void Dictionary::removeObjectForKey(const Value& key) {
  const size_t at = bodyOf(body_).find(key);
  if (at == count()) return;
  DictionaryBody& body = editable(body_);
  body.entries.erase(body.entries.begin() + static_cast<std::ptrdiff_t>(at));
  body.index.clear();
  // a dictionary read from an archive may hold a key twice
  if (contains(key)) removeObjectForKey(key);
}

void Dictionary::removeAll() {
  DictionaryBody& body = editable(body_);
  body.entries.clear();
  body.index.clear();
}

const ClassRef& Dictionary::archivedClass() const { return bodyOf(body_).archivedClass; }
void Dictionary::setArchivedClass(ClassRef archivedClass) {
  editable(body_).archivedClass = std::move(archivedClass);
}

bool Dictionary::operator==(const Dictionary& other) const {
  return body_ == other.body_ || body_->isEqual(*other.body_);
}

}  // namespace ns
