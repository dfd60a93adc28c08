#include "platform/foundation/DataPieces.h"

#include <algorithm>

#include "platform/foundation/Buffer.h"

namespace ns {

Data DataPieces::joined() const {
  if (pieces_.empty()) return {};
  if (pieces_.size() == 1) return pieces_.front();
  const Buffer buffer(length_);
  uint8_t* out = buffer.bytes();
  for (const Data& piece : pieces_) out = std::copy_n(piece.bytes(), piece.length(), out);
  return buffer.finish(length_);
}

}  // namespace ns
