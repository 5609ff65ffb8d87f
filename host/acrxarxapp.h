// The host framework's application object: the host sends a loaded module its messages
// through the module's entry point, which hands each to one handler of this object.
#pragma once

namespace corvane::host {

namespace AcRx {
enum AppMsgCode : int {
  kInitAppMsg = 0,
  kUnloadAppMsg = 1,
  kLoadDwgMsg = 2,
  kUnloadDwgMsg = 3,
};
enum AppRetCode : int {
  kRetOK = 0,
  kRetError = 3,
};
}  // namespace AcRx

class AcRxArxApp {
 public:
  virtual ~AcRxArxApp() = default;
  virtual AcRx::AppRetCode On_kInitAppMsg() { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kUnloadAppMsg() { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kLoadDwgMsg() { return AcRx::kRetOK; }
  virtual AcRx::AppRetCode On_kUnloadDwgMsg() { return AcRx::kRetOK; }

  // The entry point's dispatch.
  AcRx::AppRetCode acrxEntryPoint(AcRx::AppMsgCode message) {
    switch (message) {
      case AcRx::kInitAppMsg: return On_kInitAppMsg();
      case AcRx::kUnloadAppMsg: return On_kUnloadAppMsg();
      case AcRx::kLoadDwgMsg: return On_kLoadDwgMsg();
      case AcRx::kUnloadDwgMsg: return On_kUnloadDwgMsg();
    }
    return AcRx::kRetOK;
  }
};

}  // namespace corvane::host
