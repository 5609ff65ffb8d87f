// A folder of its own for one test, removed with everything in it at the end, and the
// whole-file reads and writes the tests make in it.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace corvane::testing {

class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    if (::mkdtemp(name.data())) path_ = name.data();
  }
  ~ScratchFolder() {
    std::error_code error;
    if (!path_.empty()) std::filesystem::remove_all(path_, error);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const noexcept { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  static void write(const std::filesystem::path& file, const std::string& bytes) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary);
    out << bytes;
  }
  static std::string read(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  // The names in the folder, hidden ones included, sorted.
  std::vector<std::string> names() const {
    std::vector<std::string> out;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) out.push_back(entry.path().filename().string());
    std::sort(out.begin(), out.end());
    return out;
  }
  // Everything below the folder, sorted, by paths relative to it: a folder's path ends in "/",
  // a symbolic link's says where it leads ("a.dxf -> b.dxf").
  std::vector<std::string> tree() const {
    std::vector<std::string> out;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
      std::string name = entry.path().lexically_relative(path_).string();
      if (entry.is_symlink()) {
        name += " -> " + std::filesystem::read_symlink(entry.path()).string();
      } else if (entry.is_directory()) {
        name += "/";
      }
      out.push_back(std::move(name));
    }
    std::sort(out.begin(), out.end());
    return out;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace corvane::testing
