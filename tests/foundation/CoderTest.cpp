#include "platform/foundation/Coder.h"

#include "platform/foundation/Object.h"
#include "tests/foundation/FoundationTesting.h"

namespace ns {
namespace {

using testing::reasonOf;

/// A coder without any operation of its own.
class BareCoder : public Coder {
 public:
  [[nodiscard]] bool allowsKeyedCoding() const override { return false; }
};

using Refusal = InvalidArgumentException;

TEST(Coder, RefusesToEncode) {
  BareCoder coder;
  const char* const reason = "this coder does not encode \"title\"";
  EXPECT_EQ(reasonOf<Refusal>([&] { coder.encodeObjectForKey("x", "title"); }), reason);
  EXPECT_EQ(reasonOf<Refusal>([&] { coder.encodeConditionalObjectForKey(nullptr, "title"); }),
            reason);
  EXPECT_EQ(reasonOf<Refusal>([&] { coder.encodeBoolForKey(true, "title"); }), reason);
  EXPECT_EQ(reasonOf<Refusal>([&] { coder.encodeIntegerForKey(1, "title"); }), reason);
}

TEST(Coder, RefusesToDecode) {
  BareCoder coder;
  const char* const reason = "this coder does not decode \"title\"";
  EXPECT_EQ(reasonOf<Refusal>([&] { (void)coder.containsValueForKey("title"); }), reason);
  EXPECT_EQ(reasonOf<Refusal>([&] { (void)coder.decodeObjectForKey("title"); }), reason);
  EXPECT_EQ(reasonOf<Refusal>([&] { (void)coder.decodeReferenceForKey("title"); }), reason);
  EXPECT_EQ(reasonOf<Refusal>([&] { (void)coder.decodeBoolForKey("title"); }), reason);
  EXPECT_EQ(reasonOf<Refusal>([&] { (void)coder.decodeIntegerForKey("title"); }), reason);
}

TEST(Object, CannotBeArchivedUnlessItsClassSaysHow) {
  BareCoder coder;
  const auto object = std::make_shared<Object>();
  EXPECT_EQ(object->classForCoder(), nullptr);
  EXPECT_EQ(reasonOf<Refusal>([&] { object->encodeWithCoder(coder); }),
            "an object of this class cannot be archived");
  EXPECT_EQ(reasonOf<Refusal>([&] { object->initWithCoder(coder); }),
            "an object of this class cannot be read from an archive");
}

}  // namespace
}  // namespace ns
