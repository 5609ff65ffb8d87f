// The headless host's menus: the menu groups loaded and the pull-down menus on the menu bar.
// The host's own group "ACAD" starts loaded with the host's pull-downs. A menu file loads the
// group named by the file's name up to its first dot ("Corvane.jp.cuix" holds "Corvane"),
// with one pull-down, "pop1", labelled with the group's name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/acedmenu.h"

namespace corvane::headless {

class MenuBar : public host::AcEdMenu {
 public:
  struct PullDown {
    std::wstring group;
    std::wstring alias;  // "pop1", ...
    std::wstring label;
  };

  MenuBar();

  bool isMenuGroupLoaded(std::wstring_view group) const override;
  int menuCmd(std::wstring_view command) override;

  // The group a menu file holds.
  static std::wstring groupOfFile(std::wstring_view path);
  // False when the group is loaded already.
  bool loadGroup(std::wstring_view group);
  // Unloads the group and takes its pull-downs off the bar; false when it is not loaded.
  bool unloadGroup(std::wstring_view group);

  const std::vector<std::wstring>& groups() const noexcept { return groups_; }
  const std::vector<PullDown>& bar() const noexcept { return bar_; }
  // Replaces the bar's pull-downs by ones of the host's group with these labels.
  void setHostPullDowns(const std::vector<std::wstring>& labels);

 private:
  std::vector<std::wstring> groups_;
  std::vector<PullDown> bar_;
};

}  // namespace corvane::headless
