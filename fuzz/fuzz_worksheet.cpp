// Bytes as a worksheet and as a notes part with its drawing. Every input must give a sheet or
// a message; a sheet that reads must write back and read again.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "xlsx/sheet/comments.h"
#include "xlsx/sheet/worksheet.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane::xlsx;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t chunk = size == 0 ? 1 : 1 + data[0] % 13;

  std::string error;
  auto sheet = Worksheet::parse(chunksOf(bytes, chunk), error);
  if (!sheet && error.empty()) __builtin_trap();
  if (sheet) {
    sheet->setValue({2, 3}, "x");
    sheet->deleteRow(1);
    const std::string written = sheet->serialize(bytes, "rId1");
    if (written.empty()) __builtin_trap();
    std::string again;
    if (!Worksheet::parse(chunksOf(written), again)) __builtin_trap();
  }

  // The first half as the notes, the rest as their drawing.
  error.clear();
  auto notes = Comments::parse(bytes.substr(0, size / 2), bytes.substr(size / 2), error);
  if (!notes && error.empty()) __builtin_trap();
  if (notes) {
    notes->add({1, 1}, "n", "a");
    notes->deleteRow(2);
    std::string again;
    if (!Comments::parse(notes->serializeComments(), notes->serializeVml(), again)) __builtin_trap();
  }
  return 0;
}
