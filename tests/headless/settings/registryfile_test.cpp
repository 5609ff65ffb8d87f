#include "headless/settings/registryfile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "support/scratchfolder.h"

namespace corvane::headless {
namespace {

using host::RegistryHive;
using host::RegStatus;
using testing::ScratchFolder;

constexpr auto kUser = RegistryHive::kCurrentUser;
constexpr const wchar_t* kSection = L"Software\\Halvek\\Corvane";

// Sets environment variables for one scope and puts back what was there.
class Environment {
 public:
  void set(const char* name, const char* value) {
    const char* old = std::getenv(name);
    saved_.push_back({name, old ? std::optional<std::string>(old) : std::nullopt});
    if (value) {
      ::setenv(name, value, 1);
    } else {
      ::unsetenv(name);
    }
  }
  ~Environment() {
    for (auto it = saved_.rbegin(); it != saved_.rend(); ++it) {
      if (it->second) {
        ::setenv(it->first, it->second->c_str(), 1);
      } else {
        ::unsetenv(it->first);
      }
    }
  }

 private:
  std::vector<std::pair<const char*, std::optional<std::string>>> saved_;
};

struct Warnings {
  std::vector<std::wstring> seen;
  RegistryFile::Warning sink() {
    return [this](std::wstring_view text) { seen.emplace_back(text); };
  }
};

bool setString(RegistryFile& file, const wchar_t* name, const wchar_t* text) {
  return file.openKey(kUser, kSection, true) == RegStatus::kSuccess &&
         file.setValue(kUser, kSection, name, host::regString(text)) == RegStatus::kSuccess;
}

std::optional<std::wstring> getString(RegistryFile& file, const wchar_t* name) {
  host::RegValue value;
  std::wstring text;
  if (file.queryValue(kUser, kSection, name, value) != RegStatus::kSuccess || !host::readRegString(value, text))
    return std::nullopt;
  return text;
}

TEST(RegistryFile, DefaultPathFollowsTheEnvironment) {
  struct Case {
    const char* registry;
    const char* config;
    const char* home;
    const char* expected;
  } const cases[] = {
      {"/tmp/r.reg", "/cfg", "/home/u", "/tmp/r.reg"},
      {"", "/cfg", "/home/u", "/cfg/corvane/registry.reg"},  // an empty setting counts as none
      {nullptr, "/cfg", "/home/u", "/cfg/corvane/registry.reg"},
      {nullptr, nullptr, "/home/u", "/home/u/.config/corvane/registry.reg"},
      {nullptr, "", "/home/u", "/home/u/.config/corvane/registry.reg"},
  };
  for (const auto& c : cases) {
    Environment env;
    env.set("CORVANE_REGISTRY", c.registry);
    env.set("XDG_CONFIG_HOME", c.config);
    env.set("HOME", c.home);
    EXPECT_EQ(RegistryFile::defaultPath().string(), c.expected);
  }
}

TEST(RegistryFile, ReadsOnFirstUseAndWritesEveryChange) {
  ScratchFolder folder;
  const auto path = folder / "settings/corvane/registry.reg";
  Warnings warnings;
  RegistryFile file(path, warnings.sink());
  // Written after the object was made and before it was used: read at first use.
  ScratchFolder::write(path,
                       "Windows Registry Editor Version 5.00\r\n\r\n"
                       "[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\r\n\"A\"=\"one\"\r\n");
  EXPECT_EQ(getString(file, L"A"), L"one");
  // Read once: later changes on disk are not seen by this session.
  ScratchFolder::write(path, "Windows Registry Editor Version 5.00\n");
  EXPECT_EQ(getString(file, L"A"), L"one");

  ASSERT_TRUE(setString(file, L"B", L"two"));
  EXPECT_EQ(ScratchFolder::read(path),
            "Windows Registry Editor Version 5.00\n\n"
            "[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"A\"=\"one\"\n\"B\"=\"two\"\n");
  EXPECT_EQ(file.deleteValue(kUser, kSection, L"a"), RegStatus::kSuccess);
  EXPECT_EQ(ScratchFolder::read(path),
            "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"B\"=\"two\"\n");
  EXPECT_TRUE(warnings.seen.empty());
  // Nothing else is left beside the file: no temporary.
  std::vector<std::string> beside;
  for (const auto& entry : std::filesystem::directory_iterator(path.parent_path()))
    beside.push_back(entry.path().filename().string());
  EXPECT_EQ(beside, std::vector<std::string>{"registry.reg"});
}

TEST(RegistryFile, MissingFileIsAnEmptyRegistryUntilTheFirstChange) {
  ScratchFolder folder;
  const auto path = folder / "new/registry.reg";
  RegistryFile file(path);
  host::RegValue value;
  std::vector<std::wstring> names;
  EXPECT_EQ(file.queryValue(kUser, kSection, L"A", value), RegStatus::kFileNotFound);
  EXPECT_EQ(file.openKey(kUser, kSection, false), RegStatus::kFileNotFound);
  EXPECT_EQ(file.enumValues(kUser, kSection, names), RegStatus::kFileNotFound);
  EXPECT_EQ(file.setValue(kUser, kSection, L"A", host::regDword(1)), RegStatus::kFileNotFound);  // no key yet
  EXPECT_EQ(file.deleteKey(kUser, kSection), RegStatus::kFileNotFound);
  EXPECT_FALSE(std::filesystem::exists(path));

  EXPECT_EQ(file.openKey(kUser, kSection, true), RegStatus::kSuccess);
  EXPECT_EQ(ScratchFolder::read(path),
            "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n");
  EXPECT_EQ(file.openKey(kUser, L"Software\\Halvek", false), RegStatus::kSuccess);  // a parent
  EXPECT_EQ(file.enumKeys(kUser, L"Software", names), RegStatus::kSuccess);
  EXPECT_EQ(names, std::vector<std::wstring>{L"Halvek"});
  EXPECT_EQ((std::filesystem::status(path).permissions() & std::filesystem::perms::others_read),
            std::filesystem::perms::none);
}

TEST(RegistryFile, AWriteStoppedBeforeTheRenameLeavesTheOldFile) {
  ScratchFolder folder;
  const auto path = folder / "registry.reg";
  const std::string before =
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"A\"=\"old\"\n";
  ScratchFolder::write(path, before);
  Warnings warnings;
  RegistryFile file(path, warnings.sink());
  bool reached = false;
  file.setBeforeRename([&reached] {
    reached = true;
    return false;  // the process dies here
  });

  // Each kind of change fails the same way and changes nothing, on disk or in the session.
  struct Case {
    const char* what;
    std::function<RegStatus()> change;
  } const cases[] = {
      {"set", [&] { return file.setValue(kUser, kSection, L"A", host::regString(L"new")); }},
      {"new key", [&] { return file.openKey(kUser, L"Software\\Halvek\\Corvane\\X", true); }},
      {"delete value", [&] { return file.deleteValue(kUser, kSection, L"A"); }},
      {"delete key", [&] { return file.deleteKey(kUser, L"Software"); }},
  };
  for (const auto& c : cases) {
    reached = false;
    warnings.seen.clear();
    EXPECT_EQ(c.change(), RegStatus::kWriteFault) << c.what;
    EXPECT_TRUE(reached) << c.what;
    EXPECT_EQ(ScratchFolder::read(path), before) << c.what;
    EXPECT_EQ(getString(file, L"A"), L"old") << c.what;
    EXPECT_EQ(file.openKey(kUser, L"Software\\Halvek\\Corvane\\X", false), RegStatus::kFileNotFound) << c.what;
    ASSERT_EQ(warnings.seen.size(), 1u) << c.what;
    EXPECT_NE(warnings.seen[0].find(L"could not be saved"), std::wstring::npos);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"registry.reg"}) << c.what;  // the temporary is gone
  }

