// The current user's registry kept in one text file in the registry-export form (see
// registrytree.h), by default corvane/registry.reg in the user's configuration folder.
//
// The file is read on first use and written after each change: to a temporary file in the same
// folder, flushed to disk, then renamed over the old one, so that a crash leaves either the old
// file or the new one; the next write removes, with a warning, what a killed one left behind.
// A file that cannot be read is reported once; the session then works with an empty registry
// (every setting at its default) and leaves the file alone until a setting is changed, when the
// damaged file is kept beside it with ".bak" added to its name.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "headless/settings/registrytree.h"
#include "host/registry.h"

namespace corvane::headless {

class RegistryFile : public host::Registry {
 public:
  using Warning = std::function<void(std::wstring_view)>;

  // $CORVANE_REGISTRY when set and not empty; otherwise corvane/registry.reg below
  // $XDG_CONFIG_HOME, or below ~/.config when that is not set.
  static std::filesystem::path defaultPath();

  // Warnings go to stderr unless a sink is given.
  explicit RegistryFile(std::filesystem::path path, Warning warning = {});

  host::RegStatus openKey(host::RegistryHive hive, std::wstring_view path, bool create) override;
  host::RegStatus queryValue(host::RegistryHive hive, std::wstring_view path, std::wstring_view name,
                             host::RegValue& value) override;
  host::RegStatus setValue(host::RegistryHive hive, std::wstring_view path, std::wstring_view name,
                           const host::RegValue& value) override;
  host::RegStatus deleteValue(host::RegistryHive hive, std::wstring_view path, std::wstring_view name) override;
  host::RegStatus deleteKey(host::RegistryHive hive, std::wstring_view path) override;
  host::RegStatus enumValues(host::RegistryHive hive, std::wstring_view path,
                             std::vector<std::wstring>& names) override;
  host::RegStatus enumKeys(host::RegistryHive hive, std::wstring_view path, std::vector<std::wstring>& names) override;

  const std::filesystem::path& path() const noexcept { return path_; }
  // Whether the file could not be read; cleared once a change has been written.
  bool damaged();
  const RegistryTree& tree();

  // A test's stand-in for a crash: called after the new contents reached the temporary file
  // and before the rename; returning false abandons the write there.
  void setBeforeRename(std::function<bool()> hook) { beforeRename_ = std::move(hook); }

 private:
  void load();
  // The full key path: the hive's name, then the path.
  static std::optional<std::wstring> fullPath(host::RegistryHive hive, std::wstring_view path);
  // Writes a changed tree; the change is kept only when the file was written.
  host::RegStatus commit(RegistryTree changed);
  bool writeFile(const std::string& contents, std::string& error);
  void warn(const std::wstring& text);

  std::filesystem::path path_;
  Warning warning_;
  std::function<bool()> beforeRename_;
  bool loaded_ = false;
  bool damaged_ = false;
  RegistryTree tree_;
};

}  // namespace corvane::headless
