// Prints a keyed archive as an indented graph: what "$top" names, and below each object its
// fields.  An object is printed where it is met first, under its number; later it is only
// mentioned.  So the output ends although archives hold circles.
//
//     archive-dump FILE
//
//     $top
//       root: #1 OLTreeController : NSObject
//         tree: #3 OLTree : NSObject
//           root: #5 OLNode : NSObject
//             parent: nil
//             expanded: false
//
// A value in a record stands bare; one that the record refers to has its number in front.  The
// chain of a class is printed the first time, with the substitutes that it names in parentheses.

#include <charconv>
#include <cmath>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/File.h"

namespace {

using ns::KeyedArchive;
using Type = KeyedArchive::Type;

std::string shortest(double number, bool isSingle) {
  char text[32];
  const auto end = isSingle ? std::to_chars(text, std::end(text), static_cast<float>(number)).ptr
                            : std::to_chars(text, std::end(text), number).ptr;
  std::string printed(text, end);
  // a whole number is still a real
  if (printed.find_first_not_of("-0123456789") == std::string::npos) printed += ".0";
  return isSingle ? printed + "f" : printed;
}

std::string quoted(const std::string& text) {
  std::string printed = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      printed += '\\';
      printed += c;
    } else if (c == '\n') {
      printed += "\\n";
    } else if (c == '\t') {
      printed += "\\t";
    } else if (byte < 32 || byte == 127) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02X", byte);
      printed += escape;
    } else {
      printed += c;
    }
  }
  return printed + "\"";
}

std::string bytes(const KeyedArchive::Object& data) {
  constexpr size_t kMost = 24;
  std::string printed = "<";
  for (size_t i = 0; i < data.count && i < kMost; ++i) {
    char pair[4];
    std::snprintf(pair, sizeof pair, "%02X", data.bytes[i]);
    printed += pair;
  }
  if (data.count > kMost) printed += "...";
  return printed + "> " + std::to_string(data.count) + (data.count == 1 ? " byte" : " bytes");
}

std::string scalar(const KeyedArchive::Object& object) {
  const ns::Value value = KeyedArchive::scalar(object);
  switch (object.type) {
    case Type::boolean:
      return value.boolValue() ? "true" : "false";
    case Type::integer: {
      const ns::Integer integer = value.integer();
      if (!integer.sixteenBytes) return std::to_string(value.integerValue());
      char digits[40];
      std::snprintf(digits, sizeof digits, "0x%016llX%016llX",
                    static_cast<unsigned long long>(integer.high),
                    static_cast<unsigned long long>(integer.low));
      return digits;
    }
    case Type::real:
      return shortest(value.doubleValue(), object.width == 4);
    case Type::date:
      return "date " + shortest(value.date().seconds, false);
    case Type::data:
      return bytes(object);
    default:
      return quoted(value.string().utf8());
  }
}

/// Prints with a list of lines still to come, never by recursion: outlines may be deep.
class Printer {
 public:
  explicit Printer(std::shared_ptr<const KeyedArchive> archive)
      : archive_(std::move(archive)), isPrinted_(archive_->objectCount()) {}

  void run() {
    std::puts("$top");
    const auto& others = archive_->otherTopEntries();
    for (size_t i = others.size(); i-- > 0;) {
      pending_.push_back({1, others[i].key.utf8(), others[i].object, 0, false});
    }
    if (archive_->root() != 0) pending_.push_back({1, "root", {}, archive_->root(), true});
    while (!pending_.empty()) {
      const Line line = std::move(pending_.back());
      pending_.pop_back();
      const bool isReference = line.isNumber || line.object.type == Type::uid;
      const std::string text =
          isReference ? reference(line.isNumber ? line.number : archive_->target(line.object),
                                  line.level + 1)
                      : inlined(line.object, line.level + 1);
      std::printf("%s%s: %s\n", indent(line.level).c_str(), line.label.c_str(), text.c_str());
    }
  }

 private:
  struct Line {
    size_t level;
    std::string label;
    KeyedArchive::Object object;
    uint32_t number;
    bool isNumber;
  };

  /// Indentation that stays readable, and bounded, in deep archives.
  static std::string indent(size_t level) {
    constexpr size_t kMost = 40;
    if (level <= kMost) return std::string(2 * level, ' ');
    return std::string(2 * kMost, ' ') + "(level " + std::to_string(level) + ") ";
  }

  std::string reference(uint32_t number, size_t level) {
    if (number == 0) return "nil";
    const std::string name = "#" + std::to_string(number);
    const KeyedArchive::Entry entry = archive_->entry(number);
    if (entry.kind == KeyedArchive::EntryKind::null) return "nil " + name;
    if (entry.kind == KeyedArchive::EntryKind::scalar) return name + " " + scalar(entry.object);
    const KeyedArchive::Record record = archive_->record(number, entry.object);
    const ns::ClassInfo& info = *record.archivedClass->info;
    if (isPrinted_[number]) return "-> " + name + " " + info.name;
    isPrinted_[number] = true;
    for (uint32_t i = record.shape->count(); i-- > 0;) {
      if (i == record.shape->classPosition()) continue;
      pending_.push_back(
          {level, record.shape->key(i).utf8(), archive_->field(record, i), 0, false});
    }
    return name + " " + described(info);
  }

  std::string described(const ns::ClassInfo& info) {
    if (!described_.insert(&info).second) return info.name;
    std::string text = info.name;
    for (size_t i = 0; i < info.chain.size(); ++i) {
      if (i > 0 || info.chain[i] != info.name) text += " : " + info.chain[i];
    }
    if (!info.hasChain) text += " : ?";
    for (size_t i = 0; i < info.hints.size(); ++i) text += (i == 0 ? " (" : ", ") + info.hints[i];
    return info.hints.empty() ? text : text + ")";
  }

  std::string inlined(const KeyedArchive::Object& object, size_t level) {
    if (object.type == Type::array) {
      for (uint64_t i = object.count; i-- > 0;) {
        pending_.push_back({level, std::to_string(i), archive_->element(object, i), 0, false});
      }
      return "array of " + std::to_string(object.count);
    }
    if (object.type == Type::dictionary) {
      for (uint64_t i = object.count; i-- > 0;) {
        pending_.push_back({level, KeyedArchive::string(archive_->element(object, i)).utf8(),
                            archive_->element(object, object.count + i), 0, false});
      }
      return "dictionary of " + std::to_string(object.count);
    }
    return scalar(object);
  }

  const std::shared_ptr<const KeyedArchive> archive_;
  std::vector<bool> isPrinted_;
  std::set<const ns::ClassInfo*> described_;
  std::vector<Line> pending_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: archive-dump FILE\n", stderr);
    return 1;
  }
  try {
    const ns::ClassRegistry registry;
    Printer(KeyedArchive::open(ns::readFile(argv[1]), registry, KeyedArchive::Root::optional))
        .run();
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "archive-dump: %s\n", exception.what());
    return 1;
  }
  return 0;
}
