// The host's command stack: commands registered by group, each with a global name (the one
// that works in every language, typed with a leading "_") and a local name. Names compare
// without regard to case.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/errorstatus.h"

namespace corvane::host {

namespace ACRX_CMD {
enum Flags : int {
  kModal = 0,
  kTransparent = 1,
  kUsePickSet = 2,
  kRedraw = 4,
};
}

using AcRxFunction = std::function<void()>;

class AcEdCommandStack {
 public:
  virtual ~AcEdCommandStack() = default;

  // eDuplicateKey when the group already has a command of either name.
  virtual Acad::ErrorStatus addCommand(std::wstring_view group, std::wstring_view globalName,
                                       std::wstring_view localName, int flags, AcRxFunction function) = 0;
  // eKeyNotFound when no such group is registered.
  virtual Acad::ErrorStatus removeGroup(std::wstring_view group) = 0;
  // Whether a command answers to the name, as a global or a local name.
  virtual bool hasCommand(std::wstring_view name) const = 0;
};

}  // namespace corvane::host
