#include "headless/settings/registryfile.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include "core/atomicfile.h"
#include "core/printf.h"
#include "core/utf8.h"

namespace corvane::headless {

using host::RegStatus;

namespace {

std::wstring wide(const std::string& text) { return core::fromUtf8(text); }

// Names may not hold line breaks: the file keeps one key or value per line.
bool validName(std::wstring_view name) { return name.find_first_of(L"\r\n") == std::wstring_view::npos; }

}  // namespace

std::filesystem::path RegistryFile::defaultPath() {
  if (const char* explicitFile = std::getenv("CORVANE_REGISTRY"); explicitFile && *explicitFile)
    return explicitFile;
  std::filesystem::path folder;
  if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config) {
    folder = config;
  } else if (const char* home = std::getenv("HOME"); home && *home) {
    folder = std::filesystem::path(home) / ".config";
  } else {
    folder = ".config";
  }
  return folder / "corvane" / "registry.reg";
}

RegistryFile::RegistryFile(std::filesystem::path path, Warning warning)
    : path_(std::move(path)), warning_(std::move(warning)) {}

void RegistryFile::warn(const std::wstring& text) {
  if (warning_) {
    warning_(text);
    return;
  }
  const std::string utf8 = core::toUtf8(text);
  std::fprintf(stderr, "corvane: %s\n", utf8.c_str());
}

void RegistryFile::load() {
  if (loaded_) return;
  loaded_ = true;
  std::error_code error;
  if (!std::filesystem::exists(path_, error)) return;  // no settings yet
  std::ifstream in(path_, std::ios::binary);
  std::ostringstream contents;
  contents << in.rdbuf();
  if (!in && !in.eof()) {
    damaged_ = true;
    warn(core::format(L"the settings file %s cannot be read; the default settings are used.", wide(path_.string())));
    return;
  }
  RegistryTree::ParseError parseError;
  auto tree = RegistryTree::parse(contents.str(), &parseError);
  if (!tree) {
    damaged_ = true;
    warn(core::format(L"the settings file %s is damaged (line %d: %s); the default settings are used and the file "
                      L"is left as it is until a setting is changed.",
                      wide(path_.string()), parseError.line, wide(parseError.message)));
    return;
  }
  tree_ = std::move(*tree);
}

bool RegistryFile::damaged() {
  load();
  return damaged_;
}

const RegistryTree& RegistryFile::tree() {
  load();
  return tree_;
}

std::optional<std::wstring> RegistryFile::fullPath(host::RegistryHive hive, std::wstring_view path) {
  std::wstring full = hive == host::RegistryHive::kCurrentUser ? L"HKEY_CURRENT_USER" : L"HKEY_LOCAL_MACHINE";
  if (!path.empty()) {
    full += L'\\';
    full += path;
  }
  if (!validName(full)) return std::nullopt;
  return RegistryTree::normalizePath(full);
}

RegStatus RegistryFile::openKey(host::RegistryHive hive, std::wstring_view path, bool create) {
  const auto full = fullPath(hive, path);
  if (!full) return RegStatus::kInvalidParameter;
  load();
  if (tree_.hasKey(*full)) return RegStatus::kSuccess;
  if (!create) return RegStatus::kFileNotFound;
  RegistryTree changed = tree_;
  changed.makeKey(*full);
  return commit(std::move(changed));
}

RegStatus RegistryFile::queryValue(host::RegistryHive hive, std::wstring_view path, std::wstring_view name,
                                   host::RegValue& value) {
  const auto full = fullPath(hive, path);
  if (!full) return RegStatus::kInvalidParameter;
  load();
  const RegistryTree::Value* found = tree_.findValue(*full, name);
  if (!found) return RegStatus::kFileNotFound;
  value = found->data;
  return RegStatus::kSuccess;
}

RegStatus RegistryFile::setValue(host::RegistryHive hive, std::wstring_view path, std::wstring_view name,
                                 const host::RegValue& value) {
  const auto full = fullPath(hive, path);
  if (!full || !validName(name)) return RegStatus::kInvalidParameter;
  load();
  if (!tree_.hasKey(*full)) return RegStatus::kFileNotFound;
  RegistryTree changed = tree_;
  changed.setValue(*full, name, value);
  return commit(std::move(changed));
}

RegStatus RegistryFile::deleteValue(host::RegistryHive hive, std::wstring_view path, std::wstring_view name) {
  const auto full = fullPath(hive, path);
  if (!full) return RegStatus::kInvalidParameter;
  load();
  RegistryTree changed = tree_;
  if (!changed.removeValue(*full, name)) return RegStatus::kFileNotFound;
  return commit(std::move(changed));
}

RegStatus RegistryFile::deleteKey(host::RegistryHive hive, std::wstring_view path) {
  const auto full = fullPath(hive, path);
  if (!full) return RegStatus::kInvalidParameter;
  load();
  RegistryTree changed = tree_;
  if (!changed.removeKey(*full)) return RegStatus::kFileNotFound;
  return commit(std::move(changed));
}

RegStatus RegistryFile::enumValues(host::RegistryHive hive, std::wstring_view path, std::vector<std::wstring>& names) {
  const auto full = fullPath(hive, path);
  if (!full) return RegStatus::kInvalidParameter;
  load();
  if (!tree_.hasKey(*full)) return RegStatus::kFileNotFound;
  names.clear();
  if (const auto* key = tree_.findKey(*full)) {
    for (const auto& value : key->values) names.push_back(value.name);
  }
  return RegStatus::kSuccess;
}

RegStatus RegistryFile::enumKeys(host::RegistryHive hive, std::wstring_view path, std::vector<std::wstring>& names) {
  const auto full = fullPath(hive, path);
  if (!full) return RegStatus::kInvalidParameter;
  load();
  if (!tree_.hasKey(*full)) return RegStatus::kFileNotFound;
  names = tree_.subKeys(*full);
  return RegStatus::kSuccess;
}

RegStatus RegistryFile::commit(RegistryTree changed) {
  std::string error;
  if (!writeFile(changed.text(), error)) {
    warn(core::format(L"the settings could not be saved: %s", wide(error)));
    return RegStatus::kWriteFault;
  }
  tree_ = std::move(changed);
  damaged_ = false;
  return RegStatus::kSuccess;
}

bool RegistryFile::writeFile(const std::string& contents, std::string& error) {
  std::error_code ec;
  const std::filesystem::path folder = path_.has_parent_path() ? path_.parent_path() : std::filesystem::path(".");
  std::filesystem::create_directories(folder, ec);
  if (ec) {
    error = "cannot make the folder " + folder.string() + ": " + ec.message();
    return false;
  }
  core::AtomicFile file(path_);
  if (beforeRename_) file.beforeRename(beforeRename_);
  // Settings are the user's own: readable by nobody else. A damaged file may still hold
  // settings worth taking over by hand, so it is kept.
  core::AtomicFile::Options options;
  options.mode = 0600;
  if (damaged_) options.backup = std::filesystem::path(file.target()) += ".bak";
  if (!file.open(options) || !file.write(contents) || !file.commit()) {
    error = file.error();
    return false;
  }
  for (const auto& leftover : file.removedLeftovers()) {
    warn(core::format(L"removed %s, left by a save of the settings that did not finish", wide(leftover.string())));
  }
  return true;
}

}  // namespace corvane::headless
