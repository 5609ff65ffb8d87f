// The headless host's command stack. A typed name finds a command by its local name, or by its
// global name when it starts with "_" (the global names of this table may carry that "_"
// themselves); a leading "." asks for the command as defined first, which here is the same.
// When groups share a name, the group added last wins.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/acedcommandstack.h"

namespace corvane::headless {

class CommandStack : public host::AcEdCommandStack {
 public:
  struct Command {
    std::wstring group;
    std::wstring globalName;
    std::wstring localName;
    int flags = 0;
    host::AcRxFunction function;
  };

  host::Acad::ErrorStatus addCommand(std::wstring_view group, std::wstring_view globalName,
                                     std::wstring_view localName, int flags, host::AcRxFunction function) override;
  host::Acad::ErrorStatus removeGroup(std::wstring_view group) override;
  bool hasCommand(std::wstring_view name) const override { return lookup(name) != nullptr; }

  const Command* lookup(std::wstring_view typed) const;
  // The groups in the order they were first added.
  std::vector<std::wstring> groups() const;
  const std::vector<Command>& commands() const noexcept { return commands_; }

  // A name without its leading "_" and "." marks.
  static std::wstring_view bareName(std::wstring_view name) noexcept;

 private:
  std::vector<Command> commands_;  // in the order they were added
};

}  // namespace corvane::headless
