#include "plugin/formula/celladdress.h"

#include "core/crt.h"
#include "core/printf.h"

namespace corvane {

namespace {

bool isLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }
bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

}  // namespace

std::optional<CellAddress> ParseCellAddress(std::wstring_view text) noexcept {
  if (text.size() < 2) return std::nullopt;
  std::size_t i = 0;
  if (text[i] == L'$') ++i;
  if (i >= text.size() || !isLetter(text[i])) return std::nullopt;
  CellAddress address;
  address.column = static_cast<int>(text[i]) - 64;
  ++i;
  if (i < text.size() && isLetter(text[i])) {
    address.column = address.column * 26 - 64 + static_cast<int>(text[i]);
    ++i;
  }
  if (i < text.size() && text[i] == L'$') ++i;
  const std::wstring_view digits = text.substr(i);
  if (digits.empty()) return std::nullopt;
  for (const wchar_t c : digits) {
    if (!isDigit(c)) return std::nullopt;
  }
  address.row = core::leadingInteger(digits);
  return address;
}

std::optional<CellRange> ParseCellRange(std::wstring_view text) noexcept {
  const std::size_t colon = text.find(L':');
  if (colon == std::wstring_view::npos || text.find(L':', colon + 1) != std::wstring_view::npos) return std::nullopt;
  const auto first = ParseCellAddress(text.substr(0, colon));
  const auto last = ParseCellAddress(text.substr(colon + 1));
  if (!first || !last) return std::nullopt;
  return CellRange{*first, *last};
}

std::wstring FormatCellAddress(int row, int column, host::HostUi& ui) {
  if (row < 1 || column < 1) {
    ui.messageBox(L"The row index and column index should be a positive number.", L"Halvek Corvane", host::MB_OK);
    return {};
  }
  if (column <= 26) return core::format(L"%c%d", static_cast<wchar_t>(64 + column), row);
  return core::format(L"%c%c%d", static_cast<wchar_t>(64 + (column - 1) / 26),
                      static_cast<wchar_t>(65 + (column - 1) % 26), row);
}

}  // namespace corvane
