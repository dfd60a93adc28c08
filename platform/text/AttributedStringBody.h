#pragma once

#include <utility>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/archive/Record.h"
#include "platform/foundation/Dictionary.h"

namespace ns {

/// The content of an attributed string: its text and a list of runs, each the start of a stretch
/// and the number of its attributes.
///
/// The attributes are dictionaries, or the archive numbers of dictionaries that nobody decoded.
class AttributedStringBody final : public ArchivableBody {
 public:
  struct Run {
    size_t start;
    uint32_t attributes;
  };

  AttributedStringBody() : ArchivableBody(Kind::attributedString) {}

  [[nodiscard]] size_t runEnd(size_t run) const {
    return run + 1 < runs.size() ? runs[run + 1].start : text.length();
  }
  /// The run that holds an index below the length.
  [[nodiscard]] size_t runAt(size_t index) const;
  [[nodiscard]] Dictionary attributesOf(size_t run) const;

  [[nodiscard]] bool isEqual(const ValueBody& other) const override;
  /// Of the text's length and beginning: many may share one that is long.
  [[nodiscard]] size_t hash() const override {
    constexpr size_t kLong = 64;
    const size_t length = text.length();
    return (length <= kLong ? text : text.substring({0, kLong})).hash() * 31 + length;
  }
  [[nodiscard]] const ArchiveOrigin* origin() const override { return from.get(); }
  [[nodiscard]] Value withOrigin(const Ref<const ArchiveOrigin>& origin) const override;
  [[nodiscard]] ClassRef classForArchiver() const override;
  void encode(KeyedArchiver& archiver) const override;

  /// The same content for changes, owned by the caller: without a place in an archive, and with
  /// its attributes decoded; runs that share theirs go on sharing them.
  [[nodiscard]] AttributedStringBody* copyForChanges() const;

  /// Raises ArchiveException when a record is no attributed string.
  static void check(const StoredArchive& archive, uint32_t number);
  static Value decode(const std::shared_ptr<const KeyedArchive>& archive, uint32_t number);

  String text;
  std::vector<Run> runs;  // ascending from 0; empty for empty text
  std::vector<Dictionary> attributes;
  std::vector<uint32_t> archivedAttributes;  // in place of `attributes`; 0 stands for none
  ClassRef archivedClass;
  /// Fields of the record beside those of every attributed string.
  std::vector<std::pair<String, Field>> otherFields;
  Ref<const ArchiveOrigin> from;
};

}  // namespace ns
