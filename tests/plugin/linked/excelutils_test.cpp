// The connection to Excel, run against the workbook backend of the headless host: workbooks are
// real .xlsx files made and read by it.
#include "plugin/linked/excelutils.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "core/oledate.h"
#include "core/utf8.h"
#include "headless/db/database.h"
#include "headless/editor/session.h"
#include "headless/editor/terminalui.h"
#include "support/editorsession.h"
#include "xlsx/bookapplication.h"
#include "xlsx/bookautomation.h"

namespace corvane {
namespace {

using testing::ScratchFolder;

struct Rig : testing::EditorSession {
  xlsx::BookAutomation excel;
  ExcelUtils utils{session, host};

  Rig() { session.setExcel(&excel); }
  const std::vector<headless::TerminalUi::Box>& boxes() { return static_cast<headless::TerminalUi&>(session.ui()).boxes(); }
  // A workbook saved at `name` in the scratch folder, its first sheet filled with the rows.
  std::wstring makeWorkbook(const std::string& name, const std::vector<std::vector<host::ExcelValue>>& rows = {}) {
    auto made = excel.createObject();
    auto book = (*made)->addWorkbook();
    if (!rows.empty()) {
      auto sheet = (*book)->worksheet(1);
      EXPECT_TRUE((*(*sheet)->range(L"A1"))->setValues(rows));
    }
    const std::filesystem::path path = folder / name;
    std::filesystem::create_directories(path.parent_path());
    EXPECT_TRUE((*book)->saveAs(core::fromUtf8(path.string())));
    return core::fromUtf8(path.string());
  }
};

TEST(ExcelUtils, ColumnLettersAndAddresses) {
  const struct {
    int column;
    const wchar_t* letters;
  } columns[] = {{-3, L"A"}, {0, L"A"}, {1, L"A"}, {26, L"Z"}, {27, L"AA"}, {52, L"AZ"}, {53, L"BA"}, {702, L"ZZ"},
                 {703, L"[A"} /* no third letter: past ZZ the first one runs beyond Z */};
  for (const auto& c : columns) EXPECT_EQ(ExcelUtils::ColumnLetters(c.column), c.letters) << c.column;

  Rig rig;
  EXPECT_EQ(rig.utils.AbsoluteCellAddress(1, 1), L"$A$1");
  EXPECT_EQ(rig.utils.AbsoluteCellAddress(12, 28), L"$AB$12");
  EXPECT_TRUE(rig.boxes().empty());
  EXPECT_EQ(rig.utils.AbsoluteCellAddress(0, 5), L"");
  EXPECT_EQ(rig.utils.AbsoluteCellAddress(3, -1), L"");
  ASSERT_EQ(rig.boxes().size(), 2u);
  EXPECT_EQ(rig.boxes()[0].text, L"The row index and column index should be a positive number.");
}

TEST(ExcelUtils, AttachesOnlyToARunningExcel) {
  Rig rig;
  EXPECT_FALSE(rig.utils.AttachRunningExcel(true, std::nullopt, 1, 0));
  EXPECT_TRUE(rig.boxes().empty());  // no Excel is no error of its own: the command says what to do
  EXPECT_FALSE(rig.utils.application());

  xlsx::BookApplication& running = rig.excel.start();
  running.setVisible(false);
  ASSERT_TRUE(rig.utils.AttachRunningExcel(true, std::nullopt, 1, 0));
  EXPECT_TRUE(running.visible());
  EXPECT_EQ(rig.utils.excelVersion(), 16);
  EXPECT_FALSE(rig.utils.workbook());  // Excel without workbooks is still attached
  EXPECT_TRUE(rig.utils.EnsureWorkbook());
  EXPECT_EQ(running.workbookCount(), 1);
  ASSERT_TRUE(rig.utils.worksheet());
  EXPECT_EQ(rig.utils.worksheet()->name(), L"Sheet1");

  rig.utils.ResetExcel();
  EXPECT_EQ(rig.utils.excelVersion(), 0);
  EXPECT_FALSE(rig.utils.EnsureWorkbook());
  ASSERT_EQ(rig.boxes().size(), 1u);
  EXPECT_EQ(rig.boxes()[0].text, L"Failed to get an instance of Excel!");
}

TEST(ExcelUtils, OpensAWorkbookOnceAndRefusesASecondOfTheSameName) {
  Rig rig;
  const std::wstring first = rig.makeWorkbook("a/prices.xlsx", {{std::wstring(L"first")}});
  const std::wstring other = rig.makeWorkbook("b/prices.xlsx", {{std::wstring(L"other")}});
  rig.excel.start();
  ASSERT_TRUE(rig.utils.AttachRunningExcel(true, first, 1, 0));
  const auto opened = rig.utils.workbook();
  ASSERT_TRUE(opened);
  EXPECT_EQ(opened->name(), L"prices.xlsx");

  // The same file named in other letter cases is the open one, not opened again.
  std::wstring shouted = first;
  for (auto& c : shouted) c = static_cast<wchar_t>(std::towupper(c));
  EXPECT_TRUE(rig.utils.OpenWorkbook(shouted, 1, 0));
  EXPECT_EQ(rig.utils.application()->workbookCount(), 1);
  EXPECT_EQ(rig.utils.workbook(), opened);

  EXPECT_FALSE(rig.utils.OpenWorkbook(other, 1, 0));
  EXPECT_EQ(rig.utils.application()->workbookCount(), 1);
  EXPECT_EQ(rig.utils.workbook(), opened);
  ASSERT_EQ(rig.boxes().size(), 1u);
  EXPECT_EQ(rig.boxes()[0].text.substr(0, 62), L"A document with the name 'prices.xlsx' is already open. You ca");

  // A file that is no workbook is refused with the backend's reason.
  ScratchFolder::write(rig.folder / "notes.xlsx", "not a zip at all");
  EXPECT_FALSE(rig.utils.OpenWorkbook(core::fromUtf8((rig.folder / "notes.xlsx").string()), 1, 0));
  ASSERT_EQ(rig.boxes().size(), 2u);
  EXPECT_NE(rig.boxes()[1].text.find(L"notes.xlsx"), std::wstring::npos) << core::toUtf8(rig.boxes()[1].text);
  EXPECT_FALSE(rig.utils.OpenWorkbook(L"", 1, 0));
}

TEST(ExcelUtils, LastSaveTimeIsNowForANewWorkbookAndTheFilesOtherwise) {
  Rig rig;
  const double before = *core::toOleDate(core::localNow());
  auto made = rig.excel.createObject();
  auto fresh = (*made)->addWorkbook();
  const auto unsaved = rig.utils.WorkbookLastSaveTime(**fresh);
  EXPECT_TRUE(unsaved.valid);
  EXPECT_NEAR(unsaved.date, before, 2.0 / 86400);

  const std::wstring path = rig.makeWorkbook("saved.xlsx");
  auto again = (*made)->openWorkbook(path, 0, 1);
  ASSERT_TRUE(again) << core::toUtf8(again.error().text);
  const auto saved = rig.utils.WorkbookLastSaveTime(**again);
  EXPECT_TRUE(saved.valid);
  // The file records whole seconds of the moment it was written, read back in local time.
  EXPECT_NEAR(saved.date, before, 5.0 / 86400);
}

TEST(ExcelUtils, DeletesRowsOneAfterAnotherAndFills) {
  Rig rig;
  const std::wstring path =
      rig.makeWorkbook("rows.xlsx", {{std::wstring(L"one")}, {std::wstring(L"two")}, {std::wstring(L"three")},
                                     {std::wstring(L"four")}});
  rig.excel.start();
  ASSERT_TRUE(rig.utils.AttachRunningExcel(false, path, 1, 0));
  ASSERT_TRUE(rig.utils.EnsureWorkbook());
  // Row 3 is deleted after row 1 moved everything up: "four" goes, not "three".
  rig.utils.DeleteRows(*rig.utils.worksheet(), {1, 3});
  EXPECT_EQ(rig.out, L"\nDelete the row 1 successfully.\nDelete the row 3 successfully.");
  const auto textAt = [&](const wchar_t* cell) { return *(*rig.utils.worksheet()->range(cell))->text(); };
  EXPECT_EQ(textAt(L"A1"), L"two");
  EXPECT_EQ(textAt(L"A2"), L"three");
  EXPECT_EQ(textAt(L"A3"), L"");

  rig.utils.FillTest(L"C2", 2, 3);
  EXPECT_EQ(textAt(L"C2"), L"r0c0");
  EXPECT_EQ(textAt(L"E3"), L"r1c2");
  EXPECT_EQ(textAt(L"F3"), L"");
  ASSERT_TRUE(rig.utils.workbook()->save());
  EXPECT_TRUE(std::filesystem::exists(rig.folder / "rows.xlsx.bak"));
}

TEST(ExcelUtils, WindowsAndThePrivateInstanceCarryMarkers) {
  Rig rig;
  EXPECT_EQ(rig.utils.FindExcelWindow(), 0);  // not attached
  rig.excel.start();
  ASSERT_TRUE(rig.utils.AttachRunningExcel(true, std::nullopt, 1, 0));
  EXPECT_NE(rig.utils.FindExcelWindow(), 0);
  EXPECT_EQ(rig.utils.application()->caption(), L"");  // the marker is always taken back

  ASSERT_TRUE(rig.utils.StartPrivateExcel());
  EXPECT_EQ(rig.utils.privateExcel()->caption(), ExcelUtils::kPrivateMarker);
  EXPECT_NE(rig.utils.privateExcel(), rig.utils.application());

  rig.session.setExcel(nullptr);
  EXPECT_FALSE(rig.utils.StartPrivateExcel());
  EXPECT_FALSE(rig.utils.privateExcel());
  EXPECT_EQ(rig.out.substr(0, 24), L"\nasdkexcelcellevaluator:");
}

TEST(ExcelUtils, ReportsFailuresWithTheBestTextThereIs) {
  Rig rig;
  rig.utils.ReportOleException(host::ExcelError{host::kExcelFailed, L"The cell lies outside the sheet."});
  rig.utils.ReportOleException(host::kExcelUnavailable);
  rig.utils.ReportOleException(static_cast<std::int32_t>(0x80004005));
  ASSERT_EQ(rig.boxes().size(), 3u);
  EXPECT_EQ(rig.boxes()[0].text, L"The cell lies outside the sheet.");
  EXPECT_EQ(rig.boxes()[1].text, L"Operation unavailable");
  EXPECT_EQ(rig.boxes()[2].text, L"\nexcelutils(484): OLE Execption caught: SCODE = 80004005");
}

}  // namespace
}  // namespace corvane
