// Nodes in archives.
//
//   "parent"            the parent, conditionally: null unless archived through its own parent
//   "children"          the array of children
//   "data"              the dictionary of stored data, "$null" escaped
//   "expanded"          boolean
//   "outlineStyle"      boolean
//   "encoding_version"  2; records without it, or below 2, hold strings that are not escaped

#include "document/ContainerRewriting.h"
#include "document/NodeDataTransform.h"
#include "model/OLExceptionController.h"
#include "model/OLNode.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/text/MutableAttributedString.h"
#include "text/AttributedStringFonts.h"

namespace tavlin {

namespace {

constexpr int64_t kEncodingVersion = 2;
constexpr int64_t kFirstEscapingVersion = 2;

void checkKeyedCoding(const ns::Coder& coder) {
  if (!coder.allowsKeyedCoding()) {
    OLExceptionController::raiseWithString("coder not allow keyed coding");
  }
}

std::shared_ptr<void> makeChildren(size_t count, const ns::KeyedUnarchiver::ElementAt& at) {
  auto children = std::make_shared<OLNodeList>();
  children->reserve(count);
  for (size_t i = 0; i < count; ++i) {
    auto node = std::dynamic_pointer_cast<OLNode>(at(i));
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

ns::Value replacedString(const ns::Value& value, const ns::String& target,
                         const ns::String& replacement) {
  if (!value.isString()) return value;
  const ns::String string = value.string();
  const ns::String replaced = string.replacing(target, replacement);
  if (replaced == string) return value;
  return ns::Value(replaced.withArchivedClass(string.archivedClass()));
}

/// Item data as it is stored.  What came from an archive is said to be what saving makes of it
/// there, so that it stays the one that other items share.  `isEscaped` tells how the item's own
/// record held it.
ns::Dictionary escapedData(const ns::Dictionary& data, bool isEscaped) {
  static const ns::String marker = ns::String::fromAscii("$null");
  static const ns::String escaped = ns::String::fromAscii("\\$null");
  const auto escape = [](const ns::Value& value) { return replacedString(value, marker, escaped); };
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
  coder.encodeConditionalObjectForKey(parent(), "parent");
  if (!hasChildrenArray()) {
    coder.encodeObjectForKey(ns::Value(), "children");
  } else if (archiver) {
    // lists that nodes share are known by their address, and so is a node's own empty list
    const void* list = children_ ? static_cast<const void*>(children_.get()) : this;
    archiver->encodeListForKey(
        {list, countChildren(), childAt, childrenForm_ == ChildrenForm::immutableArray},
        "children");
  } else {
    std::vector<ns::Value> values;
    for (const auto& child : children()) values.emplace_back(child);
    coder.encodeObjectForKey(ns::Value(ns::Array(std::move(values))), "children");
  }
  if (archivedData_.archive && archiver) {
    archiver->encodeArchivedValueForKey(archivedData_.archive, archivedData_.number,
                                        &dataForSaving(isArchivedDataEscaped_), "data");
  } else if (const ns::Dictionary* data = loadedData()) {
    static thread_local const ns::ClassRef mutableDictionary =
        ns::makeClass({"NSMutableDictionary", "NSDictionary", "NSObject"});
    ns::Dictionary escaped = escapedData(*data, isArchivedDataEscaped_);
    if (!escaped.archivedClass()) escaped.setArchivedClass(mutableDictionary);
    coder.encodeObjectForKey(ns::Value(escaped), "data");
  } else {
    coder.encodeObjectForKey(ns::Value(), "data");
  }
  coder.encodeBoolForKey(isExpanded_, "expanded");
  coder.encodeBoolForKey(isOutlineStyle_, "outlineStyle");
  coder.encodeIntegerForKey(kEncodingVersion, "encoding_version");
}

void OLNode::initWithCoder(ns::Coder& coder) {
  checkKeyedCoding(coder);
  auto* unarchiver = dynamic_cast<ns::KeyedUnarchiver*>(&coder);
  const std::shared_ptr<ns::Object> parent = coder.decodeReferenceForKey("parent");
  parent_ = std::dynamic_pointer_cast<OLNode>(parent);
  if (parent && !parent_.lock()) {
    throw ns::ArchiveException("keyed archive: the parent of an OLNode is not an OLNode");
  }
  if (unarchiver) {
    switch (unarchiver->listKindForKey("children")) {
      case ns::KeyedUnarchiver::ListKind::none:
        childrenForm_ = ChildrenForm::none;
        break;
      case ns::KeyedUnarchiver::ListKind::immutableList:
        childrenForm_ = ChildrenForm::immutableArray;
        break;
      case ns::KeyedUnarchiver::ListKind::mutableList:
        childrenForm_ = ChildrenForm::mutableArray;
        break;
    }
    children_ = std::static_pointer_cast<OLNodeList>(
        unarchiver->decodeListForKey("children", makeChildren));
    archivedData_ = unarchiver->archivedValueForKey("data");
    data_.reset();
    isDataEmpty_ = false;
    if (archivedData_.archive && unarchiver->kindForKey("data") != ns::Kind::dictionary) {
      unarchiver->fail(std::string("\"data\" is ") + ns::describe(unarchiver->kindForKey("data")) +
                       " and not a dictionary");
    }
  } else {
    const ns::Value list = coder.decodeObjectForKey("children");
    childrenForm_ = list.isNone() ? ChildrenForm::none : ChildrenForm::mutableArray;
    const ns::Array values = list.array();
    children_ = std::static_pointer_cast<OLNodeList>(
        makeChildren(values.count(), [&](size_t i) { return values[i].object(); }));
    const ns::Value data = coder.decodeObjectForKey("data");
    setData(data.isDictionary() ? std::optional(data.dictionary()) : std::nullopt);
  }
  isExpanded_ = coder.decodeBoolForKey("expanded");
  isOutlineStyle_ = coder.decodeBoolForKey("outlineStyle");
  isArchivedDataEscaped_ = coder.decodeIntegerForKey("encoding_version") >= kFirstEscapingVersion;
  if (!unarchiver && data_) {
    if (isArchivedDataEscaped_) {
      replaceOccurenceOfStringWithStringInDictionary("\\$null", "$null", *data_);
    }
    fixFontAttributesInDictionary(*data_);
  }
}

void OLNode::loadArchivedData() const {
  const ns::ArchivedValue archived = std::move(archivedData_);
  archivedData_ = {};
  data_ = archived.archive->value(archived.number, &dataAfterLoading(isArchivedDataEscaped_))
              .dictionary();
}

void OLNode::replaceOccurenceOfStringWithStringInDictionary(const ns::String& target,
                                                            const ns::String& replacement,
                                                            ns::Dictionary& dictionary) {
  dictionary = rewritingLeaves(ns::Value(dictionary), [&](const ns::Value& value) {
                 return replacedString(value, target, replacement);
               }).dictionary();
}

void OLNode::replaceOccurenceOfStringWithStringInArray(const ns::String& target,
                                                       const ns::String& replacement,
                                                       ns::Array& array) {
  array = rewritingLeaves(ns::Value(array), [&](const ns::Value& value) {
            return replacedString(value, target, replacement);
          }).array();
}

void OLNode::fixFontAttributesInDictionary(ns::Dictionary& dictionary) {
  dictionary = rewritingLeaves(ns::Value(dictionary), fixedText).dictionary();
}

void OLNode::fixFontAttributesInArray(ns::Array& array) {
  array = rewritingLeaves(ns::Value(array), fixedText).array();
}

}  // namespace tavlin
