#include "xlsx/package/package.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zip.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <set>

#include "core/atomicfile.h"
#include "xlsx/package/zipbuffer.h"

namespace corvane::xlsx {

namespace {

constexpr std::string_view kContentTypes = "[Content_Types].xml";
constexpr std::size_t kChunk = 64 * 1024;
constexpr std::string_view kZipStart = "PK\x03\x04";
constexpr std::string_view kOleSignature = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

std::string lower(std::string_view text) {
  std::string out(text);
  for (auto& c : out) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return out;
}

std::string describe(zip_error_t* error) {
  return zip_error_strerror(error);
}

// Stream names in a compound file are UTF-16: an encrypted workbook keeps its package in one
// called EncryptedPackage, an .xls its sheets in one called Workbook (or Book before Excel 97).
bool holdsStreamName(std::string_view bytes, std::string_view name) {
  std::string wide;
  for (const char c : name) {
    wide.push_back(c);
    wide.push_back('\0');
  }
  return bytes.find(wide) != std::string_view::npos;
}

std::string oleVerdict(std::string_view bytes) {
  if (holdsStreamName(bytes, "EncryptedPackage")) {
    return "it is a password-protected workbook (an encrypted package in an OLE compound file); "
           "remove the password in the program that set it";
  }
  if (holdsStreamName(bytes, "Workbook") || holdsStreamName(bytes, "Book")) {
    return "it is an OLE compound file, most likely an old Excel 97-2003 (.xls) workbook; save it as .xlsx first";
  }
  return "it is an OLE compound file, most likely a password-protected workbook or an old .xls workbook";
}

// Part names as this package can store them: no empty, "." or ".." segments, no leading or
// trailing slash.
bool storableName(std::string_view name) {
  if (name.empty()) return false;
  while (true) {
    const auto slash = name.find('/');
    const auto segment = name.substr(0, slash);
    if (segment.empty() || segment == "." || segment == "..") return false;
    if (slash == std::string_view::npos) return true;
    name.remove_prefix(slash + 1);
  }
}

bool readWholeFile(const std::filesystem::path& path, std::string& bytes, std::string& error) {
  // Not waited on: a pipe without a writer or a device must not hold the program.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) {
    const int code = errno;
    error =
        code == ENOENT ? path.string() + " was not found" : "cannot open " + path.string() + ": " + std::strerror(code);
    return false;
  }
  struct stat info {};
  if (::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
    ::close(fd);
    error = path.string() + " is a folder, not a workbook";
    return false;
  }
  if (!S_ISREG(info.st_mode)) {
    ::close(fd);
    error = path.string() + " is not a plain file, not a workbook";
    return false;
  }
  char buffer[kChunk];
  while (true) {
    const ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) {
      error = "cannot read " + path.string() + ": " + std::strerror(errno);
      ::close(fd);
      return false;
    }
    if (got == 0) break;
    bytes.append(buffer, static_cast<std::size_t>(got));
  }
  ::close(fd);
  return true;
}

}  // namespace

// The bytes as read and the archive over them, read-only; saving opens an archive of its own.
struct Package::Archive {
  std::string bytes;
  zip_t* zip = nullptr;
  std::vector<std::string> names;  // by archive index

  Archive() = default;
  Archive(const Archive&) = delete;
  Archive& operator=(const Archive&) = delete;
  ~Archive() {
    if (zip) zip_discard(zip);
  }
};

Package::Package() = default;

std::optional<Package> Package::open(const std::filesystem::path& path, std::string& error) {
  try {
    std::string bytes;
    if (!readWholeFile(path, bytes, error)) return std::nullopt;
    return fromArchive(std::move(bytes), path.string(), error);
  } catch (const std::exception& e) {
    error = "cannot open " + path.string() + ": " + e.what();
    return std::nullopt;
  }
}

std::optional<Package> Package::fromBytes(std::string bytes, std::string& error) {
  try {
    return fromArchive(std::move(bytes), "the workbook", error);
  } catch (const std::exception& e) {
    error = std::string("cannot open the workbook: ") + e.what();
    return std::nullopt;
  }
}

