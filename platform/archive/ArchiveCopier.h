#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "platform/archive/EntryWriter.h"
#include "platform/archive/KeyedArchive.h"

namespace ns {

/// A record that is to be copied.
struct CopyTask {
  uint32_t number;     ///< in the new archive
  uint32_t original;   ///< in the old one
  uint16_t source;     ///< which old one
  uint16_t transform;  ///< which transform; 0: none
};

/// Copies records of archives, as they are or rewritten by a transform, without decoding them.
///
/// What a record refers to gets a number and is left for later, so that depth costs no stack.
class ArchiveCopier {
 public:
  using Reference = EntryWriter::Reference;
  using Archive = std::shared_ptr<const KeyedArchive>;

  /// What is left to somebody who makes values and objects.
  class Client {
   public:
    virtual ~Client() = default;
    /// The number of an object with an identity that an archive holds.
    virtual uint32_t numberOfArchivedObject(const Archive& archive, uint32_t original) = 0;
    /// The number of a value that a transform made.
    virtual uint32_t numberOfValue(const Value& value) = 0;
    /// Writes such a value under a number that it already has.
    virtual void writeValue(uint32_t number, const Value& value) = 0;
    virtual uint32_t numberOfClass(const ClassRef& archivedClass) = 0;
    /// Has copy() called for a task later on, before the archive is finished.
    virtual void leaveForLater(const CopyTask& task) = 0;
  };
  ArchiveCopier(EntryWriter& writer, Client& client)
      : writer_(writer), client_(client), transforms_{nullptr} {}

  /// The number that an archive's object has in the new one, assigned now if need be.
  uint32_t numberOf(const Archive& archive, uint32_t original, const ValueTransform* transform);
  /// The number that an attributed string has which a transform has made already; 0 so far.
  uint32_t& numberOfRewritten(const Archive& archive, uint32_t original,
                              const ValueTransform* transform) {
    return rewrittenNumber(sourceOf(archive), original, transform);
  }
  /// Does what was left for later.
  void copy(const CopyTask& task);
  /// Adds the fields that a record has, but for those under these keys, to the one being written.
  void addOtherFields(const Archive& archive, uint32_t number, std::span<const char* const> own);
  /// The same for a class record's fields beside the names.
  EntryWriter::Fields otherClassFields(const Archive& archive, uint32_t number);

 private:
  using Object = StoredArchive::Object;
  using Type = StoredArchive::Type;

  /// An archive that objects are copied from.
  struct Source {
    Archive archive;
    std::vector<uint32_t> numbers;  // by number there: the number here, or 0
    std::unordered_map<const StoredArchive::Shape*, std::vector<Reference>> keys;
    std::unordered_map<uint32_t, Reference> containers;  // long ones copied whole
    // long texts and data, and what transforms made of them
    std::unordered_map<TransformedText, Reference, TransformedTextHash> texts;
    std::unordered_map<TransformedText, uint32_t, TransformedTextHash> textNumbers;  // of entries
  };
  uint16_t sourceOf(const Archive& archive);
  uint32_t numberOfPlain(uint16_t source, uint32_t original);
  uint32_t numberOf(uint16_t source, uint32_t original, const ValueTransform* transform);
  uint32_t& rewrittenNumber(uint16_t source, uint32_t original, const ValueTransform* transform);
  uint32_t addTask(uint16_t source, uint32_t original, const ValueTransform* transform);

  void copyRecord(const CopyTask& task);
  void rewriteRecord(const CopyTask& task);
  /// The field of an array, dictionary or string that is rewritten.
  Reference rewrittenField(const CopyTask& task, const StoredArchive::Record& record,
                           uint32_t position);
  Reference copyInline(uint16_t source, const Object& object, uint32_t place);
  Reference copyContainer(uint16_t source, const Object& container, uint32_t place);
  Reference copyScalar(uint16_t source, const Object& object);
  /// What a transform makes of a text that it changes, in a record or as an entry.
  Reference rewrittenText(uint16_t source, const Object& text, const ValueTransform& transform);
  uint32_t numberOfRewrittenText(uint16_t source, const Object& text,
                                 const ValueTransform& transform);
  Reference copyScalar(const Object& object);

  EntryWriter& writer_;
  Client& client_;
  std::vector<Source> sources_;
  std::vector<const ValueTransform*> transforms_;  // none first
  std::unordered_map<uint64_t, uint32_t> rewrittenNumbers_;
  std::vector<const void*> rules_;  // of rewriting, by place in the keys of rewrittenNumbers_
};

}  // namespace ns
