#include "headless/editor/script.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "core/textutil.h"
#include "core/utf8.h"

namespace corvane::headless {

Script::Script(std::wstring_view text) { append(text); }

void Script::append(std::wstring_view text) {
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find(L'\n', start);
    if (end == std::wstring_view::npos) end = text.size();
    std::wstring_view line = text.substr(start, end - start);
    if (!line.empty() && line.back() == L'\r') line.remove_suffix(1);
    lines_.push_back(Line{std::wstring(line), kScriptBatch});
    start = end + 1;
  }
}

std::optional<Script> Script::fromFile(const std::filesystem::path& path, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    error = "cannot open the script " + path.string();
    return std::nullopt;
  }
  std::ostringstream contents;
  contents << in.rdbuf();
  std::string bytes = contents.str();
  if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
  return Script(core::fromUtf8(bytes));
}

std::optional<std::wstring> Script::next() {
  if (lines_.empty()) return std::nullopt;
  std::wstring line = std::move(lines_.front().text);
  lines_.pop_front();
  return line;
}

int Script::pushFront(const std::vector<std::wstring>& lines) {
  const int batch = ++lastBatch_;
  for (auto it = lines.rbegin(); it != lines.rend(); ++it) lines_.push_front(Line{*it, batch});
  return batch;
}

void Script::dropBatch(int batch) {
  lines_.erase(std::remove_if(lines_.begin(), lines_.end(), [batch](const Line& line) { return line.batch == batch; }),
               lines_.end());
}

bool Script::isCancel(std::wstring_view line) noexcept {
  while (!line.empty() && core::isSpace(line.front())) line.remove_prefix(1);
  while (!line.empty() && core::isSpace(line.back())) line.remove_suffix(1);
  return line == kCancel;
}

}  // namespace corvane::headless
