#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/archive/ArchiveFindings.h"
#include "platform/archive/RecordForm.h"
#include "platform/archive/StoredArchive.h"
#include "platform/archive/TextKey.h"
#include "platform/foundation/Zeros.h"

namespace ns {

/// Looks at everything that the root of an archive leads to, so that whatever is decoded later is
/// sound.  Raises ArchiveException, which names the object that is not.  Linear; depth costs no
/// stack.
///
/// There are two orders.  In that of the numbers, which is about that of the file, memory is read
/// from front to back, but objects that nothing refers to are looked at too.  So where that finds a
/// fault, or no tree, the objects are looked at once more in the order in which the root leads to
/// them, which tells.
ArchiveFindings checkArchive(const StoredArchive& archive);

/// Whether the root leads to them, by number.  For an archive that was checked.  Linear.
std::vector<bool> reachedNumbers(const StoredArchive& archive);

/// One look at an archive.
class ArchiveCheck {
 public:
  explicit ArchiveCheck(const StoredArchive& archive);

  void runByNumber();
  void runFromRoot();

  /// What was met.
  ArchiveFindings takeFindings();
  /// After runFromRoot().
  std::vector<bool> takeReached() { return std::move(reached_); }

 private:
  using Object = StoredArchive::Object;
  using Type = StoredArchive::Type;
  /// A form, with what is known of the records that have it.
  struct Plan {
    Plan(const StoredArchive::Shape& shape, const ArchivedClass& archivedClass)
        : form(shape, archivedClass) {}

    const RecordForm form;
    uint8_t kind = 0;                    // as in a place
    uint32_t classIndex = 0;             // what names the class, in the record looked at last
    bool isNoted = false;                // in the findings, as the form of members or lists
    uint32_t integerIndex = UINT32_MAX;  // where the integer field of the last member leads
  };

  /// What is known about an archive number.
  struct Place {
    uint32_t owner;         // of a list of children, or of what such a list holds; 0: nobody
    uint16_t forbidden;     // kinds that it must not be in a tree, a bit for each
    uint16_t kind : 8;      // a Kind, or one of the two below
    uint16_t mentions : 8;  // 0, 1, or more: references, but for those to a parent
  };
  // Beyond the kinds of values.
  static constexpr uint8_t kMember = 15;  // an object of a class whose objects form trees
  static constexpr uint8_t kClassRecord = 16;
  static constexpr uint16_t kObjects = 1U << static_cast<unsigned>(Kind::object) | 1U << kMember;
  static constexpr uint8_t codeOf(Kind kind) { return static_cast<uint8_t>(kind); }
  template <class... Kinds>
  static constexpr uint16_t maskOf(Kinds... kinds) {
    return static_cast<uint16_t>((0U | ... | (1U << static_cast<unsigned>(kinds))));
  }
  template <class... Kinds>
  static constexpr uint16_t allBut(Kinds... kinds) {
    return static_cast<uint16_t>(~maskOf(kinds...));
  }
  static constexpr uint16_t kAllButMembers = static_cast<uint16_t>(~(1U << kMember));

  void checkTop();
  void checkReached();
  void checkEntry(uint32_t number);
  void checkScalar(uint32_t number, const Object& object);
  void checkRecord(uint32_t number, const Object& dictionary, Plan& plan);
  void checkField(uint32_t number, Plan& plan, RecordForm::Role role, uint32_t index,
                  uint16_t forbidden, bool* isMarked);
  void checkReference(uint32_t number, const Plan& plan, RecordForm::Role role, uint32_t target,
                      uint16_t forbidden);
  /// Of a string or data of another form.
  [[noreturn]] void failContent(uint32_t number, const Plan& plan) const;
  /// How many there are.
  uint64_t checkElements(uint32_t number, const Object& list, RecordForm::Role role,
                         uint16_t forbidden);
  /// The number that a field is or refers to, 0 for null; none for anything else.
  [[nodiscard]] std::optional<double> numberAt(uint32_t index) const;
  /// The checks that take looking at what a record refers to.
  void checkStrictly(uint32_t number, const Plan& plan) const;
  /// A string or data; says whether it is a string that holds "$null".
  bool checkText(uint32_t number, const Object& object);
  /// A container inside a record: usually a list of references.
  void checkInline(uint32_t number, const Object& container, uint32_t index, uint16_t forbidden);
  /// What is known about a container inside records.
  struct Extent {
    int height = 0;     // levels; 0 while it is being looked at
    uint64_t size = 0;  // elements, with those of all containers in it, however shared
  };
  /// The extent of a container, which must not hold itself.
  Extent nested(uint32_t number, const Object& container, uint32_t index, uint16_t forbidden,
                int depth);

  /// None for a dictionary that describes a class.
  Plan* planOf(uint32_t number, const Object& dictionary);
  Plan* findPlan(uint32_t number, const Object& dictionary);
  void notePlan(Plan& plan);
  void noteInteger(std::optional<double> value);

  void refer(uint32_t number, uint16_t forbidden) {
    Place& place = places_[number];
    if (place.mentions < 2) place.mentions = place.mentions + 1U;
    place.forbidden = static_cast<uint16_t>(place.forbidden | forbidden);
    if (isFromRoot_) reach(number);
  }
  void reach(uint32_t number) {
    if (reached_[number]) return;
    reached_[number] = true;
    pending_.push_back(number);
  }
  [[nodiscard]] bool isTree();
  /// Whether a parent, as far as it is known, has a child in its list of children.
  [[nodiscard]] bool isChildOf(uint32_t child, uint32_t parent) const {
    const uint32_t list = places_[child].owner;
    return list != 0 && places_[list].owner == parent && places_[parent].kind == kMember;
  }
  void spend(uint64_t steps) {
    if (steps > budget_) {
      throw ArchiveException(
          "keyed archive: shared containers expand to far more than the file holds");
    }
    budget_ -= steps;
  }

  const StoredArchive& archive_;
  const BinaryPropertyList& list_;
  ArchiveFindings findings_;
  bool isFromRoot_ = false;
  bool areOwnersKnown_ = false;  // of all arrays that are looked at
  bool isTree_ = true;           // as far as it is known
  const Zeros<Place> places_;    // by number
  struct Link {
    uint32_t child;
    uint32_t parent;
  };
  std::vector<Link> links_;       // to parents that are not yet known to be what they should be
  std::vector<uint32_t> arrays_;  // that nobody is known to own, left for the end
  // By the numbers of shape and class.
  std::map<std::pair<uint32_t, uint32_t>, std::unique_ptr<Plan>> plans_;
  Plan* recentPlans_[ArchiveShapes::kSlots][2] = {};  // the last one of a slot first
  size_t memberForms_ = 0;                            // how many
  size_t listForms_ = 0;
  bool hasMemberInteger_ = false;

  // Every field and element takes a byte of the file or more; only containers that are used
  // several times exceed that, and there are hardly any in archives.
  uint64_t budget_;
  uint64_t textBudget_;  // texts lie apart from each other in every file that somebody wrote
  std::unordered_map<uint32_t, Extent> extents_;           // of containers inside records
  std::unordered_map<TextKey, bool, TextHash> longTexts_;  // and whether they hold "$null"

  // When they are looked at from the root.
  std::vector<bool> reached_;
  std::vector<uint32_t> pending_;
  bool isOwned_ = true;  // not only links to parents lead to what is looked at
};

}  // namespace ns
