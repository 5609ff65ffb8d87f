// Cell references moved as a formula is filled into other cells.
#include "plugin/formula/autofill.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane {
namespace {

struct Shift {
  const wchar_t* text;
  int rows;
  int columns;
  const wchar_t* expected;
};

std::string trace(const Shift& c) {
  return ::testing::PrintToString(std::wstring(c.text)) + " by " + std::to_string(c.rows) + "," +
         std::to_string(c.columns);
}

TEST(AutoFill, ShiftCellReference) {
  const Shift cases[] = {
      // Moved in either direction, in both at once.
      {L"A1", 1, 0, L"A2"},
      {L"A1", 0, 1, L"B1"},
      {L"C12", 3, 2, L"E15"},
      {L"D5", -2, -1, L"C3"},
      // "$" pins its part.
      {L"$A1", 1, 1, L"$A2"},
      {L"A$1", 1, 1, L"B$1"},
      {L"$A$1", 1, 1, L"$A$1"},
      {L"$AB$12", 5, 5, L"$AB$12"},
      // Bijective base 26, across the step from one letter to two and back.
      {L"Z5", 0, 1, L"AA5"},
      {L"AZ1", 0, 1, L"BA1"},
      {L"AA3", 0, -1, L"Z3"},
      {L"AB3", 0, -1, L"AA3"},
      {L"YY1", 0, 1, L"YZ1"},  // column 675, the last that moves
      {L"YZ1", 1, 1, L"YZ1"},  // 676
      {L"ZZ1", 1, 1, L"ZZ1"},  // 702
      {L"ABCDEFGHIJKLMNOPQRSTUVWXYZ1", 1, 1, L"ABCDEFGHIJKLMNOPQRSTUVWXYZ1"},
      // Lower case is read as upper case and written so; even a move of nothing rewrites it.
      {L"a1", 1, 0, L"A2"},
      {L"aB7", 0, 0, L"AB7"},
      {L"$b$2", 1, 1, L"$B$2"},
      // A row written with leading zeros is written back as a number.
      {L"A007", 1, 0, L"A8"},
      // No check against the first row or column: they run on past it as they come.
      {L"A1", -1, 0, L"A0"},
      {L"A2", -5, 0, L"A-3"},
      {L"A1", 0, -1, L"@1"},
      {L"B2", 0, -3, L"?2"},
      // Not references: kept as written.
      {L"SUM", 1, 1, L"SUM"},
      {L"PI", 1, 1, L"PI"},
      {L"x", 1, 1, L"x"},
      {L"2", 1, 1, L"2"},
      {L"25", 1, 1, L"25"},
      {L"1A", 1, 1, L"1A"},
      {L"A1B", 1, 1, L"A1B"},
      {L"A0", 1, 1, L"A0"},
      {L"AB", 1, 1, L"AB"},
      {L"$1", 1, 1, L"$1"},
      {L"$$A1", 1, 1, L"$$A1"},
      {L"A$$1", 1, 1, L"A$$1"},
      {L"$A$1$", 1, 1, L"$A$1$"},
      {L"A1$", 1, 1, L"A1$"},
      {L"A99999999999", 1, 1, L"A99999999999"},
      {L"", 1, 1, L""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ShiftCellReference(c.text, c.rows, c.columns), c.expected) << trace(c);
  }
}

TEST(AutoFill, ShiftReferences) {
  const Shift cases[] = {
      {L"(A1+B1)>%", 1, 0, L"(A2+B2)>%"},
      {L"(A1+B1)>%", 0, 1, L"(B1+C1)>%"},
      {L"($A1*A$1+$A$1)>%", 1, 1, L"($A2*B$1+$A$1)>%"},
      {L"(SUM(A1:B3)/2)>%", 2, 1, L"(SUM(B3:C5)/2)>%"},
      {L"(ROUND(A1*2.5,2)*PI-x)>%", 1, 0, L"(ROUND(A2*2.5,2)*PI-x)>%"},
      {L"(IF(a1>=10,'big','small'))>%", 1, 0, L"(IF(A2>=10,'big','small'))>%"},
      // A reference written inside a quoted text moves too: the walk knows no literals.
      {L"('see A1')>%", 1, 0, L"('see A2')>%"},
      // A handle that starts with a digit is no reference; other characters belong to names.
      {L"(1F2!Area+Höhe1+A1)>%", 1, 0, L"(1F2!Area+Höhe1+A2)>%"},
      // A word open at the very end is dropped...
      {L"A1+B1", 1, 0, L"A2+"},
      // ...unless nothing moves: then the text comes back as it is, lower case and all.
      {L"a1+b1", 0, 0, L"a1+b1"},
      {L"", 1, 1, L""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ShiftReferences(c.text, c.rows, c.columns), c.expected) << trace(c);
  }
}

TEST(AutoFill, ShiftFormulaFieldRestKeepsTheFormatSwitch) {
  const Shift cases[] = {
      {L"(A1*2)>%", 1, 0, L"(A2*2)>%"},
      {L"(A1*2) \\f \"%lu2%pr2\">%", 1, 0, L"(A2*2) \\f \"%lu2%pr2\">%"},
      {L"(A1*B1) \\f \"%lu2\">%", 1, 1, L"(B2*C2) \\f \"%lu2\">%"},
      // The last word of the expression ends at the switch and is not lost.
      {L"A1 \\f \"%pr3\">%", 2, 0, L"A3 \\f \"%pr3\">%"},
      // Without its closing marker the switch still ends the code.
      {L"(A1) \\f \"%pr3\"", 1, 0, L"(A2) \\f \"%pr3\""},
      // The switch is the last one: an earlier look-alike inside the expression is moved.
      {L"(A1&' \\f \"B1') \\f \"%lu2\">%", 1, 0, L"(A2&' \\f \"B2') \\f \"%lu2\">%"},
      // Text after the switch's quote makes it no switch, as the field engine reads it.
      {L"(A1) \\f \"%lu2\" B1>%", 1, 0, L"(A2) \\f \"%LU3\" B2>%"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ShiftFormulaFieldRest(c.text, c.rows, c.columns), c.expected) << trace(c);
  }
}

}  // namespace
}  // namespace corvane
