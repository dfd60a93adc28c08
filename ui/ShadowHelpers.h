#pragma once

namespace tavlin {

/// +resetShadow  Sets a new shadow of the fully transparent colour in the current graphics
/// state, so that what is drawn from then on throws no shadow that can be seen.  Raises
/// ns::DrawingException when there is no current graphics context.
void resetShadow();

}  // namespace tavlin
