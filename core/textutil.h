// Wide-text helpers. Case folding is ordinal and independent of the process locale: a fixed
// one-to-one mapping of ASCII, Latin-1, Latin Extended-A, Greek and Cyrillic letters, so that
// the same text compares the same way on every machine.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::core {

wchar_t toUpperChar(wchar_t c) noexcept;
wchar_t toLowerChar(wchar_t c) noexcept;
std::wstring toUpper(std::wstring_view text);
std::wstring toLower(std::wstring_view text);

// Like _wcsicmp: both sides folded to lower case, then compared by code unit.
int compareNoCase(std::wstring_view a, std::wstring_view b) noexcept;
bool equalsNoCase(std::wstring_view a, std::wstring_view b) noexcept;
bool startsWithNoCase(std::wstring_view text, std::wstring_view prefix) noexcept;
// First position at or after `from` where `what` occurs, ignoring case; npos when none.
std::size_t findNoCase(std::wstring_view text, std::wstring_view what, std::size_t from = 0) noexcept;

// White space as the C runtime's iswspace sees it in the "C" locale (blank, \t \n \v \f \r).
bool isSpace(wchar_t c) noexcept;
// The text without white space at either end, without a copy; trim() makes one.
std::wstring_view trimmed(std::wstring_view text) noexcept;
std::wstring trim(std::wstring_view text);
std::wstring trimLeft(std::wstring_view text);
std::wstring trimRight(std::wstring_view text);
// The text without blanks (spaces and tabs) at either end, without a copy: the padding of
// values in drawing files and settings files, where other white space means something. In the
// header, as a loader calls it for every value it reads.
template <typename View>
View withoutBlanks(View text) noexcept {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}
inline std::string_view trimBlanks(std::string_view text) noexcept { return withoutBlanks(text); }
inline std::wstring_view trimBlanks(std::wstring_view text) noexcept { return withoutBlanks(text); }

// Replaces every non-overlapping occurrence of `from`, scanning left to right. An empty
// `from` leaves the text as it is.
std::wstring replaceAll(std::wstring_view text, std::wstring_view from, std::wstring_view to);
// n separators give n + 1 parts, empty ones included (an empty text gives one empty part).
std::vector<std::wstring> split(std::wstring_view text, wchar_t separator);

// The file name of a path, with its extension: what follows the last "\" or "/".
std::wstring_view fileNameOf(std::wstring_view path) noexcept;

}  // namespace corvane::core
