// Keeping a copied field's references on the copies: an area or length field lists its objects
// by handle, a table cell field names its table by handle. After a deep clone each handle of
// an object that was copied along is replaced by its copy's; a handle of an object that was
// not copied stays as it was. Failures are reported on the command line and leave the field
// as it was.
#pragma once

#include "host/acdbfield.h"
#include "host/acdbidmapping.h"
#include "host/hostservices.h"

namespace corvane {

// The handle list "Object(<h1;h2;...>)" of the field's data record under `dataKey`. Only the
// record changes: it is what the evaluator reads, and the code is left as it was.
void FixHandleList(host::AcDbHostApplicationServices& services, host::AcDbField& field,
                   const host::AcDbIdMapping& mapping, const wchar_t* dataKey);

// The table handle of "TABLE(<h>).cell" in the field's code. The code is written back upper
// case, the cell part included.
void FixTableReference(host::AcDbHostApplicationServices& services, host::AcDbField& field,
                       const host::AcDbIdMapping& mapping);

}  // namespace corvane
