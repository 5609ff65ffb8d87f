// Linking one text to Excel's active cell, reached as the third target of the multi cell fields
// command: the default address, a typed one, a refused one, the path type, and the refusals of
// the link itself (no workbook, an unsaved one, a constant attribute).
#include <gtest/gtest.h>

#include <string>

#include "headless/db/attribute.h"
#include "headless/db/texthost.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/support/cregistry.h"
#include "plugin/workflows/multicellfields.h"
#include "workflowrig.h"

namespace corvane {
namespace {

using testing::WorkflowRig;

std::wstring pickOf(WorkflowRig& d, host::AcDbObjectId id) {
  return L"(handent \"" + d.host.handle(id).text() + L"\")";
}

TEST(LinkActiveCell, TheTextShowsTheCellItIsLinkedTo) {
  REQUIRE_OPENPYXL();
  const struct {
    const char* what;
    std::wstring before;   // dialog answers before the target is chosen
    std::wstring address;  // the answers of the address prompt
    std::wstring path;     // the workbook as the code names it; "" for the full path
    std::wstring cell;
    std::wstring shown;
    std::wstring printed;  // a line the run must print
  } cases[] = {
      {"Enter takes the active cell", L"", L"\n", L"", L"$C$3", L"1234.5", L"Enter the cell address <$C$3>: "},
      {"a typed address, in any case and without $", L"", L"b4\n", L"", L"$B$4", L"m2", L""},
      {"a bad address is asked again", L"", L"ZZZZ1\nB1048577\n$B$2\n", L"", L"$B$2", L"m3",
       L"Invalid cell address: B1048577."},
      {"a relative path when the setting says so", L"Path\nRelative\n", L"\n", L"./prices.xlsx", L"$C$3", L"1234.5",
       L""},
  };
  for (const auto& c : cases) {
    WorkflowRig d(L"");
    const auto text = d.addText(L"old");
    d.session.script().append(c.before + L"Target\nCell\n\n" + pickOf(d, text) + L"\n" + c.address);
    testing::writePriceList(d.folder / "prices.xlsx");
    d.openAndSelect("prices.xlsx", {L"C3"});
    d.run(L"Corvane_Multi_Cell_Fields");
    const auto field = headless::fieldOf(d.db, text);
    ASSERT_FALSE(field.isNull()) << c.what << "\n" << core::toUtf8(d.printed);
    const std::wstring path = c.path.empty() ? d.path("prices.xlsx") : c.path;
    EXPECT_EQ(d.code(field), L"%<\\ExcelCell \"" + path + L":Prices:" + c.cell + L"\">%") << c.what;
    EXPECT_EQ(d.db.get<headless::Text>(text)->textString(), c.shown) << c.what;
    EXPECT_NE(d.printed.find(c.printed), std::wstring::npos) << c.what;
    EXPECT_EQ(d.printed.find(L"Invalid cell address: ZZZZ1.") != std::wstring::npos, c.address.starts_with(L"ZZZZ1"))
        << c.what;
  }
}

enum class Book { kNone, kUnsaved, kSaved };

TEST(LinkActiveCell, RefusesWhatCannotBeLinked) {
  REQUIRE_OPENPYXL();
  const struct {
    const char* what;
    Book workbook;
    bool constant;  // an attribute that can't take a field is picked
    std::wstring message;
  } cases[] = {
      {"no workbook", Book::kNone, false, L"Please start Excel and open your workbook first."},
      {"a workbook never saved", Book::kUnsaved, false, L"Please save your workbook first."},
      {"a constant attribute", Book::kSaved, true, L"\nCan't change the value of a constant attribute."},
  };
  for (const auto& c : cases) {
    WorkflowRig d(L"");
    const auto reference = d.addBlockReference(d.addBlock(L"TAG"));
    const auto picked =
        c.constant ? d.addAttribute(reference, L"PRICE", L"old", headless::Attribute::kConstant) : d.addText(L"old");
    d.session.script().append(pickOf(d, picked) + L"\n\n");
    if (c.workbook == Book::kUnsaved) {
      ASSERT_TRUE(d.excel.start().addWorkbook().ok());
    }
    if (c.workbook == Book::kSaved) {
      testing::writePriceList(d.folder / "prices.xlsx");
      d.openAndSelect("prices.xlsx", {L"C3"});
    }
    LinkedSources sources{d.host, d.session};
    CRegistry registry{&d.registry};
    MultiCellFields(sources, registry, d.session).LinkActiveCell();
    EXPECT_NE(d.printed.find(c.message), std::wstring::npos) << c.what << "\n" << core::toUtf8(d.printed);
    EXPECT_EQ(d.printed.find(L"Enter the cell address"), std::wstring::npos) << c.what;
    EXPECT_TRUE(headless::fieldOf(d.db, picked).isNull()) << c.what;
  }
}

}  // namespace
}  // namespace corvane
