// Conversions between the forms in which field codes refer to drawing objects: object ids
// ("%<\_ObjId N>%"), valid while the drawing is open, and handles, which survive saving and
// copying. None of them fails outward: a code that cannot be converted comes back unchanged.
#pragma once

#include <string>
#include <string_view>

#include "host/acdbdatabase.h"
#include "host/hostservices.h"

namespace corvane {

// The first id reference of an object-property code ("%<\AcObjProp" at the very start)
// becomes a handle reference "%<\_ObjHandle H>%", everywhere it occurs.
std::wstring ObjIdToHandle(host::AcDbHostApplicationServices& services, std::wstring_view code);
// The inverse: the first handle reference of an object-property code becomes an id
// reference, the handle looked up in `db` or, when null, in the working database.
std::wstring ObjHandleToId(host::AcDbHostApplicationServices& services, std::wstring_view code,
                           host::AcDbDatabase* db = nullptr);
// Every "%<\_ObjId N>%" after the start of the text into the stored form "%<\_ObjId H>%"
// with the handle in place of the id (the keyword stays).
std::wstring AllObjIdsToHandles(host::AcDbHostApplicationServices& services, std::wstring_view text);
// The inverse of AllObjIdsToHandles, through the working database; a handle that does not
// resolve is reported on the command line and left as it is.
std::wstring AllHandlesToObjIds(host::AcDbHostApplicationServices& services, std::wstring_view text);
// The first field code of the text as a formula argument "ACAD_FIELD('...')", its characters
// kept apart by U+001F so that the host does not take it for a child field.
std::wstring FieldToFormulaArgument(host::AcDbHostApplicationServices& services, std::wstring_view text);
// The formula engine's form of the handle-to-id conversion: the first field code of the text,
// when it is an object-property code, with each "%<\_ObjHandle H>%" turned into an id
// reference; other texts come back unchanged.
std::wstring FormulaFieldHandlesToIds(host::AcDbHostApplicationServices& services, std::wstring_view text);

}  // namespace corvane
