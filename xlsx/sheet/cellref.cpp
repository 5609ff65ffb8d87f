#include "xlsx/sheet/cellref.h"

#include <algorithm>

namespace corvane::xlsx {

std::optional<CellRef> parseCellRef(std::string_view text) {
  std::size_t at = 0;
  if (at < text.size() && text[at] == '$') ++at;
  std::uint32_t column = 0;
  const std::size_t lettersBegin = at;
  // Four letters already pass XFD, so the count bounds the arithmetic too.
  while (at < text.size() && text[at] >= 'A' && text[at] <= 'Z' && at - lettersBegin < 4) {
    column = column * 26 + static_cast<std::uint32_t>(text[at] - 'A' + 1);
    ++at;
  }
  if (at == lettersBegin || column > kMaxColumn) return std::nullopt;
  if (at < text.size() && text[at] == '$') ++at;
  std::uint32_t row = 0;
  const std::size_t digitsBegin = at;
  while (at < text.size() && text[at] >= '0' && text[at] <= '9' && at - digitsBegin < 8) {
    row = row * 10 + static_cast<std::uint32_t>(text[at] - '0');
    ++at;
  }
  if (at == digitsBegin || at != text.size() || text[digitsBegin] == '0' || row > kMaxRow) return std::nullopt;
  return CellRef{row, column};
}

std::string columnLetters(std::uint32_t column) {
  if (column == 0 || column > kMaxColumn) return {};
  std::string letters;
  while (column > 0) {
    const std::uint32_t digit = (column - 1) % 26;
    letters.push_back(static_cast<char>('A' + digit));
    column = (column - 1) / 26;
  }
  std::reverse(letters.begin(), letters.end());
  return letters;
}

std::string cellRefText(CellRef ref, bool absolute) {
  if (ref.row == 0 || ref.row > kMaxRow) return {};
  std::string letters = columnLetters(ref.column);
  if (letters.empty()) return {};
  std::string text;
  if (absolute) text += '$';
  text += letters;
  if (absolute) text += '$';
  text += std::to_string(ref.row);
  return text;
}

std::optional<CellRange> parseCellRange(std::string_view text) {
  const std::size_t colon = text.find(':');
  const auto first = parseCellRef(text.substr(0, colon));
  if (!first) return std::nullopt;
  if (colon == std::string_view::npos) return CellRange{*first, *first};
  const auto last = parseCellRef(text.substr(colon + 1));
  if (!last) return std::nullopt;
  return CellRange{{std::min(first->row, last->row), std::min(first->column, last->column)},
                   {std::max(first->row, last->row), std::max(first->column, last->column)}};
}

std::string cellRangeText(const CellRange& range) {
  if (range.first == range.last) return cellRefText(range.first);
  return cellRefText(range.first) + ':' + cellRefText(range.last);
}

}  // namespace corvane::xlsx
