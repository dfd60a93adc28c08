#include "model/OLExceptionController.h"

#include <gtest/gtest.h>

#include "model/OLException.h"

namespace tavlin {
namespace {

TEST(OLExceptionController, NamesTheException) {
  EXPECT_STREQ(OLExceptionController::name(), "OLException");
}

TEST(OLExceptionController, RaisesAnExceptionWithTheReason) {
  try {
    OLExceptionController::raiseWithString("can not accept nil");
    FAIL() << "raiseWithString came back";
  } catch (const OLException& exception) {
    EXPECT_STREQ(exception.name(), "OLException");
    EXPECT_EQ(exception.reason(), "can not accept nil");
    EXPECT_STREQ(exception.what(), "can not accept nil");
  }
}

TEST(OLExceptionController, RaisesAStandardExceptionForTheLastResort) {
  EXPECT_THROW(OLExceptionController::raiseWithString("x"), std::exception);
}

}  // namespace
}  // namespace tavlin
