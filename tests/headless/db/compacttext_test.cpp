#include "headless/db/compacttext.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace corvane::headless {
namespace {

std::wstring of(std::initializer_list<std::uint32_t> units) {
  std::wstring text;
  for (const auto unit : units) text.push_back(static_cast<wchar_t>(unit));
  return text;
}

// Every character comes back as it went in, in as many bytes as its range needs: one for
// ASCII, up to six below 2^31 as UTF-8 counts them, seven past that.
TEST(CompactText, EveryCharacterComesBackInTheBytesItsRangeNeeds) {
  struct Case {
    std::wstring text;
    std::size_t bytes;
  } const cases[] = {
      {L"", 0},
      {L"Room 12", 7},
      {of({0}), 1},
      {of({0x7F}), 1},
      {of({0x80}), 2},
      {L"Stra\u00DFe", 7},
      {of({0x7FF}), 2},
      {of({0x800}), 3},
      {L"\u4E2D", 3},
      {of({0xD800}), 3},  // a lone surrogate is kept, not replaced
      {of({0xFFFF}), 3},
      {of({0x10000}), 4},
      {L"\U0001F600", 4},
      {of({0x10FFFF}), 4},
      {of({0x110000}), 4},  // past Unicode, still kept
      {of({0x1FFFFF}), 4},
      {of({0x200000}), 5},
      {of({0x3FFFFFF}), 5},
      {of({0x4000000}), 6},
      {of({0x7FFFFFFF}), 6},
      {of({0x80000000u}), 7},
      {of({0xFFFFFFFFu}), 7},
      {of({'A', 0, 'B'}), 3},
      {of({'a', 0x80, 0x800, 0x10000, 0x200000, 0x4000000, 0xFFFFFFFFu, 'z'}), 1 + 2 + 3 + 4 + 5 + 6 + 7 + 1},
  };
  std::wstring kept = L"what the kept string held before";  // and then each case before
  for (const Case& c : cases) {
    const CompactText compact(c.text);
    EXPECT_EQ(compact.wide(), c.text) << compact.bytes();
    compact.wide(kept);
    EXPECT_EQ(kept, c.text) << compact.bytes();
    EXPECT_EQ(compact.bytes().size(), c.bytes) << compact.bytes();
    EXPECT_EQ(compact.empty(), c.text.empty());
  }
}

TEST(CompactText, TextsAreEqualExactlyWhenTheirCharactersAre) {
  struct Case {
    std::wstring a;
    std::wstring b;
    bool equal;
  } const cases[] = {
      {L"Area", L"Area", true},
      {L"Area", L"area", false},
      {L"Area", L"Area ", false},
      {L"", L"", true},
      {of({0x80}), of({0xC2, 0x80}), false},   // the character, not its bytes read as characters
      {of({0xD800, 0xDC00}), L"\U00010000", false},  // a pair of surrogates stays a pair
  };
  for (const Case& c : cases) EXPECT_EQ(CompactText(c.a) == CompactText(c.b), c.equal);
}

}  // namespace
}  // namespace corvane::headless
