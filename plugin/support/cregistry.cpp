#include "plugin/support/cregistry.h"

#include <cstdint>

namespace corvane {

using host::RegStatus;

void CRegistry::setRoot(host::RegistryHive hive, std::wstring maker) {
  hive_ = hive;
  maker_ = std::move(maker);
}

std::wstring CRegistry::keyPath(std::wstring_view section) const {
  std::wstring path = L"Software\\" + maker_;
  if (!section.empty()) {
    path += L'\\';
    path += section;
  }
  return path;
}

bool CRegistry::openSection(std::wstring_view section) const {
  if (!isSetUp()) return false;
  return registry_->openKey(hive_, keyPath(section), true) == RegStatus::kSuccess;
}

bool CRegistry::read(std::wstring_view section, std::wstring_view name, host::RegValue& value) const {
  if (!isSetUp()) return false;
  // A read never makes keys: asking for a setting leaves the store as it was.
  return registry_->queryValue(hive_, keyPath(section), name, value) == RegStatus::kSuccess;
}

bool CRegistry::store(std::wstring_view section, std::wstring_view name, const host::RegValue& value) {
  if (!openSection(section)) return false;
  return registry_->setValue(hive_, keyPath(section), name, value) == RegStatus::kSuccess;
}

int CRegistry::getInt(std::wstring_view section, std::wstring_view name, int defaultValue) const {
  host::RegValue value;
  std::uint32_t dword = 0;
  if (!read(section, name, value) || !host::readRegDword(value, dword)) return defaultValue;
  return static_cast<int>(dword);
}

std::wstring CRegistry::getString(std::wstring_view section, std::wstring_view name,
                                  std::wstring_view defaultValue) const {
  host::RegValue value;
  std::wstring text;
  if (!read(section, name, value) || !host::readRegString(value, text)) return std::wstring(defaultValue);
  return text;
}

bool CRegistry::getBinary(std::wstring_view section, std::wstring_view name, std::vector<std::uint8_t>& data) const {
  host::RegValue value;
  if (!read(section, name, value) || value.type != host::REG_BINARY) return false;
  data = std::move(value.data);
  return true;
}

std::vector<std::wstring> CRegistry::valueNames(std::wstring_view section) const {
  std::vector<std::wstring> names;
  if (!isSetUp() || registry_->enumValues(hive_, keyPath(section), names) != RegStatus::kSuccess) names.clear();
  return names;
}

bool CRegistry::writeInt(std::wstring_view section, std::wstring_view name, int value) {
  return store(section, name, host::regDword(static_cast<std::uint32_t>(value)));
}

bool CRegistry::writeString(std::wstring_view section, std::wstring_view name, std::wstring_view value) {
  return store(section, name, host::regString(value));
}

bool CRegistry::writeBinary(std::wstring_view section, std::wstring_view name, const void* data, std::size_t length) {
  if (data == nullptr && length > 0) return false;
  return store(section, name, host::regBinary(data, length));
}

bool CRegistry::removeValue(std::wstring_view section, std::wstring_view name) {
  if (!isSetUp()) return false;
  return registry_->deleteValue(hive_, keyPath(section), name) == RegStatus::kSuccess;
}

bool CRegistry::removeSection(std::wstring_view section) {
  if (!isSetUp()) return false;
  return registry_->deleteKey(hive_, keyPath(section)) == RegStatus::kSuccess;
}

}  // namespace corvane
