#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "platform/foundation/Origin.h"
#include "platform/foundation/Value.h"

namespace ns {

class KeyedArchive;
class ValueTransform;

/// Where a value came from.
class ArchiveOrigin : public Origin {
 public:
  ArchiveOrigin(std::shared_ptr<const KeyedArchive> archive, uint32_t number,
                const ValueTransform* transform)
      : archive_(std::move(archive)), number_(number), transform_(transform) {}

  [[nodiscard]] const std::shared_ptr<const KeyedArchive>& archive() const { return archive_; }
  [[nodiscard]] uint32_t number() const { return number_; }
  [[nodiscard]] const ValueTransform* transform() const { return transform_; }

 private:
  const std::shared_ptr<const KeyedArchive> archive_;
  const uint32_t number_;
  const ValueTransform* const transform_;
};

/// The record that an edited container or an object had in an archive, where that has fields that
/// are not the class's own: they are written with it again.
class FormerRecord final : public Origin {
 public:
  FormerRecord(std::shared_ptr<const KeyedArchive> archive, uint32_t number)
      : archive_(std::move(archive)), number_(number) {}
  [[nodiscard]] Ref<const Origin> afterEdit() const override { return Ref<const Origin>(this); }

  [[nodiscard]] const std::shared_ptr<const KeyedArchive>& archive() const { return archive_; }
  [[nodiscard]] uint32_t number() const { return number_; }

 private:
  const std::shared_ptr<const KeyedArchive> archive_;
  const uint32_t number_;
};

/// Where a value came from; none for a value that was made or changed, and for scalars, which are
/// equal or not and otherwise have no identity.  Valid while the value lives.
const ArchiveOrigin* archiveOriginOf(const Value& value);

/// An array, a dictionary or a string with an archived class that is what `transform` makes of an
/// archive's object, said to come from there: written again it is the same object as all others
/// that come from there in that way.  Other values are answered as they are.
Value withArchiveOrigin(const Value& value, const std::shared_ptr<const KeyedArchive>& archive,
                        uint32_t number, const ValueTransform* transform);

}  // namespace ns
