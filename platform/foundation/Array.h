#pragma once

#include <initializer_list>
#include <vector>

#include "platform/foundation/Value.h"

namespace ns {

/// An ordered list of values.  A handle: copying shares the list, changing a shared one copies
/// it first, so that a `Value` made from an array never changes under its holder.
class Array {
 public:
  Array();
  Array(std::initializer_list<Value> values);
  explicit Array(std::vector<Value> values);

  [[nodiscard]] size_t count() const { return values().size(); }
  [[nodiscard]] bool empty() const { return values().empty(); }
  /// The element at an index; raises RangeException at or past the end.
  [[nodiscard]] const Value& at(size_t index) const;
  const Value& operator[](size_t index) const { return at(index); }
  [[nodiscard]] const std::vector<Value>& values() const;
  [[nodiscard]] auto begin() const { return values().begin(); }
  [[nodiscard]] auto end() const { return values().end(); }
  [[nodiscard]] bool contains(const Value& value) const;

  void append(Value value);
  /// Raises RangeException when the index is past the end.
  void insert(Value value, size_t index);
  void replace(size_t index, Value value);
  void remove(size_t index);
  void removeAll();

  [[nodiscard]] const ClassRef& archivedClass() const;
  void setArchivedClass(ClassRef archivedClass);

  bool operator==(const Array& other) const;

 private:
  friend class Value;
  friend class ArrayAccess;
  explicit Array(Ref<const ValueBody> body) : body_(std::move(body)) {}
  std::vector<Value>& edit();
  Ref<const ValueBody> body_;  ///< none in a fresh one
};

}  // namespace ns
