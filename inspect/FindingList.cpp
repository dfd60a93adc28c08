#include "inspect/FindingList.h"

#include <algorithm>

namespace tavlin {

namespace {

// A path names every level above an item: findings in an outline of a million levels would take
// terabytes.
constexpr size_t kMostPathBytes = size_t{64} << 20;

}  // namespace

std::string ItemPlaces::pathOfListing(uint32_t owner, uint64_t index) const {
  std::vector<uint64_t> positions{index + 1};
  for (; items_[owner].owner != kNone; owner = items_[owner].owner) {
    positions.push_back(uint64_t{items_[owner].index} + 1);
  }
  std::string path;
  for (size_t i = positions.size(); i-- > 0;) {
    path += std::to_string(positions[i]);
    if (i > 0) path += '.';
  }
  return path;
}

std::string ItemPlaces::path(uint32_t item) const {
  if (items_[item].owner == kNone) return {};
  return pathOfListing(items_[item].owner, items_[item].index);
}

bool FindingList::has(FindingCode code) const {
  return std::ranges::any_of(entries_, [code](const Entry& each) { return each.code == code; });
}

void FindingList::refuseRepair(std::optional<FindingCode> code) {
  for (Entry& each : entries_) {
    if (!code || each.code == *code) each.remedy.clear();
  }
}

std::vector<Finding> FindingList::findings(const ItemPlaces& places) {
  std::ranges::stable_sort(entries_, {}, [](const Entry& each) { return each.place.order; });
  std::vector<Finding> told;
  told.reserve(entries_.size());
  size_t pathBytes = 0;
  const auto pathOf = [&](const std::string& path) {
    pathBytes += path.size();
    return path;
  };
  for (Entry& each : entries_) {
    More& more = more_[static_cast<size_t>(each.code)];
    if (pathBytes >= kMostPathBytes) {
      ++more.count;
      more.remedy = each.remedy;
      continue;
    }
    Finding finding{{}, each.code, std::move(each.text), std::move(each.remedy)};
    if (each.place.owner != ItemPlaces::kNone) {
      finding.path = pathOf(places.pathOfListing(each.place.owner, each.place.index));
    }
    if (each.other != ItemPlaces::kNone) {
      finding.text += places.isRoot(each.other) ? "the root" : pathOf(places.path(each.other));
    }
    told.push_back(std::move(finding));
  }
  for (size_t code = 0; code < kCodes; ++code) {
    More& more = more_[code];
    if (more.count == 0) continue;
    told.push_back({{},
                    static_cast<FindingCode>(code),
                    std::to_string(more.count) + " more of this kind",
                    more.isRefused ? std::string() : std::move(more.remedy),
                    false,
                    more.count});
  }
  for (Finding& each : told) each.isRepairable = !each.remedy.empty();
  entries_.clear();
  return told;
}

}  // namespace tavlin