std::optional<Package> Package::fromArchive(std::string bytes, const std::string& label, std::string& error) {
  if (bytes.empty()) {
    error = label + " is not a workbook: it is empty";
    return std::nullopt;
  }
  if (std::string_view(bytes).starts_with(kOleSignature)) {
    error = label + " is not a zip package: " + oleVerdict(bytes);
    return std::nullopt;
  }

  auto archive = std::make_shared<Archive>();
  archive->bytes = std::move(bytes);
  zip_error_t zipError;
  zip_error_init(&zipError);
  zip_source_t* source = zip_source_buffer_create(archive->bytes.data(), archive->bytes.size(), 0, &zipError);
  if (source) archive->zip = zip_open_from_source(source, ZIP_RDONLY, &zipError);
  if (!archive->zip) {
    const int code = zip_error_code_zip(&zipError);
    if (code != ZIP_ER_NOZIP) {
      error = label + " is a damaged zip archive: " + describe(&zipError);
    } else if (std::string_view(archive->bytes).starts_with(kZipStart)) {
      error = label + " is a damaged zip archive: its directory at the end is missing (a file cut short?)";
    } else {
      error = label + " is not a workbook: it is not a zip archive";
    }
    zip_error_fini(&zipError);
    if (source) zip_source_free(source);
    return std::nullopt;
  }
  zip_error_fini(&zipError);

  Package package;
  std::set<std::string> seen;
  const zip_int64_t count = zip_get_num_entries(archive->zip, 0);
  for (zip_int64_t i = 0; i < count; ++i) {
    zip_stat_t st;
    if (zip_stat_index(archive->zip, static_cast<zip_uint64_t>(i), 0, &st) != 0 || !(st.valid & ZIP_STAT_NAME)) {
      error = label + " is a damaged zip archive: entry " + std::to_string(i + 1) + " cannot be read";
      return std::nullopt;
    }
    const std::string name = st.name;
    archive->names.push_back(name);
    if ((st.valid & ZIP_STAT_ENCRYPTION_METHOD) && st.encryption_method != ZIP_EM_NONE) {
      error = label + " cannot be read: its entry " + name + " is encrypted";
      return std::nullopt;
    }
    if (name.ends_with('/')) continue;  // a folder
    if (!seen.insert(lower(name)).second) {
      error = label + " is a damaged package: it has two parts named " + name;
      return std::nullopt;
    }
    package.entries_.push_back({name, i, nullptr});
  }
  if (!package.find(kContentTypes)) {
    error = label + " is not a workbook: it has no " + std::string(kContentTypes);
    return std::nullopt;
  }
  package.archive_ = std::move(archive);
  return package;
}

std::size_t Package::position(std::string_view part) const {
  const std::string key = lower(part);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].name.size() == key.size() && lower(entries_[i].name) == key) return i;
  }
  return entries_.size();
}

const Package::Entry* Package::find(std::string_view part) const {
  const std::size_t at = position(part);
  return at < entries_.size() ? &entries_[at] : nullptr;
}

std::vector<std::string> Package::partNames() const {
  std::vector<std::string> out;
  out.reserve(entries_.size());
  for (const auto& entry : entries_) out.push_back(entry.name);
  return out;
}

bool Package::has(std::string_view part) const {
  return find(part) != nullptr;
}

std::optional<std::string> Package::read(std::string_view part, std::string& error) const {
  try {
    std::string out;
    const bool done = read(
        part,
        [&out](std::string_view chunk) {
          out.append(chunk);
          return true;
        },
        error);
    if (!done) return std::nullopt;
    return out;
  } catch (const std::exception& e) {
    error = "cannot read " + std::string(part) + ": " + e.what();
    return std::nullopt;
  }
}

bool Package::read(std::string_view part, const std::function<bool(std::string_view chunk)>& sink,
                   std::string& error) const {
  try {
    const Entry* entry = find(part);
    if (!entry) {
      error = "the package has no part " + std::string(part);
      return false;
    }
    if (!entry->bytes) return readStored(*entry, sink, error);
    const std::string_view bytes = *entry->bytes;
    for (std::size_t at = 0; at < bytes.size(); at += kChunk) {
      if (!sink(bytes.substr(at, kChunk))) {
        error = "reading " + entry->name + " was stopped";
        return false;
      }
    }
    return true;
  } catch (const std::exception& e) {
    error = "cannot read " + std::string(part) + ": " + e.what();
    return false;
  }
}

bool Package::readStored(const Entry& entry, const std::function<bool(std::string_view)>& sink,
                         std::string& error) const {
  zip_t* zip = archive_->zip;
  zip_file_t* file = zip_fopen_index(zip, static_cast<zip_uint64_t>(entry.index), 0);
  if (!file) {
    error = "cannot read " + entry.name + ": " + describe(zip_get_error(zip));
    zip_error_clear(zip);
    return false;
  }
  std::string buffer(kChunk, '\0');
  bool ok = true;
  while (true) {
    const zip_int64_t got = zip_fread(file, buffer.data(), buffer.size());
    if (got < 0) {
      error = "cannot read " + entry.name + ": " + describe(zip_file_get_error(file));
      ok = false;
      break;
    }
    if (got == 0) break;
    if (!sink(std::string_view(buffer.data(), static_cast<std::size_t>(got)))) {
      error = "reading " + entry.name + " was stopped";
      ok = false;
      break;
    }
  }
  zip_fclose(file);
  return ok;
}

void Package::write(std::string_view part, std::string bytes) {
  auto shared = std::make_shared<const std::string>(std::move(bytes));
  if (const std::size_t at = position(part); at < entries_.size()) {
    entries_[at].bytes = std::move(shared);
    return;
  }
  // A part removed and written again goes back to its place.
  if (archive_) {
    const std::string key = lower(part);
    for (auto at = removed_.begin(); at != removed_.end(); ++at) {
      const auto& name = archive_->names[static_cast<std::size_t>(*at)];
      if (lower(name) != key) continue;
      const auto before = std::find_if(entries_.begin(), entries_.end(), [index = *at](const Entry& entry) {
        return entry.index < 0 || entry.index > index;
      });
      entries_.insert(before, {name, *at, std::move(shared)});
      removed_.erase(at);
      return;
    }
  }
  entries_.push_back({std::string(part), -1, std::move(shared)});
}

