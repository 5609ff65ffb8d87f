// The per-user settings registry of the operating system: keys named by paths below a hive,
// each holding named, typed values. Every call stands alone; no key stays open between calls.
// Key paths use "\" between names; key and value names compare without regard to case.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::host {

enum class RegistryHive { kCurrentUser, kLocalMachine };

// Value types with the system's numbers.
enum RegType : std::uint32_t {
  REG_NONE = 0,
  REG_SZ = 1,
  REG_EXPAND_SZ = 2,
  REG_BINARY = 3,
  REG_DWORD = 4,
  REG_MULTI_SZ = 7,
  REG_QWORD = 11,
};

// Result codes with the system's numbers.
enum class RegStatus : long {
  kSuccess = 0,
  kFileNotFound = 2,
  kAccessDenied = 5,
  kInvalidData = 13,
  kWriteFault = 29,
  kInvalidParameter = 87,
};

// A value as the system keeps it: its type and its bytes. Strings are UTF-16 little-endian
// with a terminating zero; double words are four bytes, little-endian.
struct RegValue {
  std::uint32_t type = REG_NONE;
  std::vector<std::uint8_t> data;
  bool operator==(const RegValue&) const = default;
};

RegValue regString(std::wstring_view text);
RegValue regDword(std::uint32_t value);
RegValue regBinary(const void* data, std::size_t length);
// False when the value is not a string type or its bytes are not whole UTF-16 units; the
// text ends at the first zero.
bool readRegString(const RegValue& value, std::wstring& text);
// False unless the value is a double word of exactly four bytes.
bool readRegDword(const RegValue& value, std::uint32_t& out);

class Registry {
 public:
  virtual ~Registry() = default;

  // Opens a key, or with `create` also makes it and its missing parents.
  virtual RegStatus openKey(RegistryHive hive, std::wstring_view path, bool create) = 0;
  // The named value of a key; an empty name is the key's default value.
  virtual RegStatus queryValue(RegistryHive hive, std::wstring_view path, std::wstring_view name,
                               RegValue& value) = 0;
  // Sets a value of an existing key.
  virtual RegStatus setValue(RegistryHive hive, std::wstring_view path, std::wstring_view name,
                             const RegValue& value) = 0;
  virtual RegStatus deleteValue(RegistryHive hive, std::wstring_view path, std::wstring_view name) = 0;
  // Deletes a key with everything below it.
  virtual RegStatus deleteKey(RegistryHive hive, std::wstring_view path) = 0;
  // Names of a key's values in the order they were made, and of its direct subkeys by name.
  virtual RegStatus enumValues(RegistryHive hive, std::wstring_view path, std::vector<std::wstring>& names) = 0;
  virtual RegStatus enumKeys(RegistryHive hive, std::wstring_view path, std::vector<std::wstring>& names) = 0;
};

}  // namespace corvane::host
