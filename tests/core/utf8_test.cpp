#include "core/utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane::core {
namespace {

TEST(Utf8, DecodingReplacesEachMalformedRunOnce) {
  const std::wstring bad(1, L'\xFFFD');
  struct Case {
    std::string bytes;
    std::wstring expected;
  } const cases[] = {
      {"plain", L"plain"},
      {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
      {"\xC3\xA4", L"ä"},
      {"\xDF\xBF", L"\u07FF"},
      {"\xE0\xA0\x80", L"\u0800"},
      {"\xED\x9F\xBF", L"\uD7FF"},
      {"\xEE\x80\x80", L"\uE000"},
      {"\xEF\xBF\xBF", std::wstring(1, L'\xFFFF')},
      {"\xF0\x90\x80\x80", L"\U00010000"},
      {"\xF4\x8F\xBF\xBF", L"\U0010FFFF"},
      {"\xC0\xAF", bad + bad},                          // overlong '/'
      {"\xC1\xBF", bad + bad},                          // overlong
      {"\xE0\x80\xAF", bad + bad + bad},                // overlong in three bytes
      {"\xF0\x80\x80\x80", bad + bad + bad + bad},      // overlong in four bytes
      {"\xED\xA0\x80", bad + bad + bad},                // a surrogate
      {"\xF4\x90\x80\x80", bad + bad + bad + bad},      // past U+10FFFF
      {"\xF5\x80", bad + bad},                          // never a lead byte
      {"\xFE\xFF", bad + bad},
      {"a\xE2\x82", L"a" + bad},                        // cut off at the end: one replacement
      {"\xE2\x82" "A", bad + L"A"},                     // cut off by a character
      {"\xF0\x9F\x98", bad},
      {"\xF0\x9F\x98\xF0\x9F\x98\x80", bad + L"\U0001F600"},
      {"\x80z", bad + L"z"},                            // a stray continuation byte
      {"\xC3", bad},
      {"\xC3\xC3\xA4", bad + L"ä"},
  };
  for (const auto& c : cases) EXPECT_EQ(fromUtf8(c.bytes), c.expected) << testing::PrintToString(c.bytes);
}

TEST(Utf8, EncodingReplacesWhatIsNotUnicode) {
  struct Case {
    std::wstring text;
    std::string bytes;
  } const cases[] = {
      {L"plain", "plain"},
      {L"\u007F\u0080", "\x7F\xC2\x80"},
      {L"\u07FF\u0800", "\xDF\xBF\xE0\xA0\x80"},
      {std::wstring(1, L'\xFFFF'), "\xEF\xBF\xBF"},
      {L"\U00010000\U0010FFFF", "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
      {std::wstring(1, static_cast<wchar_t>(0x110000)), "\xEF\xBF\xBD"},
      {std::wstring(1, static_cast<wchar_t>(-1)), "\xEF\xBF\xBD"},
      {std::wstring(1, static_cast<wchar_t>(0xD800)), "\xEF\xBF\xBD"},
      {std::wstring(1, static_cast<wchar_t>(0xDC00)) + L"a", "\xEF\xBF\xBD" "a"},
      // A pair from a 16-bit source is the one character it encodes.
      {std::wstring{static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00)}, "\xF0\x9F\x98\x80"},
      {std::wstring{static_cast<wchar_t>(0xD83D), L'x'}, "\xEF\xBF\xBD" "x"},
      {std::wstring{static_cast<wchar_t>(0xDE00), static_cast<wchar_t>(0xD83D)}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
  };
  for (const auto& c : cases) EXPECT_EQ(toUtf8(c.text), c.bytes) << testing::PrintToString(c.bytes);
}

TEST(Utf8, EveryScalarValueRoundTrips) {
  std::wstring all;
  for (wchar_t c = 1; c <= 0x10FFFF; ++c) {
    if (c < 0xD800 || c > 0xDFFF) all.push_back(c);
  }
  EXPECT_EQ(fromUtf8(toUtf8(all)), all);
}

}  // namespace
}  // namespace corvane::core
