#include "headless/db/fieldcode.h"

#include "core/crt.h"

namespace corvane::headless {

std::optional<std::pair<std::size_t, std::size_t>> findFieldCode(std::wstring_view text, std::size_t from) {
  // One pass pairing markers like brackets; the matched pair that starts first is the
  // outermost field there, even when an earlier "%<" is never closed.
  std::vector<std::size_t> open;
  std::optional<std::pair<std::size_t, std::size_t>> first;
  for (std::size_t i = from; i + 1 < text.size();) {
    if (text[i] == L'%' && text[i + 1] == L'<') {
      open.push_back(i);
      i += 2;
    } else if (text[i] == L'>' && text[i + 1] == L'%' && !open.empty()) {
      const std::size_t start = open.back();
      open.pop_back();
      if (!first || start < first->first) first = std::make_pair(start, i + 2);
      i += 2;
      // Once every marker before the best start is closed or dropped, nothing can beat it.
      if (first && (open.empty() || open.front() > first->first)) break;
    } else {
      ++i;
    }
  }
  return first;
}

namespace {

bool startsWith(std::wstring_view text, std::wstring_view prefix) {
  return text.size() >= prefix.size() && text.substr(0, prefix.size()) == prefix;
}

// Replaces the fields nested in `body` by placeholders, collecting them.
void extractChildren(std::wstring_view body, ParsedFieldCode& parsed) {
  std::size_t pos = 0;
  while (true) {
    const auto span = findFieldCode(body, pos);
    if (!span) break;
    parsed.ownCode.append(body.substr(pos, span->first - pos));
    const std::wstring_view field = body.substr(span->first, span->second - span->first);
    static constexpr std::wstring_view kObjId = L"%<\\_ObjId ";
    if (startsWith(field, kObjId)) {
      const std::wstring_view digits = field.substr(kObjId.size(), field.size() - kObjId.size() - 2);
      parsed.ownCode.append(L"%<\\_ObjIdx " + std::to_wstring(parsed.objectIds.size()) + L">%");
      parsed.objectIds.push_back(core::wtoui64(digits));
    } else {
      parsed.ownCode.append(L"%<\\_FldIdx " + std::to_wstring(parsed.childCodes.size()) + L">%");
      parsed.childCodes.emplace_back(field);
    }
    pos = span->second;
  }
  parsed.ownCode.append(body.substr(pos));
}

}  // namespace

ParsedFieldCode parseFieldCode(std::wstring_view code, bool asText) {
  ParsedFieldCode parsed;
  const auto span = findFieldCode(code, 0);
  if (!asText && span && span->first == 0 && span->second == code.size() && code.size() > 4 && code[2] == L'\\') {
    const std::wstring_view inner = code.substr(2, code.size() - 4);
    parsed.evaluatorId = splitEvaluatorId(inner).first;
    // Nested fields live after the id; the id itself never holds one.
    extractChildren(inner, parsed);
    return parsed;
  }
  parsed.evaluatorId = L"_text";
  extractChildren(code, parsed);
  return parsed;
}

std::pair<std::wstring, std::wstring> splitFormatOption(std::wstring_view ownCode) {
  static constexpr std::wstring_view kOption = L" \\f \"";
  if (ownCode.empty() || ownCode.back() != L'"') return {std::wstring(ownCode), {}};
  const std::size_t at = ownCode.rfind(kOption);
  if (at == std::wstring_view::npos || at + kOption.size() > ownCode.size() - 1) {
    return {std::wstring(ownCode), {}};
  }
  return {std::wstring(ownCode.substr(0, at)),
          std::wstring(ownCode.substr(at + kOption.size(), ownCode.size() - 1 - at - kOption.size()))};
}

std::pair<std::wstring, std::wstring> splitEvaluatorId(std::wstring_view ownCode) {
  if (ownCode.empty() || ownCode.front() != L'\\') return {};
  std::size_t end = 1;
  while (end < ownCode.size() && ownCode[end] != L' ' && ownCode[end] != L'%') ++end;
  std::wstring_view rest = ownCode.substr(end);
  if (!rest.empty() && rest.front() == L' ') rest.remove_prefix(1);
  return {std::wstring(ownCode.substr(1, end - 1)), std::wstring(rest)};
}

double fieldTextChecksum(std::wstring_view text) {
  double sum = 0.0;
  for (std::size_t i = 0; i < text.size(); ++i) sum += static_cast<double>(i + 1) * static_cast<double>(text[i]);
  return sum;
}

}  // namespace corvane::headless
