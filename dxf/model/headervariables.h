// The header variables a drawing keeps for the system variables of the same name (LUNITS,
// LUPREC, DIMZIN, UNITMODE, INSUNITS, ...): read into the database when the drawing is
// loaded, and written back when the database's value changed.
#pragma once

#include <map>
#include <string>

#include "dxf/tags/document.h"
#include "host/resbuf.h"

namespace corvane::headless {
class Database;
}

namespace corvane::dxf {

class HeaderVariables {
 public:
  // Sets the database's variables from the header; remembers the values for save().
  void load(const Document& doc, headless::Database& db);
  // Writes each variable whose value in the database is no longer the one loaded (or set by
  // the last save). Returns the number of variables written.
  int save(Document& doc, const headless::Database& db);

 private:
  std::map<std::wstring, host::ResBuf> known_;  // the values as the header has them
};

}  // namespace corvane::dxf
