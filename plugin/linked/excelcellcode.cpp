#include "plugin/linked/excelcellcode.h"

#include <cstdint>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"

namespace corvane {

namespace {

constexpr wchar_t kEvaluatorId[] = L"ExcelCell";
constexpr wchar_t kNoBreakSpace = L'\u00A0';

// Trims the given characters from both ends.
std::wstring_view trimChars(std::wstring_view text, std::wstring_view chars) noexcept {
  const std::size_t first = text.find_first_not_of(chars);
  if (first == std::wstring_view::npos) return {};
  const std::size_t last = text.find_last_not_of(chars);
  return text.substr(first, last - first + 1);
}

}  // namespace

std::optional<std::wstring> QuotedReference(std::wstring_view code) {
  const std::size_t open = code.find(L'"');
  if (open == std::wstring_view::npos) return std::nullopt;
  const std::size_t close = code.find(L'"', open + 1);
  if (close == std::wstring_view::npos) return std::nullopt;
  return std::wstring(code.substr(open + 1, close - open - 1));
}

ExcelCellReference SplitExcelCellReference(std::wstring_view reference) {
  ExcelCellReference split;
  const std::size_t last = reference.rfind(L':');
  if (last == std::wstring_view::npos) {
    split.cell = reference;
    return split;
  }
  split.cell = reference.substr(last + 1);
  const std::size_t before = last == 0 ? std::wstring_view::npos : reference.rfind(L':', last - 1);
  if (before == std::wstring_view::npos) {
    split.worksheet = reference.substr(0, last);
    return split;
  }
  split.worksheet = reference.substr(before + 1, last - before - 1);
  split.workbook = reference.substr(0, before);
  return split;
}

std::wstring MidOptionText(int start, int length) {
  if (start <= 0 && length <= 0) return {};
  return core::format(L" \\MID(%s,%s)", start > 0 ? std::to_wstring(start) : std::wstring(),
                      length > 0 ? std::to_wstring(length) : std::wstring());
}

std::wstring EmptyExcelCellCode() { return core::format(L"%%<\\%s >%%", kEvaluatorId); }

std::wstring ExcelCellCodeByName(std::wstring_view workbook, std::wstring_view worksheet, std::wstring_view name,
                                 int midStart, int midLength) {
  return core::format(L"%%<\\%s \"%s:%s:%s\"%s>%%", kEvaluatorId, workbook, worksheet, name,
                      MidOptionText(midStart, midLength));
}

std::wstring ExcelCellCodeByAddress(std::wstring_view workbook, std::wstring_view worksheet,
                                    std::wstring_view column, int row, int midStart, int midLength) {
  return core::format(L"%%<\\%s \"%s:%s:$%s$%s\"%s>%%", kEvaluatorId, workbook, worksheet, column,
                      std::to_wstring(row), MidOptionText(midStart, midLength));
}

std::wstring ApplyMidOption(std::wstring_view text, std::wstring_view code) {
  std::wstring result(text);
  const std::size_t mid = code.find(L"\\MID");
  if (mid != std::wstring_view::npos) {
    const std::wstring_view arguments = trimChars(code.substr(mid + 4), L"()");
    const std::size_t comma = arguments.find(L',');
    const std::wstring_view first = arguments.substr(0, comma);
    const std::wstring_view second = comma == std::wstring_view::npos ? std::wstring_view() : arguments.substr(comma + 1);
    std::int64_t start = std::int64_t{core::leadingInteger(trimChars(first, L" \t,"))} - 1;
    const int length = core::leadingInteger(trimChars(second, L" \t,"));
    if (start >= 1 || length >= 1) {
      if (start < 0) start = 0;
      const auto from = static_cast<std::size_t>(start);
      if (from >= result.size()) {
        result.clear();
      } else {
        result = length < 1 ? result.substr(from) : result.substr(from, static_cast<std::size_t>(length));
      }
    }
  }
  if (result.empty()) result.assign(1, kNoBreakSpace);
  return result;
}

}  // namespace corvane
