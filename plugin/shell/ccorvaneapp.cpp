#include "plugin/shell/ccorvaneapp.h"

#include "plugin/fields/fieldregistration.h"
#include "plugin/formula/asdkexprevaluator.h"
#include "plugin/linked/asdkdefinedobjectevaluator.h"
#include "plugin/linked/asdkexcelcellevaluator.h"
#include "plugin/linked/asdktextfileevaluator.h"
#include "plugin/measure/asdkareaevaluator.h"
#include "plugin/measure/asdkblockcountevaluator.h"
#include "plugin/measure/asdklengthevaluator.h"
#include "plugin/measure/asdktablecellevaluator.h"

namespace corvane {

std::unique_ptr<host::AcFdFieldEvaluator> makeCorvaneEvaluator(std::size_t row) {
  switch (row) {
    case kLengthRow: return std::make_unique<AsdkLengthEvaluator>();
    case kAreaRow: return std::make_unique<AsdkAreaEvaluator>();
    case kBlockCountRow: return std::make_unique<AsdkBlockCountEvaluator>();
    case kTextFileRow: return std::make_unique<AsdkTextFileEvaluator>();
    case kTableCellRow: return std::make_unique<AsdkTableCellEvaluator>();
    case kExcelCellRow: return std::make_unique<AsdkExcelCellEvaluator>();
    case kExprRow: return std::make_unique<AsdkExprEvaluator>();
    case kDefinedObjectRow: return std::make_unique<AsdkDefinedObjectEvaluator>();
    default: return nullptr;
  }
}

CCorvaneApp::CCorvaneApp(host::AcDbHostApplicationServices& services)
    : services_(services), loader_(makeCorvaneEvaluator), fieldReactor_(fieldEvaluationActive_) {}

CCorvaneApp::~CCorvaneApp() = default;

void CCorvaneApp::onInitialize() {
  registerEvaluatorLoader(services_, loader_);
  if (auto* engine = services_.fieldEngine()) engine->addFieldReactor(&fieldReactor_);
  fieldServicesRegistered_ = true;
}

void CCorvaneApp::onUnload() {
  if (!fieldServicesRegistered_) return;
  unregisterEvaluatorLoader(services_, loader_);
  if (auto* engine = services_.fieldEngine()) engine->removeFieldReactor(&fieldReactor_);
  fieldServicesRegistered_ = false;
}

}  // namespace corvane
