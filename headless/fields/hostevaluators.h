// The host's own evaluators that the plug-in relies on.
#pragma once

#include <memory>

#include "host/acfd.h"

namespace corvane::headless {

// "_text": the field's text with the value of each child in place of its placeholder.
std::unique_ptr<host::AcFdFieldEvaluator> makeTextEvaluator();
// "AcVar": a system variable ("\AcVar LUNITS") or one of the drawing's own values
// ("Filename").
std::unique_ptr<host::AcFdFieldEvaluator> makeVariableEvaluator();
// "AcObjProp": a named property of the object referred to ("\AcObjProp Object(%<\_ObjId N>%).Area").
std::unique_ptr<host::AcFdFieldEvaluator> makeObjectPropertyEvaluator();

}  // namespace corvane::headless
