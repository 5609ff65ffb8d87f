// Small DXF files for the tests, spelt out tag by tag.
#pragma once

#include <cstdint>
#include <algorithm>
#include <cstring>
#include <unistd.h>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace corvane::dxf::testing {

using TagText = std::pair<int, std::string>;

// One code line and one value line per tag, AutoCAD-style right-aligned codes.
inline std::string asciiDxf(const std::vector<TagText>& tags, std::string_view eol = "\n") {
  std::string out;
  for (const auto& [code, value] : tags) {
    std::string codeText = std::to_string(code);
    if (codeText.size() < 3) codeText.insert(0, 3 - codeText.size(), ' ');
    out += codeText;
    out += eol;
    out += value;
    out += eol;
  }
  return out;
}

// The tags of a minimal drawing of the given version with the given entities.
inline std::vector<TagText> drawing(const std::string& version, const std::vector<TagText>& entities,
                                    const std::string& codePage = "ANSI_1252") {
  std::vector<TagText> tags = {{0, "SECTION"}, {2, "HEADER"},     {9, "$ACADVER"}, {1, version},
                               {9, "$DWGCODEPAGE"}, {3, codePage}, {9, "$HANDSEED"}, {5, "100"},
                               {0, "ENDSEC"},  {0, "SECTION"},    {2, "ENTITIES"}};
  tags.insert(tags.end(), entities.begin(), entities.end());
  tags.push_back({0, "ENDSEC"});
  tags.push_back({0, "EOF"});
  return tags;
}

// Code and value lines of an ASCII file, split without any DXF knowledge: the reference the
// reader's tags are compared with.
inline std::vector<TagText> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t end = text.find('\n', pos);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(pos, end - pos);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
    pos = end + 1;
  }
  std::vector<TagText> tags;
  for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
    tags.emplace_back(std::stoi(lines[i]), lines[i + 1]);
    if (tags.back().first == 0 && tags.back().second == "EOF") break;
  }
  return tags;
}

inline std::string readBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeBytes(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// A fresh, empty folder under the system's temporary folder, removed again by the destructor.
class TempFolder {
 public:
  explicit TempFolder(const std::string& name) {
    path_ = std::filesystem::temp_directory_path() / ("corvane-dxf-" + name + "-" + std::to_string(::getpid()));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }
  std::vector<std::string> entries() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace corvane::dxf::testing
