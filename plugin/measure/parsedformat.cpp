#include "plugin/measure/parsedformat.h"

#include <algorithm>
#include <vector>

#include "core/crt.h"
#include "core/matchgroups.h"
#include "plugin/fields/formatlists.h"

namespace corvane {

namespace {

std::optional<std::wstring> firstCapture(std::wstring_view text, std::wstring_view pattern) {
  std::vector<std::wstring> captures;
  if (!core::MatchGroups(text, pattern, captures) || captures.empty()) return std::nullopt;
  return captures.front();
}

// The text from "%ps[" to the first bracket no backslash escapes (or to the end of the
// format), divided at the first comma no backslash escapes. No comma: all of it is the prefix.
void readAffixes(std::wstring_view format, ParsedFormat& parsed) {
  const std::size_t open = format.find(L"%ps[");
  if (open == std::wstring_view::npos) return;
  const std::size_t begin = open + 4;
  std::size_t comma = std::wstring_view::npos;
  std::size_t end = begin;
  for (; end < format.size() && format[end] != L']'; ++end) {
    if (format[end] == L'\\') {
      ++end;
      if (end == format.size()) break;
    } else if (format[end] == L',' && comma == std::wstring_view::npos) {
      comma = end;
    }
  }
  end = std::min(end, format.size());
  if (comma == std::wstring_view::npos) {
    parsed.prefix = unescapeAffix(format.substr(begin, end - begin));
    parsed.suffix = std::wstring();
  } else {
    parsed.prefix = unescapeAffix(format.substr(begin, comma - begin));
    parsed.suffix = unescapeAffix(format.substr(comma + 1, end - comma - 1));
  }
}

}  // namespace

ParsedFormat parseFormat(std::wstring_view format) {
  ParsedFormat parsed;
  if (auto units = firstCapture(format, L"%lu{[0-9]+}")) parsed.units = core::wtol(*units);
  if (auto precision = firstCapture(format, L"%pr{[0-9]+}")) parsed.precision = core::wtol(*precision);
  readAffixes(format, parsed);
  // The capture is greedy up to the last ']' of the format; reading the number stops at the
  // first character that cannot belong to it, as the C runtime's conversion does.
  if (auto factor = firstCapture(format, L"%ct8\\[{.*}\\]")) parsed.conversionFactor = core::wtof(*factor);
  if (auto mask = firstCapture(format, L"%zs{[0-9]+}"))
    parsed.zeros = ZeroSuppression::fromMask(core::wtol(*mask));
  return parsed;
}

void ParsedFormat::applyTo(AdditionalFormat& settings) const {
  if (prefix) settings.prefix = *prefix;
  if (suffix) settings.suffix = *suffix;
  if (conversionFactor) settings.conversionFactor = *conversionFactor;
  if (zeros) settings.zeros = *zeros;
}

void selectFromFormat(FormatHost& host, const ParsedFormat& parsed, ComboList& units, ComboList& precision) {
  if (parsed.units) {
    units.selectItem(*parsed.units);
    fillPrecisionList(host, units.selectedItem().value_or(kUnitsNone), precision);
  }
  if (parsed.precision) precision.selectItem(*parsed.precision);
}

}  // namespace corvane
