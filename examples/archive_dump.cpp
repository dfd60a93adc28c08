// Prints the objects of a keyed archive, each once, with what its fields hold.
//
//     archive-dump FILE

#include <cstdio>
#include <string>
#include <vector>

#include "platform/archive/KeyedArchive.h"
#include "platform/foundation/File.h"

namespace {

using ns::KeyedArchive;

std::string printed(const KeyedArchive& archive, const KeyedArchive::Object& object) {
  using Type = KeyedArchive::Type;
  const ns::Value value = KeyedArchive::scalar(object);
  switch (object.type) {
    case Type::uid:
      return "-> #" + std::to_string(archive.target(object));
    case Type::array: {
      std::string text = "[";
      for (uint64_t i = 0; i < object.count; ++i) {
        if (i > 0) text += ", ";
        text += printed(archive, archive.element(object, i));
      }
      return text + "]";
    }
    case Type::dictionary: {
      std::string text = "{";
      for (uint64_t i = 0; i < object.count; ++i) {
        if (i > 0) text += ", ";
        text += printed(archive, archive.element(object, i)) + ": " +
                printed(archive, archive.element(object, object.count + i));
      }
      return text + "}";
    }
    case Type::boolean:
      return value.boolValue() ? "true" : "false";
    case Type::integer:
      return std::to_string(value.integerValue());
    case Type::real:
      return std::to_string(value.doubleValue()) + (object.width == 4 ? " (4 bytes)" : "");
    case Type::date:
      return "date " + std::to_string(value.date().seconds);
    case Type::data:
      return "data of " + std::to_string(object.count) + " bytes";
    case Type::ascii:
    case Type::utf16:
      return "\"" + value.string().utf8() + "\"";
  }
  return "?";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: archive-dump FILE\n", stderr);
    return 1;
  }
  try {
    const ns::ClassRegistry registry;
    const auto archive = KeyedArchive::open(ns::readFile(argv[1]), registry);
    std::printf("%u objects, root #%u\n", archive->objectCount(), archive->root());
    for (uint32_t number = 0; number < archive->objectCount(); ++number) {
      if (number > 0 && !archive->isReached(number)) continue;  // class records, strays
      const KeyedArchive::Entry entry = archive->entry(number);
      std::printf("#%u ", number);
      if (entry.kind != KeyedArchive::EntryKind::instance) {
        std::printf("%s\n", printed(*archive, entry.object).c_str());
        continue;
      }
      const KeyedArchive::Record record = archive->record(number, entry.object);
      std::printf("%s\n", record.archivedClass->info->name.c_str());
      for (uint32_t i = 0; i < record.shape->count(); ++i) {
        if (i == record.shape->classPosition()) continue;
        std::printf("    %s: %s\n", record.shape->key(i).utf8().c_str(),
                    printed(*archive, archive->field(record, i)).c_str());
      }
    }
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "archive-dump: %s\n", exception.what());
    return 1;
  }
  return 0;
}
