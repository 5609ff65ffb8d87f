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

// Which block names a rule's block name is matched against.
enum class InsertFieldsMatch {
  // The name of the block the reference inserts; a dynamic block's variant is an anonymous
  // block ("*U..."), so a rule naming the dynamic block leaves its variants alone.
  kDefinitionName,
  // As above, and when no rule names that block, the name of the dynamic block a variant was
  // made from.
  kDynamicBlockName,
};

// Failures are printed on the command line and the walk goes on; nothing is undone.
InsertFieldsCount InsertFieldsIntoDrawing(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db,
                                          const FieldRules& rules,
                                          InsertFieldsMatch match = InsertFieldsMatch::kDefinitionName);

}  // namespace corvane
