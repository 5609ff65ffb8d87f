// An .xlsx file open in the session: its package and the parts read from it, each sheet read
// when first asked for, and the changes kept until the book is saved. Saving writes back only
// the parts that changed; every other part keeps its bytes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xlsx/package/contenttypes.h"
#include "xlsx/package/package.h"
#include "xlsx/package/relationships.h"
#include "xlsx/sheet/cellref.h"
#include "xlsx/sheet/comments.h"
#include "xlsx/sheet/coreproperties.h"
#include "xlsx/sheet/numberformat.h"
#include "xlsx/sheet/sharedstrings.h"
#include "xlsx/sheet/styles.h"
#include "xlsx/sheet/workbookpart.h"
#include "xlsx/sheet/worksheet.h"

namespace corvane::xlsx {

class Book {
 public:
  // The workbook in the file; nullopt with `error` naming the file and what is wrong.
  static std::unique_ptr<Book> open(const std::filesystem::path& path, std::string& error);
  // A new workbook with one empty sheet, not yet saved anywhere.
  static std::unique_ptr<Book> create(std::int64_t nowUnixSeconds);

  // Where it was read from or last saved to; empty for a new book never saved.
  const std::filesystem::path& path() const noexcept { return path_; }
  bool date1904() const noexcept { return workbook_.date1904(); }
  int activeSheet() const noexcept;

  std::size_t sheetCount() const noexcept { return workbook_.sheets().size(); }
  const std::string& sheetName(std::size_t index) const { return workbook_.sheets()[index].name; }
  std::optional<std::size_t> sheetIndex(std::string_view name) const;
  // The sheet's cells, read on first use; null with `error` when its part cannot be read.
  Worksheet* sheet(std::size_t index, std::string& error);
  // The sheet's notes (none when it has no comments part); null with `error` when unreadable.
  Comments* notes(std::size_t index, std::string& error);
  const std::vector<DefinedName>& names() const noexcept { return workbook_.names(); }

  // The text a cell shows: its value through its number format.
  std::string displayText(const Worksheet& sheet, const CellView& cell) const;
  // Whether the style shows numbers as dates or times.
  bool isDateStyle(std::uint32_t style) const { return formatOf(style).isDate(); }
  std::string_view sharedString(std::size_t index) const { return strings_.at(index); }
  const SharedStrings& strings() const noexcept { return strings_; }

  // When the workbook was last saved, from its document properties; nullopt when they have none.
  std::optional<std::int64_t> lastSaveTime() const;

  // Something changed since the book was read or last saved.
  bool dirty() const noexcept { return dirty_; }
  void touch() noexcept { dirty_ = true; }
  // The sheet's notes were changed through notes(): the next save writes them.
  void notesChanged(std::size_t index) {
    sheets_[index].notesChanged = true;
    dirty_ = true;
  }

  // Writes the book back to its own file (keeping the previous one as .bak), or to `path`
  // (which then becomes its own). False with `error` when the file could not be written; the
  // file on disk is then as it was.
  bool save(std::string& error);
  bool saveAs(const std::filesystem::path& path, std::string& error);

 private:
  struct SheetState {
    std::string part;  // "xl/worksheets/sheet1.xml"
    std::unique_ptr<Worksheet> cells;
    std::unique_ptr<Comments> notes;
    std::string commentsPart, vmlPart;  // where its notes live, when they do
    bool notesChanged = false;
  };

  Book() = default;
  bool readParts(std::string& error);
  const NumberFormat& formatOf(std::uint32_t style) const;
  bool writeChanges(std::int64_t now, std::string& error);
  bool writeNotes(SheetState& state, std::string& legacyDrawingId, std::string& error);

  std::filesystem::path path_;
  Package package_;
  std::string workbookPart_;
  WorkbookPart workbook_;
  Relationships workbookRels_;
  ContentTypes contentTypes_;
  SharedStrings strings_;
  Styles styles_;
  std::vector<SheetState> sheets_;
  mutable std::vector<std::optional<NumberFormat>> formats_;  // by style, read when first used
  bool dirty_ = false;
};

}  // namespace corvane::xlsx
