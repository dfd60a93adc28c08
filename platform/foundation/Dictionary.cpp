#include "platform/foundation/Dictionary.h"

#include "platform/foundation/ContainerBodies.h"

namespace ns {

namespace {

/// A handle without a body is empty.  The body that stands for it is only read, never counted.
const DictionaryBody& bodyOf(const Ref<const ValueBody>& body) {
  static const Ref<DictionaryBody>& empty = *new Ref<DictionaryBody>(DictionaryBody::make());
  return body ? static_cast<const DictionaryBody&>(*body) : *empty;
}

/// The body for changes: its own, with room for so many more entries, with what is left of
/// its origin.
DictionaryBody& editable(Ref<const ValueBody>& body, size_t more = 0) {
  // bodies are made as mutable objects; handles only see them as constants
  auto& old = const_cast<DictionaryBody&>(bodyOf(body));
  Ref<const Origin> origin = old.origin() ? old.origin()->afterEdit() : Ref<const Origin>();
  if (!body || body->isShared() || !old.hasRoomFor(more)) {
    const Ref<DictionaryBody> made = DictionaryBody::remake(old, more);
    made->setOrigin(std::move(origin));
    body = made;
    return *made;
  }
  old.setOrigin(std::move(origin));
  return old;
}

template <class Entries>
Ref<DictionaryBody> bodyWith(Entries entries) {
  Ref<DictionaryBody> made = DictionaryBody::make(entries.size());
  for (auto& entry : entries) made->add(std::move(entry));
  return made;
}

}  // namespace

Dictionary::Dictionary() = default;
Dictionary::Dictionary(std::initializer_list<Entry> entries) : Dictionary(bodyWith(entries)) {}
Dictionary::Dictionary(std::vector<Entry> entries) : Dictionary(bodyWith(std::move(entries))) {}

Dictionary DictionaryAccess::make(std::vector<Dictionary::Entry> entries, ClassRef archivedClass,
                                  Ref<const Origin> origin) {
  const Ref<DictionaryBody> body = bodyWith(std::move(entries));
  body->setArchivedClass(std::move(archivedClass));
  body->setOrigin(std::move(origin));
  return Dictionary(body);
}

Dictionary DictionaryAccess::make(std::span<const Dictionary::Entry> entries,
                                  ClassRef archivedClass, Ref<const Origin> origin) {
  return make(std::vector(entries.begin(), entries.end()), std::move(archivedClass),
              std::move(origin));
}

const Origin* DictionaryAccess::origin(const Dictionary& dictionary) {
  return bodyOf(dictionary.body_).origin();
}

size_t Dictionary::count() const { return bodyOf(body_).count(); }

std::span<const Dictionary::Entry> Dictionary::entries() const { return bodyOf(body_).entries(); }

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
  const Value* const present = bodyOf(body_).find(key);
  if (present == nullptr) {
    Entry entry(key, std::move(value));  // now, since the key may be a value of this very map
    editable(body_, 1).add(std::move(entry));
  } else if (present->body() != value.body()) {
    // What is there already is not stored again: the memory that it lies in stays as it is.
    editable(body_).replace(key, std::move(value));
  }
}

void Dictionary::removeObjectForKey(const Value& key) {
  if (!contains(key)) return;
  const Value copy = key;  // the key may be the entry's own
  editable(body_).remove(copy);
}

void Dictionary::removeAll() { editable(body_).removeAll(); }

const ClassRef& Dictionary::archivedClass() const { return bodyOf(body_).archivedClass(); }
void Dictionary::setArchivedClass(ClassRef archivedClass) {
  editable(body_).setArchivedClass(std::move(archivedClass));
}

bool Dictionary::operator==(const Dictionary& other) const {
  return body_ == other.body_ || bodyOf(body_).isEqual(bodyOf(other.body_));
}

}  // namespace ns
