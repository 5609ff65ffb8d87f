#include "host/formataffix.h"

#include "core/textutil.h"

namespace corvane::host {

std::wstring escapeAffix(std::wstring_view text) {
  std::wstring out = core::replaceAll(text, L"\\", L"\\\\");
  out = core::replaceAll(out, L",", L"\\,");
  out = core::replaceAll(out, L"[", L"\\[");
  return core::replaceAll(out, L"]", L"\\]");
}

std::wstring unescapeAffix(std::wstring_view text) {
  std::wstring out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escaped = text[i] == L'\\' && i + 1 < text.size() &&
                         std::wstring_view(L"\\,[]").find(text[i + 1]) != std::wstring_view::npos;
    if (escaped) ++i;
    out += text[i];
  }
  return out;
}

}  // namespace corvane::host
