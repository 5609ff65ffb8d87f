#include "plugin/formula/celladdress.h"

#include "core/crt.h"
#include "core/printf.h"

namespace corvane {

namespace {

bool isLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }
bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// An address's parts as written: "$", letters, "$", digits, and whatever follows them.
struct AddressParts {
  std::size_t letters = 0;
  std::wstring_view digits;
  std::wstring_view rest;
};

AddressParts splitAddress(std::wstring_view text) {
  AddressParts parts;
  std::size_t i = text.starts_with(L'$') ? 1 : 0;
  const std::size_t lettersBegin = i;
  while (i < text.size() && isLetter(text[i])) ++i;
  parts.letters = i - lettersBegin;
  if (i < text.size() && text[i] == L'$') ++i;
  const std::size_t digitsBegin = i;
  while (i < text.size() && isDigit(text[i])) ++i;
  parts.digits = text.substr(digitsBegin, i - digitsBegin);
  parts.rest = text.substr(i);
  return parts;
}

bool startsLikeAddress(std::wstring_view text) {
  return !text.empty() && (text[0] == L'$' || isLetter(text[0]));
}

// Any text in an address's place, whatever its shape.
std::optional<std::wstring> problemOf(std::wstring_view text) {
  const AddressParts parts = splitAddress(text);
  const wchar_t* what = nullptr;
  if (parts.letters == 0) what = L"has no column letters";
  else if (parts.letters > 2) what = L"has more than two column letters";
  else if (parts.digits.empty()) what = L"has no row number";
  else if (!parts.rest.empty()) what = L"does not end with its row number";
  else if (parts.digits.find_first_not_of(L'0') == std::wstring_view::npos) what = L"has row 0; rows start at 1";
  if (!what) return std::nullopt;
  return core::format(L"Cell address [%s] %s.", text, what);
}

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

std::optional<std::wstring> CellAddressProblem(std::wstring_view text) {
  const AddressParts parts = splitAddress(text);
  if (parts.letters == 0 || parts.digits.empty() || !parts.rest.empty()) return std::nullopt;
  return problemOf(text);
}

std::optional<std::wstring> CellRangeProblem(std::wstring_view text) {
  const std::size_t colon = text.find(L':');
  if (colon == std::wstring_view::npos) return std::nullopt;
  const std::wstring_view first = text.substr(0, colon);
  const std::wstring_view last = text.substr(colon + 1);
  if (!startsLikeAddress(first) && !startsLikeAddress(last)) return std::nullopt;
  const wchar_t* what = nullptr;
  if (last.find(L':') != std::wstring_view::npos) what = L"has more than one \":\"";
  else if (first.empty()) what = L"has no cell address before its \":\"";
  else if (last.empty()) what = L"has no cell address after its \":\"";
  if (what) return core::format(L"Cell range [%s] %s.", text, what);
  if (auto problem = problemOf(first)) return problem;
  return problemOf(last);
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
