#pragma once

#include <memory>

#include "platform/foundation/ClassInfo.h"

namespace ns {

class Coder;

/// The root of every class whose instances have an identity: the model's nodes, trees and
/// controllers, observers and undo targets.  Always owned by `std::shared_ptr`.
class Object : public std::enable_shared_from_this<Object> {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  /// The class written into archives; none for a class that no archive may hold.
  [[nodiscard]] virtual ClassRef classForCoder() const { return nullptr; }

  /// Writes the object's fields.  The base class raises InvalidArgumentException.
  virtual void encodeWithCoder(Coder& coder) const;

  /// Reads the object's fields into a fresh object.  Objects that a field refers to exist when
  /// this runs but may not have read their own fields yet: keep them, do not ask them.
  virtual void initWithCoder(Coder& coder);
};

}  // namespace ns
