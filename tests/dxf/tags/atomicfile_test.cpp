#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "core/atomicfile.h"
#include "dxf/tags/document.h"
#include "dxf/tags/filesink.h"
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

TEST(Save, AnUncommittedFileIsRemovedAndTheTargetUntouched) {
  const testing::ScratchFolder folder;
  const auto path = folder.path() / "plan.dxf";
  testing::writeBytes(path, "old");
  {
    FileSink file(path);
    ASSERT_TRUE(file.open().ok());
    ASSERT_TRUE(file.write("new contents"));
    EXPECT_TRUE(std::filesystem::exists(file.temporaryPath()));
    EXPECT_EQ(file.temporaryPath().parent_path(), folder.path());
  }
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"plan.dxf"}));
  EXPECT_EQ(testing::readBytes(path), "old");
}

TEST(Save, BackupNamesReplaceTheExtension) {
  const std::pair<const char*, const char*> cases[] = {
      {"a/plan.dxf", "a/plan.bak"}, {"plan", "plan.bak"}, {"a.b/plan.v2.dxf", "a.b/plan.v2.bak"}};
  for (const auto& [target, backup] : cases) EXPECT_EQ(FileSink::backupPath(target), backup);
}

// A save of the edited drawing into a folder prepared as the row says, and what it must leave:
// the drawing, its backup and nothing else, whether it succeeded or not.
enum class Bytes { kNone, kOld, kNew, kUnrelated };

struct Situation {
  const char* name;
  std::function<void(const std::filesystem::path& folder)> prepare;
  std::string target = "plan.dxf";  // saved to, in the folder
  bool replaceReadOnly = false;
  std::uint64_t failAfterBytes = UINT64_MAX;
  bool failsForRootToo = true;  // root writes into read-only folders regardless
  std::string message = "";     // part of the failure's message; empty for a save that succeeds
  Status::Cause cause = Status::Cause::kOther;
  std::string drawing = "plan.dxf";  // where the drawing really is
  Bytes drawingBytes = Bytes::kNone;
  std::string backup = "plan.bak";  // none to check when empty
  Bytes backupBytes = Bytes::kNone;
  std::vector<std::string> tree = {};
  std::vector<std::string> removed = {};  // the left-overs the save said it removed
  unsigned mode = 0644;  // the drawing's permissions afterwards
};

void PrintTo(const Situation& situation, std::ostream* out) { *out << situation.name; }

const std::string kOld = testing::asciiDxf(testing::drawing("AC1015", kLine));
const std::string kUnrelated = "someone else's\n";

void put(const std::filesystem::path& file, const std::string& bytes, unsigned mode = 0644) {
  testing::writeBytes(file, bytes);
  ::chmod(file.c_str(), mode);
}

void makeFolder(const std::filesystem::path& folder) { std::filesystem::create_directories(folder); }

class SaveMeets : public ::testing::TestWithParam<Situation> {};

TEST_P(SaveMeets, TheFileSystemAndLosesNothing) {
  const Situation& c = GetParam();
  if (!c.failsForRootToo && ::geteuid() == 0) GTEST_SKIP() << "root writes into a read-only folder all the same";
  const testing::ScratchFolder folder;
  c.prepare(folder.path());
  auto doc = editedDrawing(kOld);
  StringSink fresh;
  ASSERT_TRUE(doc->write(fresh).ok());
  SaveOptions options;
  options.replaceReadOnly = c.replaceReadOnly;
  options.failAfterBytes = c.failAfterBytes;
  std::vector<std::string> removed;
  options.leftoverRemoved = [&](const std::filesystem::path& file) {
    EXPECT_EQ(file.parent_path(), std::filesystem::path(folder.path() / c.drawing).parent_path());
    removed.push_back(file.filename().string());
  };
  const Status saved = doc->save(folder.path() / c.target, options);
  // Whatever the row did to the folder's permissions, the scratch folder must go afterwards.
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
    if (!entry.is_symlink() && entry.is_directory()) ::chmod(entry.path().c_str(), 0755);
  }

  EXPECT_EQ(saved.ok(), c.message.empty()) << saved.message();
  EXPECT_NE(saved.message().find(c.message), std::string::npos) << saved.message();
  EXPECT_EQ(saved.cause(), c.cause);
  const auto expected = [&](Bytes bytes) {
    switch (bytes) {
      case Bytes::kOld: return kOld;
      case Bytes::kNew: return fresh.data;
      case Bytes::kUnrelated: return kUnrelated;
      case Bytes::kNone: break;
    }
    return std::string();
  };
  EXPECT_TRUE(testing::readBytes(folder.path() / c.drawing) == expected(c.drawingBytes)) << "the drawing";
  if (!c.backup.empty()) {
    EXPECT_TRUE(testing::readBytes(folder.path() / c.backup) == expected(c.backupBytes)) << "the backup";
  }
  EXPECT_EQ(folder.tree(), c.tree);
  EXPECT_EQ(removed, c.removed);
  struct stat info {};
  if (::stat((folder.path() / c.drawing).c_str(), &info) == 0) {
    EXPECT_EQ(info.st_mode & 0777, c.mode);
  }
}

