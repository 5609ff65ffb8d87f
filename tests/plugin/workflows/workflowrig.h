// A saved drawing open in the headless editor with the plug-in loaded and a running Excel that
// has a workbook open, so that the Excel workflow commands can be run from a script.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "headless/editor/session.h"
#include "headless/settings/registryfile.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/openpyxl.h"
#include "support/scratchfolder.h"
#include "support/testdrawing.h"
#include "xlsx/bookapplication.h"
#include "xlsx/bookautomation.h"
#include "xlsx/bookrange.h"
#include "xlsx/booksheet.h"

namespace corvane::testing {

#define REQUIRE_OPENPYXL() \
  if (!::corvane::testing::hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed"

// A price list on the sheet "Prices": B2:C4 hold "m3", 84, "t", 1234.5, "m2", 23.5; C6 has the
// name "Supplier".
inline void writePriceList(const std::filesystem::path& file, double firstPrice = 84) {
  const std::string made = runOpenpyxl(
      "import sys, openpyxl\n"
      "from openpyxl.workbook.defined_name import DefinedName\n"
      "wb = openpyxl.Workbook(); ws = wb.active; ws.title = 'Prices'\n"
      "rows = [('m3', float(sys.argv[2])), ('t', 1234.5), ('m2', 23.5)]\n"
      "for i, (u, p) in enumerate(rows): ws.cell(row=2 + i, column=2, value=u); ws.cell(row=2 + i, column=3, value=p)\n"
      "ws['C6'] = 'Nordbeton'\n"
      "wb.defined_names.append(DefinedName('Supplier', attr_text='Prices!$C$6'))\n"
      "wb.save(sys.argv[1])\n",
      {file.string(), std::to_string(firstPrice)});
  ASSERT_EQ(made, "");
}

struct WorkflowRig : TestDrawing {
  ScratchFolder folder;
  headless::RegistryFile registry{folder / "registry.reg", [](std::wstring_view) {}};
  headless::Session session;
  xlsx::BookAutomation excel;
  std::unique_ptr<CCorvaneApp> app;

  explicit WorkflowRig(std::wstring_view script) : session(host, headless::Script(script), options()) {
    db.setFilename(path("site.dxf"));
    session.openDocument(&db);
    session.setExcel(&excel);
  }
  ~WorkflowRig() {
    if (app) session.unloadApplication(*app);
  }
  headless::Session::Options options() {
    headless::Session::Options o;
    o.registry = &registry;
    o.progress = nullptr;
    o.notice = [](std::wstring_view) {};
    return o;
  }
  std::wstring path(const std::string& name) const { return core::fromUtf8((folder / name).string()); }

  // Opens the workbook in the running Excel and selects the areas of its sheet "Prices".
  void openAndSelect(const std::string& book, const std::vector<std::wstring>& areas) {
    auto opened = excel.start().openWorkbook(path(book), 0, 0);
    ASSERT_TRUE(opened.ok());
    auto sheet = (*opened)->worksheet(L"Prices");
    ASSERT_TRUE(sheet.ok());
    auto bookSheet = std::dynamic_pointer_cast<xlsx::BookSheet>(*sheet);
    std::vector<xlsx::CellRange> cells;
    for (const auto& area : areas) {
      auto range = bookSheet->range(area, {});
      ASSERT_TRUE(range.ok());
      const auto& parts = std::static_pointer_cast<xlsx::BookRange>(*range)->cellAreas();
      cells.insert(cells.end(), parts.begin(), parts.end());
    }
    excel.start().select(std::make_shared<xlsx::BookRange>(bookSheet, cells));
  }
  void run(std::wstring_view command) {
    if (!app) {
      app = std::make_unique<CCorvaneApp>(host, session);
      ASSERT_EQ(session.loadApplication(*app), host::AcRx::kRetOK);
    }
    session.runCommand(command);
  }
  // The code of a field, with its markers.
  std::wstring code(host::AcDbObjectId field) {
    return this->field(field).getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers);
  }
};

}  // namespace corvane::testing
