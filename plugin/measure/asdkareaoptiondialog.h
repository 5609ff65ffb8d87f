// The option page of the area field: polylines, circles and hatches, areas in square feet for
// the feet-and-inches units.
#pragma once

#include "plugin/measure/objectsetoptiondialog.h"

namespace corvane {

class AsdkAreaOptionDialog : public ObjectSetOptionDialog {
 public:
  AsdkAreaOptionDialog(DialogHost& host, CRegistry& registry);
};

}  // namespace corvane
