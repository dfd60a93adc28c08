#pragma once

#include "platform/foundation/Ref.h"

namespace ns {

/// Where an unchanged value came from: what an archive reader leaves with the values it makes, so
/// that an archive writer can put them back as they were.  Editing a value drops its origin.
class Origin : public Body {};

}  // namespace ns
