// What lies in records and "$top": text, numbers, containers.

#include <algorithm>

#include "platform/archive/ArchiveCheck.h"
#include "platform/foundation/AsciiCheck.h"

namespace ns {

namespace {

using Role = RecordForm::Role;

// What the platform's reader takes; its writers never go beyond 4.
constexpr int kDeepestNesting = 512;

}  // namespace

bool ArchiveCheck::checkText(uint32_t number, const Object& object) {
  const std::string_view text = object.text();
  bool* known = nullptr;
  if (text.size() >= kLongText) {
    // a long text is looked at once, however many objects share it
    const auto [found, isNew] = longTexts_.try_emplace(TextKey(object));
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
  const bool isMarked = StoredArchive::textOf(object).holdsNullMarker();
  if (known) *known = isMarked;
  return isMarked;
}

std::optional<double> ArchiveCheck::numberAt(uint32_t index) const {
  Object object = list_.object(index);
  if (object.type == Type::uid) {
    const StoredArchive::Entry entry = archive_.entry(archive_.target(object));
    if (entry.kind == StoredArchive::EntryKind::null) return 0;
    object = entry.object;
  }
  const bool isNumber =
      object.type == Type::boolean || object.type == Type::integer || object.type == Type::real;
  return isNumber ? std::optional(StoredArchive::scalar(object).doubleValue()) : std::nullopt;
}

uint64_t ArchiveCheck::checkElements(uint32_t number, const Object& list, Role role,
                                     uint16_t forbidden) {
  const std::string key = role == Role::keys ? "\"NS.keys\"" : "\"NS.objects\"";
  if (list.type != Type::array) archive_.fail(number, key + " is no array");
  spend(list.count);
  for (uint64_t i = 0; i < list.count; ++i) {
    const std::optional<uint32_t> target = archive_.targetAt(list_.reference(list.bytes, i));
    if (!target) archive_.fail(number, key + " holds something else than references");
    refer(*target, forbidden);
    if (forbidden == kAllButMembers) places_[*target].owner = number;
  }
  return list.count;
}

void ArchiveCheck::checkInline(uint32_t number, const Object& container, uint32_t index,
                               uint16_t forbidden) {
  const auto isUid = [&](uint64_t i) { return archive_.element(container, i).type == Type::uid; };
  uint64_t uids = 0;
  if (container.type == Type::array) {
    while (uids < container.count && isUid(uids)) ++uids;
  }
  if (container.type != Type::array || uids < container.count) {
    (void)nested(number, container, index, forbidden, 1);
    return;
  }
  spend(container.count);
  for (uint64_t i = 0; i < container.count; ++i) {
    refer(archive_.elementTarget(container, i), forbidden);
  }
}

ArchiveCheck::Extent ArchiveCheck::nested(uint32_t number, const Object& container, uint32_t index,
                                          uint16_t forbidden, int depth) {
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
      refer(archive_.target(element), forbidden);
    } else if (element.type == Type::array || element.type == Type::dictionary) {
      const Extent inner =
          nested(number, element, archive_.elementIndex(container, i), forbidden, depth + 1);
      extent.height = std::max(extent.height, 1 + inner.height);
      extent.size += inner.size;
    } else {
      (void)checkText(number, element);
    }
  }
  return extents_[index] = extent;
}

}  // namespace ns
