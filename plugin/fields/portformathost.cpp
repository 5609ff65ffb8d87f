#include "plugin/fields/portformathost.h"

#include <cstdint>
#include <variant>

#include "host/acdbdatabase.h"

namespace corvane {

bool PortFormatHost::realToString(double value, int units, int precision, std::wstring& text) {
  return services_.realToString(value, units, precision, text);
}

bool PortFormatHost::getShortVar(std::wstring_view name, int& value) {
  host::AcDbDatabase* db = services_.workingDatabase();
  host::ResBuf var;
  if (!db || db->getSysVar(name, var) != host::Acad::eOk) return false;
  const auto* number = std::get_if<std::int32_t>(&var.value);
  if (!number) return false;
  value = *number;
  return true;
}

bool PortFormatHost::setShortVar(std::wstring_view name, int value) {
  host::AcDbDatabase* db = services_.workingDatabase();
  return db && db->setSysVar(name, {host::RTSHORT, std::int32_t{value}}) == host::Acad::eOk;
}

std::wstring PortFormatHost::formatValue(const host::AcValue& value, const std::wstring& format) {
  return services_.formatValue(value, format);
}

}  // namespace corvane
