#include "platform/text/AttributedString.h"

#include <algorithm>
#include <compare>
#include <memory>
#include <set>
#include <unordered_map>

#include "platform/foundation/Exception.h"
#include "platform/text/AttributedStringBody.h"

namespace ns {

namespace {

/// The comparison that is going on, of texts whose attributes may hold other texts.  A pair met
/// once is taken for equal when met again: if it is not, what holds it is not equal either.  That
/// ends circles and keeps shared texts from being compared over and over.
class Comparison {
 public:
  static Comparison& current() {
    static thread_local Comparison comparison;
    return comparison;
  }

  /// Whether two texts of the same characters have equal attributes.
  bool areEqual(const AttributedStringBody& a, const AttributedStringBody& b) {
    if (depth_ >= kDeepest) return false;
    const Pair pair(Identity::of(a), Identity::of(b));
    if (!pairs_.insert(pair).second) return true;
    const size_t before = met_.size();
    met_.push_back({pair, Ref<const ValueBody>(&a), Ref<const ValueBody>(&b)});
    const Level level(*this);
    const bool areEqual = haveEqualAttributes(a, b);
    if (!areEqual) forget(before);
    return areEqual;
  }

 private:
  /// A text in an archive may have a new body each time it is reached.
  struct Identity {
    const void* place;
    uint32_t number;  // in an archive
    static Identity of(const AttributedStringBody& body) {
      if (body.from) return {body.from->archive().get(), body.from->number()};
      return {&body, 0};
    }
    auto operator<=>(const Identity&) const = default;
  };
  using Pair = std::pair<Identity, Identity>;
  struct Met {
    Pair pair;
    // held, so that no address stands for two texts
    Ref<const ValueBody> a;
    Ref<const ValueBody> b;
  };

  // texts nested deeper than this are equal only when they are the same
  static constexpr int kDeepest = 100;

  /// The outermost level ends the comparison, however it is left.
  class Level {
   public:
    explicit Level(Comparison& comparison) : comparison_(comparison) { ++comparison_.depth_; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level() {
      if (--comparison_.depth_ == 0) comparison_.forget(0);
    }

   private:
    Comparison& comparison_;
  };

  static bool haveEqualAttributes(const AttributedStringBody& a, const AttributedStringBody& b) {
    for (size_t i = 0, j = 0; i < a.runs.size() && j < b.runs.size();) {
      if (!(a.attributesOf(i) == b.attributesOf(j))) return false;
      const size_t aEnd = a.runEnd(i);
      const size_t bEnd = b.runEnd(j);
      if (aEnd <= bEnd) ++i;
      if (bEnd <= aEnd) ++j;
    }
    return true;
  }

  /// What was taken for equal inside texts that are not: a key that differs is no reason for the
  /// dictionaries to differ.
  void forget(size_t from) {
    for (size_t at = from; at < met_.size(); ++at) pairs_.erase(met_[at].pair);
    met_.erase(met_.begin() + static_cast<std::ptrdiff_t>(from), met_.end());
  }

