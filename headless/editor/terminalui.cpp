#include "headless/editor/terminalui.h"

#include <unistd.h>

#include <algorithm>

#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"

namespace corvane::headless {

using namespace host;

namespace {

const wchar_t* iconName(unsigned flags) {
  switch (flags & MB_ICONMASK) {
    case MB_ICONERROR: return L"Error";
    case MB_ICONQUESTION: return L"Question";
    case MB_ICONWARNING: return L"Warning";
    case MB_ICONINFORMATION: return L"Information";
    default: return nullptr;
  }
}

constexpr int kBarWidth = 30;

}  // namespace

TerminalUi::TerminalUi(Script& script, Print print, std::FILE* progress, const bool* isTerminal)
    : script_(script),
      print_(std::move(print)),
      progress_(progress),
      terminal_(isTerminal ? *isTerminal : (progress && ::isatty(::fileno(progress)) == 1)) {}

std::vector<int> TerminalUi::buttons(unsigned flags) {
  switch (flags & MB_TYPEMASK) {
    case MB_OKCANCEL: return {IDOK, IDCANCEL};
    case MB_ABORTRETRYIGNORE: return {IDABORT, IDRETRY, IDIGNORE};
    case MB_YESNOCANCEL: return {IDYES, IDNO, IDCANCEL};
    case MB_YESNO: return {IDYES, IDNO};
    case MB_RETRYCANCEL: return {IDRETRY, IDCANCEL};
    default: return {IDOK};
  }
}

const wchar_t* TerminalUi::buttonName(int result) {
  switch (result) {
    case IDOK: return L"OK";
    case IDCANCEL: return L"Cancel";
    case IDABORT: return L"Abort";
    case IDRETRY: return L"Retry";
    case IDIGNORE: return L"Ignore";
    case IDYES: return L"Yes";
    case IDNO: return L"No";
    default: return L"?";
  }
}

int TerminalUi::messageBox(std::wstring_view text, std::wstring_view caption, unsigned flags) {
  const std::vector<int> choices = buttons(flags);
  const std::size_t defaultIndex = std::min<std::size_t>((flags & MB_DEFMASK) >> 8, choices.size() - 1);
  Box box{std::wstring(caption), std::wstring(text), flags, choices[defaultIndex], false};

  std::wstring note = L" (default)";
  if (const std::wstring* line = script_.peek()) {
    // Only a bracketed line is meant for a box; anything else answers a later prompt.
    const std::wstring answer = core::trim(*line);
    if (answer.size() >= 2 && answer.front() == L'[' && answer.back() == L']') {
      script_.next();
      const std::wstring_view name = std::wstring_view(answer).substr(1, answer.size() - 2);
      const auto chosen = std::find_if(choices.begin(), choices.end(),
                                       [name](int b) { return core::equalsNoCase(buttonName(b), name); });
      if (chosen != choices.end()) {
        box.answer = *chosen;
        box.answeredByScript = true;
        note.clear();
      } else {
        note = core::format(L" (default; the box has no button \"%s\")", name);
      }
    }
  }

  std::wstring buttonsText;
  for (const int b : choices) buttonsText += core::format(L"[%s] ", buttonName(b));
  const wchar_t* icon = iconName(flags);
  print_(core::format(L"\n** %s%s **", caption, icon ? core::format(L" (%s)", icon) : std::wstring()));
  for (const auto& line : core::split(text, L'\n')) print_(L"\n" + line);
  print_(core::format(L"\n%s-> %s%s", buttonsText, buttonName(box.answer), note));
  boxes_.push_back(std::move(box));
  return boxes_.back().answer;
}

int TerminalUi::setStatusBarProgressMeter(std::wstring_view label, int minimum, int maximum) {
  if (maximum <= minimum) return -1;
  meter_ = true;
  label_ = label;
  minimum_ = minimum;
  maximum_ = maximum;
  position_ = minimum;
  drawnPercent_ = -1;
  draw(true);
  return 0;
}

int TerminalUi::setStatusBarProgressMeterPos(int position) {
  if (!meter_) return -1;
  position_ = std::clamp(position, minimum_, maximum_);
  draw(false);
  return 0;
}

void TerminalUi::restoreStatusBar() {
  if (!meter_) return;
  meter_ = false;
  if (terminal_ && progress_ && drawnWidth_ > 0) {
    std::fprintf(progress_, "\r%*s\r", static_cast<int>(drawnWidth_), "");
    std::fflush(progress_);
  }
  drawnWidth_ = 0;
}

void TerminalUi::draw(bool force) {
  if (!terminal_ || !progress_) return;
  const long long span = static_cast<long long>(maximum_) - minimum_;
  const int percent = static_cast<int>((static_cast<long long>(position_) - minimum_) * 100 / span);
  if (!force && percent == drawnPercent_) return;
  drawnPercent_ = percent;
  const int filled = percent * kBarWidth / 100;
  const std::string line = core::toUtf8(label_) + " [" + std::string(static_cast<std::size_t>(filled), '#') +
                           std::string(static_cast<std::size_t>(kBarWidth - filled), '.') + "] " +
                           std::to_string(percent) + "%";
  std::fprintf(progress_, "\r%s", line.c_str());
  std::fflush(progress_);
  drawnWidth_ = std::max(drawnWidth_, line.size());
}

}  // namespace corvane::headless
