// Reading the text of an object of another drawing: the object by handle in an open database,
// and the value a defined object field shows, through the session cache so that fields on
// one drawing read it once for each time it is written.
#pragma once

#include <string>
#include <string_view>

#include "host/errorstatus.h"

namespace corvane {

namespace host {
class AcDbDatabase;
class AcDbHostApplicationServices;
}  // namespace host

class LinkedSources;

// The display name of a class: without its "AcDb" prefix, a blank before each later capital
// ("AcDbBlockReference" gives "Block Reference", "AcDbMText" gives "M Text").
std::wstring DefinedObjectTypeName(std::wstring_view className);

// The type name and the text of the object with the handle: an attribute's or a text's text,
// a multiline text's contents as plain text. A failure leaves its message in `value`.
host::Acad::ErrorStatus ReadObjectText(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db,
                                       std::wstring_view handle, std::wstring& type, std::wstring& value);

// The text of the object of the drawing at `path` (the working drawing's own database when it
// is the current document), or a message; eOk when the text was read.
host::Acad::ErrorStatus ReadDefinedObjectValue(LinkedSources& sources, std::wstring_view path,
                                               std::wstring_view handle, std::wstring_view property,
                                               std::wstring& text);

}  // namespace corvane
