#include "plugin/formula/cinsertfieldcodedialog.h"

#include "core/textutil.h"
#include "host/hostui.h"

namespace corvane {

bool CInsertFieldCodeDialog::onOK() {
  const std::wstring code = core::trim(text);
  if (!host_.holdsFieldCode(code)) {
    host_.messageBox(kInvalidFieldCode, kCaption, host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  if (code.find(L"%<\\VxExpr") != std::wstring::npos) {
    host_.messageBox(kCannotInsertFormula, kCaption, host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  result_ = code;
  return true;
}

}  // namespace corvane
