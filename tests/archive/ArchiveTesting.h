#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/Coder.h"
#include "platform/foundation/Data.h"
#include "platform/foundation/Exception.h"
#include "platform/foundation/Object.h"

/// Files for the tests of archives, made without the code that is tested.
namespace testing_archives {

std::string bigEndian(uint64_t number, unsigned width);

/// A binary list of given objects, in which every part of the trailer may be wrong.
struct RawList {
  std::vector<std::string> objects;
  unsigned offsetSize = 1;
  unsigned referenceSize = 1;
  std::optional<uint64_t> count = {};
  std::optional<uint64_t> top = {};
  std::optional<uint64_t> table = {};
  std::vector<uint64_t> offsets = {};  ///< in place of the true ones
  std::string header = "bplist00";
  std::string behindTable = {};
  std::string behindTrailer = {};

  [[nodiscard]] ns::Data data() const;
};

/// A property list.  A handle: one that is put into several containers is one object of the file.
class P {
 public:
  P(const char* text);                   // NOLINT(google-explicit-constructor)
  P(int64_t number);                     // NOLINT(google-explicit-constructor)
  P(int number) : P(int64_t{number}) {}  // NOLINT(google-explicit-constructor)
  static P string(const std::string& ascii);
  static P wide(std::u16string_view text);
  static P boolean(bool value);
  static P integer(uint64_t bits, unsigned width);
  static P real(double value);
  static P real4(float value);
  static P date(double seconds);
  static P data(const std::string& bytes);
  static P uid(uint64_t number);
  static P uid(uint64_t number, unsigned width);
  static P raw(const std::string& bytes);
  static P array(std::vector<P> elements);
  static P dictionary(std::vector<std::pair<P, P>> pairs);
  /// Puts elements into an array that may already lie in others, or in itself.
  void add(const P& element) const;
  /// Takes the elements out, so that a list that holds itself can go.
  void clear() const;

  [[nodiscard]] ns::Data binary() const;

 private:
  struct Node;
  explicit P(std::shared_ptr<Node> node) : node_(std::move(node)) {}
  std::shared_ptr<Node> node_;
};

using Fields = std::vector<std::pair<P, P>>;

/// References to the given numbers, as a list in a record.
P references(const std::vector<uint64_t>& numbers);
P instance(uint64_t classNumber, Fields fields = {});
P classRecord(const std::vector<std::string>& chain);
/// The top of an archive.  `entries` begins with "$null"; the root is number 1.
P archiveOf(std::vector<P> entries);
ns::Data archive(std::vector<P> entries);

/// What an ArchiveException says; "no fault" when there is none.
std::string faultOf(const std::function<void()>& action);

/// Text as a String, whatever it was made from.
inline std::string utf8(const ns::Value& value) { return value.string().utf8(); }

/// An object with an identity, for archives: "name" is a value, "children" a list of other
/// items, "parent" a reference back, "friend" a conditional one, "friends" a value that may hold
/// items, "flag" and "size" are primitives.
class Item : public ns::Object {
 public:
  ~Item() override;
  [[nodiscard]] ns::ClassRef classForCoder() const override;
  void encodeWithCoder(ns::Coder& coder) const override;
  void initWithCoder(ns::Coder& coder) override;

  ns::Value name;
  std::vector<std::shared_ptr<Item>> children;
  std::weak_ptr<Item> parent;
  std::weak_ptr<Item> conditional;
  ns::Value values;
  bool flag = false;
  int64_t size = 0;
  bool isImmutable = false;

  static std::shared_ptr<Item> make(const char* name);
  void add(const std::shared_ptr<Item>& child);
};

/// At its end, empties all items that were read meanwhile: in a broken archive they may hold each
/// other.
class ItemKeeper {
 public:
  ItemKeeper();
  ItemKeeper(const ItemKeeper&) = delete;
  ItemKeeper& operator=(const ItemKeeper&) = delete;
  ~ItemKeeper();
};

/// The foundation's classes and "Item".
const ns::ClassRegistry& registry();
ns::Value readBack(const ns::Data& data);
std::shared_ptr<ns::KeyedArchive> opened(const ns::Data& data);

/// The most memory that this process has used so far, in bytes.
uint64_t peakMemory();

/// A description of a value graph: kinds, contents and which parts are the same value, with
/// `depth` levels of it.
std::string describeGraph(const ns::Value& value);

}  // namespace testing_archives
