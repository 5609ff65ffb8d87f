// Patterns and texts from arbitrary bytes: MatchGroups must neither crash nor take long; when
// it answers true it reports one capture per capture group of the pattern, each a piece of the
// text, and when it answers false no capture at all.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "core/matchgroups.h"
#include "core/utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// The '{' that open capture groups: not escaped and not inside a set. Only meaningful for a
// pattern that parsed.
std::size_t captureGroups(std::wstring_view pattern) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const wchar_t c = pattern[i];
    if (c == L'\\') {
      ++i;
    } else if (c == L'{') {
      ++count;
    } else if (c == L'[') {
      ++i;
      if (i < pattern.size() && pattern[i] == L'^') ++i;
      for (bool first = true; i < pattern.size() && (first || pattern[i] != L']'); ++i, first = false) {
        if (pattern[i] == L'\\') ++i;
      }
    }
  }
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t cut = bytes.find('\0');
  const std::string_view patternBytes = cut == std::string_view::npos ? bytes.substr(0, size / 2) : bytes.substr(0, cut);
  const std::string_view textBytes = cut == std::string_view::npos ? bytes.substr(size / 2) : bytes.substr(cut + 1);
  const std::wstring pattern = corvane::core::fromUtf8(patternBytes);
  const std::wstring text = corvane::core::fromUtf8(textBytes);
  std::vector<std::wstring> captures = {L"stale"};
  const bool matched = corvane::core::MatchGroups(text, pattern, captures);
  if (!matched && !captures.empty()) std::abort();
  if (matched && captures.size() != captureGroups(pattern)) std::abort();
  for (const auto& capture : captures) {
    if (text.find(capture) == std::wstring::npos) std::abort();
  }
  return 0;
}
