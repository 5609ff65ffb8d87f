#include "plugin/support/cregistry.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "headless/settings/registryfile.h"
#include "support/scratchfolder.h"

namespace corvane {
namespace {

using testing::ScratchFolder;

TEST(CRegistry, BeforeTheRootIsSetReadsGiveDefaultsAndWritesFail) {
  ScratchFolder folder;
  const auto path = folder / "registry.reg";
  // Settings stored already: a store that is not set up does not even read them.
  ScratchFolder::write(path,
                       "Windows Registry Editor Version 5.00\n\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n"
                       "\"EF_PathType\"=dword:00000001\n\"BlockCountSelWnd1Pt\"=\"1 2 3\"\n");
  const std::string before = ScratchFolder::read(path);
  headless::RegistryFile file(path);
  CRegistry registry(&file);
  EXPECT_FALSE(registry.isSetUp());
  EXPECT_EQ(registry.get(settings::kExcelFieldPathType), 0);
  EXPECT_EQ(registry.getInt(L"Corvane", L"EF_PathType", 0), 0);
  EXPECT_EQ(registry.get(settings::kBlockCountSelWnd1Pt), L"0 0 0");
  std::vector<std::uint8_t> data;
  EXPECT_FALSE(registry.getBinary(L"Corvane", L"Blob", data));
  EXPECT_TRUE(registry.valueNames(L"Corvane").empty());

  EXPECT_FALSE(registry.write(settings::kExcelFieldPathType, 1));
  EXPECT_FALSE(registry.writeString(L"Corvane", L"X", L"y"));
  EXPECT_FALSE(registry.writeBinary(L"Corvane", L"B", "ab", 2));
  EXPECT_FALSE(registry.removeValue(L"Corvane", L"EF_PathType"));
  EXPECT_FALSE(registry.removeSection(L"Corvane"));
  EXPECT_FALSE(registry.openSection(L"Corvane"));
  EXPECT_EQ(ScratchFolder::read(path), before);

  // Without any registry at all it is the same.
  CRegistry none;
  none.setRoot(host::RegistryHive::kCurrentUser, L"Halvek");
  EXPECT_FALSE(none.isSetUp());
  EXPECT_EQ(none.get(settings::kIncNestedBlock), 0);
  EXPECT_FALSE(none.writeInt(L"Corvane", L"IncNestedBlock", 1));
}

TEST(CRegistry, AbsentValuesGiveTheirDefaultsAndNothingIsMadeByReading) {
  ScratchFolder folder;
  const auto path = folder / "registry.reg";
  headless::RegistryFile file(path);
  CRegistry registry(&file);
  registry.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);
  ASSERT_TRUE(registry.isSetUp());

  struct IntCase {
    settings::IntSetting setting;
    int fallback;
  } const ints[] = {
      {settings::kIncNestedBlock, 0},          {settings::kExcelFieldPathType, 0},
      {settings::kWorkbooksManagerPathType, 0}, {settings::kMultiFieldsPathType, 0},
      {settings::kExportFieldPathType, 0},     {settings::kExportFieldMoveDirection, 0},
  };
  for (const auto& c : ints) {
    EXPECT_STREQ(c.setting.section, L"Corvane");
    EXPECT_EQ(registry.get(c.setting), c.fallback) << c.setting.name;
  }
  EXPECT_EQ(registry.get(settings::kBlockCountSelWnd1Pt), L"0 0 0");
  EXPECT_EQ(registry.get(settings::kBlockCountSelWnd2Pt), L"0 0 0");
  // The caller's own defaults for the values whose default is the caller's.
  EXPECT_EQ(registry.getInt(settings::kCorvane, settings::kBlockSource, 1), 1);
  EXPECT_EQ(registry.getString(settings::kCorvane, settings::kFirstCornerX, L"12.5"), L"12.5");
  EXPECT_EQ(registry.getString(settings::kExcelCellRecentFiles, L"File1", L""), L"");
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(CRegistry, WritesLandUnderTheMakersKeyAndReadBack) {
  ScratchFolder folder;
  const auto path = folder / "registry.reg";
  {
    headless::RegistryFile file(path);
    CRegistry registry(&file);
    registry.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);
    EXPECT_EQ(registry.keyPath(L""), L"Software\\Halvek");
    EXPECT_EQ(registry.keyPath(settings::kAreaField), L"Software\\Halvek\\Corvane\\AreaField");
    ASSERT_TRUE(registry.write(settings::kExcelFieldPathType, 1));
    ASSERT_TRUE(registry.write(settings::kBlockCountSelWnd2Pt, L"1.5 -2 0"));
    ASSERT_TRUE(registry.writeInt(settings::kAreaField, L"Negative", -7));
    ASSERT_TRUE(registry.writeBinary(settings::kCorvane, L"Blob", "\x00\xff", 2));
    ASSERT_TRUE(registry.writeString(settings::kDefinedObject, L"Wall", L"C:\\a.dwg|1F|LINE"));
  }
  EXPECT_EQ(ScratchFolder::read(path),
            "Windows Registry Editor Version 5.00\n\n"
            "[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane]\n"
            "\"EF_PathType\"=dword:00000001\n"
            "\"BlockCountSelWnd2Pt\"=\"1.5 -2 0\"\n"
            "\"Blob\"=hex:00,ff\n"
            "\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\AreaField]\n"
            "\"Negative\"=dword:fffffff9\n"
            "\n[HKEY_CURRENT_USER\\Software\\Halvek\\Corvane\\DefinedObject]\n"
            "\"Wall\"=\"C:\\\\a.dwg|1F|LINE\"\n");

  // A later session reads them back.
  headless::RegistryFile file(path);
  CRegistry registry(&file);
  registry.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);
  EXPECT_EQ(registry.get(settings::kExcelFieldPathType), 1);
  EXPECT_EQ(registry.get(settings::kBlockCountSelWnd2Pt), L"1.5 -2 0");
  EXPECT_EQ(registry.getInt(settings::kAreaField, L"negative", 0), -7);
  std::vector<std::uint8_t> data;
  ASSERT_TRUE(registry.getBinary(settings::kCorvane, L"Blob", data));
  EXPECT_EQ(data, (std::vector<std::uint8_t>{0x00, 0xFF}));
  EXPECT_EQ(registry.valueNames(settings::kCorvane),
            (std::vector<std::wstring>{L"EF_PathType", L"BlockCountSelWnd2Pt", L"Blob"}));
  // A value of another type than asked for gives the default.
  EXPECT_EQ(registry.getInt(settings::kCorvane, L"BlockCountSelWnd2Pt", 5), 5);
  EXPECT_EQ(registry.getString(settings::kCorvane, L"EF_PathType", L"d"), L"d");
  EXPECT_FALSE(registry.getBinary(settings::kCorvane, L"EF_PathType", data));

  EXPECT_TRUE(registry.removeValue(settings::kCorvane, L"EF_PathType"));
  EXPECT_FALSE(registry.removeValue(settings::kCorvane, L"EF_PathType"));
  EXPECT_EQ(registry.get(settings::kExcelFieldPathType), 0);
  EXPECT_TRUE(registry.removeSection(settings::kCorvane));
  EXPECT_EQ(registry.getString(settings::kDefinedObject, L"Wall", L"gone"), L"gone");  // with the sections below
  EXPECT_EQ(ScratchFolder::read(path), "Windows Registry Editor Version 5.00\n");
}

}  // namespace
}  // namespace corvane
