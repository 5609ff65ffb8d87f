// Settings-file text from arbitrary bytes: reading must neither crash nor take long, and a text
// that reads as a registry tree must be written so that reading it back gives the same tree,
// and writing that again the same text.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "headless/settings/registrytree.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using corvane::headless::RegistryTree;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  RegistryTree::ParseError error;
  const auto tree = RegistryTree::parse(bytes, &error);
  if (!tree) {
    if (error.line < 1 || error.message.empty()) std::abort();  // a failure always says where and why
    return 0;
  }
  const std::string text = tree->text();
  const auto again = RegistryTree::parse(text, &error);
  if (!again || !(*again == *tree)) std::abort();
  if (again->text() != text) std::abort();
  return 0;
}
