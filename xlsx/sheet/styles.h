// The cell formats of xl/styles.xml, as far as the displayed text needs them: which number
// format each cell style (a cell's s attribute, an index into <cellXfs>) uses.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::xlsx {

// The format code of a built-in number format id as en-US Excel shows it (14 is "m/d/yyyy",
// not the "mm-dd-yy" of the published list). Empty for ids with no built-in code, which
// display as General; that includes the locale-specific 23-36 and 50-81.
std::string_view builtinFormatCode(int id);

class Styles {
 public:
  // nullopt, with the reason in `error`, for XML that is not a style sheet.
  static std::optional<Styles> parse(std::string_view xml, std::string& error);
  // A workbook without a styles part: every cell General.
  static Styles defaults();

  // The code of the cell style's number format: the workbook's own <numFmt> for the id when
  // it has one (it may redefine a built-in id), else the built-in code; "General" when there
  // is neither or the style index is past the list.
  std::string_view formatCode(std::uint32_t styleIndex) const;
  // 0 (General) for a style index past the list.
  int numFmtId(std::uint32_t styleIndex) const;
  std::size_t styleCount() const noexcept { return formatIds_.size(); }

 private:
  std::vector<int> formatIds_;
  std::map<int, std::string> customCodes_;
};

}  // namespace corvane::xlsx
