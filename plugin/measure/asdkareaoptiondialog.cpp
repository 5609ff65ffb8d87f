#include "plugin/measure/asdkareaoptiondialog.h"

#include "plugin/fields/formatpieces.h"

namespace corvane {

// Picked hatches are never listed: the page takes polylines and circles only, and hatches are
// measured through the whole-space sets.
AsdkAreaOptionDialog::AsdkAreaOptionDialog(DialogHost& host, CRegistry& registry)
    : ObjectSetOptionDialog(host, registry,
                            {L"AcArea",
                             L"AcArea Data",
                             settings::kAreaField,
                             kAreaTypes,
                             kPolylineType | kCircleType,
                             {L"CIRCLE", L"LWPOLYLINE", L"HATCH"},
                             &areaUnitsPiece}) {}

}  // namespace corvane
