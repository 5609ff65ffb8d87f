#include "headless/settings/registrytree.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/utf8.h"

namespace corvane::headless {
namespace {

using host::RegValue;

constexpr const char* kHeader = "Windows Registry Editor Version 5.00\n";
constexpr const wchar_t* kKey = L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane";

std::string file(const std::string& body) { return kHeader + std::string("\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n") + body; }

RegValue bytes(std::uint32_t type, std::vector<std::uint8_t> data) { return RegValue{type, std::move(data)}; }

TEST(RegistryTree, ReadsEachValueNotation) {
  struct Case {
    std::string body;
    const wchar_t* name;
    RegValue expected;
  } const cases[] = {
      {"\"EF_PathType\"=dword:00000001\n", L"EF_PathType", host::regDword(1)},
      {"\"N\"=dword:a\n", L"N", host::regDword(10)},  // fewer than eight digits
      {"\"N\"=DWORD:FFFFFFFF\n", L"N", host::regDword(0xFFFFFFFF)},
      {"\"File1\"=\"C:\\\\Drawings\\\\Site \\\"A\\\".xlsx\"\n", L"File1", host::regString(L"C:\\Drawings\\Site \"A\".xlsx")},
      // A backslash before any other character stays as written.
      {"\"P\"=\"a\\b\\n\"\n", L"P", host::regString(L"a\\b\\n")},
      {"\"E\"=\"\"\n", L"E", host::regString(L"")},
      {"\"U\"=\"\xE3\x81\x82 \xC3\xA9\"\n", L"U", host::regString(L"\u3042 \u00e9")},
      {"@=\"default\"\n", L"", host::regString(L"default")},
      {"\"B\"=hex:01,02,ff\n", L"B", bytes(host::REG_BINARY, {1, 2, 0xFF})},
      {"\"B\"=hex:\n", L"B", bytes(host::REG_BINARY, {})},
      {"\"B\"=hex: 0a , 0B ,c\n", L"B", bytes(host::REG_BINARY, {0x0A, 0x0B, 0x0C})},
      // Long data continues over lines ending in a backslash.
      {"\"B\"=hex:01,02,\\\n  03,04,\\\n  05\n", L"B", bytes(host::REG_BINARY, {1, 2, 3, 4, 5})},
      // Types this host does not interpret are kept as they are.
      {"\"Q\"=hex(b):01,00,00,00,00,00,00,00\n", L"Q", bytes(11, {1, 0, 0, 0, 0, 0, 0, 0})},
      {"\"M\"=hex(7):61,00,00,00,00,00\n", L"M", bytes(7, {0x61, 0, 0, 0, 0, 0})},
      {"\"X\"=hex(12345678):ff\n", L"X", bytes(0x12345678, {0xFF})},
      {"\"Spaced\" = dword:00000002\n", L"Spaced", host::regDword(2)},
      // The last of two values of one name counts, compared without regard to case.
      {"\"A\"=dword:1\n\"a\"=dword:2\n", L"A", host::regDword(2)},
  };
  for (const auto& c : cases) {
    RegistryTree::ParseError error;
    const auto tree = RegistryTree::parse(file(c.body), &error);
    ASSERT_TRUE(tree) << c.body << " line " << error.line << ": " << error.message;
    const auto* value = tree->findValue(kKey, c.name);
    ASSERT_NE(value, nullptr) << c.body;
    EXPECT_EQ(value->data, c.expected) << c.body;
  }
}

TEST(RegistryTree, ReadsTheFileFormsOfText) {
  const std::string lf = file("\"V\"=\"x\"\n");
  std::string crlf;
  for (const char c : lf) {
    if (c == '\n') crlf += '\r';
    crlf += c;
  }
  // The same text as UTF-16 with its byte-order mark, as the system's own export writes it.
  std::string utf16 = "\xFF\xFE";
  for (const wchar_t c : core::fromUtf8(crlf)) {
    utf16 += static_cast<char>(c & 0xFF);
    utf16 += static_cast<char>((c >> 8) & 0xFF);
  }
  const std::string forms[] = {
      lf,
      crlf,
      "\xEF\xBB\xBF" + lf,
      utf16,
      "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"V\"=\"x\"",  // older header, no last line end
      "; written by hand\n\n" + lf + "; the end\n",
      "Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\\\]\n\"V\"=\"x\"\n",
  };
  for (const auto& text : forms) {
    RegistryTree::ParseError error;
    const auto tree = RegistryTree::parse(text, &error);
    ASSERT_TRUE(tree) << error.message;
    const auto* value = tree->findValue(kKey, L"V");
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->data, host::regString(L"x"));
  }
}

TEST(RegistryTree, DeletionLinesRemoveWhatStoodBefore) {
  const auto tree = RegistryTree::parse(std::string(kHeader) +
                                        "[HKEY_CURRENT_USER\\A]\n\"x\"=dword:1\n\"y\"=dword:2\n"
                                        "[HKEY_CURRENT_USER\\A\\B]\n\"z\"=dword:3\n"
                                        "[HKEY_CURRENT_USER\\C]\n\"w\"=dword:4\n"
                                        "[HKEY_CURRENT_USER\\A]\n\"x\"=-\n"
                                        "[-HKEY_CURRENT_USER\\C]\n\"ignored\"=dword:5\n");
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->findValue(L"HKEY_CURRENT_USER\\A", L"x"), nullptr);
  EXPECT_NE(tree->findValue(L"HKEY_CURRENT_USER\\A", L"y"), nullptr);
  EXPECT_NE(tree->findValue(L"HKEY_CURRENT_USER\\A\\B", L"z"), nullptr);
  EXPECT_FALSE(tree->hasKey(L"HKEY_CURRENT_USER\\C"));
}

