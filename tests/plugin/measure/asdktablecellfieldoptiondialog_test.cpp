// The option page of the table cell field over a real table: cells picked at points of the
// drawing, the reference and code they give, and the preview the field itself evaluates.
#include "plugin/measure/asdktablecellfieldoptiondialog.h"

#include <gtest/gtest.h>

#include "core/printf.h"
#include "dialogrig.h"
#include "host/acdbfield.h"
#include "host/acedprompts.h"

namespace corvane {
namespace {

using host::AcDbField;
using host::AcDbObjectId;

constexpr double kRow = headless::Table::kDefaultRowHeight;
constexpr double kColumn = headless::Table::kDefaultColumnWidth;

// A table of three rows at the origin, rows running down the page, and the page over it.
struct Drawing : testing::DialogRig {
  AcDbObjectId table = addTable({{L"12.5", L"abc", L"7"}, {L"1", L"2", L"x y"}, {L"", L"", L"3"}});
  std::wstring handle = handleOf(table);
  AsdkTableCellFieldOptionDialog page{dialogHost};
  Drawing() {
    page.onInitDialog();
    dialogHost.setShortVar(L"OSMODE", 4133);
  }
  // The centre of a 0-based cell, as a point answered to the prompt.
  static std::wstring cellPoint(int row, int column) {
    return core::format(L"%g,%g", column * kColumn + kColumn / 2, -(row * kRow + kRow / 2));
  }
  int osmode() {
    int value = 0;
    dialogHost.getShortVar(L"OSMODE", value);
    return value;
  }
};

TEST(AsdkTableCellFieldOptionDialog, PicksTheCellUnderAPoint) {
  struct Case {
    const char* what;
    std::wstring answer;
    std::wstring cell;    // empty: nothing picked
    host::AcValue value;  // the cell's content, which the preview shows as the host shows it
  } const cases[] = {
      {"a number", Drawing::cellPoint(0, 0), L"$A$1", host::AcValue(12.5)},
      {"a text", Drawing::cellPoint(0, 1), L"$B$1", host::AcValue(L"abc")},
      {"a text with a blank", Drawing::cellPoint(1, 2), L"$C$2", host::AcValue(L"x y")},
      {"the last row", Drawing::cellPoint(2, 2), L"$C$3", host::AcValue(std::int32_t{3})},
  };
  for (const auto& c : cases) {
    Drawing d;
    d.answer(c.answer);
    EXPECT_EQ(d.page.onPickCell(), host::RTNORM) << c.what;
    EXPECT_EQ(d.page.reference, L"Table(<" + d.handle + L">)." + c.cell) << c.what;
    EXPECT_EQ(d.page.fieldCode(), L"%<\\TableCell Table(<" + d.handle + L">)." + c.cell + L">%") << c.what;
    EXPECT_EQ(d.page.previewText(), d.dialogHost.formatValue(c.value, L"")) << c.what;
    EXPECT_EQ(d.osmode(), 4133) << c.what;
    EXPECT_NE(d.said.find(L"Select table cell:"), std::wstring::npos) << c.what;
  }
}

TEST(AsdkTableCellFieldOptionDialog, PointOffTheTableClearsAndCancelKeeps) {
  Drawing d;
  d.answer(Drawing::cellPoint(1, 1));
  d.page.onPickCell();
  ASSERT_FALSE(d.page.reference.empty());

  d.answer(L"^C");
  EXPECT_NE(d.page.onPickCell(), host::RTNORM);
  EXPECT_EQ(d.page.reference, L"Table(<" + d.handle + L">).$B$2");
  EXPECT_EQ(d.page.previewText(), L"2");
  EXPECT_EQ(d.osmode(), 4133);

  d.answer(L"500,500");
  EXPECT_EQ(d.page.onPickCell(), host::RTNORM);
  EXPECT_EQ(d.page.reference, L"");
  EXPECT_EQ(d.page.previewText(), L"");
}

TEST(AsdkTableCellFieldOptionDialog, TwoLetterColumns) {
  testing::DialogRig d;
  std::vector<std::wstring> row(30, L"");
  row[27] = L"28";
  const AcDbObjectId wide = d.addTable({row, row, row, row});
  AsdkTableCellFieldOptionDialog page(d.dialogHost);
  page.onInitDialog();
  d.answer(Drawing::cellPoint(3, 27));
  page.onPickCell();
  EXPECT_EQ(page.reference, L"Table(<" + d.handleOf(wide) + L">).$AB$4");
  EXPECT_EQ(page.previewText(), L"28");
}

TEST(AsdkTableCellFieldOptionDialog, PreviewOfAReferenceThatDoesNotRead) {
  Drawing d;
  struct Case {
    std::wstring reference;
  } const cases[] = {
      {L"Table(<" + d.handle + L">).B2"}, {L"Table(<" + d.handle + L">).$B$0"}, {L"Table(<FFFFF>).$A$1"}};
  for (const auto& c : cases) {
    d.page.reference = c.reference;
    d.page.refreshPreview();
    EXPECT_EQ(d.page.previewText(),
              core::format(L"Failed to evaluate the field: %d.", static_cast<int>(AcDbField::kInvalidCode)))
        << c.reference.size();
  }
}

TEST(AsdkTableCellFieldOptionDialog, OpensAnExistingField) {
  Drawing d;
  const std::wstring reference = L"Table(<" + d.handle + L">).$A$1";
  const AcDbObjectId good = d.field(d.addFieldText(L"%<\\TableCell " + reference + L">%")).children().at(0);
  d.evaluateAll();
  EXPECT_EQ(d.page.setFieldToEdit(d.field(good)), AcDbField::kSuccess);
  EXPECT_EQ(d.page.reference, reference);
  EXPECT_EQ(d.page.previewText(), d.dialogHost.formatValue(host::AcValue(12.5), L""));

  headless::Field& wrong = d.field(d.addField(L"%<\\TableCell x>%"));
  wrong.putData(L"TableCell Data", host::AcValue(std::int32_t{5}));
  EXPECT_EQ(d.page.setFieldToEdit(wrong), AcDbField::kInvalidCode);

  headless::Field& bare = d.field(d.addField(L"%<\\TableCell x>%"));
  EXPECT_EQ(d.page.setFieldToEdit(bare), AcDbField::kSuccess);
  EXPECT_EQ(d.page.reference, L"");
  EXPECT_EQ(d.page.previewText(), L"");
}

}  // namespace
}  // namespace corvane
