#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>
#include <vector>

#include "dxf/tags/atomicfile.h"
#include "dxf/tags/document.h"
#include "support/dxftext.h"

namespace corvane::dxf {
namespace {

const std::vector<testing::TagText> kLine = {{0, "LINE"}, {5, "2A"}, {8, "0"}, {10, "1.0"}};

std::unique_ptr<Document> editedDrawing(const std::string& text) {
  auto read = Document::read(text);
  EXPECT_TRUE(read.document) << read.error;
  read.document->setText(*read.document->findHandle(0x2A), 2, L"changed");
  return std::move(read.document);
}

TEST(Save, ReplacesTheDrawingAndKeepsThePreviousOneAsBackup) {
  const testing::ScratchFolder folder;
  const auto path = folder.path() / "plan.dxf";
  const std::string original = testing::asciiDxf(testing::drawing("AC1015", kLine));
  testing::writeBytes(path, original);
  ::chmod(path.c_str(), 0640);

  auto doc = editedDrawing(original);
  const Status saved = doc->save(path);
  ASSERT_TRUE(saved.ok()) << saved.message();
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"plan.bak", "plan.dxf"}));
  EXPECT_EQ(testing::readBytes(folder.path() / "plan.bak"), original);
  const auto reread = Document::readFile(path);
  ASSERT_TRUE(reread.document) << reread.error;
  EXPECT_EQ(reread.document->text(reread.document->tags(*reread.document->findHandle(0x2A))[2]), L"changed");
  struct stat info {};
  ASSERT_EQ(::stat(path.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0640u);

  // A second save makes the first result the backup.
  const std::string first = testing::readBytes(path);
  ASSERT_TRUE(doc->save(path, SaveOptions{FileFormat::Binary}).ok());
  EXPECT_EQ(testing::readBytes(folder.path() / "plan.bak"), first);
  EXPECT_EQ(testing::readBytes(path).substr(0, 18), "AutoCAD Binary DXF");

  // A new file has nothing to back up.
  ASSERT_TRUE(doc->save(folder.path() / "copy.dxf").ok());
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "copy.bak"));
}

TEST(Save, AFailedWriteLeavesTheDrawingAsItWasAndNoTemporaryFile) {
  const std::string original = testing::asciiDxf(testing::drawing("AC1015", kLine));
  const std::uint64_t limits[] = {0, 1, 100, original.size() - 1};
  for (const std::uint64_t limit : limits) {
    SCOPED_TRACE(limit);
    const testing::ScratchFolder folder;
    const auto path = folder.path() / "plan.dxf";
    testing::writeBytes(path, original);
    auto doc = editedDrawing(original);
    SaveOptions options;
    options.failAfterBytes = limit;
    const Status saved = doc->save(path, options);
    EXPECT_FALSE(saved.ok());
    EXPECT_NE(saved.message().find("No space left on device"), std::string::npos) << saved.message();
    EXPECT_EQ(testing::readBytes(path), original);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"plan.dxf"}));
  }
}

TEST(Save, AnUncommittedFileIsRemovedAndTheTargetUntouched) {
  const testing::ScratchFolder folder;
  const auto path = folder.path() / "plan.dxf";
  testing::writeBytes(path, "old");
  {
    AtomicFile file(path);
    ASSERT_TRUE(file.open().ok());
    ASSERT_TRUE(file.write("new contents"));
    EXPECT_TRUE(std::filesystem::exists(file.temporaryPath()));
    EXPECT_EQ(file.temporaryPath().parent_path(), folder.path());
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"plan.dxf"}));
  EXPECT_EQ(testing::readBytes(path), "old");
}

TEST(Save, IntoAMissingFolderFailsWithTheReason) {
  const testing::ScratchFolder folder;
  auto doc = editedDrawing(testing::asciiDxf(testing::drawing("AC1015", kLine)));
  const Status saved = doc->save(folder.path() / "no" / "plan.dxf");
  EXPECT_FALSE(saved.ok());
  EXPECT_NE(saved.message().find("cannot create a temporary file next to"), std::string::npos) << saved.message();
  EXPECT_NE(saved.message().find("No such file or directory"), std::string::npos) << saved.message();
}

TEST(Save, BackupNamesReplaceTheExtension) {
  const std::pair<const char*, const char*> cases[] = {
      {"a/plan.dxf", "a/plan.bak"}, {"plan", "plan.bak"}, {"a.b/plan.v2.dxf", "a.b/plan.v2.bak"}};
  for (const auto& [target, backup] : cases) EXPECT_EQ(AtomicFile::backupPath(target), backup);
}

}  // namespace
}  // namespace corvane::dxf