  file.setBeforeRename(nullptr);
  EXPECT_EQ(file.setValue(kUser, kSection, L"A", host::regString(L"new")), RegStatus::kSuccess);
  EXPECT_NE(ScratchFolder::read(path).find("\"A\"=\"new\""), std::string::npos);
}

// The settings file is replaced as drawings are: through a link to the file it leads to, never
// over a read-only file or a backup it cannot keep, and the left-overs of killed writes go.
TEST(RegistryFile, WritesMeetTheFileSystemAsDrawingSavesDo) {
  const std::string good =
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"A\"=\"old\"\n";
  const std::string changed =
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"A\"=\"old\"\n"
      "\"B\"=\"new\"\n";
  const std::string damaged = "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\K]\n\"A\"=dword:zz\n";
  const std::string fresh =
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"B\"=\"new\"\n";
  struct Case {
    const char* what;
    std::function<void(const std::filesystem::path&)> prepare;
    bool saved;
    std::wstring warning;  // part of the last warning; empty for none
    std::string real;      // where the settings really are
    std::string contents;
    std::vector<std::string> tree;
  } const cases[] = {
      {"a link to the file kept elsewhere",
       [&](const auto& f) {
         ScratchFolder::write(f / "dotfiles" / "registry.reg", good);
         std::filesystem::create_symlink("dotfiles/registry.reg", f / "registry.reg");
       },
       true, L"", "dotfiles/registry.reg", changed,
       {"dotfiles/", "dotfiles/registry.reg", "registry.reg -> dotfiles/registry.reg"}},
      {"a damaged file behind a link keeps its backup beside it",
       [&](const auto& f) {
         ScratchFolder::write(f / "dotfiles" / "registry.reg", damaged);
         std::filesystem::create_symlink("dotfiles/registry.reg", f / "registry.reg");
       },
       true, L"is damaged", "dotfiles/registry.reg", fresh,
       {"dotfiles/", "dotfiles/registry.reg", "dotfiles/registry.reg.bak", "registry.reg -> dotfiles/registry.reg"}},
      {"a damaged file whose backup's name is a folder",
       [&](const auto& f) {
         ScratchFolder::write(f / "registry.reg", damaged);
         std::filesystem::create_directory(f / "registry.reg.bak");
       },
       false, L"cannot keep the backup", "registry.reg", damaged, {"registry.reg", "registry.reg.bak/"}},
      {"a read-only file",
       [&](const auto& f) {
         ScratchFolder::write(f / "registry.reg", good);
         std::filesystem::permissions(f / "registry.reg", std::filesystem::perms::owner_read);
       },
       false, L"is read-only", "registry.reg", good, {"registry.reg"}},
      {"the left-over of a killed write",
       [&](const auto& f) {
         ScratchFolder::write(f / "registry.reg", good);
         ScratchFolder::write(f / ".registry.reg.saving-AbC123", "Windows Registry Editor Vers");  // cut short
       },
       true, L".registry.reg.saving-AbC123, left by a save", "registry.reg", changed, {"registry.reg"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    ScratchFolder folder;
    c.prepare(folder.path());
    Warnings warnings;
    RegistryFile file(folder / "registry.reg", warnings.sink());
    // Reading takes no notice of a left-over.
    EXPECT_EQ(getString(file, L"B"), std::nullopt);
    EXPECT_EQ(setString(file, L"B", L"new"), c.saved);
    if (c.warning.empty()) {
      EXPECT_TRUE(warnings.seen.empty());
    } else {
      ASSERT_FALSE(warnings.seen.empty());
      EXPECT_NE(warnings.seen.back().find(c.warning), std::wstring::npos) << core::toUtf8(warnings.seen.back());
    }
    EXPECT_EQ(ScratchFolder::read(folder / c.real), c.contents);
    EXPECT_EQ(folder.tree(), c.tree);
  }
}

TEST(RegistryFile, ADamagedFileIsReportedAndKeptUntilASettingChanges) {
  ScratchFolder folder;
  const auto path = folder / "registry.reg";
  const std::string damaged =
      "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"A\"=dword:zz\n";
  ScratchFolder::write(path, damaged);
  Warnings warnings;
  RegistryFile file(path, warnings.sink());

  EXPECT_EQ(getString(file, L"A"), std::nullopt);
  EXPECT_EQ(getString(file, L"B"), std::nullopt);
  EXPECT_TRUE(file.damaged());
  ASSERT_EQ(warnings.seen.size(), 1u);  // once, not at every read
  EXPECT_NE(warnings.seen[0].find(L"line 4"), std::wstring::npos) << warnings.seen[0];
  EXPECT_NE(warnings.seen[0].find(path.wstring()), std::wstring::npos);
  // Reads and failed changes leave it alone.
  EXPECT_EQ(file.deleteValue(kUser, kSection, L"A"), RegStatus::kFileNotFound);
  EXPECT_EQ(ScratchFolder::read(path), damaged);

  ASSERT_TRUE(setString(file, L"B", L"new"));
  EXPECT_FALSE(file.damaged());
  EXPECT_EQ(ScratchFolder::read(path),
            "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n\"B\"=\"new\"\n");
  EXPECT_EQ(ScratchFolder::read(folder / "registry.reg.bak"), damaged);
}

TEST(RegistryFile, ValuesOfUnknownTypesSurviveOtherChanges) {
  ScratchFolder folder;
  const auto path = folder / "registry.reg";
  ScratchFolder::write(path,
                       "\xEF\xBB\xBFWindows Registry Editor Version 5.00\r\n\r\n"
                       "[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\r\n"
                       "\"Q\"=hex(b):2a,00,00,00,00,00,00,00\r\n"
                       "\"M\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n");
  RegistryFile file(path);
  ASSERT_TRUE(setString(file, L"S", L"x"));
  EXPECT_EQ(ScratchFolder::read(path),
            "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n"
            "\"Q\"=hex(b):2a,00,00,00,00,00,00,00\n"
            "\"M\"=hex(7):61,00,00,00,62,00,00,00,00,00\n"
            "\"S\"=\"x\"\n");
}

TEST(RegistryFile, RefusesNamesThatCannotBeWritten) {
  ScratchFolder folder;
  RegistryFile file(folder / "registry.reg");
  EXPECT_EQ(file.openKey(kUser, L"Software\\\\Halvek", true), RegStatus::kInvalidParameter);
  EXPECT_EQ(file.openKey(kUser, L"Software\nHalvek", true), RegStatus::kInvalidParameter);
  ASSERT_EQ(file.openKey(kUser, kSection, true), RegStatus::kSuccess);
  EXPECT_EQ(file.setValue(kUser, kSection, L"two\nlines", host::regDword(1)), RegStatus::kInvalidParameter);
  // The hives are kept apart.
  host::RegValue value;
  ASSERT_EQ(file.setValue(kUser, kSection, L"A", host::regDword(1)), RegStatus::kSuccess);
  EXPECT_EQ(file.queryValue(RegistryHive::kLocalMachine, kSection, L"A", value), RegStatus::kFileNotFound);
}

}  // namespace
}  // namespace corvane::headless
