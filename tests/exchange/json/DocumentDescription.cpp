#include "tests/exchange/json/DocumentDescription.h"

#include <algorithm>
#include <bit>
#include <vector>

#include "model/OLTree.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Array.h"
#include "platform/text/AttributedString.h"

namespace tavlin::testing {

namespace {

std::string describeClass(const ns::ClassRef& info, const char* usual) {
  if (!info || info->name == usual) return "";
  std::string text = "<" + info->name + (info->hasChain ? "" : " without chain");
  for (const auto& each : info->chain) text += ":" + each;
  for (const auto& each : info->hints) text += "(" + each + ")";
  return text + ">";
}

std::string describeUnits(const ns::String& string) {
  std::string text = "\"";
  for (const char16_t unit : string.units()) {
    if (unit >= 0x20 && unit < 0x7F) {
      text += static_cast<char>(unit);
    } else {
      text += "\\" + std::to_string(unit) + ";";
    }
  }
  return text + "\"";
}

std::string describeField(const ns::Field& field, int depth) {
  std::string text = std::to_string(static_cast<int>(field.form)) + "=";
  if (field.form <= ns::Field::Form::reference) return text + describeValue(field.value, depth);
  for (const auto& key : field.keys) text += describeUnits(key) + ",";
  for (const auto& each : field.fields) text += describeField(each, depth) + ",";
  return text;
}

std::string describeRecord(const ns::Value& value, int depth) {
  if (depth > 8) return "…";
  const ns::Record record(value);
  std::vector<std::string> fields;
  for (const ns::String& key : record.keys()) {
    const std::string name = key.utf8();
    fields.push_back(name + describeField(record.fieldForKey(name.c_str()), depth + 1));
  }
  std::ranges::sort(fields);
  std::string text = describeClass(record.archivedClass(), "") + "{";
  for (const auto& each : fields) text += each + ";";
  return text + "}";
}

std::string describeDictionary(const ns::Dictionary& dictionary, const char* usual, int depth) {
  std::vector<std::string> entries;
  for (const auto& [key, value] : dictionary) {
    entries.push_back(describeValue(key, depth) + ":" + describeValue(value, depth));
  }
  std::ranges::sort(entries);
  std::string text = describeClass(dictionary.archivedClass(), usual) + "{";
  for (const auto& each : entries) text += each + ",";
  return text + "}";
}

std::string describeText(const ns::AttributedString& text, int depth) {
  std::string out = "rich" + describeClass(text.archivedClass(), "NSAttributedString") +
                    describeClass(text.archivedString().archivedClass(), "") +
                    describeUnits(text.string());
  // where one of two equal runs ends is nothing that counts
  size_t length = 0;
  std::string attributes;
  const auto finish = [&] {
    if (length > 0) out += "[" + std::to_string(length) + " " + attributes + "]";
    length = 0;
  };
  for (size_t i = 0; i < text.runCount(); ++i) {
    std::string next = describeDictionary(text.runAttributes(i), "NSDictionary", depth);
    if (next != attributes) finish();
    attributes = std::move(next);
    length += text.runRange(i).length;
  }
  finish();
  return out;
}

}  // namespace

std::string describeValue(const ns::Value& value, int depth) {
  if (depth > 40) return "…";
  switch (value.kind()) {
    case ns::Kind::none:
      return "none";
    case ns::Kind::boolean:
      return value.boolValue() ? "true" : "false";
    case ns::Kind::integer: {
      const ns::Integer integer = value.integer();
      return (integer.sixteenBytes ? "wide " : "") + std::to_string(integer.high) + "/" +
             std::to_string(integer.low);
    }
    case ns::Kind::real:
      return (value.isFloat() ? "float " : "double ") +
             std::to_string(std::bit_cast<uint64_t>(value.doubleValue()));
    case ns::Kind::string:
      return describeClass(value.archivedClass(), "") + describeUnits(value.string());
    case ns::Kind::data:
      return "data" + describeClass(value.archivedClass(), "") +
             describeUnits(ns::String(
                 std::u16string(value.data().view().begin(), value.data().view().end())));
    case ns::Kind::date:
      return "date " + std::to_string(std::bit_cast<uint64_t>(value.date().seconds));
    case ns::Kind::array: {
      std::string text = describeClass(value.array().archivedClass(), "NSArray") + "[";
      for (const auto& each : value.array()) text += describeValue(each, depth + 1) + ",";
      return text + "]";
    }
    case ns::Kind::dictionary:
      return describeDictionary(value.dictionary(), "NSDictionary", depth + 1);
    case ns::Kind::attributedString:
      return describeText(ns::AttributedString(value), depth + 1);
    case ns::Kind::object:
      return "object";
    default:
      return describeRecord(value, depth);
  }
}

std::string describeDocument(const OLDataManager& document) {
  const auto& controller = document.treeController();
  std::string text = controller->classForCoder()->name + "\n";
  struct Place {
    std::shared_ptr<OLNode> node;
    size_t level;
  };
  std::vector<Place> open = {{controller->tree()->rootNode(), 0}};
  while (!open.empty()) {
    const Place place = open.back();
    open.pop_back();
    const OLNode& node = *place.node;
    text += std::to_string(place.level) + (node.storesExpanded() ? " expanded" : "") +
            (node.isOutlineStyle() ? " outline" : "") +
            (node.hasChildrenArray() ? "" : " no children array") + " " +
            (node.data() ? describeDictionary(*node.data(), "NSMutableDictionary", 0) : "no data") +
            "\n";
    for (size_t i = node.children().size(); i-- > 0;) {
      open.push_back({node.children()[i], place.level + 1});
    }
  }
  return text;
}

}  // namespace tavlin::testing
