// What a command reads as typed input: the lines of a script file, one answer per line as the
// host's script files have them. An empty line is Enter and "^C" cancels.
//
// Text sent for execution and the answers a command passes to another command go in front of
// the script's own lines; each such batch is numbered so that what a command left unread can
// be dropped again.
#pragma once

#include <cstddef>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::headless {

class Script {
 public:
  static constexpr std::wstring_view kCancel = L"^C";
  static constexpr int kScriptBatch = 0;

  Script() = default;
  // Lines of a text; CR LF and LF both end a line, and a last line without one counts too.
  explicit Script(std::wstring_view text);
  // A UTF-8 script file (a byte-order mark is skipped); nullopt with a message when it cannot
  // be read.
  static std::optional<Script> fromFile(const std::filesystem::path& path, std::string& error);

  bool empty() const noexcept { return lines_.empty(); }
  std::size_t size() const noexcept { return lines_.size(); }
  std::optional<std::wstring> next();
  // The next line without taking it; null at the end.
  const std::wstring* peek() const noexcept { return lines_.empty() ? nullptr : &lines_.front().text; }
  // The batch of the next line, or kScriptBatch.
  int nextBatch() const noexcept { return lines_.empty() ? kScriptBatch : lines_.front().batch; }

  // Puts lines in front of the rest; returns the new batch's number.
  int pushFront(const std::vector<std::wstring>& lines);
  // Removes what is left of a batch.
  void dropBatch(int batch);
  // Appends lines at the end, as part of the script itself.
  void append(std::wstring_view text);

  static bool isCancel(std::wstring_view line) noexcept;

 private:
  struct Line {
    std::wstring text;
    int batch;
  };
  std::deque<Line> lines_;
  int lastBatch_ = kScriptBatch;
};

}  // namespace corvane::headless
