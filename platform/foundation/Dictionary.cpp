#include "platform/foundation/Dictionary.h"

#include "platform/foundation/ContainerBodies.h"

namespace ns {

namespace {

/// A handle without a body is empty.  The body that stands for it is only read, never counted.
const DictionaryBody& bodyOf(const Ref<const ValueBody>& body) {
  static const DictionaryBody* const empty = new DictionaryBody();
  return body ? static_cast<const DictionaryBody&>(*body) : *empty;
}

/// The body for changes: its own, without the origin that it no longer matches.
DictionaryBody& editable(Ref<const ValueBody>& body) {
  if (!body) {
    body = Ref<const ValueBody>(new DictionaryBody());
  } else if (body->isShared()) {
    auto* copy = new DictionaryBody();
    Ref<const ValueBody> holder(copy);
    copy->assign(bodyOf(body).entries());
    copy->archivedClass = bodyOf(body).archivedClass;
    body = std::move(holder);
  }
  // bodies are made as mutable objects; handles only see them as constants
  auto& mine = const_cast<DictionaryBody&>(bodyOf(body));
  if (mine.origin) mine.origin = {};
  return mine;
}

}  // namespace

Dictionary::Dictionary() = default;
Dictionary::Dictionary(std::initializer_list<Entry> entries)
    : Dictionary(std::vector<Entry>(entries)) {}
Dictionary::Dictionary(std::vector<Entry> entries) : Dictionary() {
  editable(body_).assign(std::move(entries));
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

size_t Dictionary::count() const { return bodyOf(body_).count(); }

const std::vector<Dictionary::Entry>& Dictionary::entries() const {
  return bodyOf(body_).entries();
}

Value Dictionary::objectForKey(const Value& key) const {
  const Value* const value = bodyOf(body_).find(key);
  return value != nullptr ? *value : Value();
}

Value Dictionary::objectForKey(std::string_view utf8Key) const {
  constexpr size_t kSearched = 8;  // few enough to do without making a string
  if (count() > kSearched) return objectForKey(Value(String(utf8Key)));
  for (const Entry& entry : entries()) {
    if (entry.first.isString() && entry.first.string() == utf8Key) return entry.second;
  }
  return {};
}

bool Dictionary::contains(const Value& key) const { return bodyOf(body_).find(key) != nullptr; }

void Dictionary::setObjectForKey(Value value, const Value& key) {
  if (value.isNone()) return removeObjectForKey(key);
  // What is there already is not stored again: the memory that it lies in stays as it is.
  const Value* const present = body_ ? bodyOf(body_).find(key) : nullptr;
  if (present != nullptr && present->body() == value.body()) return;
  editable(body_).set(key, std::move(value));
}

void Dictionary::removeObjectForKey(const Value& key) {
  if (!contains(key)) return;
  editable(body_).remove(Value(key));  // a copy: the key may be the entry's own
}

void Dictionary::removeAll() { editable(body_).assign({}); }

const ClassRef& Dictionary::archivedClass() const { return bodyOf(body_).archivedClass; }
void Dictionary::setArchivedClass(ClassRef archivedClass) {
  editable(body_).archivedClass = std::move(archivedClass);
}

bool Dictionary::operator==(const Dictionary& other) const {
  return body_ == other.body_ || bodyOf(body_).isEqual(bodyOf(other.body_));
}

}  // namespace ns
