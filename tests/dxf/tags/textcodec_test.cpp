#include <gtest/gtest.h>

#include <string>

#include "dxf/tags/codepage.h"
#include "dxf/tags/document.h"
#include "dxf/tags/textcodec.h"
#include "support/dxftext.h"

namespace corvane::dxf {
namespace {

struct DecodeCase {
  const char* page;  // nullptr: UTF-8; "?" an unknown page
  std::string bytes;
  std::wstring text;
};

TextCodec codecFor(const char* page) {
  if (page == nullptr) return TextCodec::utf8();
  return TextCodec::forCodePage(CodePage::find(page));
}

TEST(TextCodec, DecodesCodePagesUtf8AndEscapes) {
  const DecodeCase cases[] = {
      {"ANSI_1252", "\x80 \xE4\xDF", L"\u20AC \u00E4\u00DF"},  // euro sign, a umlaut, sharp s
      {"ansi_1252", "\x81", L"\u0081"},                         // undefined byte: its C1 control
      {"ANSI_1250", "\x8A\xB9", L"\u0160\u0105"},               // S caron, a ogonek
      {"ANSI_1251", "\xC0\xC6\xFF", L"\u0410\u0416\u044F"},     // Cyrillic A, Zhe, ya
      {"ANSI_1253", "\xC1", L"\u0391"},                         // Greek Alpha
      {"ANSI_1254", "\xD0", L"\u011E"},                         // G breve
      {"ANSI_1257", "\xC0", L"\u0104"},                         // A ogonek
      {"DOS437", "\xE1", L"\u00DF"},
      {"DOS850", "\x81", L"\u00FC"},
      {"DOS866", "\x80", L"\u0410"},
      {"ANSI_1252", "x\\U+4E2Dy", L"x\u4E2Dy"},
      {"ANSI_1252", "\\U+d83d\\U+DE00", L"\U0001F600"},  // surrogate escapes join
      {"ANSI_1252", "\\U+12G4 \\U+12", L"\\U+12G4 \\U+12"},  // not escapes: kept as text
      {"ANSI_1252", "\\u+0041", L"\\u+0041"},
      {nullptr, "Stra\xC3\x9F" "e \\U+00E9", L"Stra\u00DFe \u00E9"},
      {"?", "a\xE4", L"a\uFFFD"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.page == nullptr ? "UTF-8" : c.page);
    EXPECT_EQ(codecFor(c.page).decode(c.bytes), c.text);
  }
}

struct EncodeCase {
  const char* page;
  std::wstring text;
  std::string bytes;
};

TEST(TextCodec, EncodesWhatThePageHoldsAndEscapesTheRest) {
  const EncodeCase cases[] = {
      {"ANSI_1252", L"\u20AC\u00E4\u4E2D", "\x80\xE4\\U+4E2D"},
      {"ANSI_1252", L"\U0001F600", "\\U+D83D\\U+DE00"},
      {"ANSI_1251", L"\u0416\u00E4", "\xC6\\U+00E4"},
      {"ANSI_1252", L"\u0081", "\x81"},
      {"?", L"\u00E4", "\\U+00E4"},
      {nullptr, L"\u00E4\u4E2D", "\xC3\xA4\xE4\xB8\xAD"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.page == nullptr ? "UTF-8" : c.page);
    EXPECT_EQ(codecFor(c.page).encode(c.text), c.bytes);
  }
}

TEST(TextCodec, EveryByteOfEveryPageComesBackAsItself) {
  const char* pages[] = {"ANSI_874",  "ANSI_1250", "ANSI_1251", "ANSI_1252", "ANSI_1253", "ANSI_1254",
                         "ANSI_1255", "ANSI_1256", "ANSI_1257", "ANSI_1258", "DOS437",    "DOS850",
                         "DOS852",    "DOS866",    "ISO8859-1", "ISO8859-15"};
  std::string all;
  for (int b = 1; b < 256; ++b) all.push_back(static_cast<char>(b));
  for (const char* name : pages) {
    SCOPED_TRACE(name);
    const CodePage* page = CodePage::find(name);
    ASSERT_NE(page, nullptr);
    const TextCodec codec = TextCodec::forCodePage(page);
    const std::wstring text = codec.decode(all);
    ASSERT_EQ(text.size(), all.size());
    EXPECT_EQ(codec.encode(text), all);
  }
  EXPECT_EQ(CodePage::find("ANSI_932"), nullptr);  // double-byte pages are not decoded
}

struct FileCase {
  const char* name;
  std::string version;
  std::string codePage;
  std::string bytes;  // the TEXT value as stored
};

// The same words stored three ways read the same, and written back take each file's encoding.
TEST(TextCodec, DrawingsDecodeByVersionAndCodePage) {
  const std::wstring words = L"Gr\u00F6\u00DFe \u0416 \u4E2D";
  const FileCase cases[] = {
      {"R2004 cp1252 with an escape", "AC1018", "ANSI_1252", "Gr\xF6\xDF" "e \\U+0416 \\U+4E2D"},
      {"R2000 cp1251 with escapes", "AC1015", "ANSI_1251", "Gr\\U+00F6\\U+00DFe \xC6 \\U+4E2D"},
      {"R2018 UTF-8", "AC1032", "ANSI_1252", "Gr\xC3\xB6\xC3\x9F" "e \xD0\x96 \xE4\xB8\xAD"},
      {"R2018 UTF-8 with an escape", "AC1032", "ANSI_1252", "Gr\xC3\xB6\xC3\x9F" "e \\U+0416 \xE4\xB8\xAD"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string text = testing::asciiDxf(testing::drawing(c.version, {{0, "TEXT"}, {5, "2A"}, {1, c.bytes}}, c.codePage));
    auto read = Document::read(text);
    ASSERT_TRUE(read.document) << read.error;
    Document& doc = *read.document;
    const RecordId id = *doc.findHandle(0x2A);
    EXPECT_EQ(doc.text(doc.tags(id)[2]), words);

    doc.setText(id, 2, words);
    EXPECT_EQ(doc.text(doc.tags(id)[2]), words);
    const std::string stored(doc.bytes(doc.tags(id)[2]));
    if (doc.isUnicodeVersion()) {
      EXPECT_EQ(stored, "Gr\xC3\xB6\xC3\x9F" "e \xD0\x96 \xE4\xB8\xAD");
    } else if (c.codePage == "ANSI_1251") {
      EXPECT_EQ(stored, "Gr\\U+00F6\\U+00DFe \xC6 \\U+4E2D");
    } else {
      EXPECT_EQ(stored, "Gr\xF6\xDF" "e \\U+0416 \\U+4E2D");
    }
  }
}

}  // namespace
}  // namespace corvane::dxf
