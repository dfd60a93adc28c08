#include "editor/Key.h"

#include <gtest/gtest.h>

#include "editor/Commands.h"

namespace tavlin {
namespace {

/// The names of the keys that bytes are; pasted text in brackets.
std::string keysOf(const std::vector<std::string>& pieces, bool finishes = true) {
  KeyReader reader;
  std::string names;
  const auto take = [&] {
    while (const auto key = reader.next()) {
      names += names.empty() ? "" : " ";
      const bool isPaste = key->code == KeyCode::paste || key->code == KeyCode::clipboard;
      names += isPaste ? "[" + key->text + "]" : nameOfKey(*key);
    }
  };
  for (const std::string& piece : pieces) {
    reader.feed(piece);
    take();
  }
  if (finishes) {
    reader.finish();
    take();
  }
  return names;
}

TEST(KeyReader, KeysOfAllTerminals) {
  for (const auto& [bytes, name] : std::vector<std::pair<std::string, std::string>>{
           {"a", "a"},
           {"ä日", "ä 日"},
           {"\r\n\t\x7f\x08", "Enter Enter Tab Backspace Backspace"},
           {"\x13\x11\x1a", "Ctrl-S Ctrl-Q Ctrl-Z"},
           {"\x1b[A\x1bOB\x1b[C\x1bOD", "Up Down Right Left"},
           {"\x1b[1;3A\x1b\x1b[B\x1b\x1bOA", "Alt-Up Alt-Down Alt-Up"},
           {"\x1b[1;5C\x1bOd", "Ctrl-Right Ctrl-Left"},
           {"\x1b[H\x1bOF\x1b[1~\x1b[4~\x1b[7~\x1b[8~", "Home End Home End Home End"},
           {"\x1b[5~\x1b[6~\x1b[3~\x1b[Z", "PageUp PageDown Delete Shift-Tab"},
           {"\x1bOQ\x1b[12~\x1b[[B", "F2 F2 F2"},
           {"\x1bOR\x1b[13~\x1b[[C", "F3 F3 F3"},
           {"\x1b[1;2R\x1b[28~\x1b[13;2~", "Shift-F3 Shift-F3 Shift-F3"},
           {"\x1b\r\x1b[13;3u\x1b[27;3;13~", "Alt-Enter Alt-Enter Alt-Enter"},
           {"\x1b", "Escape"},
           {"\x1bx", "Alt-x"},
           {"\x1b[999y", ""}}) {
    EXPECT_EQ(keysOf({bytes}), name) << ::testing::PrintToString(bytes);
    std::vector<std::string> single;
    for (const char byte : bytes) single.emplace_back(1, byte);
    EXPECT_EQ(keysOf(single), name) << "byte by byte";
  }
}

TEST(KeyReader, AnEscapeWaits) {
  EXPECT_EQ(keysOf({"\x1b"}, false), "");
  EXPECT_EQ(keysOf({"\x1b", "[A"}), "Up");
}

TEST(KeyReader, PastedText) {
  EXPECT_EQ(keysOf({"\x1b[200~one\ntwo\x1b[A\x1b[201~x"}), "[one\ntwo\x1b[A] x");
  EXPECT_EQ(keysOf({"\x1b[200~on", "e\x1b[20", "1~x"}), "[one] x");
  EXPECT_EQ(keysOf({"\x1b[200~never ended"}), "[never ended]");
  EXPECT_EQ(keysOf({"\x1b]52;c;YQpi\x07x", "\x1b]52;c;YQ==\x1b\\"}), "[a\nb] x [a]");
}

TEST(KeyReader, Mouse) {
  KeyReader reader;
  reader.feed("\x1b[<0;12;3M\x1b[<0;12;3m\x1b[<64;1;1M\x1b[M !\"");
  const auto click = reader.next();
  ASSERT_TRUE(click);
  EXPECT_EQ(click->code, KeyCode::click);
  EXPECT_EQ(std::pair(click->row, click->column), std::pair(size_t{2}, size_t{11}));
  EXPECT_EQ(reader.next()->code, KeyCode::wheelUp);
  EXPECT_EQ(reader.next()->code, KeyCode::click);
  EXPECT_FALSE(reader.next());
}

TEST(Key, NamesComeBack) {
  for (const char* name : {"Ctrl-S", "Alt-Up", "Shift-F3", "Space", "Hash", "g", "G", "ä", "F12",
                           "Ctrl-Alt-X", "Delete", "?", "-"}) {
    const auto key = keyNamed(name);
    ASSERT_TRUE(key) << name;
    EXPECT_EQ(nameOfKey(*key), name);
  }
  for (const char* name : {"", "Ctrl-", "Ctrl-I", "F13", "Upp", "ab", "Shift-a", "F1x"}) {
    EXPECT_FALSE(keyNamed(name)) << name;
  }
}

TEST(KeyTable, EveryCommandHasItsKeys) {
  const KeyTable table;
  for (const CommandEntry& entry : commandEntries()) {
    EXPECT_FALSE(table.keysOf(entry.command).empty()) << entry.name;
    for (const std::string& name : table.keysOf(entry.command)) {
      const auto key = keyNamed(name);
      ASSERT_TRUE(key) << name;
      EXPECT_EQ(table.commandOf(*key), entry.command) << name;
    }
  }
}

TEST(KeyTable, AFileChangesKeys) {
  KeyTable table;
  const auto faults =
      table.read("# mine\nCtrl-T indent # that one\nTab none\n\nx  nothing\nFoo up\n");
  EXPECT_EQ(faults, (std::vector<std::string>{"line 5: there is no command \"nothing\"",
                                              "line 6: there is no key \"Foo\""}));
  EXPECT_EQ(table.commandOf(*keyNamed("Ctrl-T")), EditorCommand::indent);
  EXPECT_FALSE(table.commandOf(*keyNamed("Tab")));
  EXPECT_EQ(table.commandOf(*keyNamed("x")), EditorCommand::check);
}

}  // namespace
}  // namespace tavlin