TEST(RegistryTree, SaysWhereATextIsNotARegistryFile) {
  struct Case {
    std::string text;
    int line;
  } const cases[] = {
      {"[HKEY_CURRENT_USER\\A]\n", 1},                        // no header
      {"Windows Registry Editor Version 4.00\n", 1},          // another header
      {"\n\n<?xml version=\"1.0\"?>\n", 3},                   // the first line with text counts
      {file("[HKEY_CURRENT_USER\\B\n"), 4},                   // no closing bracket
      {file("[HKEY_CURRENT_USER\\B] x\n"), 4},                // text after it
      {file("[]\n"), 4},
      {file("[HKEY_CURRENT_USER\\\\B]\n"), 4},                // an empty name
      {file("[HKEY_CURRENT_USER\\B\x01" "C]\n"), 4},          // a control character
      {std::string(kHeader) + "\"V\"=dword:1\n", 2},          // a value before any key
      {file("\"V\"=dword:123456789\n"), 4},                   // nine digits
      {file("\"V\"=dword:\n"), 4},
      {file("\"V\"=dword:12g\n"), 4},
      {file("\"V\"=hex:1,zz\n"), 4},
      {file("\"V\"=hex:123\n"), 4},
      {file("\"V\"=hex:01,,02\n"), 4},
      {file("\"V\"=hex(b:01\n"), 4},
      {file("\"V\"=hex()01\n"), 4},
      {file("\"V\"=hex01\n"), 4},
      {file("\"V\"=\"abc\n"), 4},                             // no closing quote
      {file("\"V\"=\"abc\" x\n"), 4},
      {file("\"V\"=qword:1\n"), 4},                           // not a notation of the format
      {file("\"V\"=\n"), 4},
      {file("\"V\n"), 4},
      {file("\"V\" dword:1\n"), 4},
      {file("V=dword:1\n"), 4},
      {file("\"A\"=dword:1\n\"B\"=hex:01,\\\n  zz\n"), 6},    // the line of the continuation
  };
  for (const auto& c : cases) {
    RegistryTree::ParseError error;
    EXPECT_FALSE(RegistryTree::parse(c.text, &error)) << c.text;
    EXPECT_EQ(error.line, c.line) << c.text;
    EXPECT_FALSE(error.message.empty()) << c.text;
  }
  // Nothing but blanks and comments is an empty tree, not damage.
  for (const std::string empty : {"", "\n\n", "; nothing yet\n"}) {
    const auto tree = RegistryTree::parse(empty);
    ASSERT_TRUE(tree) << empty;
    EXPECT_TRUE(tree->keys().empty());
  }
}

TEST(RegistryTree, WritesKeysInPathOrderWithTheirValues) {
  RegistryTree tree;
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\TextFile\\Recent File List", L"File1",
                host::regString(L"C:\\a \"b\".txt"));
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane", L"EF_PathType", host::regDword(10));
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane", L"", host::regString(L"d"));
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane-Old", L"B", host::regBinary("\x01\xAB", 2));
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane", L"Q", RegValue{11, {1, 0, 0, 0, 0, 0, 0, 0}});
  // A string holding a line break, or one whose bytes are not a plain text, is written in hex.
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane", L"L", host::regString(L"a\nb"));
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane", L"Odd", RegValue{host::REG_SZ, {0x61}});
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane", L"D3", RegValue{host::REG_DWORD, {1, 2, 3}});
  tree.makeKey(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\AreaField");
  // "Corvane" before its children, and they before "Corvane-Old", though "-" sorts before "\".
  EXPECT_EQ(tree.text(),
            "Windows Registry Editor Version 5.00\n"
            "\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n"
            "\"EF_PathType\"=dword:0000000a\n"
            "@=\"d\"\n"
            "\"Q\"=hex(b):01,00,00,00,00,00,00,00\n"
            "\"L\"=hex(1):61,00,0a,00,62,00,00,00\n"
            "\"Odd\"=hex(1):61\n"
            "\"D3\"=hex(4):01,02,03\n"
            "\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\AreaField]\n"
            "\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\TextFile\\Recent File List]\n"
            "\"File1\"=\"C:\\\\a \\\"b\\\".txt\"\n"
            "\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane-Old]\n"
            "\"B\"=hex:01,ab\n");
}

