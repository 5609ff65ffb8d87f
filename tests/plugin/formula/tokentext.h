// Shows the engine's marker characters as visible names, so that expected token lists and
// values can be written plainly in test tables.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::testing {

inline std::wstring shown(std::wstring_view text) {
  std::wstring out;
  for (const wchar_t c : text) {
    switch (c) {
      case L'\x01': out += L"{neg}"; break;
      case L'\x13': out += L"{str}"; break;
      case L'\x14': out += L"{list}"; break;
      case L'\x1B': out += L"{args}"; break;
      default: out += c; break;
    }
  }
  return out;
}

inline std::vector<std::wstring> shown(const std::vector<std::wstring>& tokens) {
  std::vector<std::wstring> out;
  for (const auto& token : tokens) out.push_back(shown(token));
  return out;
}

}  // namespace corvane::testing
