#include "output.h"

#include <cmath>
#include <cstdio>

#include "core/crt.h"
#include "core/printf.h"
#include "core/utf8.h"

namespace corvane::cli {

void writeOut(std::wstring_view text) {
  const std::string utf8 = core::toUtf8(text);
  std::fwrite(utf8.data(), 1, utf8.size(), stdout);
}

void writeErr(std::wstring_view text) {
  const std::string utf8 = core::toUtf8(text);
  std::fwrite(utf8.data(), 1, utf8.size(), stderr);
}

void writeLine(std::wstring_view line) {
  writeOut(line);
  std::fputc('\n', stdout);
}

std::wstring oneLine(std::wstring_view text) {
  std::wstring shown;
  for (const wchar_t c : text) {
    const auto code = static_cast<unsigned>(c);
    if (code < 0x20 || code == 0x7F) shown += core::format(L"\\u%04X", code);
    else shown.push_back(c);
  }
  return shown;
}

std::wstring jsonString(std::wstring_view text) {
  std::wstring out = L"\"";
  for (const wchar_t c : text) {
    switch (c) {
      case L'"': out += L"\\\""; break;
      case L'\\': out += L"\\\\"; break;
      case L'\n': out += L"\\n"; break;
      case L'\r': out += L"\\r"; break;
      case L'\t': out += L"\\t"; break;
      default:
        if (static_cast<unsigned>(c) < 0x20) out += core::format(L"\\u%04x", static_cast<unsigned>(c));
        else out.push_back(c);
    }
  }
  return out + L"\"";
}

CLI::Validator finiteNumber() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        const std::wstring wide = core::fromUtf8(text);
        std::size_t used = 0;
        const double v = core::wcstod(wide, &used);
        if (wide.empty() || used != wide.size() || !std::isfinite(v)) return "not a finite number: " + text;
        return {};
      },
      "NUMBER");
}

}  // namespace corvane::cli
