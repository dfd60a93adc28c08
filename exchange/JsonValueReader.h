#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Exception.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

/// An object or run of another shape than the form has.  The reason says what is wrong with it.
class JsonShapeException : public ns::Exception {
 public:
  using ns::Exception::Exception;
};

/// Makes values of what JSON says of them: the members of objects, once they are all there.
///
/// Attributes of text, and fonts, colours and the like, that are written alike are made once.
/// Text that is passed as `json` is the object as it stands there, and must outlive the reader.
class JsonValueReader {
 public:
  using Members = std::vector<std::pair<ns::String, ns::Value>>;
  using Stretch = ns::AttributedString::Stretch;

  /// What `{"object": 3}` stands for.
  void setObjects(ns::Array objects) { objects_ = std::move(objects); }

  /// The value of a number.  Raises JsonShapeException for one that no value holds.
  static ns::Value number(std::string_view json);
  /// The value of an object, which has `stretches` where it had an array under "runs".
  [[nodiscard]] ns::Value object(Members& members, const std::vector<Stretch>* stretches,
                                 std::string_view json);
  /// A dictionary with these keys.
  static ns::Dictionary dictionary(Members& members);
  /// The length and the attributes of a run.
  [[nodiscard]] Stretch run(Members& members, std::string_view json);

 private:
  using Known = std::unordered_map<std::string_view, ns::Value>;

  [[nodiscard]] ns::Value tagged(std::string_view tag, Members& members,
                                 const std::vector<Stretch>* stretches, std::string_view json);
  [[nodiscard]] ns::Value objectAt(const ns::Value& index) const;
  [[nodiscard]] ns::Value platformValue(Members& members, std::string_view json);
  [[nodiscard]] ns::Dictionary attributes(Members& members);
  [[nodiscard]] ns::Value runFont(const Members& members);

  ns::Array objects_;
  Known attributes_;      // by what stands behind the length of a run
  Known platformValues_;  // by their JSON
  std::unordered_map<std::string, ns::Value> fonts_;
};

}  // namespace tavlin
