// Patterns and texts from arbitrary bytes: MatchGroups must neither crash nor take long, and
// every capture it reports must be a piece of the text.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "core/matchgroups.h"
#include "core/utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t cut = bytes.find('\0');
  const std::string_view patternBytes = cut == std::string_view::npos ? bytes.substr(0, size / 2) : bytes.substr(0, cut);
  const std::string_view textBytes = cut == std::string_view::npos ? bytes.substr(size / 2) : bytes.substr(cut + 1);
  const std::wstring pattern = corvane::core::fromUtf8(patternBytes);
  const std::wstring text = corvane::core::fromUtf8(textBytes);
  std::vector<std::wstring> captures;
  const bool matched = corvane::core::MatchGroups(text, pattern, captures);
  if (!matched && !captures.empty()) std::abort();
  for (const auto& capture : captures) {
    if (text.find(capture) == std::wstring::npos) std::abort();
  }
  return 0;
}
