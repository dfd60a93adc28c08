#include "exchange/ItemContent.h"

#include "platform/foundation/Array.h"
#include "platform/foundation/Dictionary.h"
#include "platform/propertylist/BinaryPropertyList.h"
#include "platform/text/AttributedString.h"

namespace tavlin {

namespace {

constexpr const char* kProperties = "documentProperties";

bool isText(const ns::Value& value) {
  return value.isString() || value.kind() == ns::Kind::attributedString;
}

uint64_t countUnpaired(std::u16string_view units) {
  uint64_t count = 0;
  for (size_t i = 0; i < units.size();) {
    const ns::CodePoint point = ns::codePointAt(units, i);
    if (point.value >= 0xD800 && point.value <= 0xDFFF) ++count;
    i += point.length;
  }
  return count;
}

void appendCount(std::string& text, uint64_t count, std::string_view noun, std::string_view more) {
  if (!text.empty()) text += ", ";
  text += std::to_string(count) + " ";
  text += noun;
  if (count != 1) text += 's';
  text += more;
}

}  // namespace

ItemContent contentOfItem(const OLNode& item) {
  ItemContent content;
  content.isFolded = item.countChildren() > 0 && !item.isExpanded();
  const auto data = item.dataInPassing();
  if (!data) return content;
  for (const auto& [key, value] : data->entries()) {
    const ns::String name = key.string();
    if (name == "title" && isText(value)) {
      content.title = value;
    } else if (name == "note" && isText(value)) {
      content.note = value;
    } else if (name == "checkStatus") {
      content.isChecked = value.boolValue();
    } else if (name == "showCheckState") {
      content.showsCheck = value.boolValue();
    } else {
      ++content.otherValues;
    }
  }
  return content;
}

uint64_t countOfAttributes(const ns::Value& text) {
  if (text.kind() != ns::Kind::attributedString) return 0;
  const ns::AttributedString rich(text);
  uint64_t count = 0;
  for (size_t i = 0; i < rich.runCount(); ++i) count += rich.runAttributes(i).count();
  return count;
}

std::string_view Utf8Text::of(const ns::String& string, Losses& losses) {
  if (string.isAscii()) {
    kept_ = string;
    return kept_.ascii();
  }
  losses.characters += countUnpaired(string.wide());
  bytes_.clear();
  string.appendUtf8To(bytes_);
  return bytes_;
}

std::string_view Utf8Text::of(const ns::Value& text, Losses& losses) {
  if (text.isString()) return of(text.string(), losses);
  if (text.kind() == ns::Kind::attributedString) {
    return of(ns::AttributedString(text).string(), losses);
  }
  return {};
}

uint64_t countOfOtherDocumentValues(const OLDataManager& document) {
  const std::shared_ptr<OLNode> root = document.rootItem();
  const auto data = root ? root->data() : std::nullopt;
  if (!data) return 0;
  const ns::Value all = data->objectForKey(kProperties);
  if (!all.isDictionary()) return data->count();
  uint64_t count = data->count() - 1 + all.dictionary().count();
  for (const Property& property : documentProperties(document)) {
    --count;
    if (property.key->isList) {
      count +=
          all.dictionary().objectForKey(property.key->name).array().count() - property.texts.size();
    }
  }
  return count;
}

uint64_t countOfOtherArchiveEntries(const ns::Data& archive) {
  const ns::BinaryPropertyList list(archive);
  const auto top = list.object(list.topObject());
  if (top.type != ns::BinaryPropertyList::Type::dictionary) return 0;
  for (uint64_t i = 0; i < top.count; ++i) {
    if (list.object(list.reference(top.bytes, i)).text() != "$top") continue;
    const auto entries = list.object(list.reference(top.bytes, top.count + i));
    return entries.count > 0 ? entries.count - 1 : 0;
  }
  return 0;
}

void setDocumentProperties(OLDataManager& document, const std::vector<Property>& properties) {
  if (properties.empty()) return;
  ns::Dictionary dictionary;
  for (const Property& property : properties) {
    if (!property.key->isList) {
      dictionary.setObjectForKey(property.texts.front(), property.key->name);
      continue;
    }
    ns::Array list;
    for (const ns::String& text : property.texts) list.append(text);
    dictionary.setObjectForKey(list, property.key->name);
  }
  document.setObjectValueForKey(dictionary, kProperties);
}

std::string describeLosses(const Losses& losses, std::string_view whereTo,
                           std::string_view ofText) {
  std::string text;
  if (losses.attributes > 0) appendCount(text, losses.attributes, "attribute", ofText);
  if (losses.values > 0) appendCount(text, losses.values, "value", "");
  if (losses.characters > 0) appendCount(text, losses.characters, "character", "");
  const size_t comma = text.rfind(", ");
  if (comma != std::string::npos) text.replace(comma, 2, " and ");
  const bool isOne = losses.attributes + losses.values + losses.characters == 1;
  text += isOne ? " has no place in " : " have no place in ";
  text += whereTo;
  return text;
}

}  // namespace tavlin
