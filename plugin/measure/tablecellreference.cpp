#include "plugin/measure/tablecellreference.h"

#include <vector>

#include "core/crt.h"
#include "core/matchgroups.h"
#include "core/printf.h"
#include "core/textutil.h"

namespace corvane {

namespace {

constexpr std::wstring_view kTablePattern = L"TABLE\\([<]*{[A-Z0-9a-z]+}[>]*\\)\\.{.*}";

bool isLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

}  // namespace

std::optional<TableCellReference> ParseTableCellReference(std::wstring_view text) {
  std::vector<std::wstring> groups;
  if (!core::MatchGroups(core::toUpper(text), kTablePattern, groups) || groups.size() != 2) return std::nullopt;
  const std::wstring& name = groups[1];
  const std::size_t dollar = name.find(L'$');
  if (name.empty() || dollar == std::wstring::npos) return std::nullopt;
  // A blank after the name stops the reading of the row digits.
  const std::wstring padded = name + L' ';
  const auto at = [&padded](std::size_t i) { return i < padded.size() ? padded[i] : L'\0'; };
  const wchar_t c1 = at(dollar + 1);
  const wchar_t c2 = at(dollar + 2);
  if (!isLetter(c1)) return std::nullopt;
  int column = 0;
  std::size_t rowStart = 0;
  if (c2 == L'$') {
    column = c1 - 64;
    rowStart = dollar + 3;
  } else {
    if (!isLetter(c2)) return std::nullopt;
    // The character between the letters and the row is taken to be "$" unseen.
    column = (c1 - 64) * 26 + (c2 - 64);
    rowStart = dollar + 4;
  }
  const int row = rowStart < padded.size() ? core::leadingInteger(std::wstring_view(padded).substr(rowStart)) : 0;
  if (row < 1 || c1 - 64 < 1) return std::nullopt;
  return TableCellReference{groups[0], row - 1, column - 1};
}

std::wstring AbsoluteCellName(int row, int column) {
  if (column <= 26) return core::format(L"%c%c%c%d", L'$', static_cast<wchar_t>(64 + column), L'$', row);
  return core::format(L"%c%c%c%c%d", L'$', static_cast<wchar_t>(64 + (column - 1) / 26),
                      static_cast<wchar_t>(65 + (column - 1) % 26), L'$', row);
}

std::wstring TableCellReferenceText(std::wstring_view handle, int row, int column) {
  return core::format(L"Table(<%s>).%s", handle, AbsoluteCellName(row, column));
}

}  // namespace corvane
