#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ns {

class Object;

/// Delivers notifications, synchronously and in the order of registration, to observers chosen
/// by name and sender.
///
/// Observers may be added and removed while a notification is delivered: one added then does
/// not receive it, one removed then is not called any more.
class NotificationCenter {
 public:
  struct Notification {
    std::string_view name;  ///< valid during delivery
    Object* object;         ///< the sender, or none; valid during delivery
  };
  using Handler = std::function<void(const Notification&)>;
  using Token = uint64_t;

  /// The process-wide centre.  A test may replace it for its own time with a ScopedDefault.
  static NotificationCenter& defaultCenter();

  /// Calls `handler` for every notification of that name (an empty name: any) from that sender
  /// (none: any).  `observer` is a label for removeObserver, never followed; senders are not
  /// retained.  The token removes this one registration.
  Token addObserver(const void* observer, std::string_view name, const Object* sender,
                    Handler handler);
  /// Removes every registration of an observer.
  void removeObserver(const void* observer);
  void removeObserver(Token token);

  /// Delivers before it returns.  Costs a test of one counter where nobody observes anything.
  void post(std::string_view name, Object* object) {
    if (!registrations_.empty()) deliver(name, object);
  }

  /// Whether anybody observes anything here; who posts may skip work that only observers see.
  [[nodiscard]] bool hasObservers() const { return !registrations_.empty(); }

  /// Makes another centre the default one while it lives.
  class ScopedDefault {
   public:
    explicit ScopedDefault(NotificationCenter& center);
    ~ScopedDefault();
    ScopedDefault(const ScopedDefault&) = delete;
    ScopedDefault& operator=(const ScopedDefault&) = delete;

   private:
    NotificationCenter* previous_;
  };

 private:
  struct Registration {
    Token token;
    const void* observer;
    std::string name;
    const Object* sender;
    Handler handler;
    bool isRemoved = false;  ///< removed while a notification is on its way
  };
  template <class Condition>
  void removeWhere(Condition condition);
  void deliver(std::string_view name, Object* object);

  std::vector<std::shared_ptr<Registration>> registrations_;
  Token lastToken_ = 0;
};

}  // namespace ns
