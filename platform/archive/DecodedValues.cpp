#include "platform/archive/DecodedValues.h"

#include <algorithm>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/ContainerAccess.h"

namespace ns {

const ValueBody* DecodedValues::container(uint32_t number, const ValueTransform* transform) const {
  const auto found = containers_.find({number, transform});
  return found == containers_.end() ? nullptr : found->second;
}

void DecodedValues::setContainer(uint32_t number, const ValueTransform* transform,
                                 const ValueBody* body) {
  containers_[{number, transform}] = body;
}

void DecodedValues::forgetContainer(uint32_t number, const ValueTransform* transform,
                                    const ValueBody* body) {
  const auto known = containers_.find({number, transform});
  if (known != containers_.end() && known->second == body) containers_.erase(known);
}

String DecodedValues::longText(const TextKey& key, const ValueTransform* transform,
                               const std::function<String()>& make) {
  const TransformedText text{key, transform};
  const uint64_t length = key.length();
  const auto known = texts_.find(text);
  if (known != texts_.end()) return known->second.string();
  if (textLength_ + length > textLimit_) {
    // whatever is here must not outlive its last use by much
    std::erase_if(texts_, [&](const auto& each) {
      if (each.second.body()->isShared()) return false;
      textLength_ -= each.first.text.length();
      return true;
    });
    constexpr uint64_t kLeast = uint64_t{1} << 20;
    textLimit_ = std::max(kLeast, 2 * (textLength_ + length));
  }
  String made = make();
  texts_.emplace(text, Value(made));
  textLength_ += length;
  return made;
}

/// Takes a derived dictionary out of what is known when it goes or changes.
class DerivedOrigin final : public Origin {
 public:
  DerivedOrigin(std::shared_ptr<const KeyedArchive> archive, DecodedValues::DerivedKey key)
      : archive_(std::move(archive)), key_(std::move(key)) {}
  ~DerivedOrigin() override { archive_->decoded().forgetDerived(key_); }

 private:
  const std::shared_ptr<const KeyedArchive> archive_;
  const DecodedValues::DerivedKey key_;
};

Dictionary DecodedValues::derivedDictionary(const std::shared_ptr<const KeyedArchive>& archive,
                                            uint32_t number, const std::string& name,
                                            const std::function<Dictionary()>& make) {
  const DerivedKey key(number, name);
  const auto known = derived_.find(key);
  if (known != derived_.end()) return Value(Ref<const ValueBody>(known->second)).dictionary();
  const Dictionary plain = make();
  Dictionary made = DictionaryAccess::make(plain.entries(), plain.archivedClass(),
                                           Ref<const Origin>(new DerivedOrigin(archive, key)));
  derived_[key] = Value(made).body().get();
  return made;
}

std::shared_ptr<Object> DecodedValues::liveObject(uint32_t number) const {
  const auto found = live_.find(number);
  return found == live_.end() ? nullptr : found->second.lock();
}

void DecodedValues::setLiveObject(uint32_t number, const std::shared_ptr<Object>& object) {
  std::weak_ptr<Object>& known = live_[number];
  if (known.expired()) known = object;
}

Value DecodedValues::runDecoder(uint32_t number, const std::function<Value()>& decode) {
  constexpr size_t kDeepest = 8;
  if (decoding_.size() >= kDeepest || std::ranges::count(decoding_, number) > 0) return {};
  decoding_.push_back(number);
  const struct Leaving {
    ~Leaving() { decoding.pop_back(); }
    std::vector<uint32_t>& decoding;
  } leaving{decoding_};
  return decode();
}

}  // namespace ns
