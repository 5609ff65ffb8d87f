// What the plug-in shows outside the command line: message boxes and the status bar's
// progress meter. Numbers are the system's.
#pragma once

#include <string_view>

namespace corvane::host {

enum MessageBoxFlags : unsigned {
  MB_OK = 0x0,
  MB_OKCANCEL = 0x1,
  MB_ABORTRETRYIGNORE = 0x2,
  MB_YESNOCANCEL = 0x3,
  MB_YESNO = 0x4,
  MB_RETRYCANCEL = 0x5,
  MB_TYPEMASK = 0xF,
  MB_ICONERROR = 0x10,
  MB_ICONQUESTION = 0x20,
  MB_ICONWARNING = 0x30,
  MB_ICONINFORMATION = 0x40,
  MB_ICONMASK = 0xF0,
  MB_DEFBUTTON1 = 0x000,
  MB_DEFBUTTON2 = 0x100,
  MB_DEFBUTTON3 = 0x200,
  MB_DEFMASK = 0xF00,
};

enum MessageBoxResult : int {
  IDOK = 1,
  IDCANCEL = 2,
  IDABORT = 3,
  IDRETRY = 4,
  IDIGNORE = 5,
  IDYES = 6,
  IDNO = 7,
};

class HostUi {
 public:
  virtual ~HostUi() = default;

  // Shows a modal message box and returns the button chosen.
  virtual int messageBox(std::wstring_view text, std::wstring_view caption, unsigned flags) = 0;

  // The status bar's progress meter: started with a label and a range, moved, and taken down
  // again. Start returns 0, or -1 when the host cannot show one.
  virtual int setStatusBarProgressMeter(std::wstring_view label, int minimum, int maximum) = 0;
  virtual int setStatusBarProgressMeterPos(int position) = 0;
  virtual void restoreStatusBar() = 0;
};

}  // namespace corvane::host
