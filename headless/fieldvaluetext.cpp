#include "headless/fieldvaluetext.h"

#include "headless/database.h"
#include "headless/valueformatter.h"

namespace corvane::headless {

namespace {

int intVar(const Database& db, const wchar_t* name, int fallback) {
  host::ResBuf var;
  if (db.getSysVar(name, var) != host::Acad::eOk) return fallback;
  const auto* value = std::get_if<std::int32_t>(&var.value);
  return value ? *value : fallback;
}

}  // namespace

std::wstring displayFieldValue(const host::AcValue& value, const std::wstring& format, const Database& db) {
  // The drawing's own unit settings stand behind "current units" and "current precision".
  DrawingUnits units;
  units.lunits = intVar(db, L"LUNITS", units.lunits);
  units.luprec = intVar(db, L"LUPREC", units.luprec);
  units.dimzin = intVar(db, L"DIMZIN", units.dimzin);
  units.unitmode = intVar(db, L"UNITMODE", units.unitmode);
  return formatValue(value, format, units);
}

}  // namespace corvane::headless
