// The work of the insert fields command on one drawing: every attribute of every block
// reference in the drawing's layouts whose block and tag a rule names gets the rule's field,
// evaluated once. Shared by the command and the command-line tool.
#pragma once

#include <map>
#include <string>

namespace corvane {

namespace host {
class AcDbDatabase;
class AcDbHostApplicationServices;
}  // namespace host

// Field codes by rule key ("<block>*<tag>", matched exactly).
using FieldRules = std::map<std::wstring, std::wstring>;

struct InsertFieldsCount {
  int stamped = 0;    // attributes that got a field
  int evaluated = 0;  // of those, fields the engine evaluated
  int errors = 0;     // attributes that a rule named but could not take its field
  bool operator==(const InsertFieldsCount&) const = default;
};

// Failures are printed on the command line and the walk goes on; nothing is undone.
InsertFieldsCount InsertFieldsIntoDrawing(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db,
                                          const FieldRules& rules);

}  // namespace corvane
