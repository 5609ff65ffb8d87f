// The settings store: values below the maker's key in the current user's registry, in
// sections named by key paths such as "Corvane" or "Corvane\AreaField".
//
// Until the root is set, every read gives its default and every write fails without touching
// the registry. Each call opens its key itself and keeps nothing open afterwards; failures are
// silent: reads fall back to their defaults and writes return false.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/registry.h"
#include "plugin/support/corvanesettings.h"

namespace corvane {

class CRegistry {
 public:
  // Without a registry every read gives its default and every write fails.
  explicit CRegistry(host::Registry* registry = nullptr) noexcept : registry_(registry) {}

  // Remembers the hive and the maker's name; done once at initialisation.
  void setRoot(host::RegistryHive hive, std::wstring maker);
  bool isSetUp() const noexcept { return registry_ != nullptr && !maker_.empty(); }
  const std::wstring& maker() const noexcept { return maker_; }

  // "Software\<maker>\<section>", the maker key itself for an empty section.
  std::wstring keyPath(std::wstring_view section) const;
  // Opens the section with its parents, making those that are missing.
  bool openSection(std::wstring_view section) const;

  int getInt(std::wstring_view section, std::wstring_view name, int defaultValue) const;
  std::wstring getString(std::wstring_view section, std::wstring_view name, std::wstring_view defaultValue) const;
  bool getBinary(std::wstring_view section, std::wstring_view name, std::vector<std::uint8_t>& data) const;
  // Names of a section's values, in the order they were made; empty when it cannot be read.
  std::vector<std::wstring> valueNames(std::wstring_view section) const;

  bool writeInt(std::wstring_view section, std::wstring_view name, int value);
  bool writeString(std::wstring_view section, std::wstring_view name, std::wstring_view value);
  bool writeBinary(std::wstring_view section, std::wstring_view name, const void* data, std::size_t length);
  bool removeValue(std::wstring_view section, std::wstring_view name);
  // Deletes the section's key with everything below it.
  bool removeSection(std::wstring_view section);

  // The settings of the table, with their own defaults.
  int get(const settings::IntSetting& setting) const { return getInt(setting.section, setting.name, setting.fallback); }
  std::wstring get(const settings::TextSetting& setting) const {
    return getString(setting.section, setting.name, setting.fallback);
  }
  bool write(const settings::IntSetting& setting, int value) { return writeInt(setting.section, setting.name, value); }
  bool write(const settings::TextSetting& setting, std::wstring_view value) {
    return writeString(setting.section, setting.name, value);
  }

 private:
  bool read(std::wstring_view section, std::wstring_view name, host::RegValue& value) const;
  bool store(std::wstring_view section, std::wstring_view name, const host::RegValue& value);

  host::Registry* registry_;
  host::RegistryHive hive_ = host::RegistryHive::kCurrentUser;
  std::wstring maker_;
};

}  // namespace corvane
