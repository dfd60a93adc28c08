#pragma once

namespace ns {

/// How what is drawn (the source, S) is put together with what is there (the destination, D).
/// Sa and Da are their alphas; colours are multiplied by alpha before they are added.
///
/// Every operation changes only what the drawn shape covers.  A pixel covered in part becomes
/// the same part of the result and keeps the rest of what was there; with PlusLighter, that part
/// of S is added, so that shapes that share a pixel make it as full as one shape would.
enum class CompositingOperation {
  Clear,            ///< nothing
  Copy,             ///< S
  SourceOver,       ///< S + D (1 - Sa), what drawing usually does
  SourceIn,         ///< S Da
  SourceOut,        ///< S (1 - Da)
  SourceAtop,       ///< S Da + D (1 - Sa)
  DestinationOver,  ///< S (1 - Da) + D
  DestinationIn,    ///< D Sa: with a mask as the source, what the mask shows of D
  DestinationOut,   ///< D (1 - Sa)
  DestinationAtop,  ///< S (1 - Da) + D Sa
  XOR,              ///< S (1 - Da) + D (1 - Sa)
  PlusLighter,      ///< S + D, at most full
};

}  // namespace ns
