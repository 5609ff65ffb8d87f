// The host's field-code syntax: "%<\Id arguments \f "format">%", nested fields, and the
// placeholders a stored field keeps in place of its children ("%<\_FldIdx N>%") and of the
// objects it refers to ("%<\_ObjIdx N>%").
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane::headless {

// Start and end (one past ">%") of the first complete field code that starts at or after
// `from`, nested fields included. Markers that are never closed are plain text.
std::optional<std::pair<std::size_t, std::size_t>> findFieldCode(std::wstring_view text, std::size_t from = 0);

struct ParsedFieldCode {
  // "_text" when the code is not one single field (plain text with or without fields in it).
  std::wstring evaluatorId;
  // The field's own code as the host stores it: without the outer markers, each child field
  // replaced by "%<\_FldIdx N>%" and each "%<\_ObjId N>%" by "%<\_ObjIdx N>%".
  std::wstring ownCode;
  std::vector<std::wstring> childCodes;      // complete codes, markers included
  std::vector<std::uint64_t> objectIds;      // the ids of the "%<\_ObjId N>%" references
};
// A field kept by a text is always a text field ("_text"), even when the text is one field.
ParsedFieldCode parseFieldCode(std::wstring_view code, bool asText = false);

// The format option of a field's own code: the trailing ` \f "..."`. Returns the code without
// it and the format text (empty when there is none).
std::pair<std::wstring, std::wstring> splitFormatOption(std::wstring_view ownCode);

// The evaluator id of a field's own code ("\AcVar Date" -> "AcVar") and the arguments after it.
std::pair<std::wstring, std::wstring> splitEvaluatorId(std::wstring_view ownCode);

// Replaces every placeholder "%<\<keyword> N>%" by what `expand` returns for N.
template <typename Expand>
std::wstring expandPlaceholders(std::wstring_view code, std::wstring_view keyword, Expand expand);

// Σ (i+1)·code point over a text: the check sum the host keeps beside a field's text.
double fieldTextChecksum(std::wstring_view text);

}  // namespace corvane::headless

#include <cwchar>

namespace corvane::headless {
template <typename Expand>
std::wstring expandPlaceholders(std::wstring_view code, std::wstring_view keyword, Expand expand) {
  std::wstring out;
  out.reserve(code.size());
  const std::wstring open = L"%<\\" + std::wstring(keyword) + L" ";
  std::size_t pos = 0;
  while (true) {
    const std::size_t at = code.find(open, pos);
    if (at == std::wstring_view::npos) break;
    const std::size_t close = code.find(L">%", at + open.size());
    if (close == std::wstring_view::npos) break;
    const std::wstring_view digits = code.substr(at + open.size(), close - at - open.size());
    std::size_t index = 0;
    bool ok = !digits.empty();
    for (const wchar_t c : digits) {
      if (c < L'0' || c > L'9' || index > 100000000) {
        ok = false;
        break;
      }
      index = index * 10 + static_cast<std::size_t>(c - L'0');
    }
    out.append(code.substr(pos, at - pos));
    if (ok) out.append(expand(index));
    else out.append(code.substr(at, close + 2 - at));
    pos = close + 2;
  }
  out.append(code.substr(pos));
  return out;
}
}  // namespace corvane::headless
