#include "headless/editor/menubar.h"

#include <algorithm>

#include "core/textutil.h"
#include "host/acedprompts.h"

namespace corvane::headless {

namespace {

constexpr const wchar_t* kHostGroup = L"ACAD";

// Digits at `pos`, advancing past them; nullopt when there are none or too many.
std::optional<int> readNumber(std::wstring_view text, std::size_t& pos) {
  const std::size_t start = pos;
  int value = 0;
  while (pos < text.size() && text[pos] >= L'0' && text[pos] <= L'9') {
    if (pos - start >= 6) return std::nullopt;
    value = value * 10 + (text[pos] - L'0');
    ++pos;
  }
  if (pos == start) return std::nullopt;
  return value;
}

}  // namespace

MenuBar::MenuBar() {
  groups_.emplace_back(kHostGroup);
  setHostPullDowns({L"File", L"Edit", L"View", L"Insert", L"Format", L"Tools", L"Draw", L"Dimension", L"Modify",
                    L"Parametric", L"Window", L"Help"});
}

void MenuBar::setHostPullDowns(const std::vector<std::wstring>& labels) {
  bar_.erase(std::remove_if(bar_.begin(), bar_.end(),
                            [](const PullDown& p) { return core::equalsNoCase(p.group, kHostGroup); }),
             bar_.end());
  int index = 0;
  std::vector<PullDown> host;
  for (const auto& label : labels) host.push_back(PullDown{kHostGroup, L"pop" + std::to_wstring(++index), label});
  bar_.insert(bar_.begin(), host.begin(), host.end());
}

bool MenuBar::isMenuGroupLoaded(std::wstring_view group) const {
  return std::any_of(groups_.begin(), groups_.end(), [group](const std::wstring& g) { return core::equalsNoCase(g, group); });
}

std::wstring MenuBar::groupOfFile(std::wstring_view path) {
  const std::wstring_view name = core::fileNameOf(path);
  return std::wstring(name.substr(0, name.find(L'.')));
}

bool MenuBar::loadGroup(std::wstring_view group) {
  if (group.empty() || isMenuGroupLoaded(group)) return false;
  groups_.emplace_back(group);
  return true;
}

bool MenuBar::unloadGroup(std::wstring_view group) {
  const auto it =
      std::find_if(groups_.begin(), groups_.end(), [group](const std::wstring& g) { return core::equalsNoCase(g, group); });
  if (it == groups_.end()) return false;
  groups_.erase(it);
  bar_.erase(std::remove_if(bar_.begin(), bar_.end(),
                            [group](const PullDown& p) { return core::equalsNoCase(p.group, group); }),
             bar_.end());
  return true;
}

int MenuBar::menuCmd(std::wstring_view command) {
  std::size_t pos = 0;
  if (command.empty() || (command[0] != L'P' && command[0] != L'p')) return host::RTERROR;
  ++pos;
  const auto number = readNumber(command, pos);
  if (!number || *number < 1) return host::RTERROR;
  const std::size_t index = static_cast<std::size_t>(*number);
  const std::wstring_view rest = command.substr(pos);

  if (!rest.empty() && rest[0] == L'.') {
    // "Pn.i=?": the state of an item; every pull-down here has its items enabled.
    std::size_t at = 1;
    const auto item = readNumber(rest, at);
    if (!item || *item < 1 || rest.substr(at) != L"=?") return host::RTERROR;
    return index <= bar_.size() ? host::RTKWORD : host::RTERROR;
  }
  if (rest == L"=-") {
    if (index > bar_.size()) return host::RTERROR;
    bar_.erase(bar_.begin() + static_cast<std::ptrdiff_t>(index - 1));
    return host::RTNORM;
  }
  if (rest.size() > 2 && rest[0] == L'=' && rest[1] == L'+') {
    const std::wstring_view target = rest.substr(2);
    const std::size_t dot = target.rfind(L'.');
    if (dot == std::wstring_view::npos) return host::RTERROR;
    const std::wstring_view group = target.substr(0, dot);
    const std::wstring_view alias = target.substr(dot + 1);
    if (!isMenuGroupLoaded(group) || !core::equalsNoCase(alias, L"pop1")) return host::RTERROR;
    // A group's pull-down stands on the bar once.
    const bool shown = std::any_of(bar_.begin(), bar_.end(), [&](const PullDown& p) {
      return core::equalsNoCase(p.group, group) && core::equalsNoCase(p.alias, alias);
    });
    if (shown) return host::RTERROR;
    const std::size_t at = std::min(index - 1, bar_.size());
    const auto loaded = std::find_if(groups_.begin(), groups_.end(),
                                     [group](const std::wstring& g) { return core::equalsNoCase(g, group); });
    bar_.insert(bar_.begin() + static_cast<std::ptrdiff_t>(at), PullDown{*loaded, std::wstring(alias), *loaded});
    return host::RTNORM;
  }
  return host::RTERROR;
}

}  // namespace corvane::headless