  int depth_ = 0;
  std::set<Pair> pairs_;
  std::vector<Met> met_;  // the pairs in order
};

void checkIndex(size_t index, size_t length) {
  if (index < length) return;
  throw RangeException("index " + std::to_string(index) + " in an attributed string of " +
                       std::to_string(length) + " units");
}

}  // namespace

size_t AttributedStringBody::runAt(size_t index) const {
  const auto after = std::upper_bound(runs.begin(), runs.end(), index,
                                      [](size_t at, const Run& run) { return at < run.start; });
  return static_cast<size_t>(after - runs.begin()) - 1;
}

Dictionary AttributedStringBody::attributesOf(size_t run) const {
  const uint32_t index = runs[run].attributes;
  if (archivedAttributes.empty()) return attributes[index];
  const uint32_t number = archivedAttributes[index];
  return number == 0 ? Dictionary() : from->archive()->value(number).dictionary();
}

Value AttributedStringBody::withOrigin(const Ref<const ArchiveOrigin>& origin) const {
  auto* made = new AttributedStringBody();
  Value value{Ref<const ValueBody>(made)};
  made->text = text;
  made->runs = runs;
  for (const Dictionary& each : attributes) made->attributes.push_back(each);
  if (!archivedAttributes.empty()) {
    // those may be of another archive
    made->runs.clear();
    for (size_t run = 0; run < runs.size(); ++run) {
      made->runs.push_back({runs[run].start, static_cast<uint32_t>(run)});
      made->attributes.push_back(attributesOf(run));
    }
  }
  made->archivedClass = archivedClass;
  made->otherFields = otherFields;
  made->from = origin;
  return value;
}

AttributedStringBody* AttributedStringBody::copyForChanges() const {
  auto copy = std::make_unique<AttributedStringBody>();
  copy->text = text;
  copy->archivedClass = archivedClass;
  copy->otherFields = otherFields;
  copy->runs.reserve(runs.size());
  std::unordered_map<uint32_t, uint32_t> places;
  for (size_t run = 0; run < runs.size(); ++run) {
    const auto [place, isNew] =
        places.try_emplace(runs[run].attributes, static_cast<uint32_t>(copy->attributes.size()));
    if (isNew) copy->attributes.push_back(attributesOf(run));
    copy->runs.push_back({runs[run].start, place->second});
  }
  return copy.release();
}

bool AttributedStringBody::isEqual(const ValueBody& other) const {
  const auto& that = static_cast<const AttributedStringBody&>(other);
  if (this == &that) return true;
  if (from && that.from && from->archive() == that.from->archive() &&
      from->number() == that.from->number() && from->transform() == that.from->transform()) {
    return true;
  }
  if (!(text == that.text)) return false;
  return Comparison::current().areEqual(*this, that);
}

AttributedString::AttributedString() : AttributedString(String()) {}

AttributedString::AttributedString(const String& text) : AttributedString(text, Dictionary()) {}

AttributedString::AttributedString(const String& text, const Dictionary& attributes) {
  auto* made = new AttributedStringBody();
  body_ = Ref<const ValueBody>(made);
  made->text = text;
  if (!text.empty()) {
    made->runs.push_back({0, 0});
    made->attributes.push_back(attributes);
  }
}

AttributedString AttributedString::withStretches(const String& text,
                                                 const std::vector<Stretch>& stretches,
                                                 ClassRef archivedClass) {
  auto* made = new AttributedStringBody();
  AttributedString result{Ref<const ValueBody>(made)};
  made->text = text;
  made->archivedClass = std::move(archivedClass);
  const size_t length = text.length();
  size_t covered = 0;
  for (const auto& [stretch, attributes] : stretches) {
    if (stretch == 0) continue;
    if (stretch > length - covered) {
      throw InvalidArgumentException("stretches of an attributed string are longer than its text");
    }
    made->runs.push_back({covered, static_cast<uint32_t>(made->attributes.size())});
    made->attributes.push_back(attributes);
    covered += stretch;
  }
  if (covered != length) {
    throw InvalidArgumentException("stretches of an attributed string cover " +
                                   std::to_string(covered) + " of " + std::to_string(length) +
                                   " units");
  }
  return result;
}

AttributedString::AttributedString(const Value& value) {
  if (value.kind() == Kind::attributedString) {
    body_ = value.body();
  } else {
    *this = AttributedString();
  }
}

AttributedString::AttributedString(Ref<const ValueBody> body) : body_(std::move(body)) {}

const AttributedStringBody& AttributedString::body() const {
  return static_cast<const AttributedStringBody&>(*body_);
}

Value AttributedString::asValue() const { return Value(body_); }
String AttributedString::string() const { return body().text.withArchivedClass(nullptr); }
size_t AttributedString::length() const { return body().text.length(); }
ClassRef AttributedString::archivedClass() const { return body().archivedClass; }

AttributedString AttributedString::immutableCopy() const {
  constexpr const char* kMutable = "NSMutableAttributedString";
  const ClassRef& read = body().archivedClass;
  if (!read || (read->name != kMutable && !read->inheritsFrom(kMutable))) return *this;
  AttributedStringBody* const copy = body().copyForChanges();
  AttributedString result{Ref<const ValueBody>(copy)};
  copy->text = copy->text.withArchivedClass(nullptr);
  copy->archivedClass = nullptr;
  return result;
}

String AttributedString::archivedString() const { return body().text; }
bool AttributedString::hasOtherFields() const { return !body().otherFields.empty(); }
size_t AttributedString::runCount() const { return body().runs.size(); }

Range AttributedString::runRange(size_t run) const {
  checkIndex(run, runCount());
  const size_t start = body().runs[run].start;
  return {start, body().runEnd(run) - start};
}

Dictionary AttributedString::runAttributes(size_t run) const {
  checkIndex(run, runCount());
  return body().attributesOf(run);
}

Dictionary AttributedString::attributesAtIndex(size_t index, Range* effectiveRange) const {
  checkIndex(index, length());
  const size_t run = body().runAt(index);
  if (effectiveRange) *effectiveRange = runRange(run);
  return body().attributesOf(run);
}

namespace {

/// Widens a run to its neighbours while `same` says so of the next run, within a range.
template <class Same>
Range widened(const AttributedStringBody& body, size_t run, Range in, Same same) {
  size_t first = run;
  size_t last = run;
  while (first > 0 && body.runs[first].start > in.location && same(first - 1)) --first;
  while (last + 1 < body.runs.size() && body.runEnd(last) < in.end() && same(last + 1)) ++last;
  const size_t from = std::max(body.runs[first].start, in.location);
  const size_t to = std::min(body.runEnd(last), in.end());
  return {from, to > from ? to - from : 0};
}

}  // namespace

Dictionary AttributedString::attributesAtIndexLongestEffectiveRangeInRange(size_t index,
                                                                           Range* longest,
                                                                           Range in) const {
  checkIndex(index, length());
  const size_t run = body().runAt(index);
  Dictionary attributes = body().attributesOf(run);
  if (longest) {
    *longest = widened(body(), run, in, [&](size_t other) {
      return body().runs[other].attributes == body().runs[run].attributes ||
             body().attributesOf(other) == attributes;
    });
  }
  return attributes;
}

Value AttributedString::attributeAtIndexLongestEffectiveRangeInRange(const char* name, size_t index,
                                                                     Range* longest,
                                                                     Range in) const {
  checkIndex(index, length());
  const size_t run = body().runAt(index);
  Value value = body().attributesOf(run).objectForKey(name);
  if (longest) {
    *longest = widened(body(), run, in, [&](size_t other) {
      return body().runs[other].attributes == body().runs[run].attributes ||
             body().attributesOf(other).objectForKey(name) == value;
    });
  }
  return value;
}

Value AttributedString::attributeAtIndex(const char* name, size_t index) const {
  return attributesAtIndex(index).objectForKey(name);
}

AttributedString AttributedString::attributedSubstringFromRange(Range range) const {
  auto* made = new AttributedStringBody();
  AttributedString part{Ref<const ValueBody>(made)};
  made->text = string().substring(range);
  if (range.length == 0) return part;
  for (size_t run = body().runAt(range.location);
       run < runCount() && body().runs[run].start < range.end(); ++run) {
    const size_t start = std::max(body().runs[run].start, range.location) - range.location;
    made->runs.push_back({start, static_cast<uint32_t>(made->attributes.size())});
    made->attributes.push_back(body().attributesOf(run));
  }
  return part;
}

bool AttributedString::isEqualToAttributedString(const AttributedString& other) const {
  return body_ == other.body_ || body_->isEqual(*other.body_);
}

}  // namespace ns
