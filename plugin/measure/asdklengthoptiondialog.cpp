#include "plugin/measure/asdklengthoptiondialog.h"

#include "plugin/fields/formatpieces.h"

namespace corvane {

AsdkLengthOptionDialog::AsdkLengthOptionDialog(DialogHost& host, CRegistry& registry)
    : ObjectSetOptionDialog(host, registry,
                            {L"AcLength",
                             L"AcLength Data",
                             settings::kLengthField,
                             kLengthTypes,
                             kLengthTypes,
                             {L"ARC", L"CIRCLE", L"LINE", L"LWPOLYLINE"},
                             &lengthUnitsPiece}) {}

}  // namespace corvane
