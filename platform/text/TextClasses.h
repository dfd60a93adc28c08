#pragma once

#include "platform/archive/ClassRegistry.h"

namespace ns {

/// Adds the text classes of archives to a registry: attributed strings, fonts, colours and
/// paragraph styles.
void addTextClasses(ClassRegistry& registry);

}  // namespace ns
