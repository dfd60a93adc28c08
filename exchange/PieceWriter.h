#pragma once

#include <string>
#include <string_view>

#include "exchange/Exchange.h"

namespace tavlin {

/// Collects what a format writes and hands it on in pieces.  flush() hands on the last one; without
/// it that is lost, as it should be when the work was broken off.
class PieceWriter {
 public:
  /// The sink must live as long.
  explicit PieceWriter(const TextSink& sink) : sink_(sink) { buffer_.reserve(2 * kPiece); }

  void put(std::string_view text) {
    buffer_ += text;
    if (buffer_.size() >= kPiece) flush();
  }
  void put(char character) { buffer_ += character; }
  void repeat(std::string_view text, size_t count) {
    for (; count > 0; --count) put(text);
  }
  void flush() {
    if (!buffer_.empty()) sink_(buffer_);
    buffer_.clear();
  }

 private:
  static constexpr size_t kPiece = size_t{64} << 10;
  const TextSink& sink_;
  std::string buffer_;
};

}  // namespace tavlin
