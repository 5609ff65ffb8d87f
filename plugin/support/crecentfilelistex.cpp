#include "plugin/support/crecentfilelistex.h"

#include <algorithm>

#include "core/printf.h"
#include "core/textutil.h"

namespace corvane {

namespace {

bool isSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

// Length of the part that names where the path starts: "C:\", "\\server\share\", "/" or "".
std::size_t rootLength(std::wstring_view path) {
  if (path.size() >= 2 && isSeparator(path[0]) && isSeparator(path[1])) {
    std::size_t at = 2;
    for (int part = 0; part < 2 && at < path.size(); ++part) {
      while (at < path.size() && !isSeparator(path[at])) ++at;
      if (at < path.size()) ++at;
    }
    return at;
  }
  if (path.size() >= 2 && path[1] == L':') return path.size() >= 3 && isSeparator(path[2]) ? 3 : 2;
  return !path.empty() && isSeparator(path[0]) ? 1 : 0;
}

}  // namespace

std::wstring abbreviatePath(std::wstring_view path, std::size_t maxLength) {
  constexpr std::wstring_view kEllipsis = L"...";
  if (path.size() <= maxLength) return std::wstring(path);

  const std::size_t root = rootLength(path);
  // The start of each name after the root.
  std::vector<std::size_t> starts;
  for (std::size_t i = root; i < path.size(); ++i) {
    if ((i == root || isSeparator(path[i - 1])) && !isSeparator(path[i])) starts.push_back(i);
  }
  if (!starts.empty()) {
    const std::size_t lastSeparator = starts.back() > root ? starts.back() - 1 : std::wstring_view::npos;
    const wchar_t separator = lastSeparator != std::wstring_view::npos ? path[lastSeparator] : L'\\';
    // Keep as many trailing names as fit after "<root>...\", dropping at least one folder.
    for (std::size_t keep = starts.size() - 1; keep >= 1; --keep) {
      const std::wstring_view tail = path.substr(starts[starts.size() - keep]);
      if (root + kEllipsis.size() + 1 + tail.size() <= maxLength) {
        std::wstring out(path.substr(0, root));
        out += kEllipsis;
        out += separator;
        out += tail;
        return out;
      }
    }
    const std::wstring_view name = path.substr(starts.back());
    if (name.size() <= maxLength) return std::wstring(name);
    path = name;
  }
  if (maxLength <= kEllipsis.size()) return std::wstring(path.substr(0, maxLength));
  std::wstring out(path.substr(0, maxLength - kEllipsis.size()));
  out += kEllipsis;
  return out;
}

CRecentFileListEx::CRecentFileListEx(CRegistry& registry, std::wstring section, std::wstring entryFormat, int size,
                                     std::size_t maxDisplayLength)
    : registry_(registry),
      section_(std::move(section)),
      entryFormat_(std::move(entryFormat)),
      maxDisplayLength_(maxDisplayLength),
      entries_(static_cast<std::size_t>(std::max(size, 1))) {}

std::wstring CRecentFileListEx::entryName(int index) const { return core::format(entryFormat_, index + 1); }

void CRecentFileListEx::ReadList() {
  for (int i = 0; i < GetSize(); ++i) entries_[static_cast<std::size_t>(i)] = registry_.getString(section_, entryName(i), L"");
}

bool CRecentFileListEx::WriteList() {
  bool ok = true;
  for (int i = 0; i < GetSize(); ++i) {
    const std::wstring& entry = entries_[static_cast<std::size_t>(i)];
    if (!entry.empty()) {
      ok = registry_.writeString(section_, entryName(i), entry) && ok;
    } else {
      registry_.removeValue(section_, entryName(i));  // absent already is as good
    }
  }
  return ok;
}

void CRecentFileListEx::Add(std::wstring_view path) {
  if (path.empty()) return;
  auto found = std::find_if(entries_.begin(), entries_.end(),
                            [path](const std::wstring& entry) { return core::equalsNoCase(entry, path); });
  if (found == entries_.end()) found = entries_.end() - 1;  // the oldest makes room
  std::rotate(entries_.begin(), found, found + 1);
  entries_.front() = std::wstring(path);
}

void CRecentFileListEx::Remove(int index) {
  if (index < 0 || index >= GetSize()) return;
  entries_.erase(entries_.begin() + index);
  entries_.emplace_back();
}

const std::wstring& CRecentFileListEx::operator[](int index) const {
  static const std::wstring kEmpty;
  if (index < 0 || index >= GetSize()) return kEmpty;
  return entries_[static_cast<std::size_t>(index)];
}

std::wstring CRecentFileListEx::GetDisplayName(int index) const {
  return abbreviatePath((*this)[index], maxDisplayLength_);
}

std::vector<std::wstring> CRecentFileListEx::files() const {
  std::vector<std::wstring> out;
  for (const auto& entry : entries_) {
    if (!entry.empty()) out.push_back(entry);
  }
  return out;
}

}  // namespace corvane
