#include "core/filepath.h"

#include <vector>

#include "core/textutil.h"

namespace corvane::core {

namespace {

bool isSeparator(wchar_t c) noexcept { return c == L'\\' || c == L'/'; }

bool hasDrive(std::wstring_view path) noexcept {
  return path.size() >= 2 && path[1] == L':' &&
         ((path[0] >= L'A' && path[0] <= L'Z') || (path[0] >= L'a' && path[0] <= L'z'));
}

// The root of an absolute path ("C:\", "\\server\share\", "/"), kept as written.
std::size_t rootLength(std::wstring_view path) noexcept {
  if (hasDrive(path)) return path.size() > 2 && isSeparator(path[2]) ? 3 : 2;
  if (path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1])) {
    // A share: the server and the share name belong to the root.
    std::size_t at = 2;
    for (int names = 0; names < 2 && at < path.size(); ++names) {
      while (at < path.size() && !isSeparator(path[at])) ++at;
      if (at < path.size()) ++at;
    }
    return at;
  }
  return !path.empty() && isSeparator(path[0]) ? 1 : 0;
}

wchar_t separatorOf(std::wstring_view path) noexcept {
  const std::size_t at = path.find_first_of(L"\\/");
  return at == std::wstring_view::npos ? L'\\' : path[at];
}

std::vector<std::wstring_view> namesOf(std::wstring_view path) {
  std::vector<std::wstring_view> names;
  std::size_t start = 0;
  for (std::size_t i = 0; i <= path.size(); ++i) {
    if (i == path.size() || isSeparator(path[i])) {
      if (i > start) names.push_back(path.substr(start, i - start));
      start = i + 1;
    }
  }
  return names;
}

}  // namespace

bool isRelativePath(std::wstring_view path) noexcept {
  if (path.empty()) return true;
  if (isSeparator(path[0]) || hasDrive(path)) return false;
  return path.find(L"://") == std::wstring_view::npos;
}

std::wstring folderOf(std::wstring_view path) {
  const std::size_t last = path.find_last_of(L"\\/");
  if (last == std::wstring_view::npos) return hasDrive(path) ? std::wstring(path.substr(0, 2)) : std::wstring();
  if (last == 0 || (last == 2 && hasDrive(path))) return std::wstring(path.substr(0, last + 1));
  return std::wstring(path.substr(0, last));
}

std::wstring absolutePath(std::wstring_view folder, std::wstring_view path) {
  std::wstring joined;
  if (isRelativePath(path) && !folder.empty()) {
    joined.assign(folder);
    if (!isSeparator(joined.back())) joined += separatorOf(folder);
    joined.append(path);
  } else {
    joined.assign(path);
  }
  const std::size_t root = rootLength(joined);
  const wchar_t separator = separatorOf(joined);
  std::vector<std::wstring_view> kept;
  const std::wstring_view rest = std::wstring_view(joined).substr(root);
  for (const std::wstring_view name : namesOf(rest)) {
    if (name == L".") continue;
    if (name == L"..") {
      // Above the root there is nothing: the root stays.
      if (!kept.empty() && kept.back() != L"..") {
        kept.pop_back();
      } else if (root == 0) {
        kept.push_back(name);
      }
      continue;
    }
    kept.push_back(name);
  }
  std::wstring out = joined.substr(0, root);
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (i > 0) out += separator;
    out.append(kept[i]);
  }
  return out;
}

std::optional<std::wstring> relativePathTo(std::wstring_view fromFile, std::wstring_view toFile) {
  if (isRelativePath(fromFile) || isRelativePath(toFile)) return std::nullopt;
  const std::wstring from = absolutePath({}, folderOf(fromFile));
  const std::wstring to = absolutePath({}, toFile);
  const std::size_t fromRoot = rootLength(from);
  const std::size_t toRoot = rootLength(to);
  if (!samePath(std::wstring_view(from).substr(0, fromRoot), std::wstring_view(to).substr(0, toRoot)))
    return std::nullopt;
  const auto fromNames = namesOf(std::wstring_view(from).substr(fromRoot));
  const auto toNames = namesOf(std::wstring_view(to).substr(toRoot));
  std::size_t common = 0;
  while (common < fromNames.size() && common < toNames.size() - (toNames.empty() ? 0 : 1) &&
         equalsNoCase(fromNames[common], toNames[common])) {
    ++common;
  }
  const wchar_t separator = separatorOf(toFile);
  std::wstring out;
  if (common == fromNames.size()) {
    out = L".";
  } else {
    for (std::size_t i = common; i < fromNames.size(); ++i) {
      if (!out.empty()) out += separator;
      out += L"..";
    }
  }
  for (std::size_t i = common; i < toNames.size(); ++i) {
    out += separator;
    out.append(toNames[i]);
  }
  return out;
}

bool samePath(std::wstring_view a, std::wstring_view b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (isSeparator(a[i]) && isSeparator(b[i])) continue;
    if (toUpperChar(a[i]) != toUpperChar(b[i])) return false;
  }
  return true;
}

}  // namespace corvane::core
