// Opening an archive: everything that can be reached from the root is looked at once, so that
// whatever is decoded later is sound.

#include <algorithm>
#include <unordered_map>

#include "platform/archive/FieldReader.h"
#include "platform/archive/KeyedArchiveScan.h"
#include "platform/foundation/AsciiCheck.h"

namespace ns {

namespace {

// What the platform's reader takes; its writers never go beyond 4.
constexpr int kDeepestNesting = 512;

}  // namespace

/// Looks at everything that the root leads to, with a list of numbers still to be looked at, never
/// by recursion.
class ArchiveChecker {
 public:
  explicit ArchiveChecker(const KeyedArchive& archive) : archive_(archive), list_(archive.list_) {
    // Every field and element takes a byte of the file or more; only containers that are used
    // several times exceed that, and there are hardly any in archives.
    budget_ = 2 * list_.fileLength() + 100000;
    // Texts lie apart from each other in every file that somebody wrote.
    textBudget_ = budget_;
  }

  void run() {
    reached_.resize(archive_.count_);
    reach(archive_.root_);
    for (size_t i = 0; i < archive_.otherTopEntries_.size(); ++i) {
      const Object& entry = archive_.otherTopEntries_[i].second;
      if (entry.type == Type::uid) {
        reach(archive_.target(entry));
      } else if (entry.type == Type::array || entry.type == Type::dictionary) {
        checkInline(0, entry, archive_.otherTopIndexes_[i]);
      } else {
        checkText(0, entry);
      }
    }
    checkPending();
    // what only links lead to was not archived for its own sake; it has to be sound, and is nothing
    isOwned_ = false;
    for (const uint32_t number : links_) reach(number);
    checkPending();
  }

  KeyedArchive::Findings takeFindings() { return std::move(findings_); }
  std::vector<bool> takeReached() { return std::move(reached_); }

 private:
  using Object = KeyedArchive::Object;
  using Type = KeyedArchive::Type;

  void checkPending() {
    while (!pending_.empty()) {
      const uint32_t number = pending_.back();
      pending_.pop_back();
      // the file is larger than any cache: fetch what comes up while this one is looked at
      if (pending_.size() >= 3) archive_.prefetchOffset(pending_[pending_.size() - 3]);
      if (pending_.size() >= 2) archive_.prefetchObject(pending_[pending_.size() - 2]);
      checkEntry(number);
    }
  }

  void reach(uint32_t number) {
    if (reached_[number]) return;
    reached_[number] = true;
    pending_.push_back(number);
  }

  void spend(uint64_t steps) {
    if (steps > budget_) {
      throw ArchiveException(
          "keyed archive: shared containers expand to far more than the file holds");
    }
    budget_ -= steps;
  }

  void checkEntry(uint32_t number) {
    const KeyedArchive::Entry entry = archive_.entry(number);
    if (entry.kind == KeyedArchive::EntryKind::null) return;
    if (entry.kind == KeyedArchive::EntryKind::scalar) {
      if (isMarked(number, entry.object)) findings_.markedTexts.push_back(number);
      return;
    }
    const KeyedArchive::Record record = archive_.record(number, entry.object);
    const Kind kind = record.archivedClass->kind();
    uint32_t link = record.shape->count();
    if (kind == Kind::object) {
      if (isOwned_) findings_.objects.push_back(number);
      link = linkPosition(record);
    } else if (kind == Kind::font) {
      findings_.fonts.push_back(number);
    } else if (kind == Kind::attributedString) {
      findings_.attributedStrings.push_back(number);
    }
    const uint32_t count = record.shape->count();
    spend(count);
    isPlain_ = true;
    for (uint32_t i = 0; i < count; ++i) {
      const Object field = archive_.field(record, i);
      if (field.type == Type::uid) {
        if (i == link) {
          links_.push_back(archive_.target(field));
        } else if (i != record.shape->classPosition()) {
          reach(archive_.target(field));
        }
      } else if (field.type == Type::array || field.type == Type::dictionary) {
        checkInline(number, field, archive_.fieldIndex(record, i));
      } else if (isMarked(number, field) && kind == Kind::string) {
        findings_.markedTexts.push_back(number);
      }
    }
    checkForm(number, record, kind);
  }

