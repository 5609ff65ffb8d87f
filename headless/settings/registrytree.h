// A registry tree in the registry-export text form:
//
//   Windows Registry Editor Version 5.00
//
//   [HKEY_CURRENT_USER\Software\Halvek\Corvane]
//   "EF_PathType"=dword:00000001
//   "File1"="C:\\Drawings\\Site \"A\".xlsx"
//   "Raw"=hex:01,02,ff
//   "Kept"=hex(b):01,00,00,00,00,00,00,00
//
// Key paths start with the hive's name and compare without regard to case, as value names do.
// A key exists when it was made or when a key below it exists. Values of any type are kept and
// written back; strings, double words and binary values in their own notation, the others as
// "hex(type):".
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/registry.h"

namespace corvane::headless {

class RegistryTree {
 public:
  struct Value {
    std::wstring name;  // empty: the key's default value, written "@"
    host::RegValue data;
    bool operator==(const Value&) const = default;
  };
  struct Key {
    std::wstring path;  // as first spelt
    std::vector<Value> values;  // in the order they were made
    bool operator==(const Key&) const = default;
  };
  struct ParseError {
    int line = 0;  // 1-based
    std::string message;
  };

  // Reads the text of a file: UTF-8 with or without a byte-order mark, or UTF-16 with its
  // mark; line ends CR LF or LF. A text that does not hold a registry tree gives nullopt and
  // says where and why.
  static std::optional<RegistryTree> parse(std::string_view bytes, ParseError* error = nullptr);
  // UTF-8 text with LF line ends, keys in path order, parents before children.
  std::string text() const;

  bool hasKey(std::wstring_view path) const;
  // Makes the key if it does not exist; parents need not be made.
  Key& makeKey(std::wstring_view path);
  Key* findKey(std::wstring_view path);
  const Key* findKey(std::wstring_view path) const;
  // Removes the key and every key below it; false when none existed.
  bool removeKey(std::wstring_view path);
  // Names of the keys directly below a key, in path order.
  std::vector<std::wstring> subKeys(std::wstring_view path) const;

  const Value* findValue(std::wstring_view path, std::wstring_view name) const;
  // Sets a value of an existing key (made when missing); a value of the same name is replaced
  // in its place.
  void setValue(std::wstring_view path, std::wstring_view name, host::RegValue data);
  bool removeValue(std::wstring_view path, std::wstring_view name);

  // Every key that was made, in path order.
  std::vector<const Key*> keys() const;
  bool operator==(const RegistryTree& other) const;

  // The path without trailing separators; nullopt when it has an empty name or a control
  // character.
  static std::optional<std::wstring> normalizePath(std::wstring_view path);

 private:
  // Folded for comparison, with separators below every other character so that a key's
  // children follow it directly.
  static std::wstring sortKey(std::wstring_view path);

  std::map<std::wstring, Key> keys_;
};

}  // namespace corvane::headless
