#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/foundation/Data.h"

namespace ns {

/// Bytes that lie in several places, in their order: content that is to be written, and need not
/// be put together in memory for that.
class DataPieces {
 public:
  DataPieces() = default;
  /// One piece.  Not explicit: what takes pieces takes data.
  DataPieces(Data data) { append(std::move(data)); }  // NOLINT(google-explicit-constructor)

  /// Nothing for empty data.
  void append(Data piece) {
    if (piece.empty()) return;
    length_ += piece.length();
    pieces_.push_back(std::move(piece));
  }

  /// Of all pieces, in bytes.
  [[nodiscard]] size_t length() const { return length_; }
  [[nodiscard]] auto begin() const { return pieces_.begin(); }
  [[nodiscard]] auto end() const { return pieces_.end(); }

  /// Whether these are the bytes, in however many pieces.
  [[nodiscard]] bool holds(const Data& bytes) const;
  /// The bytes in one piece: the only one itself, else a copy of all.
  [[nodiscard]] Data joined() const;

 private:
  std::vector<Data> pieces_;
  size_t length_ = 0;
};

}  // namespace ns
