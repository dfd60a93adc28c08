#include "inspect/ItemWalk.h"

#include <algorithm>

#include "document/NodeArchiving.h"
#include "platform/archive/FieldReader.h"

namespace tavlin {

namespace {

// What copies of items may amount to, with the entries of their data.  Items that are listed twice
// on each of forty levels would be a million million.
constexpr uint64_t kMostCopied = 4000000;
// How many second listings are told one by one.
constexpr uint64_t kMostListings = 1000000;
constexpr char kInside[] = "keyed archive: an item of the outline is contained in itself";

}  // namespace

ItemWalk::ItemWalk(const InspectedArchive& archive, ValueWalk& values, FindingList& findings,
                   Mends& mends)
    : archive_(archive),
      values_(values),
      findings_(findings),
      mends_(mends),
      states_(archive->objectCount()),
      placeOf_(archive->objectCount()) {}

void ItemWalk::walkOutline(uint32_t root) {
  walk(root, true);
  limitCopies();
  checkParentLinks();
}

void ItemWalk::walkOther(uint32_t item) {
  if ((states_[item] & kVisited) == 0) walk(item, false);
}

void ItemWalk::walk(uint32_t start, bool isOutline) {
  enter(start, kNone, 0, isOutline);
  while (!path_.empty()) {
    Step& step = path_.back();
    if (step.next == step.children.count()) {
      leave();
    } else {
      const uint64_t index = step.next++;
      meetChild(step.children.at(*archive_, index), index);
    }
  }
}

void ItemWalk::enter(uint32_t number, uint32_t owner, uint64_t index, bool isOutline) {
  const InspectedArchive::Record record = archive_->record(number);
  states_[number] |= kVisited | kOpen;
  uint32_t item = kNone;
  if (isOutline) {
    item = places_.add({number, owner, static_cast<uint32_t>(index), weightOf(record)});
    placeOf_[number] = item + 1;
  }
  if (passRecord(number, record, item)) {
    unlinked_.push_back(item);
    if (owner != kNone) noteLister(number, path_.back().number, path_.back().list);
  }
  Step step{number, item, archive_.childrenOf(record), {}, 0};
  if (step.list != 0) {
    values_.passObject(step.list, archive_->record(step.list),
                       {archive_->record(step.list).shape->find("NS.objects")});
    ArchivedList children(*archive_, archive_->record(step.list));
    uint8_t& state = states_[step.list];
    if ((state & kOpen) != 0) {
      failInside(item, 0, kNone);
    } else if ((state & kVisited) != 0) {
      if (isOutline) meetListAgain(item, children);
    } else {
      state |= kVisited | kOpen;
      step.children = std::move(children);
      path_.push_back(std::move(step));
      return;
    }
    step.list = 0;  // is not this item's to close
  }
  path_.push_back(std::move(step));
}

void ItemWalk::leave() {
  const Step& step = path_.back();
  states_[step.number] &= static_cast<uint8_t>(~kOpen);
  if (step.list != 0) states_[step.list] &= static_cast<uint8_t>(~kOpen);
  if (step.item != kNone && places_[step.item].owner != kNone) {
    grow(places_[step.item].owner, places_[step.item].size);
  }
  path_.pop_back();
}

void ItemWalk::meetChild(uint32_t number, uint64_t index) {
  const Step& step = path_.back();
  values_.meet(number);
  if (!archive_.node(number)) {
    const FindingPlace place =
        step.item == kNone ? FindingPlace{} : FindingPlace::ofListing(known(), step.item, index);
    try {
      const ns::FieldReader owner(*archive_, step.number);
      const ns::Kind kind = archive_->kind(number);
      if (kind != ns::Kind::object) {
        owner.fail("element " + std::to_string(index) + " of \"children\" is " +
                   ns::describe(kind) + " and not an object of the document");
      }
      throw ns::ArchiveException("keyed archive: element " + std::to_string(index) +
                                 " of a list of children is not an OLNode");
    } catch (const ns::ArchiveException& exception) {
      findings_.add({place, FindingCode::archive, exception.what(), {}});
    }
    return;
  }
  const uint8_t state = states_[number];
  if ((state & kOpen) != 0) {
    failInside(step.item, index, number);
  } else if ((state & kVisited) == 0) {
    enter(number, step.item, index, step.item != kNone);
  } else if (step.item != kNone) {
    noteLister(number, step.number, step.list);
    addListing(number, step.item, index);
  }
}

void ItemWalk::failInside(uint32_t owner, uint64_t index, uint32_t inside) {
  FindingPlace place;
  if (owner != kNone) {
    place = inside == kNone ? FindingPlace::ofItem(places_, owner)
                            : FindingPlace::ofListing(known(), owner, index);
  }
  findings_.add({place, FindingCode::archive, kInside, {}});
}

void ItemWalk::meetListAgain(uint32_t owner, const ArchivedList& children) {
  // whatever stands in it was looked at, but for who lists it
  const uint64_t count = children.count();
  const uint64_t told = std::min(count, kMostListings - listingCount_);
  for (uint64_t i = 0; i < told; ++i) {
    const uint32_t number = children.at(*archive_, i);
    if (placeOf_[number] != 0) addListing(number, owner, i);
  }
  if (told == count) return;
  findings_.addMore(FindingCode::listedTwice, count - told);
  grow(owner, UINT32_MAX);
}

void ItemWalk::addListing(uint32_t number, uint32_t owner, uint64_t index) {
  const uint32_t first = placeOf_[number] - 1;
  grow(owner, places_[first].size);
  if (listingCount_ == kMostListings) {
    findings_.addMore(FindingCode::listedTwice, 1);
    grow(owner, UINT32_MAX);
    return;
  }
  ++listingCount_;
  mends_.copies[places_[owner].number].push_back(index);
  findings_.add({FindingPlace::ofListing(known(), owner, index), FindingCode::listedTwice,
                 "the item is listed before, as ", "makes it a copy with all that is below it",
                 first});
}

void ItemWalk::noteLister(uint32_t number, uint32_t lister, uint32_t list) {
  const uint32_t parent = archive_.reference(archive_->record(number), kParentKey);
  if (parent == 0 || (states_[number] & kLinked) != 0) return;
  if (parent != lister) {
    const auto node = archive_.node(parent);
    if (!node || archive_.childrenOf(*node) != list) return;
  }
  states_[number] |= kLinked;
}

bool ItemWalk::passRecord(uint32_t number, const InspectedArchive::Record& record, uint32_t item) {
  const FindingPlace place = item == kNone ? FindingPlace{} : FindingPlace::ofItem(places_, item);
  const uint32_t parentAt = record.shape->find(kParentKey);
  const uint32_t childrenAt = record.shape->find(kChildrenKey);
  const uint32_t dataAt = record.shape->find(kDataKey);
  values_.passObject(number, record, {parentAt, childrenAt, dataAt});
  // null, too, is met when it is named
  for (const uint32_t at : {parentAt, childrenAt, dataAt}) {
    if (at == record.shape->count()) continue;
    const auto target = archive_->fieldTarget(record, at);
    if (!target) continue;
    values_.meet(*target);
    if (at == dataAt) values_.passData(*target, place);
    if (at == parentAt) values_.addLink(*target);
  }
  if (item == kNone) return false;
  const int64_t version = ns::FieldReader(*archive_, number, record).integer(kEncodingVersionKey);
  if (version < 0 || version > kEncodingVersion) {
    findings_.add({place,
                   FindingCode::version,
                   "the encoding version " + std::to_string(version) + " is not known",
                   {}});
  }
  return places_.isRoot(item) ||
         archive_.reference(record, kParentKey) != places_[places_[item].owner].number;
}

uint32_t ItemWalk::weightOf(const InspectedArchive::Record& node) const {
  const uint32_t data = archive_.reference(node, kDataKey);
  if (data == 0) return 1;
  const uint64_t count = ArchivedList(*archive_, archive_->record(data)).count();
  return static_cast<uint32_t>(std::min(count + 1, kMostCopied));
}

void ItemWalk::grow(uint32_t item, uint64_t size) {
  uint32_t& grown = places_[item].size;
  grown = static_cast<uint32_t>(std::min<uint64_t>(UINT32_MAX, grown + size));
}

void ItemWalk::limitCopies() {
  if (mends_.copies.empty()) return;
  uint64_t own = 0;
  for (uint32_t item = 0; item < known(); ++item) {
    own += weightOf(archive_->record(places_[item].number));
  }
  if (places_[0].size < UINT32_MAX && places_[0].size <= own + kMostCopied) return;
  mends_.copies.clear();
  findings_.refuseRepair(FindingCode::listedTwice);
}

void ItemWalk::checkParentLinks() {
  for (const uint32_t item : unlinked_) checkParentLink(item);
}

void ItemWalk::checkParentLink(uint32_t item) {
  const ItemPlaces::Item& place = places_[item];
  const InspectedArchive::Record record = archive_->record(place.number);
  const uint32_t position = record.shape->find(kParentKey);
  const uint32_t parent = archive_.reference(record, kParentKey);
  const bool isRoot = places_.isRoot(item);
  const bool isInPlace =
      position != record.shape->count() && !archive_->fieldTarget(record, position).has_value();
  if (isRoot && parent == 0 && !isInPlace) return;
  const bool isInOutline = parent != 0 && placeOf_[parent] != 0 && archive_.node(parent);
  const bool isCopied = !mends_.copies.empty();
  const bool isElsewhere = isInOutline && (states_[place.number] & kLinked) != 0;
  if (!isElsewhere || isCopied) {
    mends_.parents[place.number] = isRoot ? 0 : places_[place.owner].number;
  }
  if (isElsewhere) return;  // it is listed there as well, which is told
  FindingList::Entry entry{FindingPlace::ofItem(places_, item), FindingCode::parentLink,
                           "the parent link leads to ",
                           isRoot ? "clears it" : "sets it by the lists of children"};
  if (isInPlace) {
    entry.text += "a value that is no item";
  } else if (parent == 0) {
    entry.text += "no item";
  } else if (isInOutline) {
    entry.other = placeOf_[parent] - 1;
  } else {
    entry.text += archive_.node(parent) ? "an item outside of the outline"
                                        : std::string(ns::describe(archive_->kind(parent)));
    mends_.kept.push_back(parent);
  }
  findings_.add(std::move(entry));
}

}  // namespace tavlin
