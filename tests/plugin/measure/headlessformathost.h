// The number-format host calls answered by the headless host over one drawing.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "headless/database.h"
#include "headless/rtos.h"
#include "headless/valueformatter.h"
#include "host/resbuf.h"
#include "plugin/measure/formathost.h"

namespace corvane::testing {

class HeadlessFormatHost : public FormatHost {
 public:
  explicit HeadlessFormatHost(headless::Database& db, int version = 23) : db_(db), version_(version) {}

  bool realToString(double value, int units, int precision, std::wstring& text) override {
    const auto result = headless::rtos(value, {units, precision, shortVar(L"DIMZIN"), shortVar(L"UNITMODE")});
    if (!result) return false;
    text = *result;
    return true;
  }
  bool getShortVar(std::wstring_view name, int& value) override {
    host::ResBuf rb;
    if (db_.getSysVar(name, rb) != host::Acad::eOk || !std::holds_alternative<std::int32_t>(rb.value))
      return false;
    value = std::get<std::int32_t>(rb.value);
    return true;
  }
  bool setShortVar(std::wstring_view name, int value) override {
    return db_.setSysVar(name, {host::RTSHORT, std::int32_t{value}}) == host::Acad::eOk;
  }
  std::wstring formatValue(const host::AcValue& value, const std::wstring& format) override {
    return headless::formatValue(
        value, format,
        {shortVar(L"LUNITS"), shortVar(L"LUPREC"), shortVar(L"DIMZIN"), shortVar(L"UNITMODE")});
  }
  int hostVersion() override { return version_; }

  int shortVar(std::wstring_view name) {
    int v = 0;
    getShortVar(name, v);
    return v;
  }

 private:
  headless::Database& db_;
  int version_;
};

}  // namespace corvane::testing