void Package::remove(std::string_view part) {
  const std::size_t at = position(part);
  if (at == entries_.size()) return;
  if (entries_[at].index >= 0) removed_.push_back(entries_[at].index);
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(at));
}

bool Package::changed() const noexcept {
  if (!archive_ || !removed_.empty()) return true;
  return std::any_of(entries_.begin(), entries_.end(), [](const Entry& entry) { return entry.bytes != nullptr; });
}

std::optional<std::string> Package::save(std::string& error) const {
  try {
    return saveChecked(error);
  } catch (const std::exception& e) {
    error = std::string("cannot save the workbook: ") + e.what();
    return std::nullopt;
  }
}

std::optional<std::string> Package::saveChecked(std::string& error) const {
  if (!find(kContentTypes)) {
    error = "cannot save the workbook: it has no " + std::string(kContentTypes);
    return std::nullopt;
  }
  if (!changed()) return archive_->bytes;
  for (const auto& entry : entries_) {
    if (entry.index < 0 && !storableName(entry.name)) {
      error = "cannot save the workbook: \"" + entry.name + "\" is not a valid part name";
      return std::nullopt;
    }
  }

  // libzip copies the entries left alone as they are stored.
  ZipBuffer buffer(archive_ ? std::string_view(archive_->bytes) : std::string_view());
  zip_error_t zipError;
  zip_error_init(&zipError);
  zip_source_t* target = buffer.source(&zipError);
  zip_t* zip = nullptr;
  if (target) {
    zip_source_keep(target);
    zip = zip_open_from_source(target, archive_ ? 0 : ZIP_CREATE | ZIP_TRUNCATE, &zipError);
  }
  if (!zip) {
    error = "cannot save the workbook: " + describe(&zipError);
    zip_error_fini(&zipError);
    if (target) zip_source_free(target);
    return std::nullopt;
  }
  zip_error_fini(&zipError);

  const auto fail = [&](const std::string& what) {
    error = "cannot save the workbook: " + what + ": " + describe(zip_get_error(zip));
    zip_discard(zip);
    zip_source_free(target);
    return std::nullopt;
  };
  for (const auto index : removed_) {
    if (zip_delete(zip, static_cast<zip_uint64_t>(index)) != 0) {
      return fail("cannot remove " + archive_->names[static_cast<std::size_t>(index)]);
    }
  }
  for (const auto& entry : entries_) {
    if (!entry.bytes) continue;
    zip_source_t* data = zip_source_buffer(zip, entry.bytes->data(), entry.bytes->size(), 0);
    if (!data) return fail("cannot store " + entry.name);
    zip_int64_t index = entry.index;
    if (index >= 0) {
      if (zip_file_replace(zip, static_cast<zip_uint64_t>(index), data, 0) != 0) index = -1;
    } else {
      index = zip_file_add(zip, entry.name.c_str(), data, ZIP_FL_ENC_UTF_8);
    }
    if (index < 0) {
      zip_source_free(data);
      return fail("cannot store " + entry.name);
    }
    // A big sheet is deflated at the fastest level: saving after a one-cell change must not
    // take seconds, and sheet XML shrinks nearly as well that way.
    constexpr std::size_t kBigPart = 1 << 20;
    // libzip forgets the level when the method asked for is the one the entry already has:
    // deflate for a new entry, the default method (deflate as well) for a replaced one.
    const zip_uint32_t level = entry.bytes->size() >= kBigPart ? 1 : 0;
    const zip_int32_t method = entry.index >= 0 ? ZIP_CM_DEFAULT : ZIP_CM_DEFLATE;
    if (zip_set_file_compression(zip, static_cast<zip_uint64_t>(index), method, level) != 0) {
      return fail("cannot compress " + entry.name);
    }
  }
  if (zip_close(zip) != 0) return fail("cannot write the archive");

  zip_source_free(target);
  if (!buffer.written()) return archive_ ? archive_->bytes : std::string();  // libzip found nothing to change
  return buffer.output();
}

bool Package::saveAs(const std::filesystem::path& path, const std::filesystem::path& backup, std::string& error) const {
  try {
    const auto bytes = save(error);
    if (!bytes) return false;
    core::AtomicFile file(path);
    core::AtomicFile::Options options;
    options.backup = backup;
    if (!file.open(options) || !file.write(*bytes) || !file.commit()) {
      error = file.error();
      return false;
    }
    return true;
  } catch (const std::exception& e) {
    error = "cannot save " + path.string() + ": " + e.what();
    return false;
  }
}

}  // namespace corvane::xlsx
