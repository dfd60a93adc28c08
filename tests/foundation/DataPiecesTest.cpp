#include "platform/foundation/DataPieces.h"

#include <gtest/gtest.h>

namespace ns {
namespace {

TEST(DataPieces, AreEmptyAtFirst) {
  DataPieces pieces;
  pieces.append(Data());
  EXPECT_EQ(pieces.length(), 0U);
  EXPECT_TRUE(pieces.begin() == pieces.end());
  EXPECT_TRUE(pieces.joined().empty());
}

TEST(DataPieces, ShareTheOnlyPiece) {
  const Data data(std::string("some bytes"));
  const DataPieces pieces = data;
  EXPECT_EQ(pieces.length(), 10U);
  EXPECT_EQ(pieces.joined().bytes(), data.bytes());
}

TEST(DataPieces, JoinInTheirOrder) {
  const Data data(std::string("0123456789"));
  DataPieces pieces = data.part(7, 3);
  pieces.append(data.part(4, 0));
  pieces.append(data.part(0, 2));
  pieces.append(Data(std::string("x\0y", 3)));
  EXPECT_EQ(pieces.length(), 8U);
  EXPECT_EQ(std::distance(pieces.begin(), pieces.end()), 3);
  EXPECT_EQ(pieces.begin()->bytes(), data.bytes() + 7);
  EXPECT_EQ(pieces.joined().view(), std::string_view("78901x\0y", 8));
}

TEST(DataPieces, HoldTheirBytesInWhateverPieces) {
  const Data data(std::string("0123456789"));
  DataPieces pieces = data.part(0, 4);
  pieces.append(data.part(4, 6));
  EXPECT_TRUE(pieces.holds(data));
  EXPECT_FALSE(pieces.holds(data.part(0, 9)));
  EXPECT_FALSE(pieces.holds(Data(std::string("01234567890"))));
  EXPECT_FALSE(pieces.holds(Data(std::string("x123456789"))));
  EXPECT_FALSE(pieces.holds(Data(std::string("012345678x"))));
  EXPECT_TRUE(DataPieces().holds(Data()));
  EXPECT_FALSE(DataPieces().holds(data));
}

}  // namespace
}  // namespace ns
