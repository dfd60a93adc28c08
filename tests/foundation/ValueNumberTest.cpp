#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "platform/foundation/Value.h"

namespace ns {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
constexpr int64_t kLeast = std::numeric_limits<int64_t>::min();
constexpr int64_t k53 = int64_t{1} << 53;

/// The 16-byte form of a number.
Value wide(uint64_t high, uint64_t low) { return Integer{low, high, false, true}; }

// Each row holds numbers that are equal to each other and to nothing in any other row.
const std::vector<std::vector<Value>>& equalNumbers() {
  static const std::vector<std::vector<Value>> rows = {
      {false, 0, 0U, 0.0, -0.0, 0.0F, -0.0F, wide(0, 0), uint8_t{0}},
      {true, 1, 1U, 1.0, 1.0F, wide(0, 1), int8_t{1}},
      {-1, -1.0, -1.0F, int8_t{-1}, int64_t{-1}},
      {0.1},
      {0.1F, static_cast<double>(0.1F)},
      {-0.1},
      {k53, 0x1p53, wide(0, uint64_t{1} << 53)},
      {k53 + 1, static_cast<uint64_t>(k53) + 1},
      {k53 + 2, 0x1p53 + 2},
      {-k53, -0x1p53},
      {-k53 - 1},
      {kMost, static_cast<uint64_t>(kMost), wide(0, static_cast<uint64_t>(kMost))},
      {kLeast, -0x1p63},
      {0x1p63, uint64_t{1} << 63, wide(0, uint64_t{1} << 63)},
      {UINT64_MAX, wide(0, UINT64_MAX)},
      {0x1p64, wide(1, 0)},
      {wide(1, 1)},
      {wide(UINT64_MAX, UINT64_MAX)},
      {wide(uint64_t{1} << 63, 0), 0x1p127},
      {-0x1p64},
      {0x1p128},
      {-0x1p128},
      {std::numeric_limits<double>::max()},
      {std::numeric_limits<double>::denorm_min()},
      {kInfinity, std::numeric_limits<float>::infinity()},
      {-kInfinity},
      {kNaN},
  };
  return rows;
}

TEST(ValueNumber, EqualByValueWhateverTheKind) {
  const auto& rows = equalNumbers();
  for (size_t i = 0; i < rows.size(); ++i) {
    for (size_t j = 0; j < rows.size(); ++j) {
      for (const Value& a : rows[i]) {
        for (const Value& b : rows[j]) {
          EXPECT_EQ(a == b, i == j) << "rows " << i << " and " << j;
          if (i == j) {
            EXPECT_EQ(a.hash(), b.hash()) << "row " << i;
          }
        }
      }
    }
  }
}

TEST(ValueNumber, NotANumberEqualsItselfSoThatItCanBeFound) {
  EXPECT_EQ(Value(kNaN), Value(kNaN));
  EXPECT_FALSE(Value(kNaN) == Value(0));
}

TEST(ValueNumber, HashesSpread) {
  // Neighbours must not all collide, whatever form they have.
  EXPECT_NE(Value(1).hash(), Value(2).hash());
  EXPECT_NE(Value(1).hash(), Value(-1).hash());
  EXPECT_NE(Value(0.25).hash(), Value(0.5).hash());
}

TEST(ValueNumber, IntegerValueTruncatesAndClamps) {
  EXPECT_EQ(Value(true).integerValue(), 1);
  EXPECT_EQ(Value(false).integerValue(), 0);
  EXPECT_EQ(Value(-5).integerValue(), -5);
  EXPECT_EQ(Value(kLeast).integerValue(), kLeast);
  EXPECT_EQ(Value(kMost).integerValue(), kMost);
  EXPECT_EQ(Value(UINT64_MAX).integerValue(), kMost);
  EXPECT_EQ(Value(uint64_t{1} << 63).integerValue(), kMost);
  EXPECT_EQ(wide(0, 7).integerValue(), 7);
  EXPECT_EQ(wide(0, UINT64_MAX).integerValue(), kMost);
  EXPECT_EQ(wide(1, 0).integerValue(), kMost);
  EXPECT_EQ(Value(2.9).integerValue(), 2);
  EXPECT_EQ(Value(-2.9).integerValue(), -2);
  EXPECT_EQ(Value(0x1p63).integerValue(), kMost);
  EXPECT_EQ(Value(std::nextafter(0x1p63, 0)).integerValue(), kMost - 1023);
  EXPECT_EQ(Value(-0x1p63).integerValue(), kLeast);
  EXPECT_EQ(Value(std::nextafter(-0x1p63, -kInfinity)).integerValue(), kLeast);
  EXPECT_EQ(Value(kInfinity).integerValue(), kMost);
  EXPECT_EQ(Value(-kInfinity).integerValue(), kLeast);
  EXPECT_EQ(Value(kNaN).integerValue(), 0);
  EXPECT_EQ(Value("12").integerValue(), 0);
}

TEST(ValueNumber, DoubleValue) {
  EXPECT_EQ(Value(true).doubleValue(), 1.0);
  EXPECT_EQ(Value(-3).doubleValue(), -3.0);
  EXPECT_EQ(Value(kLeast).doubleValue(), -0x1p63);
  EXPECT_EQ(Value(UINT64_MAX).doubleValue(), 0x1p64);
  EXPECT_EQ(wide(1, 0).doubleValue(), 0x1p64);
  EXPECT_EQ(Value(0.1).doubleValue(), 0.1);
  EXPECT_EQ(Value(0.1F).doubleValue(), static_cast<double>(0.1F));
  EXPECT_TRUE(std::signbit(Value(-0.0).doubleValue()));
  EXPECT_TRUE(std::isnan(Value(kNaN).doubleValue()));
}

TEST(ValueNumber, KeepsTheFormOfIntegersAndReals) {
  const Integer low = Value(int64_t{-2}).integer();
  EXPECT_EQ(low.low, UINT64_MAX - 1);
  EXPECT_TRUE(low.isSigned);
  EXPECT_TRUE(low.isNegative());
  EXPECT_FALSE(low.sixteenBytes);
  const Integer big = Value(UINT64_MAX).integer();
  EXPECT_FALSE(big.isSigned);
  EXPECT_FALSE(big.isNegative());
  const Integer sixteen = wide(3, 4).integer();
  EXPECT_EQ(sixteen.high, 3U);
  EXPECT_EQ(sixteen.low, 4U);
  EXPECT_TRUE(sixteen.sixteenBytes);
  EXPECT_FALSE(wide(UINT64_MAX, 0).integer().isNegative());
  EXPECT_TRUE(Value(1.5F).isFloat());
  EXPECT_FALSE(Value(1.5).isFloat());
  EXPECT_FALSE(Value(1).isFloat());
  EXPECT_TRUE(std::signbit(Value(-0.0F).doubleValue()));
}

}  // namespace
}  // namespace ns
