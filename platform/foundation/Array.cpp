#include "platform/foundation/Array.h"

#include <algorithm>

#include "platform/foundation/ContainerBodies.h"
#include "platform/foundation/Exception.h"

namespace ns {

namespace {

/// A handle without a body is empty.  The body that stands for it is only read, never counted.
const ArrayBody& bodyOf(const Ref<const ValueBody>& body) {
  static const ArrayBody* const empty = new ArrayBody();
  return body ? static_cast<const ArrayBody&>(*body) : *empty;
}

void checkIndex(size_t index, size_t limit, size_t count) {
  if (index < limit) return;
  throw RangeException("index " + std::to_string(index) + " in an array of " +
                       std::to_string(count) + " elements");
}

/// The body for changes: its own, with what is left of its origin.
ArrayBody& editable(Ref<const ValueBody>& body) {
  const Origin* const old = body ? bodyOf(body).origin.get() : nullptr;
  Ref<const Origin> origin = old ? old->afterEdit() : Ref<const Origin>();
  if (!body) {
    body = Ref<const ValueBody>(new ArrayBody());
  } else if (body->isShared()) {
    auto* copy = new ArrayBody();
    Ref<const ValueBody> holder(copy);
    copy->values = bodyOf(body).values;
    copy->archivedClass = bodyOf(body).archivedClass;
    body = std::move(holder);
  }
  // bodies are made as mutable objects; handles only see them as constants
  auto& mine = const_cast<ArrayBody&>(bodyOf(body));
  mine.origin = std::move(origin);
  return mine;
}

}  // namespace

Array::Array() = default;
Array::Array(std::initializer_list<Value> values) : Array(std::vector<Value>(values)) {}
Array::Array(std::vector<Value> values) : Array() { edit() = std::move(values); }

Array ArrayAccess::make(std::vector<Value> values, ClassRef archivedClass,
                        Ref<const Origin> origin) {
  Array array(std::move(values));
  ArrayBody& body = editable(array.body_);
  body.archivedClass = std::move(archivedClass);
  body.origin = std::move(origin);
  return array;
}

const Origin* ArrayAccess::origin(const Array& array) { return bodyOf(array.body_).origin.get(); }

std::vector<Value>& Array::edit() { return editable(body_).values; }
const std::vector<Value>& Array::values() const { return bodyOf(body_).values; }

const Value& Array::at(size_t index) const {
  checkIndex(index, count(), count());
  return values()[index];
}

bool Array::contains(const Value& value) const { return std::find(begin(), end(), value) != end(); }

void Array::append(Value value) { edit().push_back(std::move(value)); }

void Array::insert(Value value, size_t index) {
  checkIndex(index, count() + 1, count());
  std::vector<Value>& list = edit();
  list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), std::move(value));
}

void Array::replace(size_t index, Value value) {
  checkIndex(index, count(), count());
  edit()[index] = std::move(value);
}

void Array::remove(size_t index) {
  checkIndex(index, count(), count());
  std::vector<Value>& list = edit();
  list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
}

void Array::removeAll() { edit().clear(); }

const ClassRef& Array::archivedClass() const { return bodyOf(body_).archivedClass; }
void Array::setArchivedClass(ClassRef archivedClass) {
  editable(body_).archivedClass = std::move(archivedClass);
}

bool Array::operator==(const Array& other) const {
  return body_ == other.body_ || bodyOf(body_).isEqual(bodyOf(other.body_));
}

}  // namespace ns
