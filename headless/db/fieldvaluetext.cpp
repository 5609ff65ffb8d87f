#include "headless/db/fieldvaluetext.h"

#include "headless/db/database.h"
#include "headless/format/valueformatter.h"

namespace corvane::headless {

std::wstring displayFieldValue(const host::AcValue& value, const std::wstring& format, const Database& db) {
  // The drawing's own unit settings stand behind "current units" and "current precision".
  return formatValue(value, format, db.drawingUnits());
}

}  // namespace corvane::headless
