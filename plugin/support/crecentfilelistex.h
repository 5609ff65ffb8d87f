// A list of recently used files kept in one settings section: the most recent first, a fixed
// number of entries stored as "File1", "File2", ..., and shown in lists with long paths
// abbreviated.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "plugin/support/cregistry.h"

namespace corvane {

// A path shortened to at most `maxLength` characters for display: the root and the file name
// stay, the folders nearest the root give way to "...". A file name that cannot fit even alone
// is cut and ends in "...".
std::wstring abbreviatePath(std::wstring_view path, std::size_t maxLength);

class CRecentFileListEx {
 public:
  static constexpr int kDefaultSize = 9;
  static constexpr std::size_t kDefaultDisplayLength = 30;

  CRecentFileListEx(CRegistry& registry, std::wstring section, std::wstring entryFormat = L"File%d",
                    int size = kDefaultSize, std::size_t maxDisplayLength = kDefaultDisplayLength);

  // Replaces the list by what the settings hold.
  void ReadList();
  // Stores every entry and removes the values of empty ones; false when a write failed.
  bool WriteList();

  // Puts a path first. A path already listed (compared without regard to case) moves to the
  // front; otherwise the oldest entry drops out when the list is full.
  void Add(std::wstring_view path);
  void Remove(int index);

  int GetSize() const noexcept { return static_cast<int>(entries_.size()); }
  // The entry at an index, empty when unused or out of range.
  const std::wstring& operator[](int index) const;
  std::wstring GetDisplayName(int index) const;
  // The used entries, most recent first.
  std::vector<std::wstring> files() const;

 private:
  std::wstring entryName(int index) const;

  CRegistry& registry_;
  std::wstring section_;
  std::wstring entryFormat_;
  std::size_t maxDisplayLength_;
  std::vector<std::wstring> entries_;
};

}  // namespace corvane
