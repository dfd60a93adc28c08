#pragma once

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "exchange/Exchange.h"
#include "exchange/JsonObjects.h"
#include "exchange/JsonText.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

/// Writes values of items and documents as JSON, each in a form that says exactly which value it
/// is; docs/outline.schema.json describes them.
///
/// A value that has no form of its own, holds a container in several places, or nests deeper than
/// anybody nests values goes into the table of objects, and `{"object": 3}` stands for it.
class JsonValueWriter {
 public:
  /// What is passed in must outlive the writer.  What cannot be written at all, a reference to an
  /// item for example, is null, and counted in `losses`.
  JsonValueWriter(JsonWriter& json, JsonObjects& objects, Losses& losses)
      : json_(&json), objects_(objects), losses_(losses) {}

  void write(const ns::Value& value);
  /// A dictionary as an object with its keys, or in one of the forms for others; `usual` names the
  /// class that needs not be said.
  void writeDictionary(const ns::Dictionary& dictionary, std::string_view usual = "NSDictionary");
  /// Whether the value can be written; counts it among the losses if not.
  [[nodiscard]] bool canWrite(const ns::Value& value);

 private:
  enum class Form : uint8_t { inPlace, object, none };

  [[nodiscard]] Form formOf(const ns::Value& value);
  /// The same for what a container holds whose own form is known.
  void writeElement(const ns::Value& value);
  void writeInPlace(const ns::Value& value);
  void writeObject(const ns::Value& value);
  void writeInteger(const ns::Integer& integer);
  void writeReal(const ns::Value& value);
  void writeData(const ns::Value& value);
  void writeDate(ns::Date date);
  void writeArray(const ns::Array& array);
  void writeElements(const ns::Array& array);
  void writeMembers(const ns::Dictionary& dictionary);
  void writeEntries(const ns::Dictionary& dictionary);
  void writeText(const ns::AttributedString& text);
  void writeRun(size_t length, const ns::Dictionary& attributes);
  void writeRunAttributes(const ns::Dictionary& attributes);
  void writeRunFont(const ns::Value& font);
  void writeClass(const ns::ClassRef& archivedClass, std::string_view key = "class");

  JsonWriter* json_;
  JsonObjects& objects_;
  Losses& losses_;
  bool isInAttributes_ = false;
  bool isInTree_ = false;  // in a container whose containers all are written in place
  /// What was written for attributes, which mostly are those of many texts.
  struct Known {
    ns::Value attributes;  ///< held, so that its address stands for it
    std::string json;
  };
  std::unordered_map<const ns::ValueBody*, Known> known_;
};

}  // namespace tavlin
