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

}  // namespace
}  // namespace ns
