#pragma once

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/Zeros.h"

namespace ns {

/// The quick way to check an archive, for those that are as they should be.
///
/// All objects are looked at in the order of their numbers, which is about their order in the
/// file, so that memory is read from front to back.  Whatever is out of the ordinary, and be it
/// in an object that nothing refers to, makes the scan give up; then ArchiveChecker has to say
/// whether it is harmless.
class ArchiveScan {
 public:
  explicit ArchiveScan(const KeyedArchive& archive);
  ~ArchiveScan();

  /// Whether every object is sound, the objects of classes with an identity form a tree (see
  /// KeyedArchive::isTree()), and no value refers to any of them.
  bool run();

  /// What was met; after run() answered true.
  KeyedArchive::Findings takeFindings();

 private:
  using Object = KeyedArchive::Object;
  using Type = KeyedArchive::Type;
  struct Plan;

  /// What is known about an archive number.
  struct Place {
    uint32_t owner;         // of a list of children, or of what such a list holds; 0: nobody
    uint16_t forbidden;     // kinds that it must not turn out to be, a bit for each
    uint16_t kind : 8;      // a Kind, or one of the two below
    uint16_t mentions : 8;  // 0, 1, or more: references, but for those to a parent
  };
  // Beyond the kinds of values.
  static constexpr uint8_t kMember = 15;  // an object of a class whose objects form trees
  static constexpr uint8_t kClassRecord = 16;
  static constexpr uint8_t codeOf(Kind kind) { return static_cast<uint8_t>(kind); }
  template <class... Kinds>
  static constexpr uint16_t maskOf(Kinds... kinds) {
    return static_cast<uint16_t>((0U | ... | (1U << static_cast<unsigned>(kinds))));
  }
  template <class... Kinds>
  static constexpr uint16_t allBut(Kinds... kinds) {
    return static_cast<uint16_t>(~maskOf(kinds...));
  }

  bool scanEntry(uint32_t number);
  /// An entry that is no record.
  bool scanScalar(uint32_t number, const Object& object);
  bool scanReferences(uint32_t number, const Object& array, uint16_t forbidden);
  /// A string, data or another value that is no container.
  bool scanText(const Object& object, bool* isMarked);
  bool isTree();
  /// Whether a parent, as far as it is known, has a child in its list of children.
  [[nodiscard]] bool isChildOf(uint32_t child, uint32_t parent) const {
    const uint32_t list = places_[child].owner;
    return list != 0 && places_[list].owner == parent && places_[parent].kind == kMember;
  }

  /// None for a dictionary without a class.
  Plan* planOf(uint32_t number, const Object& dictionary);
  Plan* findPlan(uint32_t number, const Object& dictionary);

  void noteForm(Plan& plan, uint32_t number);
  void noteInteger(Plan& plan, uint32_t index);

  void refer(uint32_t number, uint16_t forbidden) {
    Place& place = places_[number];
    if (place.mentions < 2) place.mentions = place.mentions + 1U;
    place.forbidden = static_cast<uint16_t>(place.forbidden | forbidden);
  }
  bool spend(uint64_t steps) {
    if (steps > budget_) return false;
    budget_ -= steps;
    return true;
  }

  const KeyedArchive& archive_;
  const BinaryPropertyList& list_;
  const uint32_t count_;  // of archive numbers
  KeyedArchive::Findings findings_;
  const Zeros<Place> places_;  // by number
  struct Link {
    uint32_t child;
    uint32_t parent;
  };
  std::vector<Link> links_;  // to parents that are not yet known to be what they should be
  // By the numbers of shape and class.
  std::map<std::pair<uint32_t, uint32_t>, std::unique_ptr<Plan>> plans_;
  Plan* recentPlans_[KeyedArchive::kSlots][2] = {};  // the last one of a slot first
  uint64_t budget_;                                  // elements and bytes of text to look at
};

}  // namespace ns
