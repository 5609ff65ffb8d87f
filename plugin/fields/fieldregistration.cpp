#include "plugin/fields/fieldregistration.h"

namespace corvane {

void registerEvaluatorLoader(host::AcDbHostApplicationServices& services, host::AcFdFieldEvaluatorLoader& loader) {
  if (auto* engine = services.fieldEngine()) engine->registerEvaluatorLoader(&loader);
}

void unregisterEvaluatorLoader(host::AcDbHostApplicationServices& services, host::AcFdFieldEvaluatorLoader& loader) {
  if (auto* engine = services.fieldEngine()) engine->unregisterEvaluatorLoader(&loader);
}

}  // namespace corvane
