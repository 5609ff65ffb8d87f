// Number formats: the text a spreadsheet shows for a cell value under its number-format code,
// as Excel shows it in an en-US locale (Range.Text).
//
// A code has up to four sections separated by ';': positive numbers (or all numbers), negative
// numbers, zero, text. Conditions such as [>100] replace the sign tests of the first two
// sections; the third then takes every number the first two do not. Inside a section:
//
//   0 # ?         digit placeholders: a digit, a digit only where significant, a digit or a space
//   . , %         decimal point; thousands separator (between placeholders) or a division by
//                 1000 (after the last one); a multiplication by 100
//   E+ E- e+ e-   scientific notation; with several integer placeholders (##0.0E+0) the exponent
//                 is a multiple of their count
//   ?/? # ??/??   fractions, mixed or improper, with a bounded or a fixed denominator (# ?/8)
//   y m d h s     dates and times; m is minutes next to h or s; [h] [m] [s] elapsed time;
//                 .0 .00 .000 parts of a second; AM/PM and A/P switch to a 12-hour clock
//   "text" \c     literal text; _c is one space; *c shows c once; @ is the cell's text;
//                 General is the General format; [Red] [Color7] are read and ignored;
//                 [$€-407] shows the text between '$' and '-'
//
// Columns are assumed wide enough: Excel shows a run of '#' when a formatted number is wider
// than its column, and shortens General numbers to fit; neither happens here. Values are
// rounded half away from zero after being cut to the 15 significant digits Excel keeps.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace corvane::xlsx {

// What a cell shows when the format cannot show its value: a date-formatted number that is no
// date (negative, or after 9999-12-31), or a number that no section of the format takes. Excel
// fills the cell with '#'; as the width is not known, this is the run a default column holds.
inline constexpr std::string_view kNotShownText = "########";
// What a number that is not finite shows (no cell of a workbook holds one).
inline constexpr std::string_view kNotFiniteText = "#NUM!";

struct NumberFormatCode;  // a code as read, shared by all copies of a format

// A number-format code parsed once and applied to many cells.
class NumberFormat {
 public:
  // The General format.
  NumberFormat();

  // Never fails: a code that cannot be read gives a format whose error() says why and that
  // renders as General.
  static NumberFormat parse(std::string_view code);
  // Empty when the code was read.
  const std::string& error() const noexcept;
  // Has date/time parts in the section for positive numbers.
  bool isDate() const noexcept;

  // The text shown for a number; date1904 picks the workbook's date system.
  std::string format(double value, bool date1904 = false) const;
  // The text shown for a text value (the text section with @, or the text unchanged).
  std::string formatText(std::string_view text) const;

 private:
  std::shared_ptr<const NumberFormatCode> code_;  // null for General
};

// The General format alone (used for most cells; fast path): an integer of up to 11 digits as
// it is; otherwise the number in at most 11 characters (the minus sign not counted) with up to
// 10 significant digits, or, where that would lose more than scientific notation does, six
// significant digits and an exponent of at least two digits (1.23457E+12).
std::string formatGeneral(double value);

}  // namespace corvane::xlsx
