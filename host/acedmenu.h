// The host's menus: menu groups loaded from menu files, and the menu bar's pull-down menus,
// which the menu command language addresses as P1, P2, ...
#pragma once

#include <string_view>

namespace corvane::host {

class AcEdMenu {
 public:
  virtual ~AcEdMenu() = default;
  virtual bool isMenuGroupLoaded(std::wstring_view group) const = 0;
  // A menu command: "P3.1=?" asks for the state of the first item of the third pull-down
  // (RTKWORD when there is one), "P3=+GROUP.pop1" inserts a group's pull-down as the third,
  // "P3=-" removes the third. Returns a prompt result code.
  virtual int menuCmd(std::wstring_view command) = 0;
};

}  // namespace corvane::host
