#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "platform/archive/ObjectExtents.h"
#include "platform/archive/StoredArchive.h"
#include "platform/foundation/Zeros.h"

namespace ns {

/// What of an archive nobody needs any longer, once some of its entries are replaced.
///
/// Say what is replaced and what stays; then find() looks through the file once for who else
/// uses any of it.  What an object refers to that itself is used by nobody counts as used: only
/// what is replaced goes.
class ArchiveUses {
 public:
  explicit ArchiveUses(const StoredArchive& archive);

  /// An entry that is replaced: it goes with everything that only it leads to.  Linear in that.
  void replace(uint32_t number);
  /// A record that another one takes the place of, and a reference that the other does not have;
  /// what they lead to is not looked at.
  void replaceRecord(uint32_t number, uint32_t referenceIndex);

  /// What stays although it is used by nobody so far: an entry, or an object of the file's table.
  void keepEntry(uint32_t number);
  void keepObject(uint32_t index);
  /// Whether an entry goes, as far as it was said what stays.
  [[nodiscard]] bool isGone(uint32_t number) const { return numbers_[number] == Use::replaced; }

  /// A number that goes over to a new entry: who refers to it wants that.
  void takeOver(uint32_t number) { numbers_[number] = Use::taken; }

  /// Looks for other uses of what is replaced.
  void find();

  // After that:

  /// The entries that go, or were null without anybody referring to them, and the objects that go,
  /// ascending.
  [[nodiscard]] std::vector<uint32_t> goneEntries() const {
    return placesOf(numbers_, Use::replaced);
  }
  [[nodiscard]] std::vector<uint32_t> goneObjects() const {
    return placesOf(objects_, Use::replaced);
  }
  /// Places of the table that nothing uses and that lead to the top object, as a former revision
  /// left them, ascending.
  [[nodiscard]] std::vector<uint32_t> spareObjects() const {
    return placesOf(objects_, Use::spare);
  }
  /// Whether no two objects have bytes in common.
  [[nodiscard]] bool areObjectsApart() const { return areApart_; }

 private:
  using Object = BinaryPropertyList::Object;
  using Type = BinaryPropertyList::Type;
  enum class Use : uint8_t { other, replaced, taken, spare, kept };

  void replaceObject(uint32_t index);
  void findSpares();
  void findNulls();
  /// One object: what it refers to among what is replaced stays.
  void lookAt(uint32_t index);
  void lookAtEntries();
  void lookAtAll();
  /// Finds the objects that the top one leads to.
  void findUsed();
  [[nodiscard]] bool areApartInAnyOrder() const;
  /// Has everything that something kept leads to stay, too.
  void spread();
  [[nodiscard]] static std::vector<uint32_t> placesOf(const Zeros<Use>& uses, Use use);

  const StoredArchive& archive_;
  const BinaryPropertyList& list_;
  const Zeros<Use> numbers_;       // by number
  const Zeros<Use> objects_;       // by place in the table
  std::vector<uint32_t> pending_;  // objects that are kept and still to be looked at
  // Which objects some other refers to; once it is known that there are others, which ones the top
  // object leads to.
  const Zeros<bool> isUsed_;
  bool areUsedKnown_ = false;
  ObjectExtents extents_;
  bool areApart_ = true;
};

}  // namespace ns
