// corvane cells: a workbook's cells as Excel shows them, from the command line.
#include <gtest/gtest.h>

#include "core/utf8.h"
#include "support/clirun.h"
#include "xlsx/bookautomation.h"

namespace corvane {
namespace {

using testing::RunFolder;
using testing::runCorvane;

// Two sheets: values of each kind, a note on an empty cell and a formatted date.
std::string makeWorkbook(const RunFolder& folder) {
  xlsx::BookAutomation automation;
  auto excel = *automation.createObject();
  auto book = *excel->addWorkbook();
  auto sheet = *book->worksheet(1);
  EXPECT_TRUE((*sheet->range(L"A1"))->setValues(
      {{std::wstring(L"Item"), 12.5, true}, {std::wstring(L"Tab\there"), host::ExcelCellError{L"#N/A"}}}));
  EXPECT_TRUE((*sheet->range(L"C3"))->addComment(L"look\nhere"));
  const std::string path = (folder / "book.xlsx").string();
  EXPECT_TRUE(book->saveAs(core::fromUtf8(path)));
  return path;
}

TEST(CellsCommand, ListsEveryCellOrARange) {
  RunFolder folder;
  const std::string book = makeWorkbook(folder);
  auto all = runCorvane({"cells", book}, folder);
  EXPECT_EQ(all.exitCode, 0) << all.err;
  EXPECT_EQ(all.out,
            "Sheet1!A1\tItem\t\tItem\t\n"
            "Sheet1!B1\t12.5\t\t12.5\t\n"
            "Sheet1!C1\tTRUE\t\tTRUE\t\n"
            "Sheet1!A2\tTab\\u0009here\t\tTab\\u0009here\t\n"
            "Sheet1!B2\t#N/A\t\t#N/A\t\n"
            "Sheet1!C3\t\t\t\tlook\\u000Ahere\n");

  auto some = runCorvane({"cells", book, "sheet1!B1:C3", "--json"}, folder);
  EXPECT_EQ(some.exitCode, 0) << some.err;
  EXPECT_EQ(some.out,
            "[\n"
            "  {\"sheet\": \"Sheet1\", \"address\": \"B1\", \"value\": 12.5, \"formula\": \"\", \"text\": \"12.5\", "
            "\"note\": \"\"},\n"
            "  {\"sheet\": \"Sheet1\", \"address\": \"C1\", \"value\": true, \"formula\": \"\", \"text\": \"TRUE\", "
            "\"note\": \"\"},\n"
            "  {\"sheet\": \"Sheet1\", \"address\": \"B2\", \"value\": {\"error\": \"#N/A\"}, \"formula\": \"\", "
            "\"text\": \"#N/A\", \"note\": \"\"},\n"
            "  {\"sheet\": \"Sheet1\", \"address\": \"C3\", \"value\": null, \"formula\": \"\", \"text\": \"\", "
            "\"note\": \"look\\nhere\"}\n"
            "]\n");
}

TEST(CellsCommand, RefusesWhatItCannotList) {
  RunFolder folder;
  const std::string book = makeWorkbook(folder);
  testing::ScratchFolder::write(folder / "text.xlsx", "plain text");
  const struct {
    std::vector<std::string> args;
    int exitCode;
    const char* says;
  } cases[] = {
      {{"cells", (folder / "missing.xlsx").string()}, 1, "missing.xlsx"},
      {{"cells", (folder / "text.xlsx").string()}, 1, "text.xlsx is not a workbook"},
      {{"cells", book, "Costs"}, 1, "has no sheet \"Costs\" (its sheets: Sheet1)"},
      {{"cells", book, "Sheet1!B2:"}, 2, "\"B2:\" is not a cell or range"},
      {{"cells"}, 2, "WORKBOOK is required"},
  };
  for (const auto& c : cases) {
    auto run = runCorvane(c.args, folder);
    EXPECT_EQ(run.exitCode, c.exitCode) << c.args.back();
    EXPECT_NE(run.err.find(c.says), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "") << c.args.back();
  }
}

}  // namespace
}  // namespace corvane