  /// The position of the field with the link to an object's parent, or how many fields there are.
  static uint32_t linkPosition(const KeyedArchive::Record& record) {
    for (const FieldForm& field : record.archivedClass->coding->fields) {
      if (field.form == FieldForm::Form::parent) return record.shape->find(field.key);
    }
    return record.shape->count();
  }

  void checkText(uint32_t number, const Object& object) { (void)isMarked(number, object); }

  /// Checks a string or data; says whether it is a string that holds "$null".
  bool isMarked(uint32_t number, const Object& object) {
    const std::string_view text = object.text();
    bool* known = nullptr;
    if (text.size() >= KeyedArchive::kLongText) {
      // a long text is looked at once, however many objects share it
      const auto [found, isNew] = texts_.try_emplace({object.bytes, object.count, object.type});
      if (!isNew) return found->second;
      known = &found->second;
      if (text.size() > textBudget_) {
        throw ArchiveException(
            "keyed archive: overlapping texts add up to far more than the file holds");
      }
      textBudget_ -= text.size();
    }
    if (!object.isString()) return false;
    if (object.type == Type::ascii && !isAllAscii(text)) {
      archive_.fail(number, "an ASCII string holds bytes above 127");
    }
    const bool result = StoredText{text, object.type == Type::utf16}.holdsNullMarker();
    if (known) *known = result;
    return result;
  }

  /// A container inside a record: usually a list of references.
  void checkInline(uint32_t number, const Object& container, uint32_t index) {
    if (container.type == Type::array) {
      spend(container.count);
      uint64_t i = 0;
      for (; i < container.count; ++i) {
        const Object element = archive_.element(container, i);
        if (element.type != Type::uid) break;
        reach(archive_.target(element));
      }
      if (i == container.count) return;
    }
    isPlain_ = false;
    nested(number, container, index, 1);
  }

  /// What is known about a container inside records.
  struct Extent {
    int height = 0;     // levels; 0 while it is being looked at
    uint64_t size = 0;  // elements, with those of all containers in it, however shared
  };

  /// The extent of a container, which must not hold itself.
  Extent nested(uint32_t number, const Object& container, uint32_t index, int depth) {
    if (depth > kDeepestNesting) archive_.fail(number, "containers are nested too deeply");
    const auto [found, isNew] = extents_.try_emplace(index);
    if (!isNew) {
      if (found->second.height == 0) archive_.fail(number, "a container contains itself");
      if (found->second.height + depth - 1 > kDeepestNesting) {
        archive_.fail(number, "containers are nested too deeply");
      }
      spend(found->second.size);  // reading a field expands it
      return found->second;
    }
    Extent extent{1, container.count};
    uint64_t first = 0;
    uint64_t last = container.count;
    if (container.type == Type::dictionary) {
      (void)archive_.shapeOf(number, container);
      first = container.count;
      last = 2 * container.count;
    }
    spend(last - first);
    for (uint64_t i = first; i < last; ++i) {
      const Object element = archive_.element(container, i);
      if (element.type == Type::uid) {
        reach(archive_.target(element));
      } else if (element.type == Type::array || element.type == Type::dictionary) {
        const Extent inner =
            nested(number, element, archive_.elementIndex(container, i), depth + 1);
        extent.height = std::max(extent.height, 1 + inner.height);
        extent.size += inner.size;
      } else {
        checkText(number, element);
      }
    }
    return extents_[index] = extent;
  }

