// Multiline-text contents from arbitrary bytes: the plain text must come out without hanging,
// and no code may make it longer than the contents it came from.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/utf8.h"
#include "headless/db/mtext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::wstring contents = corvane::core::fromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
  const std::wstring plain = corvane::headless::MText::plainText(contents);
  if (plain.size() > contents.size()) std::abort();
  return 0;
}
