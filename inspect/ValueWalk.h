#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "inspect/FindingList.h"
#include "inspect/InspectedArchive.h"
#include "inspect/TextInspection.h"
#include "platform/foundation/Zeros.h"

namespace tavlin {

/// Looks at all values that something leads to, each once, never by recursion.
class ValueWalk {
 public:
  ValueWalk(const InspectedArchive& archive, TextInspection& texts);

  /// The values that an object (an item, a tree, a controller) refers to, but for its fields at
  /// these positions; its class and itself are met, too.
  void passObject(uint32_t number, const InspectedArchive::Record& record,
                  std::initializer_list<uint32_t> except);
  /// The data of an item.
  void passData(uint32_t data, const FindingPlace& place);
  /// Anything that is referred to.
  void passReference(uint32_t number);
  /// What a link to a parent leads to, which is not there for the link's sake: loading makes no
  /// object of it, and refuses only values that are unsound.  For when all else was passed.
  void passLinks();
  void addLink(uint32_t number) { links_.push_back(number); }
  /// A value that stands in "$top".
  void passTop(const ns::KeyedArchive::Object& value);

  /// Notes that something refers to an entry, which is looked at elsewhere.
  void meet(uint32_t number) { states_[number] |= kMet; }
  /// An item, tree or controller that something referred to, each once; 0 while there is none.
  uint32_t takeObject();
  /// How many entries of the archive are there that nothing was found to refer to.  Null is not
  /// counted.
  [[nodiscard]] uint64_t unmetCount() const;

 private:
  static constexpr uint8_t kMet = 1;       // something refers to it
  static constexpr uint8_t kPending = 2;   // it was or will be looked at
  static constexpr uint8_t kMendable = 4;  // the same, as something that loading mends
  static constexpr uint8_t kTaken = 8;     // an object that takeObject() answered
  struct Pending {
    uint32_t number;
    bool isMendable;
  };
  /// Has an entry looked at.  What dictionaries and arrays lead to in an item's data is mended when
  /// a document is loaded, what stands in other objects is not.
  void reach(uint32_t number, bool isMendable) {
    uint8_t& state = states_[number];
    const auto wanted = static_cast<uint8_t>(kMet | kPending | (isMendable ? kMendable : 0));
    if ((state & wanted) == wanted) return;
    state |= wanted;
    pending_.push_back({number, isMendable});
  }
  void reachField(const InspectedArchive::Record& record, uint32_t position, bool isMendable);
  void reachInline(const ns::KeyedArchive::Object& container, bool isMendable);
  void run(const TextInspection::Context& context);
  void pass(const Pending& next, const TextInspection::Context& context);

  const InspectedArchive& archive_;
  TextInspection& texts_;
  ns::Zeros<uint8_t> states_;  // by number
  std::vector<Pending> pending_;
  std::vector<uint32_t> objects_;
  std::vector<uint32_t> links_;
  bool isOwned_ = true;  // what is passed: not only links lead there
};

}  // namespace tavlin
