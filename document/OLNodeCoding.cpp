// Nodes in archives.
//
//   "parent"            the parent, conditionally: null unless archived through its own parent
//   "children"          the array of children
//   "data"              the dictionary of stored data, "$null" escaped
//   "expanded"          boolean
//   "outlineStyle"      boolean
//   "encoding_version"  2; records without it, or below 2, hold strings that are not escaped

#include <typeinfo>
#include <unordered_map>
#include <utility>

#include "document/ContainerRewriting.h"
#include "document/NodeArchiving.h"
#include "document/NodeDataTransform.h"
#include "model/OLExceptionController.h"
#include "model/OLNode.h"
#include "platform/archive/ArchivedClasses.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/text/MutableAttributedString.h"
#include "text/AttributedStringFonts.h"

namespace tavlin {

namespace {

constexpr int64_t kFirstEscapingVersion = 2;

void checkKeyedCoding(const ns::Coder& coder) {
  if (!coder.allowsKeyedCoding()) {
    OLExceptionController::raiseWithString("coder not allow keyed coding");
  }
}

/// The node that an object is, or none.  Nearly all are nodes and nothing more, which is known
/// without a search of their classes.
std::shared_ptr<OLNode> asNode(std::shared_ptr<ns::Object> object) {
  if (!object) return nullptr;
  const ns::Object& known = *object;
  if (typeid(known) == typeid(OLNode)) return std::static_pointer_cast<OLNode>(std::move(object));
  return std::dynamic_pointer_cast<OLNode>(std::move(object));
}

std::shared_ptr<OLNode> parentFrom(std::shared_ptr<ns::Object> object) {
  if (!object) return nullptr;
  std::shared_ptr<OLNode> parent = asNode(std::move(object));
  if (!parent) {
    throw ns::ArchiveException("keyed archive: the parent of an OLNode is not an OLNode");
  }
  return parent;
}

std::shared_ptr<void> makeChildren(size_t count, const ns::KeyedUnarchiver::ElementAt& at) {
  auto children = std::make_shared<OLNodeList>();
  children->reserve(count);
  for (size_t i = 0; i < count; ++i) {
    auto node = asNode(at(i));
    if (!node) {
      throw ns::ArchiveException("keyed archive: element " + std::to_string(i) +
                                 " of a list of children is not an OLNode");
    }
    children->push_back(std::move(node));
  }
  return children;
}

const ns::Object* childAt(const void* list, size_t index) {
  return (*static_cast<const OLNodeList*>(list))[index].get();
}

/// Replaces a text in strings.  Strings that share a long text, whatever their classes, share what
/// becomes of it.
class Replacements {
 public:
  Replacements(ns::String target, ns::String replacement)
      : target_(std::move(target)), replacement_(std::move(replacement)) {}

  /// The same value where there is nothing to replace.
  ns::Value replaced(const ns::Value& value) {
    if (!value.isString()) return value;
    const ns::String string = value.string();
    const ns::String changed = replaced(string);
    if (changed == string) return value;
    return ns::Value(changed.withArchivedClass(string.archivedClass()));
  }

 private:
  static constexpr size_t kLong = 256;

  ns::String replaced(const ns::String& string) {
    if (string.length() < kLong) return string.replacing(target_, replacement_);
    const void* text = string.isAscii() ? static_cast<const void*>(string.ascii().data())
                                        : static_cast<const void*>(string.wide().data());
    const auto [known, isNew] = longTexts_.try_emplace(text);
    if (isNew) known->second = {string, string.replacing(target_, replacement_)};
    // what is as it was is told by its being the same
    const auto& [before, after] = known->second;
    return after == before ? string : after;
  }

