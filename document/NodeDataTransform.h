#pragma once

#include "platform/archive/ValueTransform.h"

namespace tavlin {

/// What happens to an item's data on its way from an archive to an item: the fonts of its rich
/// text are fixed, and, for records of a version that escapes, "\$null" becomes "$null" again.
const ns::ValueTransform& dataAfterLoading(bool isEscaped);

/// What happens to data that nobody decoded on its way from one archive to the next: the same,
/// followed by the escaping that saving does.
const ns::ValueTransform& dataForSaving(bool isEscaped);

/// What saving does to the stored form of something that loading has made of it by a transform, or
/// without one where none was; none for transforms that are not those of loading.
const ns::ValueTransform* dataForSavingAfter(const ns::ValueTransform* loading);

}  // namespace tavlin
