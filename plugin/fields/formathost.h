// What the number-format pieces of the measurement fields need of the host: real-to-text
// conversion, two system variables, the value formatter and the version number.
#pragma once

#include <string>
#include <string_view>

#include "host/acvalue.h"

namespace corvane {

class FormatHost {
 public:
  virtual ~FormatHost() = default;

  // acdbRToS: `value` in linear units 1-5 with precision 0-8; false when the host refuses.
  virtual bool realToString(double value, int units, int precision, std::wstring& text) = 0;
  // acedGetVar / acedSetVar of a short system variable such as DIMZIN or LUNITS.
  virtual bool getShortVar(std::wstring_view name, int& value) = 0;
  virtual bool setShortVar(std::wstring_view name, int value) = 0;
  // AcValue::format: the value as the host displays it with a field format string.
  virtual std::wstring formatValue(const host::AcValue& value, const std::wstring& format) = 0;
  // The host application's version number; prefix and suffix are escaped above 16.
  virtual int hostVersion() = 0;
};

}  // namespace corvane
