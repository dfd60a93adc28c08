#pragma once

#include "platform/foundation/Ref.h"

namespace ns {

/// Where an unchanged value came from: what an archive reader leaves with the values it makes, so
/// that an archive writer can put them back as they were.  Editing a value drops its origin, but
/// for what the origin says stays true.
class Origin : public Body {
 public:
  /// What a value has in this one's place once it was edited; mostly none.
  [[nodiscard]] virtual Ref<const Origin> afterEdit() const { return {}; }
};

}  // namespace ns
