// Typed group-code values, as the host passes extended data and system variables around.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace corvane::host {

struct ResBuf {
  // Group code: 1000 string, 1001 application name, 1002 "{"/"}", 1003 layer, 1004 binary
  // (kept as hexadecimal text), 1005 handle (text), 1010.. points, 1040.. reals, 1070 short,
  // 1071 long. System variables use the host's result types (RTSHORT 5003, RTREAL 5001,
  // RTSTR 5005, RTPOINT 5002, RT3DPOINT 5009, RTLONG 5010).
  int restype = 0;
  std::variant<std::int32_t, double, std::wstring, std::array<double, 3>> value;

  bool operator==(const ResBuf&) const = default;
};

using ResBufList = std::vector<ResBuf>;

enum ResultType : int {
  RTREAL = 5001,
  RTPOINT = 5002,
  RTSHORT = 5003,
  RTSTR = 5005,
  RT3DPOINT = 5009,
  RTLONG = 5010,
};

}  // namespace corvane::host
