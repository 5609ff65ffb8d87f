#include "plugin/support/crecentfilelistex.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/printf.h"
#include "headless/settings/registryfile.h"
#include "support/scratchfolder.h"

namespace corvane {
namespace {

using testing::ScratchFolder;

std::wstring nth(int i) { return core::format(L"C:\\Books\\book%d.xlsx", i); }

TEST(CRecentFileListEx, TheMostRecentComesFirstAndTheTenthPushesOutTheOldest) {
  CRegistry registry;
  CRecentFileListEx list(registry, settings::kExcelCellRecentFiles);
  EXPECT_EQ(list.GetSize(), 9);
  for (int i = 1; i <= 9; ++i) list.Add(nth(i));
  EXPECT_EQ(list[0], nth(9));
  EXPECT_EQ(list[8], nth(1));
  list.Add(nth(10));
  EXPECT_EQ(list[0], nth(10));
  EXPECT_EQ(list[1], nth(9));
  EXPECT_EQ(list[8], nth(2));  // book1 fell out
  EXPECT_EQ(list.files().size(), 9u);
  for (const auto& file : list.files()) EXPECT_NE(file, nth(1));
  EXPECT_EQ(list[9], L"");
  EXPECT_EQ(list[-1], L"");
}

TEST(CRecentFileListEx, AddingAListedFileMovesItToTheFront) {
  CRegistry registry;
  CRecentFileListEx list(registry, settings::kTextFileRecentFiles);
  struct Step {
    const wchar_t* add;  // null: remove index 1
    std::vector<std::wstring> after;
  } const steps[] = {
      {L"a.txt", {L"a.txt"}},
      {L"b.txt", {L"b.txt", L"a.txt"}},
      {L"c.txt", {L"c.txt", L"b.txt", L"a.txt"}},
      {L"A.TXT", {L"A.TXT", L"c.txt", L"b.txt"}},  // the same file: moved, with the new spelling
      {L"", {L"A.TXT", L"c.txt", L"b.txt"}},        // an empty path is not listed
      {nullptr, {L"A.TXT", L"b.txt"}},
  };
  for (const auto& step : steps) {
    if (step.add) {
      list.Add(step.add);
    } else {
      list.Remove(1);
    }
    EXPECT_EQ(list.files(), step.after) << (step.add ? std::wstring(step.add) : L"remove");
  }
}

TEST(CRecentFileListEx, KeepsItsEntriesAsFileValues) {
  ScratchFolder folder;
  headless::RegistryFile file(folder / "registry.reg");
  CRegistry registry(&file);
  registry.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);
  registry.writeString(settings::kExcelCellRecentFiles, L"File3", L"stale");
  {
    CRecentFileListEx list(registry, settings::kExcelCellRecentFiles);
    list.Add(L"C:\\one.xlsx");
    list.Add(L"C:\\two.xlsx");
    ASSERT_TRUE(list.WriteList());
  }
  EXPECT_EQ(registry.valueNames(settings::kExcelCellRecentFiles), (std::vector<std::wstring>{L"File1", L"File2"}));
  EXPECT_EQ(registry.getString(settings::kExcelCellRecentFiles, L"File1", L""), L"C:\\two.xlsx");

  CRecentFileListEx again(registry, settings::kExcelCellRecentFiles);
  again.ReadList();
  EXPECT_EQ(again.files(), (std::vector<std::wstring>{L"C:\\two.xlsx", L"C:\\one.xlsx"}));
  // The other list is a section of its own.
  CRecentFileListEx other(registry, settings::kTextFileRecentFiles);
  other.ReadList();
  EXPECT_TRUE(other.files().empty());

  // A store that is not set up cannot keep the list.
  CRegistry notSetUp(&file);
  CRecentFileListEx unsaved(notSetUp, settings::kExcelCellRecentFiles);
  unsaved.Add(L"x");
  EXPECT_FALSE(unsaved.WriteList());
}

TEST(CRecentFileListEx, LongPathsAreShownAbbreviated) {
  struct Case {
    const wchar_t* path;
    const wchar_t* shown;
  } const cases[] = {
      {L"C:\\short\\book.xlsx", L"C:\\short\\book.xlsx"},
      {L"C:\\abcdefgh\\ijklmnop\\book.xlsx", L"C:\\abcdefgh\\ijklmnop\\book.xlsx"},  // 30 exactly
      {L"C:\\Projects\\2024\\Tower A\\Survey\\levels.xlsx", L"C:\\...\\Survey\\levels.xlsx"},
      {L"C:\\Projects\\2024\\Tower\\Survey\\lv.xlsx", L"C:\\...\\Tower\\Survey\\lv.xlsx"},
      {L"\\\\server\\share\\very long folder name\\book.xlsx", L"\\\\server\\share\\...\\book.xlsx"},
      {L"/home/someone/drawings/projects/site/book.xlsx", L"/.../projects/site/book.xlsx"},
      {L"C:\\Folder\\A workbook with a very long name.xlsx", L"A workbook with a very long..."},
      {L"C:\\Folder\\a workbook with long name.xlsx", L"a workbook with long name.xlsx"},
      {L"relative\\folders\\that\\go\\on\\and\\on\\book.xlsx", L"...\\go\\on\\and\\on\\book.xlsx"},
  };
  for (const auto& c : cases) {
    const std::wstring shown = abbreviatePath(c.path, 30);
    EXPECT_EQ(shown, c.shown);
    EXPECT_LE(shown.size(), 30u);
  }
  CRegistry registry;
  CRecentFileListEx list(registry, settings::kExcelCellRecentFiles);
  list.Add(L"C:\\Projects\\2024\\Tower A\\Survey\\levels.xlsx");
  EXPECT_EQ(list.GetDisplayName(0), L"C:\\...\\Survey\\levels.xlsx");
  EXPECT_EQ(list.GetDisplayName(1), L"");
}

}  // namespace
}  // namespace corvane
