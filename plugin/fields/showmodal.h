// How an option page opens one of its own dialogs: the view shows it modally and reports
// whether the user closed it with OK. A view that shows nothing (a script, a test) works the
// dialog's controls and calls its OK itself.
#pragma once

#include <functional>

namespace corvane {

template <typename Dialog>
using ShowModal = std::function<bool(Dialog&)>;

// The caption of the plug-in's message boxes.
inline constexpr const wchar_t* kMessageCaption = L"Halvek Corvane";

}  // namespace corvane
