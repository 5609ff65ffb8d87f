#pragma once

#include "host/acfd.h"
#include "host/hostservices.h"

namespace corvane {

// Register and unregister the loader with the host's field engine; nothing happens when the
// host has no engine. The engine's answer is not needed by the callers.
void registerEvaluatorLoader(host::AcDbHostApplicationServices& services, host::AcFdFieldEvaluatorLoader& loader);
void unregisterEvaluatorLoader(host::AcDbHostApplicationServices& services, host::AcFdFieldEvaluatorLoader& loader);

}  // namespace corvane