TEST(RegistryTree, LongBinaryDataWrapsAndReadsBack) {
  RegistryTree tree;
  std::vector<std::uint8_t> data(100);
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<std::uint8_t>(i * 7);
  tree.setValue(L"HKEY_CURRENT_USER\\A", L"Blob", RegValue{host::REG_BINARY, data});
  const std::string text = tree.text();
  std::size_t longest = 0, start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
    longest = std::max(longest, end - start);
  EXPECT_LE(longest, 80u);
  EXPECT_NE(text.find(",\\\n  "), std::string::npos);
  const auto back = RegistryTree::parse(text);
  ASSERT_TRUE(back);
  EXPECT_EQ(*back, tree);
}

TEST(RegistryTree, RoundTripKeepsEveryValue) {
  const std::string text = file(
      "\"a\"=\"x\\\\y\"\n\"b\"=dword:ffffffff\n\"c\"=hex(2):25,00,00,00\n\"d\"=hex(0):\n@=\"\"\n"
      "\n[HKEY_LOCAL_MACHINE\\Other]\n\"e\"=hex:00\n");
  const auto tree = RegistryTree::parse(text);
  ASSERT_TRUE(tree);
  const auto again = RegistryTree::parse(tree->text());
  ASSERT_TRUE(again);
  EXPECT_EQ(*again, *tree);
  EXPECT_EQ(again->text(), tree->text());
}

TEST(RegistryTree, KeysAndValuesCompareWithoutCase) {
  RegistryTree tree;
  tree.setValue(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\AreaField", L"Units", host::regDword(2));
  tree.setValue(L"hkey_current_user\\SOFTWARE\\halvek\\corvane\\areafield", L"UNITS", host::regDword(3));
  const auto keys = tree.keys();
  ASSERT_EQ(keys.size(), 1u);
  EXPECT_EQ(keys[0]->path, L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\AreaField");  // first spelling
  ASSERT_EQ(keys[0]->values.size(), 1u);
  EXPECT_EQ(keys[0]->values[0].name, L"Units");
  EXPECT_EQ(keys[0]->values[0].data, host::regDword(3));

  // Parents exist through their children; a sibling whose name starts alike is not a child.
  tree.makeKey(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\Area");
  tree.makeKey(L"HKEY_CURRENT_USER\\Software\\Halvek\\CorvaneX");
  struct Case {
    const wchar_t* path;
    bool exists;
  } const cases[] = {
      {L"HKEY_CURRENT_USER", true},
      {L"hkey_current_user\\software\\HALVEK", true},
      {L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\", true},
      {L"HKEY_CURRENT_USER\\Software\\Halv", false},
      {L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\AreaFieldX", false},
      {L"HKEY_CURRENT_USER\\Software\\\\Halvek", false},
      {L"", false},
  };
  for (const auto& c : cases) EXPECT_EQ(tree.hasKey(c.path), c.exists) << std::wstring(c.path).size();
  EXPECT_EQ(tree.subKeys(L"HKEY_CURRENT_USER\\SOFTWARE\\Halvek"), (std::vector<std::wstring>{L"Corvane", L"CorvaneX"}));
  EXPECT_EQ(tree.subKeys(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane"),
            (std::vector<std::wstring>{L"Area", L"AreaField"}));

  EXPECT_TRUE(tree.removeKey(L"HKEY_CURRENT_USER\\software\\halvek\\corvane"));
  EXPECT_FALSE(tree.hasKey(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\AreaField"));
  EXPECT_TRUE(tree.hasKey(L"HKEY_CURRENT_USER\\Software\\Halvek\\CorvaneX"));
  EXPECT_FALSE(tree.removeKey(L"HKEY_CURRENT_USER\\Software\\Halvek\\Corvane"));
}

}  // namespace
}  // namespace corvane::headless
