// A drawing file bound to a headless database. Loading reads the file at the tag level and
// makes an object of every record that has a handle; saving writes what changed in the
// database back into the records (and adds, removes and registers what it must), so that a
// drawing saved without changes comes out byte for byte as it came in.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "dxf/model/headervariables.h"
#include "dxf/tags/document.h"
#include "dxf/tags/status.h"
#include "host/acdbobject.h"
#include "host/objectid.h"

namespace corvane::headless {
class BlockReference;
class Database;
class DatabaseHost;
class Dictionary;
class Field;
}

namespace corvane::dxf {

class DrawingFile;
class ObjectWriter;
struct RecordHeader;

struct LoadResult {
  std::unique_ptr<DrawingFile> drawing;  // null when the file could not be read
  std::string error;
};

class DrawingFile {
 public:
  // The host must outlive the drawing: the database's objects live in its id table.
  static LoadResult load(const std::filesystem::path& path, headless::DatabaseHost& host);
  // A drawing held in memory; `path` is where save() writes it and what the database is named.
  static LoadResult read(std::string bytes, headless::DatabaseHost& host, const std::filesystem::path& path = {});

  ~DrawingFile();
  DrawingFile(const DrawingFile&) = delete;
  DrawingFile& operator=(const DrawingFile&) = delete;

  headless::Database& database() noexcept { return *db_; }
  const Document& document() const noexcept { return *doc_; }
  const std::filesystem::path& path() const noexcept { return path_; }

  // Brings the document up to date with the database without writing anything to disk.
  Status update();
  Status write(ByteSink& sink, std::optional<FileFormat> format = std::nullopt);
  // Atomic saves (see Document::save); saveAs makes the new path the drawing's own.
  Status save(const SaveOptions& options = {});
  Status saveAs(const std::filesystem::path& path, const SaveOptions& options = {});

  // The record of an object, or kNoRecord for an object that has none (yet).
  RecordId recordOf(host::AcDbObjectId id) const;

 private:
  DrawingFile(std::unique_ptr<Document> doc, headless::DatabaseHost& host, std::filesystem::path path);
  // Loading: every record's object made, then the references between them resolved.
  struct Loading;
  void bind(headless::DatabaseHost& host);
  void makeObjects(Loading& loading);
  void makeObject(Loading& loading, std::string_view section, RecordId rid);
  void noteRecordKind(Loading& loading, std::string_view section, std::string_view type, host::AcDbObjectId id,
                      RecordId rid, const RecordHeader& header, host::AcDbObjectId owner);
  void resolvePending(const Loading& loading);
  void linkObjects(Loading& loading);
  void linkDictionary(headless::Dictionary& dictionary, std::span<const Tag> entries);
  void restoreField(headless::Field& field, RecordId rid);
  void dropBrokenChildren(const Loading& loading);
  void makeStandardObjects(Loading& loading);
  void readHeader(std::uint64_t highestHandle);
  host::AcDbObjectId resolve(std::uint64_t handle) const;
  void release(RecordId id);
  void bindRecord(host::AcDbObjectId id, RecordId record);
  void unbind(host::AcDbObjectId id);

  // Saving: what changed in the database written into the records, step by step.
  struct Saving;
  void sortObjects(Saving& saving);
  Status spellNewRecords(Saving& saving, const ObjectWriter& writer);
  void removeRecords(Saving& saving);
  Status insertNewRecords(Saving& saving, const ObjectWriter& writer);
  // A new block reference's attributes go right after it, closed by the end of their sequence.
  void insertAttributes(const Saving& saving, const ObjectWriter& writer, const headless::BlockReference& reference,
                        std::size_t section, std::size_t position);
  // Whether the object is an attribute of a block reference that is new too.
  bool comesWithItsReference(const host::AcDbObject& object) const;
  std::size_t placeAttribute(host::AcDbObjectId reference, std::size_t& section) const;
  void writeHandseed();
  void prepareFields();
  void prepareFieldList();
  // The APPID records the written objects' extended data needs; returns those it made.
  std::vector<host::AcDbObjectId> registerApplications(const std::vector<host::AcDbObjectId>& written);
  std::size_t placeNewRecord(const host::AcDbObject& object, std::size_t& section) const;
  // The classes of fields and field lists, once the drawing holds such records.
  void ensureClasses();

  std::unique_ptr<Document> doc_;
  std::unique_ptr<headless::Database> db_;
  std::filesystem::path path_;
  HeaderVariables header_;

  // The records of the objects: those read, by id, and those bound otherwise.
  std::uint64_t firstId_ = 0;
  std::vector<RecordId> loaded_;
  std::unordered_map<std::uint64_t, RecordId> others_;
  // Objects every database starts with that the file did not have: written once they change.
  std::unordered_set<std::uint64_t> unboundDefaults_;
  std::unordered_map<std::wstring, host::AcDbObjectId> tables_;  // the TABLE records by name
  std::unordered_set<std::wstring> appIds_;                       // upper case
};

}  // namespace corvane::dxf
