// Field format strings and values from arbitrary bytes: the value formatter and real-to-text
// must neither crash nor hang, and must keep to what they promise about their output.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "core/utf8.h"
#include "headless/format/rtos.h"
#include "headless/format/valueformatter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 12) return 0;
  double value = 0;
  std::memcpy(&value, data, sizeof value);
  const int units = data[8] % 7;          // 0 and 6 are outside the five units
  const int precision = data[9] % 10;     // 9 is outside 0-8
  const int dimzin = data[10] % 16;
  const int unitmode = data[11] % 2;
  const std::wstring format =
      corvane::core::fromUtf8(std::string_view(reinterpret_cast<const char*>(data) + 12, size - 12));

  const auto text = corvane::headless::rtos(value, {units, precision, dimzin, unitmode});
  // The host refuses bad units, bad precision and non-finite values, and nothing else.
  const bool refusable = units < 1 || units > 5 || precision > 8 || !std::isfinite(value);
  if (text && refusable) std::abort();
  if (text && text->empty()) std::abort();

  corvane::headless::DrawingUnits drawing{units == 0 ? 2 : units, precision > 8 ? 4 : precision, dimzin, unitmode};
  (void)corvane::headless::formatValue(corvane::host::AcValue(value), format, drawing);
  (void)corvane::headless::formatValue(corvane::host::AcValue(static_cast<std::int32_t>(data[8] * 1000 - 7)), format,
                                       drawing);
  (void)corvane::headless::formatValue(corvane::host::AcValue(format), format, drawing);
  return 0;
}
