// Paths as the plug-in handles them: names separated by "\" or "/", compared without case, and
// made absolute or relative by text alone, so that no current folder is changed on the way.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane::core {

// Relative unless it starts at a root ("\", "/") or names a drive ("C:"); an address
// ("https://...") counts as absolute.
bool isRelativePath(std::wstring_view path) noexcept;

// The folder part of a path: everything before the last "\" or "/" (a root keeps its
// separator, as "C:\" and "/" do); empty for a bare name.
std::wstring folderOf(std::wstring_view path);

// `path` made absolute against `folder` when it is relative, with "." and ".." taken out; an
// absolute path is only tidied. New separators follow those of the folder.
std::wstring absolutePath(std::wstring_view folder, std::wstring_view path);

// The path that leads from the folder of `fromFile` to `toFile` ("./b.txt", "../data/b.txt"),
// nullopt when the two have no root in common (other drives, or one of them relative).
std::optional<std::wstring> relativePathTo(std::wstring_view fromFile, std::wstring_view toFile);

// Both name the same file: equal without case, with "\" and "/" alike.
bool samePath(std::wstring_view a, std::wstring_view b) noexcept;

}  // namespace corvane::core
