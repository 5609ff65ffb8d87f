// Number-format codes and cell values from arbitrary bytes: reading a code and showing numbers
// and text with it must neither crash nor hang, and must keep what NumberFormat promises.
//
// Input: 8 bytes of a double, 1 byte whose low bit picks the 1904 date system, then the code.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "xlsx/sheet/numberformat.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 9) return 0;
  double value = 0;
  std::memcpy(&value, data, sizeof value);
  const bool date1904 = (data[8] & 1) != 0;
  const std::string_view code(reinterpret_cast<const char*>(data) + 9, size - 9);

  using corvane::xlsx::NumberFormat;
  const NumberFormat format = NumberFormat::parse(code);
  const std::string general = corvane::xlsx::formatGeneral(value);
  // General fits 11 characters, a sign and, for exponents of three digits, one more.
  if (std::isfinite(value) && (general.empty() || general.size() > 13)) std::abort();

  const std::string shown = format.format(value, date1904);
  (void)format.format(-value, !date1904);
  (void)format.format(std::floor(value), date1904);
  (void)format.formatText(code);
  (void)format.formatText("text");
  // A code that could not be read renders as General and is no date.
  if (!format.error().empty() && (shown != general || format.isDate())) std::abort();
  return 0;
}
