#include "platform/archive/ArchiveCheck.h"

#include <algorithm>

namespace ns {

ArchiveCheck::ArchiveCheck(const StoredArchive& archive)
    : archive_(archive),
      list_(archive.propertyList()),
      places_(archive.objectCount()),
      budget_(2 * list_.fileLength() + 100000),
      textBudget_(budget_) {
  findings_.emptyLists.resize(archive.objectCount());
}

ArchiveFindings checkArchive(const StoredArchive& archive) {
  try {
    ArchiveCheck check(archive);
    check.runByNumber();
    ArchiveFindings findings = check.takeFindings();
    if (findings.isTree) return findings;
  } catch (const ArchiveException&) {
    // maybe in an object that nothing refers to
  }
  ArchiveCheck check(archive);
  check.runFromRoot();
  return check.takeFindings();
}

std::vector<bool> reachedNumbers(const StoredArchive& archive) {
  ArchiveCheck check(archive);
  check.runFromRoot();
  return check.takeReached();
}

ArchiveFindings ArchiveCheck::takeFindings() {
  findings_.isTree = isTree_ && isTree();
  if (memberForms_ != 1) findings_.memberForm = {};
  if (listForms_ != 1) findings_.listForm = {};
  if (findings_.isTree) findings_.objects.clear();
  return std::move(findings_);
}

// The two orders.

void ArchiveCheck::runByNumber() {
  const uint32_t count = archive_.objectCount();
  // whatever it holds is null, but it is looked at when somebody refers to it
  (void)archive_.entry(0);
  checkTop();
  for (uint32_t number = 1; number < count && isTree_; ++number) {
    // the file is larger than any cache: fetch what comes up while this one is looked at
    constexpr uint32_t kAhead = 8;
    if (number + kAhead < count) archive_.prefetchObject(number + kAhead);
    checkEntry(number);
  }
  areOwnersKnown_ = true;
  for (const uint32_t number : arrays_) checkEntry(number);
}

void ArchiveCheck::runFromRoot() {
  isFromRoot_ = areOwnersKnown_ = true;
  reached_.resize(archive_.objectCount());
  checkTop();
  checkReached();
  // what only links lead to was not archived for its own sake; it has to be sound, and is nothing
  isOwned_ = false;
  for (const Link& link : links_) reach(link.parent);
  checkReached();
}

void ArchiveCheck::checkReached() {
  while (!pending_.empty()) {
    const uint32_t number = pending_.back();
    pending_.pop_back();
    // the file is larger than any cache: fetch what comes up while this one is looked at
    if (pending_.size() >= 3) archive_.prefetchOffset(pending_[pending_.size() - 3]);
    if (pending_.size() >= 2) archive_.prefetchObject(pending_[pending_.size() - 2]);
    checkEntry(number);
  }
}

void ArchiveCheck::checkTop() {
  refer(archive_.root(), 0);
  for (const StoredArchive::TopEntry& entry : archive_.otherTopEntries()) {
    if (entry.object.type == Type::uid) {
      refer(archive_.target(entry.object), kObjects);
    } else if (entry.object.type == Type::array || entry.object.type == Type::dictionary) {
      checkInline(0, entry.object, entry.index, kObjects);
    } else {
      (void)checkText(0, entry.object);
    }
  }
}

bool ArchiveCheck::isTree() {
  if ((places_[0].forbidden & maskOf(Kind::none)) != 0) return false;  // null where it may not be
  for (uint32_t number = 1; number < archive_.objectCount(); ++number) {
    const Place& place = places_[number];
    if (place.kind == kClassRecord) {
      if (place.mentions > 0) return false;
      continue;
    }
    const uint16_t kind = maskOf(place.kind);
    if ((place.forbidden & kind) != 0) return false;
    // nobody but its owner knows a list of children, or an object
    const bool isChildren = place.kind == codeOf(Kind::array) && place.owner != 0;
    if (((kind & kObjects) != 0 || isChildren) && place.mentions > 1) return false;
    constexpr uint16_t kContainers = maskOf(Kind::array, Kind::dictionary);
    if (place.mentions > 1 && (kind & kContainers) != 0) {
      findings_.sharedContainers.push_back(number);
    }
  }
  return std::ranges::all_of(links_, [&](const Link& link) {
    // a parent that was not archived with its child is null
    return places_[link.parent].kind == codeOf(Kind::none) || isChildOf(link.child, link.parent);
  });
}

}  // namespace ns