  const ns::String target_;
  const ns::String replacement_;
  struct LongText {
    ns::String before;  // held, so that its address stays taken
    ns::String after;
  };
  std::unordered_map<const void*, LongText> longTexts_;
};

/// Item data as it is stored.  What came from an archive is said to be what saving makes of it
/// there, so that it stays the one that other items share.  `isEscaped` tells how the item's own
/// record held it.
ns::Dictionary escapedData(const ns::Dictionary& data, bool isEscaped) {
  static const ns::String marker = ns::String::fromAscii("$null");
  static const ns::String escaped = ns::String::fromAscii("\\$null");
  Replacements replacements(marker, escaped);
  const auto escape = [&](const ns::Value& value) { return replacements.replaced(value); };
  const auto remade = [isEscaped](const ns::Value& before, const ns::Value& now) {
    const ns::ArchiveOrigin* origin = ns::archiveOriginOf(before);
    if (!origin || now.kind() == ns::Kind::attributedString) return now;
    if (!origin->transform() && now.body() == before.body()) return now;
    const ns::ValueTransform* saving = dataForSavingAfter(origin->transform());
    if (!saving) return now;
    // without anything escaped in it, it is the same however records of the item's version hold it
    if (!origin->transform() && isEscaped &&
        !origin->archive()->isChangedBy(dataAfterLoading(true), origin->number())) {
      saving = &dataForSaving(true);
    }
    return ns::withArchiveOrigin(now, origin->archive(), origin->number(), saving);
  };
  return rewritingLeaves(ns::Value(data), escape, remade).dictionary();
}

ns::Value fixedText(const ns::Value& value) {
  if (value.kind() != ns::Kind::attributedString) return value;
  return dataAfterLoading(false).attributedString(value);
}

}  // namespace

ns::ClassRef OLNode::classForCoder() const {
  static thread_local const ns::ClassRef info = ns::makeClass({"OLNode", "NSObject"});
  return info;
}

void OLNode::encodeWithCoder(ns::Coder& coder) const {
  checkKeyedCoding(coder);
  auto* archiver = dynamic_cast<ns::KeyedArchiver*>(&coder);
  coder.encodeConditionalObjectForKey(parent(), kParentKey);
  if (!hasChildrenArray()) {
    coder.encodeObjectForKey(ns::Value(), kChildrenKey);
  } else if (archiver) {
    // lists that nodes share are known by their address, and so is a node's own empty list
    const size_t count = countChildren();
    const void* list = children_ ? static_cast<const void*>(children_.get()) : this;
    ns::ObjectList encoded{list, count, childAt, childrenForm_ == ChildrenForm::immutableArray};
    if (formerRecord_ != 0) {
      encoded.archive = &archived_.archive;
      encoded.number = ns::FieldReader(*archived_.archive, formerRecord_).reference(kChildrenKey);
    }
    archiver->encodeListForKey(encoded, kChildrenKey);
  } else {
    std::vector<ns::Value> values;
    for (const auto& child : children()) values.emplace_back(child);
    coder.encodeObjectForKey(ns::Value(ns::Array(std::move(values))), kChildrenKey);
  }
  if (archived_.data != 0 && archiver) {
    archiver->encodeArchivedValueForKey(archived_.archive, archived_.data,
                                        &dataForSaving(isArchivedDataEscaped_), kDataKey);
  } else if (std::optional<ns::Dictionary> data = dataForArchive()) {
    ns::Value value(*data);
    data.reset();
    if (archiver) {
      archiver->encodePassingObjectForKey(std::move(value), kDataKey);
    } else {
      coder.encodeObjectForKey(value, kDataKey);
    }
  } else {
    coder.encodeObjectForKey(ns::Value(), kDataKey);
  }
  coder.encodeBoolForKey(isExpanded_, kExpandedKey);
  coder.encodeBoolForKey(isOutlineStyle_, kOutlineStyleKey);
  coder.encodeIntegerForKey(kEncodingVersion, kEncodingVersionKey);
  if (formerRecord_ != 0 && archiver) {
    archiver->encodeOtherFields(archived_.archive, formerRecord_, kNodeKeys);
  }
}

std::optional<ns::Dictionary> OLNode::dataForArchive() const {
  const ns::Dictionary* data = loadedData();
  if (!data) return std::nullopt;
  ns::Dictionary escaped = escapedData(*data, isArchivedDataEscaped_);
  if (!escaped.archivedClass()) escaped.setArchivedClass(ns::mutableDictionaryClass());
  return escaped;
}

bool OLNode::isAsArchived(const ns::KeyedArchive& archive, uint32_t number) const {
  if (archived_.archive.get() != &archive || archived_.children == 0) return false;
  const ns::FieldReader fields(archive, number);
  // a list of children has one owner
  return archived_.children == fields.target(kChildrenKey) && !parent() &&
         isExpanded_ == fields.boolean(kExpandedKey) &&
         isOutlineStyle_ == fields.boolean(kOutlineStyleKey);
}

const std::vector<ns::FieldForm>& archivedNodeFields() {
  using Form = ns::FieldForm::Form;
  static const std::vector<ns::FieldForm> fields = {
      {kParentKey, Form::parent},        {kChildrenKey, Form::children},
      {kDataKey, Form::dictionary},      {kExpandedKey, Form::boolean},
      {kOutlineStyleKey, Form::boolean}, {kEncodingVersionKey, Form::integer}};
  return fields;
}

void OLNode::initWithCoder(ns::Coder& coder) {
  // the class is final, so there is no need to search its bases for every node
  if (typeid(coder) == typeid(ns::KeyedUnarchiver)) {
    readArchived(static_cast<ns::KeyedUnarchiver&>(coder));
    return;
  }
  checkKeyedCoding(coder);
  parent_ = parentFrom(coder.decodeReferenceForKey(kParentKey));
  setData(std::nullopt);
  const ns::Value list = coder.decodeObjectForKey(kChildrenKey);
  childrenForm_ = list.isNone() ? ChildrenForm::none : ChildrenForm::mutableArray;
  const ns::Array values = list.array();
  children_ = std::static_pointer_cast<OLNodeList>(
      makeChildren(values.count(), [&](size_t i) { return values[i].object(); }));
  const ns::Value stored = coder.decodeObjectForKey(kDataKey);
  isExpanded_ = coder.decodeBoolForKey(kExpandedKey);
  isOutlineStyle_ = coder.decodeBoolForKey(kOutlineStyleKey);
  isArchivedDataEscaped_ = coder.decodeIntegerForKey(kEncodingVersionKey) >= kFirstEscapingVersion;
  if (!stored.isDictionary()) return;
  ns::Dictionary data = stored.dictionary();
  if (isArchivedDataEscaped_) {
    replaceOccurenceOfStringWithStringInDictionary("\\$null", "$null", data);
  }
  fixFontAttributesInDictionary(data);
  setData(data);
}

void OLNode::readArchived(ns::KeyedUnarchiver& unarchiver) {
  parent_ = parentFrom(unarchiver.decodeParentForKey(kParentKey));
  if (hasData_) setData(std::nullopt);
  const ns::FieldReader fields = unarchiver.fields();
  if (unarchiver.isLazy()) {
    // what has a number here is an array and a dictionary, or the objects were no tree
    const ns::KeyedArchive& archive = *unarchiver.archive();
    uint32_t children = fields.target(kChildrenKey);
    const uint32_t data = fields.target(kDataKey);
    childrenForm_ = ChildrenForm::none;
    if (children != 0 && archive.findings().emptyLists[children]) {
      childrenForm_ = ChildrenForm::mutableArray;
      children = 0;
    }
    archived_.children = children;
    archived_.data = data;
    // who asks for items is about to ask what they hold
    if (children != 0) archive.prefetchObject(children);
    if (data != 0) archive.prefetchObject(data);
  } else {
    childrenForm_ = childrenFormOf(fields.listKind(kChildrenKey));
    children_ = std::static_pointer_cast<OLNodeList>(
        unarchiver.decodeListForKey(kChildrenKey, makeChildren));
    archived_.data = fields.reference(kDataKey);
  }
  const bool hasOnlyKnown =
      fields.hasOnly(kNodeKeys) && !unarchiver.archive()->findings().haveListsOtherFields;
  formerRecord_ = hasOnlyKnown ? 0 : fields.number();
  if (archived_.children != 0 || archived_.data != 0 || formerRecord_ != 0) {
    archived_.archive = unarchiver.archive();
  }
  isExpanded_ = fields.boolean(kExpandedKey);
  isOutlineStyle_ = fields.boolean(kOutlineStyleKey);
  isArchivedDataEscaped_ = fields.integer(kEncodingVersionKey) >= kFirstEscapingVersion;
}

OLNode::ChildrenForm OLNode::childrenFormOf(ns::FieldReader::ListKind kind) {
  switch (kind) {
    case ns::FieldReader::ListKind::none:
      return ChildrenForm::none;
    case ns::FieldReader::ListKind::immutableList:
      return ChildrenForm::immutableArray;
    case ns::FieldReader::ListKind::mutableList:
      break;
  }
  return ChildrenForm::mutableArray;
}

void OLNode::loadArchivedChildren() const {
  const ns::KeyedArchive::Record list = archived_.archive->listRecord(archived_.children);
  const auto self = std::const_pointer_cast<ns::Object>(shared_from_this());
  children_ = std::static_pointer_cast<OLNodeList>(
      ns::KeyedUnarchiver::decodeChildren(archived_.archive, list, self, makeChildren));
  childrenForm_ = childrenFormOf(ns::FieldReader::listKind(list));
  archived_.children = 0;
  leaveArchive();
}

std::optional<ns::Value> OLNode::archivedValueForKey(std::string_view key, Wanted wanted) const {
  // Who goes through all items asks each for some values: printing an outline with its check marks
  // takes about eight, in a third of the time and half of the memory that decoding takes.  Who
  // comes back again and again is better off with all of them decoded.
  constexpr uint8_t kMostReads = 16;
  if (archivedReads_ == kMostReads) return std::nullopt;
  ++archivedReads_;
  const ns::KeyedArchive& archive = *archived_.archive;
  const auto number = archive.numberForKey(archived_.data, key);
  if (!number) return std::nullopt;
  const ns::KeyedArchive::Entry entry = archive.entry(*number);
  if (entry.kind == ns::KeyedArchive::EntryKind::instance) {
    const ns::KeyedArchive::Record record = archive.record(*number, entry.object);
    const ns::Kind kind = record.archivedClass->kind();
    if (kind == ns::Kind::attributedString && wanted == Wanted::text) {
      return ns::AttributedString::archivedText(archive, {archive, *number, record});
    }
    // a container may hold the data that it is in
    if (kind != ns::Kind::string && kind != ns::Kind::attributedString) return std::nullopt;
  }
  return archive.value(*number, entry, &dataAfterLoading(isArchivedDataEscaped_));
}

std::optional<ns::Dictionary> OLNode::dataInPassing() const {
  if (archived_.data != 0) {
    if (auto simple = archivedSimpleData()) return simple;
  }
  return data();
}

std::optional<ns::Dictionary> OLNode::archivedSimpleData() const {
  using EntryKind = ns::KeyedArchive::EntryKind;
  const ns::KeyedArchive& archive = *archived_.archive;
  const ns::KeyedArchive::Record record = archive.record(archived_.data);
  const auto keys = archive.fieldForKey(record, "NS.keys");
  const auto objects = archive.fieldForKey(record, "NS.objects");
  if (!keys || !objects || keys->count != objects->count) return std::nullopt;
  std::vector<ns::Dictionary::Entry> entries;
  entries.reserve(keys->count);
  for (uint64_t i = 0; i < keys->count; ++i) {
    const ns::KeyedArchive::Entry key = archive.entry(archive.elementTarget(*keys, i));
    if (key.kind != EntryKind::scalar || !key.object.isString()) return std::nullopt;
    const uint32_t number = archive.elementTarget(*objects, i);
    const ns::KeyedArchive::Entry object = archive.entry(number);
    if (object.kind == EntryKind::null) return std::nullopt;
    if (object.kind == EntryKind::instance) {
      // a container may hold the data that it is in, and an object lead to it
      const ns::Kind kind = archive.record(number, object.object).archivedClass->kind();
      if (kind == ns::Kind::array || kind == ns::Kind::dictionary || kind == ns::Kind::object) {
        return std::nullopt;
      }
    }
    entries.emplace_back(archive.sharedScalar(key.object),
                         archive.value(number, object, &dataAfterLoading(isArchivedDataEscaped_)));
  }
  ns::Dictionary data(std::move(entries));
  data.setArchivedClass(record.archivedClass->info);
  return data;
}

void OLNode::loadArchivedData() const {
  data_ = archived_.archive->value(archived_.data, &dataAfterLoading(isArchivedDataEscaped_))
              .dictionary();
  hasData_ = true;
  archived_.data = 0;
  leaveArchive();
}

void OLNode::leaveArchive() const {
  if (archived_.children == 0 && archived_.data == 0 && formerRecord_ == 0) archived_ = {};
}

void OLNode::replaceOccurenceOfStringWithStringInDictionary(const ns::String& target,
                                                            const ns::String& replacement,
                                                            ns::Dictionary& dictionary) {
  Replacements replacements(target, replacement);
  dictionary = rewritingLeaves(ns::Value(dictionary), [&](const ns::Value& value) {
                 return replacements.replaced(value);
               }).dictionary();
}

void OLNode::replaceOccurenceOfStringWithStringInArray(const ns::String& target,
                                                       const ns::String& replacement,
                                                       ns::Array& array) {
  Replacements replacements(target, replacement);
  array = rewritingLeaves(ns::Value(array), [&](const ns::Value& value) {
            return replacements.replaced(value);
          }).array();
}

void OLNode::fixFontAttributesInDictionary(ns::Dictionary& dictionary) {
  dictionary = rewritingLeaves(ns::Value(dictionary), fixedText).dictionary();
}

void OLNode::fixFontAttributesInArray(ns::Array& array) {
  array = rewritingLeaves(ns::Value(array), fixedText).array();
}

}  // namespace tavlin
