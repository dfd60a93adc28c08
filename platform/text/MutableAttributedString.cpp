#include "platform/text/MutableAttributedString.h"

#include <algorithm>
#include <unordered_map>

#include "platform/foundation/Exception.h"
#include "platform/text/AttributedStringBody.h"

namespace ns {

MutableAttributedString::MutableAttributedString() = default;

MutableAttributedString::MutableAttributedString(const AttributedString& text) : current_(text) {}

AttributedString MutableAttributedString::copy() const { return current_; }

/// The body for changes: one that nobody shares, with its attributes decoded.
AttributedStringBody& MutableAttributedString::body() {
  if (current_.body_->isShared() || current_.body().from) {
    const AttributedStringBody& old = current_.body();
    auto* fresh = new AttributedStringBody();
    const Ref<const ValueBody> holder(fresh);
    fresh->text = old.text;
    fresh->archivedClass = old.archivedClass;
    fresh->otherFields = old.otherFields;
    std::unordered_map<uint32_t, uint32_t> places;
    for (size_t run = 0; run < old.runs.size(); ++run) {
      const auto [place, isNew] = places.try_emplace(
          old.runs[run].attributes, static_cast<uint32_t>(fresh->attributes.size()));
      if (isNew) fresh->attributes.push_back(old.attributesOf(run));
      fresh->runs.push_back({old.runs[run].start, place->second});
    }
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

template <class Change>
void MutableAttributedString::changeRuns(Range range, Change change) {
  if (range.location > length() || range.length > length() - range.location) {
    throw RangeException("range {" + std::to_string(range.location) + ", " +
                         std::to_string(range.length) + "} in an attributed string of " +
                         std::to_string(length()) + " units");
  }
  if (range.length == 0) return;
  const size_t first = splitAt(range.location);
  const size_t last = splitAt(range.end());
  AttributedStringBody& mine = body();
  // runs that shared attributes go on sharing them
  std::unordered_map<uint32_t, uint32_t> changed;
  for (size_t run = first; run < last; ++run) {
    uint32_t& attributes = mine.runs[run].attributes;
    const auto [place, isNew] =
        changed.try_emplace(attributes, static_cast<uint32_t>(mine.attributes.size()));
    if (isNew) mine.attributes.push_back(change(mine.attributes[attributes]));
    attributes = place->second;
  }
}

void MutableAttributedString::setAttributesRange(const Dictionary& attributes, Range range) {
  changeRuns(range, [&](const Dictionary& /*old*/) { return attributes; });
}

void MutableAttributedString::addAttributeValueRange(const char* name, const Value& value,
                                                     Range range) {
  changeRuns(range, [&](Dictionary attributes) {
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
    attributes.removeObjectForKey(Value(name));
    return attributes;
  });
}

void MutableAttributedString::replaceCharactersInRangeWithString(Range range,
                                                                 const String& string) {
  const String old = this->string();
  if (range.location > old.length() || range.length > old.length() - range.location) {
    throw RangeException("range {" + std::to_string(range.location) + ", " +
                         std::to_string(range.length) + "} in an attributed string of " +
                         std::to_string(old.length()) + " units");
  }
  AttributedStringBody& mine = body();
  std::u16string units;
  old.substring({0, range.location}).appendUnitsTo(units);
  string.appendUnitsTo(units);
  old.substring({range.end(), old.length() - range.end()}).appendUnitsTo(units);
  uint32_t taken = 0;
  if (mine.runs.empty()) {
    mine.attributes.emplace_back();
  } else if (range.length > 0) {
    taken = mine.runs[mine.runAt(range.location)].attributes;
  } else {
    taken = mine.runs[mine.runAt(range.location == 0 ? 0 : range.location - 1)].attributes;
  }
  std::vector<AttributedStringBody::Run> runs;
  for (const auto& run : mine.runs) {
    if (run.start < range.location) runs.push_back(run);
  }
  if (!string.empty()) runs.push_back({range.location, taken});
  for (size_t run = 0; run < mine.runs.size(); ++run) {
    if (mine.runEnd(run) <= range.end()) continue;
    const size_t start = std::max(mine.runs[run].start, range.end());
    runs.push_back({start - range.length + string.length(), mine.runs[run].attributes});
  }
  mine.runs = std::move(runs);
  mine.text = String(std::u16string_view(units)).withArchivedClass(mine.text.archivedClass());
}

}  // namespace ns