// The save makes and replaces only the drawing and its backup: a name ending in ".bak" is its
// own backup's name, so it gets none; what stands in the backup's place is kept unless the
// save can replace it with the drawing's previous contents.
const Situation kSituations[] = {
    {.name = "APreviousDrawingBecomesTheBackupWithItsPermissionsKept",
     .prepare = [](auto f) { put(f / "plan.dxf", kOld, 0640); }, .drawingBytes = Bytes::kNew,
     .backupBytes = Bytes::kOld, .tree = {"plan.bak", "plan.dxf"}, .mode = 0640},
    {.name = "ANameEndingInBak", .prepare = [](auto f) { put(f / "plan.bak", kOld); }, .target = "plan.bak",
     .drawing = "plan.bak", .drawingBytes = Bytes::kNew, .backup = "", .tree = {"plan.bak"}},
    {.name = "ABackupNameTakenByAFolder",
     .prepare = [](auto f) { put(f / "plan.dxf", kOld); makeFolder(f / "plan.bak"); },
     .message = "cannot keep the backup", .drawingBytes = Bytes::kOld, .backup = "", .tree = {"plan.bak/", "plan.dxf"}},
    {.name = "ABackupNameTakenByAnUnrelatedFile",
     .prepare = [](auto f) { put(f / "plan.dxf", kOld); put(f / "plan.bak", kUnrelated); },
     .drawingBytes = Bytes::kNew, .backupBytes = Bytes::kOld, .tree = {"plan.bak", "plan.dxf"}},
    {.name = "ABackupThatIsAHardLinkOfTheDrawing",
     .prepare =
         [](auto f) {
           put(f / "plan.dxf", kOld);
           std::filesystem::create_hard_link(f / "plan.dxf", f / "plan.bak");
         },
     .drawingBytes = Bytes::kNew, .backupBytes = Bytes::kOld, .tree = {"plan.bak", "plan.dxf"}},
    {.name = "ATargetThatIsAFolder", .prepare = [](auto f) { makeFolder(f / "out"); put(f / "out.bak", kUnrelated); },
     .target = "out", .message = "/out' is a folder", .drawing = "out.bak", .drawingBytes = Bytes::kUnrelated,
     .backup = "", .tree = {"out.bak", "out/"}},
    {.name = "AMissingFolder", .prepare = [](auto) {}, .target = "no/plan.dxf", .message = "No such file or directory",
     .drawing = "no/plan.dxf", .backup = "", .tree = {}},
    {.name = "AReadOnlyDrawing", .prepare = [](auto f) { put(f / "plan.dxf", kOld, 0444); },
     .message = "plan.dxf' is read-only", .cause = Status::Cause::kReadOnly, .drawingBytes = Bytes::kOld, .backup = "",
     .tree = {"plan.dxf"}, .mode = 0444},
    {.name = "AReadOnlyDrawingReplacedWhenAsked", .prepare = [](auto f) { put(f / "plan.dxf", kOld, 0444); },
     .replaceReadOnly = true, .drawingBytes = Bytes::kNew, .backupBytes = Bytes::kOld, .tree = {"plan.bak", "plan.dxf"},
     .mode = 0444},
    {.name = "AReadOnlyFolder",
     .prepare = [](auto f) { put(f / "in" / "plan.dxf", kOld); ::chmod((f / "in").c_str(), 0555); },
     .target = "in/plan.dxf", .failsForRootToo = false, .message = "cannot write in the folder",
     .drawing = "in/plan.dxf", .drawingBytes = Bytes::kOld, .backup = "", .tree = {"in/", "in/plan.dxf"}},
    {.name = "ASymbolicLink",
     .prepare =
         [](auto f) {
           put(f / "real" / "plan.dxf", kOld);
           makeFolder(f / "links");
           std::filesystem::create_symlink("../real/plan.dxf", f / "links" / "plan.dxf");
         },
     .target = "links/plan.dxf", .drawing = "real/plan.dxf", .drawingBytes = Bytes::kNew, .backup = "real/plan.bak",
     .backupBytes = Bytes::kOld,
     .tree = {"links/", "links/plan.dxf -> ../real/plan.dxf", "real/", "real/plan.bak", "real/plan.dxf"}},
    {.name = "ALinkToAMissingFile",
     .prepare = [](auto f) { std::filesystem::create_symlink("made.dxf", f / "plan.dxf"); }, .drawing = "made.dxf",
     .drawingBytes = Bytes::kNew, .backup = "", .tree = {"made.dxf", "plan.dxf -> made.dxf"}},
    {.name = "ALinkToItself", .prepare = [](auto f) { std::filesystem::create_symlink("plan.dxf", f / "plan.dxf"); },
     .message = "Too many levels of symbolic links", .backup = "", .tree = {"plan.dxf -> plan.dxf"}},
    {.name = "AFullDisk",
     .prepare =
         [](auto f) {
           put(f / "plan.dxf", kOld);
           put(f / "plan.bak", kUnrelated);
           put(f / ".plan.dxf.saving-AbC123", "cut sh");
         },
     .failAfterBytes = 100, .message = "No space left on device", .drawingBytes = Bytes::kOld,
     .backupBytes = Bytes::kUnrelated, .tree = {".plan.dxf.saving-AbC123", "plan.bak", "plan.dxf"}},
    {.name = "LeftOversOfKilledSaves",
     .prepare =
         [](auto f) {
           put(f / "plan.dxf", kOld);
           for (const char* name : {".plan.dxf.saving-AbC123", ".plan.dxf.saving-zz9ZZ9", ".plan.dxf.saving-AbC12",
                                    ".plan.dxf.saving-AbC1234", ".plan.dxf.saving-AbC_12", ".plan.bak.saving-AbC123",
                                    "plan.dxf.saving-AbC123"}) {
             put(f / name, "cut sh");
           }
           makeFolder(f / ".plan.dxf.saving-Folder");
         },
     .drawingBytes = Bytes::kNew, .backupBytes = Bytes::kOld,
     .tree = {".plan.bak.saving-AbC123", ".plan.dxf.saving-AbC12", ".plan.dxf.saving-AbC1234",
              ".plan.dxf.saving-AbC_12", ".plan.dxf.saving-Folder/", "plan.bak", "plan.dxf", "plan.dxf.saving-AbC123"},
     .removed = {".plan.dxf.saving-AbC123", ".plan.dxf.saving-zz9ZZ9"}},
};

