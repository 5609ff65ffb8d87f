// Small DXF files for the tests, spelt out tag by tag.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/scratchfolder.h"

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

using corvane::testing::ScratchFolder;

inline std::string readBytes(const std::filesystem::path& path) { return ScratchFolder::read(path); }
inline void writeBytes(const std::filesystem::path& path, const std::string& bytes) {
  ScratchFolder::write(path, bytes);
}

}  // namespace corvane::dxf::testing
