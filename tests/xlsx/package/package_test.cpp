#include "xlsx/package/package.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zip.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/scratchfolder.h"
#include "xlsx/package/relationships.h"

namespace corvane::xlsx {
namespace {

namespace fs = std::filesystem;
using testing::ScratchFolder;

const std::string kRelsNs = "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"";
const std::string kRelType = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";

// The smallest workbook that readers accept, one sheet with 42 in A1, in archive order.
const std::vector<std::pair<std::string, std::string>> kParts = {
    {"[Content_Types].xml",
     "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
     "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
     "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
     "<Override PartName=\"/xl/workbook.xml\" "
     "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
     "<Override PartName=\"/xl/worksheets/sheet1.xml\" "
     "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/></Types>"},
    {"_rels/.rels", "<Relationships " + kRelsNs + "><Relationship Id=\"rId1\" Type=\"" + kRelType +
                        "officeDocument\" Target=\"xl/workbook.xml\"/></Relationships>"},
    {"xl/workbook.xml",
     "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
     "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
     "<sheets><sheet name=\"Data\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>"},
    {"xl/_rels/workbook.xml.rels", "<Relationships " + kRelsNs + "><Relationship Id=\"rId1\" Type=\"" + kRelType +
                                       "worksheet\" Target=\"worksheets/sheet1.xml\"/></Relationships>"},
    {"xl/worksheets/sheet1.xml",
     "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
     "<sheetData><row r=\"1\"><c r=\"A1\"><v>42</v></c></row></sheetData></worksheet>"},
};

bool run(const std::string& command) {
  return std::system(command.c_str()) == 0;
}

bool hasOpenpyxl() {
  static const bool has = run("/usr/bin/python3 -c 'import openpyxl' 2>/dev/null");
  return has;
}

// Writes kParts as files under `folder` and zips them with the zip tool and `flags`.
void zipParts(const fs::path& folder, const fs::path& book, const std::string& flags) {
  for (const auto& [name, bytes] : kParts) ScratchFolder::write(folder / "parts" / name, bytes);
  ASSERT_TRUE(run("cd " + (folder / "parts").string() + " && zip -q -X " + flags + " -r " + book.string() + " ."));
}

Package freshPackage() {
  Package package;
  for (const auto& [name, bytes] : kParts) package.write(name, bytes);
  return package;
}

std::string mustRead(const Package& package, const std::string& part) {
  std::string error;
  const auto bytes = package.read(part, error);
  EXPECT_TRUE(bytes) << error;
  return bytes.value_or("");
}

// The worksheets of the workbook, found by following relationships from the package root.
std::vector<std::string> worksheets(const Package& package) {
  std::string error;
  const auto root = Relationships::parse(mustRead(package, Relationships::partFor("")), error);
  EXPECT_TRUE(root) << error;
  if (!root || root->byType("/officeDocument").size() != 1) return {};
  const auto book = Relationships::resolve("", root->byType("/officeDocument")[0]->target);
  EXPECT_TRUE(book && package.has(*book));
  const auto rels = Relationships::parse(mustRead(package, Relationships::partFor(*book)), error);
  EXPECT_TRUE(rels) << error;
  std::vector<std::string> out;
  for (const auto* sheet : rels ? rels->byType("/worksheet") : std::vector<const Relationship*>()) {
    const auto part = Relationships::resolve(*book, sheet->target);
    EXPECT_TRUE(part && package.has(*part)) << sheet->target;
    if (part) out.push_back(*part);
  }
  return out;
}

struct Writer {
  const char* name;
  bool python;
  std::function<void(const fs::path& folder, const fs::path& book)> make;
  size_t sheets;
};

const Writer kWriters[] = {
    {"openpyxl", true,
     [](const fs::path&, const fs::path& book) {
       ASSERT_TRUE(
           run("/usr/bin/python3 -c 'import openpyxl, sys; from openpyxl.comments import Comment; "
               "wb = openpyxl.Workbook(); ws = wb.active; ws[\"A1\"] = 42; "
               "ws[\"A1\"].comment = Comment(\"note\", \"me\"); wb.create_sheet(\"Two\")[\"B2\"] = \"x\"; "
               "wb.save(sys.argv[1])' " +
               book.string()));
     },
     2},
    {"zip tool, deflated with folder entries", false,
     [](const fs::path& folder, const fs::path& book) { zipParts(folder, book, ""); }, 1},
    {"zip tool, stored", false, [](const fs::path& folder, const fs::path& book) { zipParts(folder, book, "-0 -D"); },
     1},
    {"made from nothing", false,
     [](const fs::path&, const fs::path& book) {
       std::string error;
       ASSERT_TRUE(freshPackage().saveAs(book, "", error)) << error;
     },
     1},
};

struct StoredEntry {
  std::string name, raw;
  zip_uint32_t crc = 0;
  zip_uint16_t method = 0;
};

// Every entry of a zip file as stored, compressed bytes and all, read with libzip directly.
std::vector<StoredEntry> storedEntries(const fs::path& file) {
  int code = 0;
  zip_t* zip = zip_open(file.c_str(), ZIP_RDONLY, &code);
  EXPECT_NE(zip, nullptr) << file << ": " << code;
  std::vector<StoredEntry> out;
  for (zip_int64_t i = 0; zip && i < zip_get_num_entries(zip, 0); ++i) {
    zip_stat_t st;
    zip_stat_index(zip, static_cast<zip_uint64_t>(i), 0, &st);
    StoredEntry entry{st.name, std::string(st.comp_size, '\0'), st.crc, st.comp_method};
    zip_file_t* raw = zip_fopen_index(zip, static_cast<zip_uint64_t>(i), ZIP_FL_COMPRESSED);
    EXPECT_EQ(zip_fread(raw, entry.raw.data(), entry.raw.size()), static_cast<zip_int64_t>(st.comp_size));
    zip_fclose(raw);
    out.push_back(std::move(entry));
  }
  if (zip) zip_discard(zip);
  return out;
}

// Workbooks of other writers open, their sheets are found by their relationships, and a save
// after one sheet changed leaves every other entry as stored, readable by openpyxl.
TEST(Package, SavingChangesOnlyThePartWritten) {
  for (const auto& writer : kWriters) {
    SCOPED_TRACE(writer.name);
    if (writer.python && !hasOpenpyxl()) continue;
    const ScratchFolder folder;
    const auto book = folder / "book.xlsx";
    writer.make(folder.path(), book);
    std::string error;
    auto package = Package::open(book, error);
    ASSERT_TRUE(package) << error;
    EXPECT_FALSE(package->changed());
    for (const auto& name : package->partNames()) EXPECT_FALSE(name.ends_with('/')) << "a folder entry is no part";
    EXPECT_EQ(package->save(error), ScratchFolder::read(book)) << "an unchanged package saves as read";
    const auto sheets = worksheets(*package);
    ASSERT_EQ(sheets.size(), writer.sheets);
    std::string xml = mustRead(*package, sheets[0]);
    const auto at = xml.find("<v>42</v>");
    ASSERT_NE(at, std::string::npos) << xml;
    xml.replace(at, 9, "<v>43</v>");
    package->write(sheets[0], xml);
    const auto saved = folder / "saved.xlsx";
    ASSERT_TRUE(package->saveAs(saved, "", error)) << error;

    const auto before = storedEntries(book);
    const auto after = storedEntries(saved);
    ASSERT_EQ(before.size(), after.size());
    for (size_t i = 0; i < before.size(); ++i) {
      ASSERT_EQ(after[i].name, before[i].name) << "entries keep their order";
      if (before[i].name == sheets[0]) continue;
      EXPECT_EQ(after[i].crc, before[i].crc) << before[i].name;
      EXPECT_EQ(after[i].method, before[i].method) << before[i].name;
      EXPECT_TRUE(after[i].raw == before[i].raw) << before[i].name << " was stored again";
    }
    const auto reopened = Package::open(saved, error);
    ASSERT_TRUE(reopened) << error;
    EXPECT_EQ(mustRead(*reopened, sheets[0]), xml);

    if (!hasOpenpyxl()) continue;
    const auto value = folder / "a1.txt";
    ASSERT_TRUE(
        run("/usr/bin/python3 -c 'import openpyxl, sys; wb = openpyxl.load_workbook(sys.argv[1]); "
            "open(sys.argv[2], \"w\").write(str(wb.worksheets[0][\"A1\"].value))' " +
            saved.string() + " " + value.string()));
    EXPECT_EQ(ScratchFolder::read(value), "43");
  }
  if (!hasOpenpyxl()) GTEST_SKIP() << "python3-openpyxl is not installed: its workbook and checks were left out";
}

TEST(Package, EditsKeepTheOrderOfTheArchive) {
  std::string error;
  const auto base = Package::fromBytes(freshPackage().save(error).value_or(""), error);
  ASSERT_TRUE(base) << error;
  const std::vector<std::string> order = {"[Content_Types].xml", "_rels/.rels", "xl/workbook.xml",
                                          "xl/_rels/workbook.xml.rels", "xl/worksheets/sheet1.xml"};
  ASSERT_EQ(base->partNames(), order);
  struct Case {
    const char* name;
    std::function<void(Package&)> edit;
    std::vector<std::string> names;
  } const cases[] = {
      {"replaced in place", [](Package& p) { p.write("xl/workbook.xml", "<a/>"); }, order},
      {"names compare without case", [](Package& p) { p.write("XL/Workbook.XML", "<a/>"); }, order},
      {"added at the end",
       [](Package& p) { p.write("customXml/item1.xml", "<a/>"); },
       {order[0], order[1], order[2], order[3], order[4], "customXml/item1.xml"}},
      {"removed", [](Package& p) { p.remove("_rels/.rels"); }, {order[0], order[2], order[3], order[4]}},
      {"removed and written again",
       [](Package& p) {
         p.remove("xl/workbook.xml");
         p.write("xl/workbook.xml", "<a/>");
       },
       order},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Package package = *base;
    c.edit(package);
    EXPECT_TRUE(package.changed());
    EXPECT_EQ(package.partNames(), c.names);
    const auto saved = package.save(error);
    ASSERT_TRUE(saved) << error;
    const auto again = Package::fromBytes(*saved, error);
    ASSERT_TRUE(again) << error;
    EXPECT_EQ(again->partNames(), c.names);
    for (const auto& name : c.names) EXPECT_EQ(mustRead(*again, name), mustRead(package, name)) << name;
    EXPECT_EQ(mustRead(*base, "xl/workbook.xml"), kParts[2].second) << "the copy edited was a copy";
  }
}

TEST(Package, RefusesToSaveWhatCouldNotBeOpened) {
  const std::pair<std::function<void(Package&)>, const char*> cases[] = {
      {[](Package& p) { p.remove("[Content_Types].xml"); }, "no [Content_Types].xml"},
      {[](Package& p) { p.write("xl//a.xml", ""); }, "not a valid part name"},
      {[](Package& p) { p.write("../a.xml", ""); }, "not a valid part name"},
      {[](Package& p) { p.write("/a.xml", ""); }, "not a valid part name"},
      {[](Package& p) { p.write("xl/", ""); }, "not a valid part name"},
  };
  for (const auto& [edit, message] : cases) {
    Package package = freshPackage();
    edit(package);
    std::string error;
    EXPECT_FALSE(package.save(error));
    EXPECT_NE(error.find(message), std::string::npos) << error;
  }
}

std::string oleFile(const std::string& stream) {
  std::string bytes = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + std::string(504, '\0');
  for (const char c : stream) bytes += std::string{c, '\0'};
  return bytes;
}

TEST(Package, BadFilesAreRefusedWithTheirReason) {
  struct Case {
    const char* name;
    std::function<void(const fs::path& folder, const fs::path& book)> make;
    const char* message;
  } const cases[] = {
      {"missing", [](const fs::path&, const fs::path&) {}, "was not found"},
      {"a folder", [](const fs::path&, const fs::path& book) { fs::create_directory(book); }, "is a folder"},
      {"empty", [](const fs::path&, const fs::path& book) { ScratchFolder::write(book, ""); }, "it is empty"},
      {"text", [](const fs::path&, const fs::path& book) { ScratchFolder::write(book, "a,b\n1,2\n"); },
       "is not a workbook: it is not a zip archive"},
      {"truncated",
       [](const fs::path& folder, const fs::path& book) {
         zipParts(folder, book, "");
         const std::string whole = ScratchFolder::read(book);
         ScratchFolder::write(book, whole.substr(0, whole.size() / 2));
       },
       "damaged zip archive"},
      {"encrypted workbook",
       [](const fs::path&, const fs::path& book) { ScratchFolder::write(book, oleFile("EncryptedPackage")); },
       "password-protected"},
      {"old workbook", [](const fs::path&, const fs::path& book) { ScratchFolder::write(book, oleFile("Workbook")); },
       ".xls"},
      {"encrypted entries", [](const fs::path& folder, const fs::path& book) { zipParts(folder, book, "-P secret"); },
       "is encrypted"},
      {"no content types",
       [](const fs::path& folder, const fs::path& book) {
         zipParts(folder, book, "");
         ASSERT_TRUE(run("zip -q -d " + book.string() + " '\\[Content_Types\\].xml'"));
       },
       "has no [Content_Types].xml"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const ScratchFolder folder;
    const auto book = folder / "book.xlsx";
    c.make(folder.path(), book);
    std::string error;
    EXPECT_FALSE(Package::open(book, error));
    EXPECT_NE(error.find(c.message), std::string::npos) << error;
    EXPECT_NE(error.find(book.string()), std::string::npos) << error;
  }
}

TEST(Package, NamesAreDataNeverPaths) {
  const ScratchFolder folder;
  const auto book = folder / "deep" / "book.xlsx";
  fs::create_directories(book.parent_path());
  ASSERT_TRUE(
      run("/usr/bin/python3 -c 'import sys, zipfile; z = zipfile.ZipFile(sys.argv[1], \"w\"); "
          "z.writestr(\"[Content_Types].xml\", \"<Types/>\"); z.writestr(\"../../escaped.txt\", \"a\"); "
          "z.writestr(\"/absolute.txt\", \"b\"); "
          "z.writestr(\"_rels/.rels\", sys.argv[2]); z.close()' " +
          book.string() + " '<Relationships " + kRelsNs + "><Relationship Id=\"rId1\" Type=\"" + kRelType +
          "officeDocument\" Target=\"../../escaped.txt\"/></Relationships>'"));
  std::string error;
  auto package = Package::open(book, error);
  ASSERT_TRUE(package) << error;
  EXPECT_EQ(mustRead(*package, "../../escaped.txt"), "a");
  const auto rels = Relationships::parse(mustRead(*package, "_rels/.rels"), error);
  ASSERT_TRUE(rels) << error;
  EXPECT_EQ(Relationships::resolve("", rels->all().at(0).target), std::nullopt);

  package->write("_rels/.rels", "<changed/>");
  ASSERT_TRUE(package->saveAs(book, "", error)) << error;
  EXPECT_EQ(folder.tree(), (std::vector<std::string>{"deep/", "deep/book.xlsx"}));
  const auto again = Package::open(book, error);
  ASSERT_TRUE(again) << error;
  EXPECT_EQ(mustRead(*again, "/absolute.txt"), "b");
}

TEST(Package, DamagedDataIsAnErrorOfThatPartAlone) {
  const ScratchFolder folder;
  const auto book = folder / "book.xlsx";
  zipParts(folder.path(), book, "-0");
  std::string bytes = ScratchFolder::read(book);
  const auto at = bytes.find("<v>42</v>");
  ASSERT_NE(at, std::string::npos);
  bytes[at + 3] = '7';
  std::string error;
  const auto package = Package::fromBytes(bytes, error);
  ASSERT_TRUE(package) << error;
  EXPECT_FALSE(package->read("xl/worksheets/sheet1.xml", error));
  EXPECT_NE(error.find("xl/worksheets/sheet1.xml"), std::string::npos) << error;
  EXPECT_NE(error.find("CRC"), std::string::npos) << error;
  EXPECT_EQ(mustRead(*package, "xl/workbook.xml"), kParts[2].second);
  EXPECT_FALSE(package->read("xl/absent.xml", error));
  EXPECT_NE(error.find("no part xl/absent.xml"), std::string::npos) << error;
}

TEST(Package, LargePartsAreStreamedInPieces) {
  std::mt19937 random(7);
  std::string big(3 << 20, '\0');
  for (auto& c : big) c = static_cast<char>('a' + random() % 26);
  Package fresh = freshPackage();
  fresh.write("xl/media/big.bin", big);
  std::string error;
  const auto package = Package::fromBytes(fresh.save(error).value_or(""), error);
  ASSERT_TRUE(package) << error;

  std::string joined;
  size_t pieces = 0, largest = 0;
  ASSERT_TRUE(package->read(
      "xl/media/big.bin",
      [&](std::string_view chunk) {
        joined.append(chunk);
        largest = std::max(largest, chunk.size());
        return ++pieces > 0;
      },
      error))
      << error;
  EXPECT_TRUE(joined == big);
  EXPECT_LT(largest, big.size() / 8);

  pieces = 0;
  EXPECT_FALSE(package->read(
      "xl/media/big.bin", [&](std::string_view) { return ++pieces < 2; }, error));
  EXPECT_EQ(pieces, 2u);
  EXPECT_NE(error.find("stopped"), std::string::npos) << error;
}

// A save that fails leaves the workbook and its backup as they were, and no temporary file.
TEST(Package, SaveAsReplacesTheFileWholeOrNotAtAll) {
  std::mt19937 random(11);
  std::string noise(256 << 10, '\0');
  for (auto& c : noise) c = static_cast<char>(random());
  Package package = freshPackage();
  package.write("xl/media/noise.bin", noise);  // too big for the file-size limit below

  struct Case {
    const char* name;
    std::function<bool(const Package&, const fs::path& book, const fs::path& backup, std::string& error)> save;
    bool saved;
  } const cases[] = {
      {"saved",
       [](const Package& p, const fs::path& b, const fs::path& k, std::string& e) { return p.saveAs(b, k, e); }, true},
      {"nothing to save",
       [](const Package& p, const fs::path& b, const fs::path& k, std::string& e) {
         Package broken = p;
         broken.remove("[Content_Types].xml");
         return broken.saveAs(b, k, e);
       },
       false},
      {"disk full while writing",
       [](const Package& p, const fs::path& b, const fs::path& k, std::string& e) {
         const pid_t child = fork();
         if (child == 0) {
           signal(SIGXFSZ, SIG_IGN);
           const rlimit limit{16 << 10, 16 << 10};
           setrlimit(RLIMIT_FSIZE, &limit);
           std::string error;
           _exit(p.saveAs(b, k, error) ? 0 : 1);
         }
         int status = 0;
         waitpid(child, &status, 0);
         e = "the save in the child process failed";
         return WIFEXITED(status) && WEXITSTATUS(status) == 0;
       },
       false},
      {"folder not writable",
       [](const Package& p, const fs::path& b, const fs::path& k, std::string& e) {
         chmod(b.parent_path().c_str(), 0555);
         const bool saved = p.saveAs(b, k, e);
         chmod(b.parent_path().c_str(), 0755);
         return saved;
       },
       false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    if (std::string_view(c.name) == "folder not writable" && geteuid() == 0) continue;  // root writes anyway
    const ScratchFolder folder;
    const auto book = folder / "book.xlsx";
    const auto backup = folder / "book.bak";
    ScratchFolder::write(book, "the previous workbook");
    ScratchFolder::write(backup, "an older backup");
    std::string error;
    EXPECT_EQ(c.save(package, book, backup, error), c.saved) << error;
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"book.bak", "book.xlsx"}));
    if (c.saved) {
      EXPECT_EQ(ScratchFolder::read(backup), "the previous workbook");
      const auto again = Package::open(book, error);
      ASSERT_TRUE(again) << error;
      EXPECT_TRUE(mustRead(*again, "xl/media/noise.bin") == noise);
    } else {
      EXPECT_FALSE(error.empty());
      EXPECT_EQ(ScratchFolder::read(book), "the previous workbook");
      EXPECT_EQ(ScratchFolder::read(backup), "an older backup");
    }
  }
}

}  // namespace
}  // namespace corvane::xlsx
