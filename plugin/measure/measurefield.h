// The work area and length fields share: read the object-set text from the field's data,
// sum the measure over the set in the working drawing, and hand out the sum.
#pragma once

#include <string>

#include "host/acfd.h"
#include "plugin/measure/objectset.h"

namespace corvane {

// Reads a field's object-set record: 2 with the set, 64 without the record, 16 when it is no
// text, does not begin with "Object(" or has options that do not read; `message` says why.
int readObjectSetRecord(const host::AcDbField& field, const wchar_t* dataKey, ObjectSet& set, std::wstring& message);

// Status 64 without the data record, 16 when it is no text, does not begin with "Object(" or
// has options that do not read (with `message` saying why); otherwise 2 and the sum as a real.
int evaluateObjectSetField(host::AcDbField* field, const wchar_t* dataKey, EntityMeasure measure,
                           host::AcFdFieldValue& value, std::wstring& message);

}  // namespace corvane
