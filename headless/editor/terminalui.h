// Message boxes and the progress meter of the headless host.
//
// A message box is echoed on the command line with its buttons and the answer taken. The
// script answers it when its next line names one of the box's buttons in brackets ("[Yes]");
// otherwise the box's default button is taken and the script is left as it was. The progress
// meter is drawn on its stream (stderr) only when that is a terminal.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "headless/editor/script.h"
#include "host/hostui.h"

namespace corvane::headless {

class TerminalUi : public host::HostUi {
 public:
  using Print = std::function<void(std::wstring_view)>;
  struct Box {
    std::wstring caption;
    std::wstring text;
    unsigned flags = 0;
    int answer = 0;
    bool answeredByScript = false;
  };

  // Without a stream the progress meter is not drawn; `isTerminal` null asks the system.
  TerminalUi(Script& script, Print print, std::FILE* progress = stderr, const bool* isTerminal = nullptr);

  int messageBox(std::wstring_view text, std::wstring_view caption, unsigned flags) override;
  int setStatusBarProgressMeter(std::wstring_view label, int minimum, int maximum) override;
  int setStatusBarProgressMeterPos(int position) override;
  void restoreStatusBar() override;

  const std::vector<Box>& boxes() const noexcept { return boxes_; }
  bool progressShown() const noexcept { return meter_; }

  // The buttons of a box type, in order, and the name of a result.
  static std::vector<int> buttons(unsigned flags);
  static const wchar_t* buttonName(int result);

 private:
  void draw(bool force);

  Script& script_;
  Print print_;
  std::FILE* progress_;
  bool terminal_;
  std::vector<Box> boxes_;

  bool meter_ = false;
  std::wstring label_;
  int minimum_ = 0;
  int maximum_ = 0;
  int position_ = 0;
  int drawnPercent_ = -1;
  std::size_t drawnWidth_ = 0;
};

}  // namespace corvane::headless
