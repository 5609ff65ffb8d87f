// xl/workbook.xml: the sheets in tab order, the defined names, the date system and the
// active tab. Which part each sheet is comes from the workbook's relationships, through
// relationshipId.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::xlsx {

struct SheetEntry {
  std::string name, relationshipId;
  std::uint32_t sheetId = 0;  // a stable id, not the position
  std::string state;          // "visible", "hidden" or "veryHidden"
};

struct DefinedName {
  std::string name;
  std::string formula;            // without "=", as written: "Data!$A$1"
  std::optional<int> localSheet;  // 0-based position in sheets() for a sheet's own name
  bool hidden = false;
};

class WorkbookPart {
 public:
  // nullopt, with the reason in `error`, for XML that is not a workbook or a sheet entry
  // without a name or relationship.
  static std::optional<WorkbookPart> parse(std::string_view xml, std::string& error);

  const std::vector<SheetEntry>& sheets() const noexcept { return sheets_; }
  // Excel's own names (_xlnm.Print_Area, ...) included.
  const std::vector<DefinedName>& names() const noexcept { return names_; }
  // Serial 0 is 1904-01-01 rather than the 1900 system's 1900-01-00.
  bool date1904() const noexcept { return date1904_; }
  // 0-based; 0 when the workbook does not say, and clamped into the sheets.
  int activeTab() const noexcept { return activeTab_; }

 private:
  std::vector<SheetEntry> sheets_;
  std::vector<DefinedName> names_;
  bool date1904_ = false;
  int activeTab_ = 0;
};

}  // namespace corvane::xlsx
