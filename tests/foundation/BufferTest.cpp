#include "platform/foundation/Buffer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ns {
namespace {

/// From the heap, of small pages, of large ones, and of both; and a byte more or less than where
/// one becomes the other.
class BufferTest : public ::testing::TestWithParam<size_t> {};

TEST_P(BufferTest, HoldsZerosWhereTheyAreAskedFor) {
  // what was used before must not come back
  { std::fill_n(Buffer(GetParam()).bytes(), GetParam(), uint8_t{0xA5}); }
  const Buffer buffer(GetParam(), Buffer::Content::zeros);
  EXPECT_EQ(buffer.capacity(), GetParam());
  EXPECT_EQ(std::count(buffer.bytes(), buffer.bytes() + GetParam(), 0),
            static_cast<std::ptrdiff_t>(GetParam()));
}

TEST_P(BufferTest, KeepsWhatIsWrittenUpToItsEnd) {
  const Buffer buffer(GetParam());
  for (size_t i = 0; i < GetParam(); ++i) buffer.bytes()[i] = static_cast<uint8_t>(i * 7);
  const Data data = buffer.finish(GetParam());
  EXPECT_EQ(data.length(), GetParam());
  size_t differences = 0;
  for (size_t i = 0; i < GetParam(); ++i) differences += data.bytes()[i] != (i * 7 & 0xFF) ? 1 : 0;
  EXPECT_EQ(differences, 0U);
  for (size_t i = 0; i < 16; ++i) EXPECT_EQ(data.bytes()[GetParam() + i], 0);
}

TEST_P(BufferTest, DataOutlivesIt) {
  Data data;
  {
    const Buffer buffer(GetParam());
    std::fill_n(buffer.bytes(), GetParam(), uint8_t{'x'});
    data = buffer.finish(GetParam() / 2);
  }
  EXPECT_EQ(data.view(), std::string(GetParam() / 2, 'x'));
}

constexpr size_t kKilobyte = 1 << 10;
constexpr size_t kMegabyte = 1 << 20;
INSTANTIATE_TEST_SUITE_P(Sizes, BufferTest,
                         ::testing::Values(0, 1, 4 * kKilobyte, 128 * kKilobyte - 17,
                                           128 * kKilobyte - 16, 192 * kKilobyte, kMegabyte - 17,
                                           kMegabyte - 16, 2 * kMegabyte - 16, 2 * kMegabyte - 15,
                                           2 * kMegabyte + 100 * kKilobyte, 3 * kMegabyte - 16,
                                           3 * kMegabyte - 17, 5 * kMegabyte));

}  // namespace
}  // namespace ns
