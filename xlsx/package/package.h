// The zip package of a workbook: its parts by name, read on demand, and saved so that every
// part nobody wrote keeps its stored bytes exactly, compressed as it was, in its place.
//
// Part names are data: nothing is ever extracted, so an entry named "../x" or "/x" is only an
// odd name. They compare without regard to ASCII case, as in the package format. Folder
// entries that some zip tools add are kept in the archive but are no parts.
//
// Copies of a package share the archive they were read from; use each archive from one thread
// at a time.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::xlsx {

class Package {
 public:
  // Nullopt with `error` naming the file and what is wrong with it: missing, not a zip, an OLE
  // compound file (encrypted workbook or .xls), encrypted entries, a damaged archive, or no
  // [Content_Types].xml.
  static std::optional<Package> open(const std::filesystem::path& path, std::string& error);
  static std::optional<Package> fromBytes(std::string bytes, std::string& error);
  // Without parts, for a workbook made from nothing.
  Package();

  std::vector<std::string> partNames() const;  // in archive order, then the parts added
  bool has(std::string_view part) const;
  // The part inflated; nullopt with `error` when it is missing or cannot be read (a CRC error,
  // damaged data).
  std::optional<std::string> read(std::string_view part, std::string& error) const;
  // Hands the part to `sink` in pieces, so that a large sheet is never held whole; `sink`
  // returns false to stop. False with `error` when reading failed or was stopped.
  bool read(std::string_view part, const std::function<bool(std::string_view chunk)>& sink, std::string& error) const;
  // Replaces the part or adds it at the end.
  void write(std::string_view part, std::string bytes);
  void remove(std::string_view part);
  bool changed() const noexcept;

  // The package as zip bytes: the archive as read with only the written and removed parts
  // differing; new parts deflated.
  std::optional<std::string> save(std::string& error) const;
  // Replaces `path` at once (see core/atomicfile.h); the previous file becomes `backup` unless
  // that is empty. On failure every file is as it was.
  bool saveAs(const std::filesystem::path& path, const std::filesystem::path& backup, std::string& error) const;

 private:
  struct Archive;
  struct Entry {
    std::string name;
    long long index = -1;                      // in the archive; -1 for a part added since
    std::shared_ptr<const std::string> bytes;  // when written since
  };

  static std::optional<Package> fromArchive(std::string bytes, const std::string& label, std::string& error);
  std::size_t position(std::string_view part) const;  // entries_.size() when there is none
  const Entry* find(std::string_view part) const;
  bool readStored(const Entry& entry, const std::function<bool(std::string_view)>& sink, std::string& error) const;
  std::optional<std::string> saveChecked(std::string& error) const;

  std::shared_ptr<const Archive> archive_;
  std::vector<Entry> entries_;
  std::vector<long long> removed_;  // archive indexes of parts removed
};

}  // namespace corvane::xlsx
