#include "headless/db/sysvars.h"

namespace corvane::headless {

namespace {
host::ResBuf shortVar(std::int32_t v) { return {host::RTSHORT, v}; }
host::ResBuf realVar(double v) { return {host::RTREAL, v}; }
host::ResBuf textVar(const wchar_t* v) { return {host::RTSTR, std::wstring(v)}; }
host::ResBuf pointVar(double x, double y, double z) { return {host::RT3DPOINT, std::array<double, 3>{x, y, z}}; }
}  // namespace

const std::vector<SysVarDefault>& initialSysVars() {
  // Values of a new drawing from the host's imperial template.
  static const std::vector<SysVarDefault> vars = {
      {L"ANGBASE", realVar(0.0), false},
      {L"ANGDIR", shortVar(0), false},
      {L"AUNITS", shortVar(0), false},
      {L"AUPREC", shortVar(0), false},
      {L"CECOLOR", textVar(L"BYLAYER"), false},
      {L"CLAYER", textVar(L"0"), false},
      {L"DIMDEC", shortVar(4), false},
      {L"DIMDSEP", textVar(L"."), false},
      {L"DIMZIN", shortVar(0), false},
      {L"DWGCODEPAGE", textVar(L"ANSI_1252"), true},
      {L"DWGNAME", textVar(L"Drawing1.dwg"), true},
      {L"DWGPREFIX", textVar(L""), true},
      {L"EXTMAX", pointVar(-1.0e20, -1.0e20, -1.0e20), true},
      {L"EXTMIN", pointVar(1.0e20, 1.0e20, 1.0e20), true},
      {L"FIELDDISPLAY", shortVar(1), false},
      {L"FIELDEVAL", shortVar(31), false},
      {L"INSUNITS", shortVar(1), false},
      {L"LIMMAX", pointVar(12.0, 9.0, 0.0), false},
      {L"LIMMIN", pointVar(0.0, 0.0, 0.0), false},
      {L"LTSCALE", realVar(1.0), false},
      {L"LUNITS", shortVar(2), false},
      {L"LUPREC", shortVar(4), false},
      {L"MEASUREMENT", shortVar(0), false},
      {L"OSMODE", shortVar(4133), false},
      {L"PDMODE", shortVar(0), false},
      {L"TEXTSIZE", realVar(0.2), false},
      {L"TEXTSTYLE", textVar(L"Standard"), false},
      {L"TILEMODE", shortVar(1), false},
      {L"UNITMODE", shortVar(0), false},
  };
  return vars;
}

}  // namespace corvane::headless
