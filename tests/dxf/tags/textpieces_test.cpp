// Stored texts: caret escapes and 250-character pieces, checked against the host's own pieces
// and counts in a sample drawing.
#include "dxf/tags/textpieces.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dxf/tags/document.h"
#include "dxf/tags/recordview.h"
#include "headless/db/fieldcode.h"
#include "support/dxftext.h"
#include "support/samples.h"

namespace corvane::dxf {
namespace {

TEST(TextPieces, DecodesCaretEscapes) {
  struct Case {
    std::wstring stored;
    std::wstring shown;
  };
  const Case cases[] = {
      {L"a^Ib", L"a\tb"},
      {L"^J^M", L"\n\r"},
      {L"2^ 3", L"2^3"},           // a caret itself
      {L"x^", L"x^"},              // a caret at the end stays
      {L"^a^1", L"^a^1"},          // before anything else too
      {std::wstring(L"^@", 2), std::wstring(1, L'\0')},
      {L"^_", L"\x1F"},
      {L"plain", L"plain"},
  };
  for (const auto& c : cases) EXPECT_EQ(decodeCarets(c.stored), c.shown) << std::string(c.stored.begin(), c.stored.end());
}

TEST(TextPieces, EscapesControlCharactersAndCarets) {
  struct Case {
    std::wstring text;
    std::wstring stored;
  };
  const Case cases[] = {
      {L"a\tb", L"a^Ib"},
      {L"line\r\nnext", L"line^M^Jnext"},
      {L"2^3", L"2^ 3"},
      {L"^I", L"^ I"},  // a caret before a letter is the character, not an escape
      {L"x^\x1F", L"x^ ^_"},
      {std::wstring(1, L'\0'), L"^@"},
      {L"", L""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(encodeCarets(c.text), c.stored);
    EXPECT_EQ(decodeCarets(encodeCarets(c.text)), c.text);
  }
}

TEST(TextPieces, SplitsIntoPiecesOfCharacters) {
  struct Case {
    std::wstring text;
    std::vector<std::size_t> sizes;
  };
  const std::wstring a250(250, L'a');
  const Case cases[] = {
      {L"", {0}},
      {L"abc", {3}},
      {a250, {250}},
      {a250 + L"b", {250, 1}},
      {a250 + a250, {250, 250}},
      {std::wstring(251, L'\t'), {250, 1}},  // counted before escaping
  };
  for (const auto& c : cases) {
    std::vector<std::size_t> sizes;
    std::wstring joined;
    for (const auto piece : splitPieces(c.text)) {
      sizes.push_back(piece.size());
      joined += piece;
    }
    EXPECT_EQ(sizes, c.sizes);
    EXPECT_EQ(joined, c.text);
  }
}

TEST(TextPieces, CutsAMultilineTextWhereTheHostDid) {
  CORVANE_NEED_SAMPLES();
  auto read = Document::readFile(testing::sampleFolder() / "ezdxf-mtext_complex_inline_codes.dxf");
  ASSERT_TRUE(read.document) << read.error;
  const Document& doc = *read.document;
  const auto texts = testing::recordsOfType(doc, "MTEXT");
  ASSERT_FALSE(texts.empty());
  std::vector<std::wstring> pieces;
  for (const Tag& tag : doc.tags(texts.front()))
    if (tag.code == 3 || tag.code == 1) pieces.push_back(doc.text(tag));
  ASSERT_GT(pieces.size(), 2u);
  std::wstring whole;
  for (const auto& piece : pieces) whole += decodeCarets(piece);
  std::vector<std::wstring> split;
  for (const auto piece : splitPieces(whole)) split.push_back(encodeCarets(piece));
  EXPECT_EQ(split, pieces);
  // The host counts the decoded text: its field keeps 1995 as the length and this check sum.
  EXPECT_EQ(whole.size(), 1995u);
  EXPECT_EQ(headless::fieldTextChecksum(whole), 206757213.0);
}

}  // namespace
}  // namespace corvane::dxf