INSTANTIATE_TEST_SUITE_P(Save, SaveMeets, ::testing::ValuesIn(kSituations),
                         [](const auto& row) { return std::string(row.param.name); });

// Once the new contents are on disk the previous drawing becomes the backup, and then the new
// file replaces the drawing. A commit that stops between the two, or whose last rename fails,
// puts the old backup back (or none, where there was none).
TEST(Save, ACommitStoppedBeforeTheLastRenameLeavesEveryFileAsItWas) {
  struct Case {
    const char* what;
    bool hadBackup;
    std::function<bool(const std::filesystem::path& folder)> beforeRename;
    std::string message;
    std::vector<std::string> tree;
  } const cases[] = {
      {"stopped", true, [](auto) { return false; }, "the write was stopped", {"plan.bak", "plan.dxf"}},
      {"stopped, without a backup before", false, [](auto) { return false; }, "the write was stopped", {"plan.dxf"}},
      {"the drawing turned into a folder", true,
       [](auto f) {
         std::filesystem::remove(f / "plan.dxf");
         std::filesystem::create_directory(f / "plan.dxf");
         return true;
       },
       "cannot replace", {"plan.bak", "plan.dxf/"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const testing::ScratchFolder folder;
    const auto path = folder.path() / "plan.dxf";
    testing::writeBytes(path, "old");
    if (c.hadBackup) testing::writeBytes(folder.path() / "plan.bak", "older");
    core::AtomicFile file(path);
    core::AtomicFile::Options options;
    options.backup = folder.path() / "plan.bak";
    ASSERT_TRUE(file.open(options)) << file.error();
    ASSERT_TRUE(file.write("new"));
    file.beforeRename([&] { return c.beforeRename(folder.path()); });
    EXPECT_FALSE(file.commit());
    EXPECT_NE(file.error().find(c.message), std::string::npos) << file.error();
    if (std::filesystem::is_regular_file(path)) {
      EXPECT_EQ(testing::readBytes(path), "old");
    }
    EXPECT_EQ(testing::readBytes(folder.path() / "plan.bak"), c.hadBackup ? "older" : "");
    EXPECT_EQ(folder.tree(), c.tree);
  }
}

// A save killed at that moment leaves the drawing whole and a backup of it; the next save
// removes what the killed one left and keeps the drawing it replaces as the backup.
TEST(Save, ASaveKilledBeforeTheLastRenameLeavesAWholeDrawingAndItsBackup) {
  const testing::ScratchFolder folder;
  const auto path = folder.path() / "plan.dxf";
  testing::writeBytes(path, "old");
  testing::writeBytes(folder.path() / "plan.bak", "older");
  core::AtomicFile::Options options;
  options.backup = folder.path() / "plan.bak";
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    core::AtomicFile file(path);
    file.beforeRename([]() -> bool { ::_exit(0); });
    ::_exit(file.open(options) && file.write("new") && file.commit() ? 2 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_EQ(testing::readBytes(path), "old");
  EXPECT_EQ(testing::readBytes(folder.path() / "plan.bak"), "old");
  EXPECT_EQ(folder.names().size(), 4u) << "the new file and the old backup, hidden";

  core::AtomicFile file(path);
  ASSERT_TRUE(file.open(options) && file.write("newer") && file.commit()) << file.error();
  EXPECT_EQ(testing::readBytes(path), "newer");
  EXPECT_EQ(testing::readBytes(folder.path() / "plan.bak"), "old");
  EXPECT_EQ(file.removedLeftovers().size(), 2u);
  EXPECT_EQ(folder.names(), (std::vector<std::string>{"plan.bak", "plan.dxf"}));
}

}  // namespace
}  // namespace corvane::dxf
