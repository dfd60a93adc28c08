#pragma once

#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/Value.h"

namespace ns {

/// A map from keys to values that keeps the order in which keys were added.  A handle: copying
/// shares the map, changing a shared one copies it first.
///
/// Keys are usually strings; any value may be one.  Keys are compared like values, except that a
/// dictionary, or a container inside an array, is only the same key when it is the very same
/// value.  Values are never none, except in a dictionary that an archive held so.
///
/// Finding, setting and removing a key take about the same time in a long dictionary as in a
/// short one.
class Dictionary {
 public:
  using Entry = std::pair<Value, Value>;

  Dictionary();
  Dictionary(std::initializer_list<Entry> entries);
  /// Takes over entries; of equal keys the first counts for look-ups.
  explicit Dictionary(std::vector<Entry> entries);

  [[nodiscard]] size_t count() const;
  [[nodiscard]] bool empty() const { return count() == 0; }
  /// The value of a key, or none.
  [[nodiscard]] Value objectForKey(const Value& key) const;
  [[nodiscard]] Value objectForKey(std::string_view utf8Key) const;
  [[nodiscard]] Value objectForKey(const char* utf8Key) const {
    return objectForKey(std::string_view(utf8Key));
  }
  [[nodiscard]] bool contains(const Value& key) const;
  /// Keys and values in order; valid until the dictionary changes or goes.
  [[nodiscard]] std::span<const Entry> entries() const;
  [[nodiscard]] auto begin() const { return entries().begin(); }
  [[nodiscard]] auto end() const { return entries().end(); }

  /// Stores a value under a key, in the key's place when it is there already.  Storing none
  /// removes the key.
  void setObjectForKey(Value value, const Value& key);
  /// Removes every entry with the key: one made from entries may have several.
  void removeObjectForKey(const Value& key);
  void removeAll();

  [[nodiscard]] const ClassRef& archivedClass() const;
  void setArchivedClass(ClassRef archivedClass);

  /// Equality by keys and values; order does not matter, and of equal keys the first counts.
  bool operator==(const Dictionary& other) const;

 private:
  friend class Value;
  friend class DictionaryAccess;
  explicit Dictionary(Ref<const ValueBody> body) : body_(std::move(body)) {}
  Ref<const ValueBody> body_;  ///< none in a fresh one
};

}  // namespace ns
