#include "platform/foundation/NotificationCenter.h"

#include <utility>

namespace ns {

namespace {

/// Where the default centre is found; never destroyed, so that objects destroyed at exit may
/// still post.
NotificationCenter*& defaultCenterPointer() {
  static NotificationCenter* center = new NotificationCenter();
  return center;
}

}  // namespace

NotificationCenter& NotificationCenter::defaultCenter() { return *defaultCenterPointer(); }

NotificationCenter::ScopedDefault::ScopedDefault(NotificationCenter& center)
    : previous_(std::exchange(defaultCenterPointer(), &center)) {}

NotificationCenter::ScopedDefault::~ScopedDefault() { defaultCenterPointer() = previous_; }

NotificationCenter::Token NotificationCenter::addObserver(const void* observer,
                                                          std::string_view name,
                                                          const Object* sender, Handler handler) {
  const Token token = ++lastToken_;
  registrations_.push_back(std::make_shared<Registration>(
      Registration{token, observer, std::string(name), sender, std::move(handler)}));
  return token;
}

void NotificationCenter::removeObserver(const void* observer) {
  removeWhere([observer](const Registration& one) { return one.observer == observer; });
}

void NotificationCenter::removeObserver(Token token) {
  removeWhere([token](const Registration& one) { return one.token == token; });
}

template <class Condition>
void NotificationCenter::removeWhere(Condition condition) {
  // Handlers may own what lets go of other observers: they are destroyed when the list is sound.
  std::vector<std::shared_ptr<Registration>> removed;
  std::vector<std::shared_ptr<Registration>> kept;
  kept.reserve(registrations_.size());
  for (auto& one : registrations_) (condition(*one) ? removed : kept).push_back(std::move(one));
  registrations_ = std::move(kept);
  for (const auto& one : removed) one->isRemoved = true;
}

void NotificationCenter::deliver(std::string_view name, Object* object) {
  std::vector<std::shared_ptr<Registration>> receivers;
  for (const auto& one : registrations_) {
    const bool isMeant = (one->name.empty() || one->name == name) &&
                         (one->sender == nullptr || one->sender == object);
    if (isMeant) receivers.push_back(one);
  }
  for (const auto& one : receivers) {
    if (!one->isRemoved) one->handler({name, object});
  }
}

}  // namespace ns
