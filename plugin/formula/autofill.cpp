#include "plugin/formula/autofill.h"

#include <string>

namespace corvane {

namespace {

// Columns up to "YY" move; one further and the two-letter form could no longer hold every
// column a move may reach.
constexpr long long kLastMovableColumn = 675;
constexpr std::wstring_view kFieldClose = L">%";
constexpr std::wstring_view kFormatSwitch = L" \\f \"";

bool isLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }
bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }
bool isWordCharacter(wchar_t c) { return isLetter(c) || isDigit(c) || c == L'$' || c > 127; }
wchar_t upper(wchar_t c) { return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - 32) : c; }

// Bijective base 26; anything past the last movable column counts as one past it, so that a
// long run of letters cannot overflow.
long long columnNumber(std::wstring_view letters) {
  long long column = 0;
  for (const wchar_t c : letters) {
    column = column * 26 + (upper(c) - 64);
    if (column > kLastMovableColumn) return kLastMovableColumn + 1;
  }
  return column;
}

// The row of a run of digits; past the largest int it is no row of any table.
long long rowNumber(std::wstring_view digits) {
  constexpr long long kTooLarge = 2147483648LL;
  long long row = 0;
  for (const wchar_t c : digits) {
    row = row * 10 + (c - L'0');
    if (row >= kTooLarge) return kTooLarge;
  }
  return row;
}

bool allDigits(std::wstring_view text) {
  for (const wchar_t c : text) {
    if (!isDigit(c)) return false;
  }
  return !text.empty();
}

}  // namespace

std::wstring ShiftCellReference(std::wstring_view word, int rowOffset, int columnOffset) {
  const std::wstring unchanged(word);
  if (word.size() < 2 || !(isLetter(word[0]) || word[0] == L'$')) return unchanged;
  int dollars = 0;
  bool letters = false;
  bool digits = false;
  for (const wchar_t c : word) {
    if (isLetter(c)) {
      letters = true;
    } else if (isDigit(c)) {
      digits = true;
    } else if (c == L'$') {
      ++dollars;
    } else {
      return unchanged;
    }
  }
  if (dollars > 2 || !letters || !digits) return unchanged;

  std::size_t split = 1;
  while (split < word.size() && isLetter(word[split])) ++split;
  std::wstring_view columnPart = word.substr(0, split);
  std::wstring_view rowPart = word.substr(split);
  if (rowPart.empty()) return unchanged;

  const bool columnPinned = columnPart.front() == L'$';
  if (columnPinned) columnPart.remove_prefix(1);
  if (columnPart.empty()) return unchanged;  // only letters are left after the "$"
  long long column = columnNumber(columnPart);
  if (column > kLastMovableColumn) return unchanged;

  const bool rowPinned = rowPart.front() == L'$';
  if (rowPinned) rowPart.remove_prefix(1);
  if (!allDigits(rowPart)) return unchanged;
  long long row = rowNumber(rowPart);
  if (row < 1 || row > 2147483647LL) return unchanged;

  if (!columnPinned) column += columnOffset;
  if (!rowPinned) row += rowOffset;

  std::wstring out;
  if (columnPinned) out.push_back(L'$');
  // C's division and remainder: a column below 1 gives the characters before "A".
  if (column > 26) out.push_back(static_cast<wchar_t>(64 + (column - 1) / 26));
  out.push_back(static_cast<wchar_t>(65 + (column - 1) % 26));
  if (rowPinned) out.push_back(L'$');
  out += std::to_wstring(row);
  return out;
}

std::wstring ShiftReferences(std::wstring_view text, int rowOffset, int columnOffset) {
  if (rowOffset == 0 && columnOffset == 0) return std::wstring(text);
  std::wstring out;
  out.reserve(text.size() + 8);
  std::size_t wordStart = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (isWordCharacter(text[i])) continue;
    if (i > wordStart) out += ShiftCellReference(text.substr(wordStart, i - wordStart), rowOffset, columnOffset);
    out.push_back(text[i]);
    wordStart = i + 1;
  }
  return out;
}

std::wstring ShiftFormulaFieldRest(std::wstring_view rest, int rowOffset, int columnOffset) {
  // A format switch holds codes such as "%lu2" and "%pr3", whose "lu2" and "pr3" read like cell
  // references: moving them would give every copy other units or another precision than the
  // formula it was copied from. The switch is found as the field engine finds it: the last one
  // in the field's own code, which then ends with the switch's closing quote.
  std::wstring_view own = rest;
  if (own.ends_with(kFieldClose)) own.remove_suffix(kFieldClose.size());
  std::size_t at = std::wstring_view::npos;
  if (!own.empty() && own.back() == L'"') {
    at = own.rfind(kFormatSwitch);
    if (at != std::wstring_view::npos && at + kFormatSwitch.size() > own.size() - 1) at = std::wstring_view::npos;
  }
  if (at == std::wstring_view::npos) return ShiftReferences(rest, rowOffset, columnOffset);
  // The blank before the switch ends the expression's last word.
  return ShiftReferences(rest.substr(0, at + 1), rowOffset, columnOffset) + std::wstring(rest.substr(at + 1));
}

}  // namespace corvane
