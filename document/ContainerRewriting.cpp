#include "document/ContainerRewriting.h"

#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/foundation/Array.h"
#include "platform/foundation/ContainerAccess.h"
#include "platform/foundation/Dictionary.h"

namespace tavlin {

namespace {

bool isContainer(const ns::Value& value) { return value.isArray() || value.isDictionary(); }

bool isSame(const ns::Value& a, const ns::Value& b) { return a.body() == b.body(); }

/// A container whose elements are being rewritten one after the other.
struct Frame {
  ns::Value container;
  std::vector<ns::Value> elements;  // old ones, then new ones from the front
  size_t position = 0;
  bool isChanged = false;
};

Frame frameOf(const ns::Value& container) {
  Frame frame{container, {}, 0, false};
  if (container.isArray()) {
    frame.elements = container.array().values();
  } else {
    for (const auto& [key, value] : container.dictionary().entries()) {
      frame.elements.push_back(value);
    }
  }
  return frame;
}

/// What rewriting a container leaves of its origin.
ns::Ref<const ns::Origin> leftOf(const ns::Origin* origin) {
  return origin ? origin->afterEdit() : ns::Ref<const ns::Origin>();
}

ns::Value finished(Frame& frame) {
  if (!frame.isChanged) return frame.container;
  if (frame.container.isArray()) {
    const ns::Array old = frame.container.array();
    return ns::Value(ns::ArrayAccess::make(std::move(frame.elements),
                                           frame.container.archivedClass(),
                                           leftOf(ns::ArrayAccess::origin(old))));
  }
  const ns::Dictionary old = frame.container.dictionary();
  std::vector<ns::Dictionary::Entry> entries(old.begin(), old.end());
  for (size_t i = 0; i < entries.size(); ++i) entries[i].second = std::move(frame.elements[i]);
  return ns::Value(ns::DictionaryAccess::make(std::move(entries), frame.container.archivedClass(),
                                              leftOf(ns::DictionaryAccess::origin(old))));
}

}  // namespace

ns::Value rewritingLeaves(const ns::Value& value, const Rewrite& rewrite, const Remade& remade) {
  const auto done = [&](const ns::Value& before, const ns::Value& now) {
    return remade ? remade(before, now) : now;
  };
  if (!isContainer(value)) return done(value, rewrite(value));
  std::unordered_map<const ns::ValueBody*, ns::Value> results;
  std::vector<Frame> frames;
  frames.push_back(frameOf(value));
  for (;;) {
    Frame& frame = frames.back();
    if (frame.position < frame.elements.size()) {
      ns::Value& element = frame.elements[frame.position];
      ns::Value replacement;
      if (!isContainer(element)) {
        replacement = done(element, rewrite(element));
      } else if (const auto known = results.find(element.body().get()); known != results.end()) {
        replacement = known->second;
      } else {
        frames.push_back(frameOf(element));
        continue;
      }
      frame.isChanged = frame.isChanged || !isSame(element, replacement);
      element = std::move(replacement);
      ++frame.position;
      continue;
    }
    // a container just finished is found in `results` when its holder goes on
    ns::Value result = done(frame.container, finished(frame));
    if (frames.size() == 1) return result;
    results.emplace(frame.container.body().get(), std::move(result));
    frames.pop_back();
  }
}

}  // namespace tavlin
