// The option page of the length field: lines, polylines, circles and arcs.
#pragma once

#include "plugin/measure/objectsetoptiondialog.h"

namespace corvane {

class AsdkLengthOptionDialog : public ObjectSetOptionDialog {
 public:
  AsdkLengthOptionDialog(DialogHost& host, CRegistry& registry);
};

}  // namespace corvane