  /// The forms of the classes that are read as values.
  void checkForm(uint32_t number, const KeyedArchive::Record& record, Kind kind) {
    const ClassCoding* coding = record.archivedClass->coding;
    if (!coding) return;
    if (coding->check) {
      coding->check(archive_, number);
      return;
    }
    switch (kind) {
      case Kind::object:
        checkFields(number, *coding);
        break;
      case Kind::array:
        (void)references(number, record, "NS.objects");
        break;
      case Kind::dictionary: {
        const auto keys = references(number, record, "NS.keys");
        const auto objects = references(number, record, "NS.objects");
        if (keys != objects) {
          archive_.fail(number, "a dictionary has " + std::to_string(keys.value_or(0)) +
                                    " keys and " + std::to_string(objects.value_or(0)) + " values");
        }
        break;
      }
      case Kind::string: {
        const auto text = archive_.fieldForKey(record, "NS.string");
        const auto bytes = archive_.fieldForKey(record, "NS.bytes");
        if (text ? !text->isString() : !bytes || bytes->type != Type::data) {
          archive_.fail(number, "\"NS.string\" is no string");
        }
        break;
      }
      case Kind::data: {
        auto bytes = archive_.fieldForKey(record, "NS.data");
        if (!bytes) bytes = archive_.fieldForKey(record, "NS.bytes");
        if (bytes && bytes->type == Type::uid) {
          bytes = archive_.entry(archive_.target(*bytes)).object;
        }
        if (!bytes || bytes->type != Type::data) {
          archive_.fail(number, "\"NS.data\" is no data");
        }
        break;
      }
      default:
        break;
    }
  }

  void checkFields(uint32_t number, const ClassCoding& coding) const {
    if (coding.fields.empty()) return;
    const FieldReader fields(archive_, number);
    for (const FieldForm& field : coding.fields) {
      switch (field.form) {
        case FieldForm::Form::text:
        case FieldForm::Form::parent:
          break;  // said when it is read, with what it should be
        case FieldForm::Form::children:
          (void)fields.listKind(field.key);
          break;
        case FieldForm::Form::dictionary: {
          const Kind kind = fields.kind(field.key);
          if (kind != Kind::none && kind != Kind::dictionary) {
            fields.failKind(field.key, kind, "a dictionary");
          }
          break;
        }
        case FieldForm::Form::boolean:
          (void)fields.boolean(field.key);
          break;
        case FieldForm::Form::integer:
          (void)fields.integer(field.key);
          break;
      }
    }
  }

  /// The length of a list of references; nothing when the record does not have it.
  std::optional<uint64_t> references(uint32_t number, const KeyedArchive::Record& record,
                                     const char* key) {
    const std::optional<Object> list = archive_.fieldForKey(record, key);
    if (!list) return std::nullopt;
    if (list->type != Type::array) {
      archive_.fail(number, "\"" + std::string(key) + "\" is no array");
    }
    for (uint64_t i = 0; !isPlain_ && i < list->count; ++i) {
      if (archive_.element(*list, i).type != Type::uid) {
        archive_.fail(number, "\"" + std::string(key) + "\" holds something else than references");
      }
    }
    return list->count;
  }

  const KeyedArchive& archive_;
  const BinaryPropertyList& list_;
  KeyedArchive::Findings findings_;
  uint64_t budget_ = 0;
  bool isPlain_ = true;  // every container in the record looked at holds only references
  std::unordered_map<uint32_t, Extent> extents_;  // of containers inside records
  uint64_t textBudget_ = 0;
  // long ones seen, and whether they hold "$null"
  std::unordered_map<KeyedArchive::TextKey, bool, KeyedArchive::TextHash> texts_;

  std::vector<bool> reached_;
  std::vector<uint32_t> pending_;
  std::vector<uint32_t> links_;  // to parents
  bool isOwned_ = true;          // what is looked at: not only links lead there
};

KeyedArchive::KeyedArchive(const Data& data, const ClassRegistry& registry, Root root)
    : list_(data), registry_(registry), nameBudget_(2 * data.length() + 100000) {
  readTop(root);
  ArchiveScan scan(*this);
  if (scan.run()) {
    findings_ = scan.takeFindings();
    return;
  }
  ArchiveChecker checker(*this);
  checker.run();
  findings_ = checker.takeFindings();
}

std::vector<bool> KeyedArchive::reachedNumbers() const {
  ArchiveChecker checker(*this);
  checker.run();
  return checker.takeReached();
}

}  // namespace ns
