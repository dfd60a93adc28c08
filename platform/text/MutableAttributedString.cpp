#include "platform/text/MutableAttributedString.h"

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_map>

#include "platform/foundation/Exception.h"
#include "platform/text/AttributedStringBody.h"

namespace ns {

namespace {

std::string describe(Range range) {
  return "range {" + std::to_string(range.location) + ", " + std::to_string(range.length) + "}";
}

bool isSame(const Dictionary& a, const Dictionary& b) {
  return Value(a).body() == Value(b).body() || (a.empty() && b.empty());
}

/// Runs for a text, put together from left to right; equal neighbours become one.
class RunList {
 public:
  void add(size_t start, uint32_t attributes) {
    if (!runs.empty() && runs.back().attributes == attributes) return;
    runs.push_back({start, attributes});
  }
  std::vector<AttributedStringBody::Run> runs;
};

}  // namespace

void MutableAttributedString::edited(Range /*range*/, std::ptrdiff_t /*changeInLength*/) {}

void MutableAttributedString::checkRange(Range range) const {
  if (range.location <= length() && range.length <= length() - range.location) return;
  throw RangeException(describe(range) + " in an attributed string of " + std::to_string(length()) +
                       " units");
}

void MutableAttributedString::checkOrder(Range range, size_t before) const {
  checkRange(range);
  if (range.location >= before) return;
  throw InvalidArgumentException(describe(range) + " begins before the end of the one before it");
}

/// The body for changes: one that nobody shares, with its attributes decoded.
AttributedStringBody& MutableAttributedString::body() {
  if (current_.body_->isShared() || current_.body().from) {
    const Ref<const ValueBody> holder(current_.body().copyForChanges());
    current_ = AttributedString(holder);
  }
  // bodies are made as mutable objects; handles only see them as constants
  return const_cast<AttributedStringBody&>(current_.body());
}

/// The run that begins at an index, divided off now if need be.
size_t MutableAttributedString::splitAt(size_t index) {
  AttributedStringBody& mine = body();
  if (index == mine.text.length()) return mine.runs.size();
  const size_t run = mine.runAt(index);
  if (mine.runs[run].start == index) return run;
  mine.runs.insert(mine.runs.begin() + static_cast<std::ptrdiff_t>(run) + 1,
                   {index, mine.runs[run].attributes});
  return run + 1;
}

/// Forgets attributes that no run has any more, once they outnumber the others.
void MutableAttributedString::dropUnused() {
  constexpr size_t kFew = 64;
  AttributedStringBody& mine = body();
  if (mine.attributes.size() <= kFew + 2 * mine.runs.size()) return;
  std::vector<Dictionary> kept;
  std::unordered_map<uint32_t, uint32_t> places;
  for (AttributedStringBody::Run& run : mine.runs) {
    const auto [place, isNew] =
        places.try_emplace(run.attributes, static_cast<uint32_t>(kept.size()));
    if (isNew) kept.push_back(mine.attributes[run.attributes]);
    run.attributes = place->second;
  }
  mine.attributes = std::move(kept);
}

void MutableAttributedString::changeRuns(
    Range range, const std::function<Dictionary(const Dictionary&)>& change) {
  checkRange(range);
  if (range.length == 0) return;
  // text that nothing changes in keeps its body and with it its place in an archive
  const AttributedStringBody& old = current_.body();
  std::unordered_map<uint32_t, std::optional<Dictionary>> changed;
  std::vector<const std::optional<Dictionary>*> results;
  bool changesAny = false;
  for (size_t run = old.runAt(range.location);
       run < old.runs.size() && old.runs[run].start < range.end(); ++run) {
    const auto [result, isNew] = changed.try_emplace(old.runs[run].attributes);
    if (isNew) {
      const Dictionary before = old.attributesOf(run);
      Dictionary after = change(before);
      if (!isSame(before, after)) {
        result->second = std::move(after);
        changesAny = true;
      }
    }
    results.push_back(&result->second);
  }
  if (!changesAny) return;
  const size_t first = splitAt(range.location);
  const size_t last = splitAt(range.end());
  AttributedStringBody& mine = body();
  std::unordered_map<const std::optional<Dictionary>*, uint32_t> places;
  for (size_t run = first; run < last; ++run) {
    const std::optional<Dictionary>* result = results[run - first];
    if (!*result) continue;
    const auto [place, isNew] =
        places.try_emplace(result, static_cast<uint32_t>(mine.attributes.size()));
    if (isNew) mine.attributes.push_back(**result);
    mine.runs[run].attributes = place->second;
  }
  dropUnused();
  edited(range, 0);
}

void MutableAttributedString::changeAttributesInRange(
    Range range, const std::function<Dictionary(const Dictionary&)>& change) {
  changeRuns(range, change);
}

void MutableAttributedString::setAttributesRange(const Dictionary& attributes, Range range) {
  changeRuns(range, [&](const Dictionary& /*old*/) { return attributes; });
}

void MutableAttributedString::addAttributeValueRange(const char* name, const Value& value,
                                                     Range range) {
  if (value.isNone()) {
    throw InvalidArgumentException(std::string("no value for the attribute ") + name);
  }
  changeRuns(range, [&](Dictionary attributes) {
    if (attributes.objectForKey(name).body() == value.body()) return attributes;
    attributes.setObjectForKey(value, Value(name));
    return attributes;
  });
}

void MutableAttributedString::addAttributesRange(const Dictionary& added, Range range) {
  changeRuns(range, [&](Dictionary attributes) {
    for (const auto& [name, value] : added) attributes.setObjectForKey(value, name);
    return attributes;
  });
}

void MutableAttributedString::removeAttributeRange(const char* name, Range range) {
  changeRuns(range, [&](Dictionary attributes) {
    if (attributes.contains(Value(name))) attributes.removeObjectForKey(Value(name));
    return attributes;
  });
}

void MutableAttributedString::addAttributesInRanges(
    const std::vector<std::pair<Range, Dictionary>>& added) {
  changeRanges(added, true);
}

void MutableAttributedString::setAttributesInRanges(
    const std::vector<std::pair<Range, Dictionary>>& replacements) {
  changeRanges(replacements, false);
}

void MutableAttributedString::changeRanges(const RangedAttributes& given, bool keepsOthers) {
  size_t before = 0;
  for (const auto& each : given) {
    checkOrder(each.first, before);
    before = each.first.end();
  }
  if (length() == 0 || given.empty()) return;
  AttributedStringBody& mine = body();
  // what is done to the same attributes with the same ones has one result
  std::map<std::pair<uint32_t, const ValueBody*>, uint32_t> places;
  const auto placeOf = [&](uint32_t old, const Dictionary& attributes) {
    const auto [place, isNew] =
        places.try_emplace({keepsOthers ? old : 0, Value(attributes).body().get()},
                           static_cast<uint32_t>(mine.attributes.size()));
    if (isNew) {
      Dictionary result = keepsOthers ? mine.attributes[old] : attributes;
      if (keepsOthers) {
        for (const auto& [name, value] : attributes) result.setObjectForKey(value, name);
      }
      mine.attributes.push_back(std::move(result));
    }
    return place->second;
  };
  RunList list;
  size_t run = 0;
  size_t at = 0;
  const auto goTo = [&](size_t end, const Dictionary* attributes) {
    while (at < end) {
      const uint32_t old = mine.runs[run].attributes;
      list.add(at, attributes ? placeOf(old, *attributes) : old);
      const size_t runEnd = mine.runEnd(run);
      at = std::min(runEnd, end);
      if (at == runEnd) ++run;
    }
  };
  for (const auto& [range, attributes] : given) {
    goTo(range.location, nullptr);
    goTo(range.end(), &attributes);
  }
  goTo(mine.text.length(), nullptr);
  mine.runs = std::move(list.runs);
  dropUnused();
  const size_t start = given.front().first.location;
  edited({start, given.back().first.end() - start}, 0);
}

void MutableAttributedString::replaceCharactersInRangeWithString(Range range,
                                                                 const String& string) {
  replaceCharactersInRangesWithString({range}, string);
}

void MutableAttributedString::replaceCharactersInRangesWithString(const std::vector<Range>& ranges,
                                                                  const String& string) {
  size_t before = 0;
  for (const Range& range : ranges) {
    checkOrder(range, before);
    before = range.end();
  }
  if (ranges.empty()) return;
  AttributedStringBody& mine = body();
  const size_t oldLength = mine.text.length();
  if (mine.runs.empty() && mine.attributes.empty()) mine.attributes.emplace_back();
  const std::u16string old = mine.text.units();
  const std::u16string inserted = string.units();
  std::u16string units;
  RunList list;
  size_t run = 0;
  size_t at = 0;
  const auto keepUpTo = [&](size_t end) {
    while (at < end) {
      while (mine.runEnd(run) <= at) ++run;
      const size_t stop = std::min(mine.runEnd(run), end);
      list.add(units.size(), mine.runs[run].attributes);
      units.append(old, at, stop - at);
      at = stop;
    }
  };
  for (const Range& range : ranges) {
    keepUpTo(range.location);
    if (!inserted.empty()) {
      uint32_t taken = 0;
      if (!mine.runs.empty()) {
        const bool isEmpty = range.length == 0;
        const size_t model = isEmpty && range.location > 0 ? range.location - 1 : range.location;
        taken = mine.runs[mine.runAt(model)].attributes;
      }
      list.add(units.size(), taken);
      units += inserted;
    }
    at = range.end();
  }
  keepUpTo(oldLength);
  mine.runs = std::move(list.runs);
  mine.text = String(std::u16string_view(units)).withArchivedClass(mine.text.archivedClass());
  dropUnused();
  const size_t start = ranges.front().location;
  const size_t behind = oldLength - ranges.back().end();
  edited({start, units.size() - behind - start},
         static_cast<std::ptrdiff_t>(units.size()) - static_cast<std::ptrdiff_t>(oldLength));
}

}  // namespace ns
