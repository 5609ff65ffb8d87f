// Paths made absolute and relative by text alone, in both separator styles.
#include "core/filepath.h"

#include <gtest/gtest.h>

#include <string>

#include "core/utf8.h"

namespace corvane::core {
namespace {

TEST(FilePath, RelativeFolderAndAbsolute) {
  const struct {
    const wchar_t* path;
    bool relative;
    const wchar_t* folder;
  } paths[] = {
      {L"", true, L""},
      {L"a.txt", true, L""},
      {L"data/a.txt", true, L"data"},
      {L"..\\up\\a.txt", true, L"..\\up"},
      {L"\\Books\\a.xlsx", false, L"\\Books"},
      {L"/home/site/plan.dxf", false, L"/home/site"},
      {L"/plan.dxf", false, L"/"},
      {L"C:\\Books\\a.xlsx", false, L"C:\\Books"},
      {L"C:\\a.xlsx", false, L"C:\\"},
      {L"c:a.xlsx", false, L"c:"},
      {L"https://host/book.xlsx", false, L"https://host"},
  };
  for (const auto& p : paths) {
    EXPECT_EQ(isRelativePath(p.path), p.relative) << toUtf8(p.path);
    EXPECT_EQ(folderOf(p.path), p.folder) << toUtf8(p.path);
  }

  const struct {
    const wchar_t* folder;
    const wchar_t* path;
    const wchar_t* absolute;
  } joins[] = {
      {L"C:\\Books", L"data\\a.txt", L"C:\\Books\\data\\a.txt"},
      {L"C:\\Books\\", L"..\\x.txt", L"C:\\x.txt"},
      {L"C:\\", L"..\\..\\x.txt", L"C:\\x.txt"},            // nothing above the root: the root stays
      {L"C:/Books", L"sub\\a.txt", L"C:/Books/sub/a.txt"},  // separators follow the folder's
      {L"/home/site", L"./data/../a.txt", L"/home/site/a.txt"},
      {L"/", L"../a", L"/a"},
      {L"/home/site", L"/etc/./x/../y", L"/etc/y"},  // an absolute path is only tidied
      {L"/home/site", L"D:\\x.txt", L"D:\\x.txt"},
      {L"\\\\server\\share", L"..\\a.txt", L"\\\\server\\share\\a.txt"},
      {L"", L"a/../../b", L"../b"},  // with no folder a leading ".." has nowhere to go
  };
  for (const auto& j : joins) {
    EXPECT_EQ(absolutePath(j.folder, j.path), j.absolute) << toUtf8(j.folder) << " + " << toUtf8(j.path);
  }
}

TEST(FilePath, RelativePathToAndSamePath) {
  const struct {
    const wchar_t* from;
    const wchar_t* to;
    std::optional<std::wstring> relative;
  } cases[] = {
      {L"/site/a.dxf", L"/site/b.txt", L"./b.txt"},
      {L"/site/plans/a.dxf", L"/site/data/b.txt", L"../data/b.txt"},
      {L"/site/plans/a.dxf", L"/b.txt", L"../../b.txt"},
      {L"/site/a.dxf", L"/site/data/deep/b.txt", L"./data/deep/b.txt"},
      {L"C:\\Books\\a.dxf", L"c:\\books\\Data\\b.txt", L".\\Data\\b.txt"},  // names compare without case
      {L"C:\\Books\\plans\\a.dxf", L"C:\\Books\\data\\..\\b.txt", L"..\\b.txt"},
      {L"C:\\Books\\a.dxf", L"D:\\Books\\b.txt", std::nullopt},
      {L"site/a.dxf", L"/site/b.txt", std::nullopt},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(relativePathTo(c.from, c.to), c.relative) << toUtf8(c.from) << " -> " << toUtf8(c.to);
    // What comes back leads to the file again.
    if (c.relative) {
      EXPECT_TRUE(samePath(absolutePath(folderOf(c.from), *c.relative), absolutePath({}, c.to)));
    }
  }

  EXPECT_TRUE(samePath(L"C:\\Books\\A.xlsx", L"c:/books/a.XLSX"));
  EXPECT_FALSE(samePath(L"C:\\Books\\a.xlsx", L"C:\\Books\\a.xls"));
  EXPECT_FALSE(samePath(L"/site/a", L"/site/b"));
  EXPECT_FALSE(samePath(L"/site/a", L"/site.a"));
}

}  // namespace
}  // namespace corvane::core
