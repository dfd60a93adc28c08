#include "platform/foundation/DataPieces.h"

#include <algorithm>

#include "platform/foundation/Buffer.h"

namespace ns {

bool DataPieces::holds(const Data& bytes) const {
  if (bytes.length() != length_) return false;
  size_t at = 0;
  for (const Data& piece : pieces_) {
    if (piece != bytes.part(at, piece.length())) return false;
    at += piece.length();
  }
  return true;
}

Data DataPieces::joined() const {
  if (pieces_.empty()) return {};
  if (pieces_.size() == 1) return pieces_.front();
  const Buffer buffer(length_);
  uint8_t* out = buffer.bytes();
  for (const Data& piece : pieces_) out = std::copy_n(piece.bytes(), piece.length(), out);
  return buffer.finish(length_);
}

}  // namespace ns
