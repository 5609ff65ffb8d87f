#include "headless/editor/commandstack.h"

#include <algorithm>

#include "core/textutil.h"

namespace corvane::headless {

using host::Acad;

std::wstring_view CommandStack::bareName(std::wstring_view name) noexcept {
  while (!name.empty() && (name.front() == L'_' || name.front() == L'.')) name.remove_prefix(1);
  return name;
}

Acad::ErrorStatus CommandStack::addCommand(std::wstring_view group, std::wstring_view globalName,
                                           std::wstring_view localName, int flags, host::AcRxFunction function) {
  if (group.empty() || bareName(globalName).empty() || localName.empty() || !function) return Acad::eInvalidInput;
  for (const auto& command : commands_) {
    if (!core::equalsNoCase(command.group, group)) continue;
    if (core::equalsNoCase(bareName(command.globalName), bareName(globalName)) ||
        core::equalsNoCase(command.localName, localName))
      return Acad::eDuplicateKey;
  }
  commands_.push_back(Command{std::wstring(group), std::wstring(globalName), std::wstring(localName), flags,
                              std::move(function)});
  return Acad::eOk;
}

Acad::ErrorStatus CommandStack::removeGroup(std::wstring_view group) {
  const auto before = commands_.size();
  commands_.erase(std::remove_if(commands_.begin(), commands_.end(),
                                 [group](const Command& command) { return core::equalsNoCase(command.group, group); }),
                  commands_.end());
  return commands_.size() == before ? Acad::eKeyNotFound : Acad::eOk;
}

const CommandStack::Command* CommandStack::lookup(std::wstring_view typed) const {
  std::wstring_view marks = typed.substr(0, typed.size() - bareName(typed).size());
  const bool global = marks.find(L'_') != std::wstring_view::npos;
  const std::wstring_view name = bareName(typed);
  if (name.empty()) return nullptr;
  const auto newestFirst = [this](auto&& matches) -> const Command* {
    for (auto it = commands_.rbegin(); it != commands_.rend(); ++it) {
      if (matches(*it)) return &*it;
    }
    return nullptr;
  };
  if (!global) {
    if (const Command* found =
            newestFirst([name](const Command& c) { return core::equalsNoCase(c.localName, name); }))
      return found;
  }
  return newestFirst([name](const Command& c) { return core::equalsNoCase(bareName(c.globalName), name); });
}

std::vector<std::wstring> CommandStack::groups() const {
  std::vector<std::wstring> out;
  for (const auto& command : commands_) {
    const bool known = std::any_of(out.begin(), out.end(),
                                   [&command](const std::wstring& g) { return core::equalsNoCase(g, command.group); });
    if (!known) out.push_back(command.group);
  }
  return out;
}

}  // namespace corvane::headless
