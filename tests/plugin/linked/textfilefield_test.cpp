// Text file fields over real files: how their bytes read, what a file that cannot be read
// shows, where a relative path leads and when a file is read again.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "core/datetimetext.h"
#include "core/utf8.h"
#include "linkeddrawing.h"
#include "plugin/linked/linkedtimestamp.h"
#include "support/scratchfolder.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using host::AcDbField;
using testing::LinkedDrawing;
using testing::ScratchFolder;
using testing::setModified;
using testing::Shown;

std::wstring textField(const std::wstring& path) { return L"%<\\TextField " + path + L">%"; }

TEST(TextFileField, ReadsEachEncoding) {
  LinkedDrawing d;
  const struct {
    const char* name;
    std::string bytes;
    std::wstring text;
  } files[] = {
      {"utf8.txt", "Caf\xC3\xA9 \xE2\x82\xAC 5", L"Caf\u00E9 \u20AC 5"},
      {"utf8bom.txt", "\xEF\xBB\xBFGrid A\r\nGrid B", L"Grid A\r\nGrid B"},
      {"utf16le.txt", std::string("\xFF\xFEh\0\xE9\0=\xD8\0\xDE", 10), L"h\u00E9\U0001F600"},
      {"utf16be.txt", std::string("\xFE\xFF\0h\0i", 6), L"\u6800\u6900"},  // the bytes as they stand
      {"latin1.txt", "Caf\xE9 \xA3", L"Caf\u00E9 \u00A3"},
      {"zero.txt", std::string("ab\0cd", 5), L"ab"},
  };
  std::vector<host::AcDbObjectId> ids;
  for (const auto& f : files) {
    ScratchFolder::write(d.folder / f.name, f.bytes);
    ids.push_back(d.addField(textField(d.path(f.name))));
  }
  d.evaluateAll();
  for (std::size_t i = 0; i < ids.size(); ++i) {
    EXPECT_EQ(d.shown(ids[i]), (Shown{AcDbField::kSuccess, files[i].text, L""})) << files[i].name;
  }
}

TEST(TextFileField, WhatCannotBeReadShowsWhy) {
  LinkedDrawing d;
  const std::wstring missing = d.path("gone/notes.txt");
  EXPECT_EQ(d.evaluate(textField(missing)), (Shown{AcDbField::kSuccess, missing + L" is not found.", L""}));

  fs::create_directory(d.folder / "notes");
  const std::wstring folder = d.path("notes");
  const Shown shownFolder = d.evaluate(textField(folder));
  EXPECT_EQ(shownFolder.status, AcDbField::kInvalidCode);
  EXPECT_EQ(shownFolder.message, L"Cannot read " + folder + L": It is a folder.");

  // A pipe that nobody writes to is refused at once rather than waited on.
  ASSERT_EQ(::mkfifo((d.folder / "pipe").c_str(), 0600), 0);
  const std::wstring pipe = d.path("pipe");
  const Shown shownPipe = d.evaluate(textField(pipe));
  EXPECT_EQ(shownPipe.status, AcDbField::kInvalidCode);
  EXPECT_EQ(shownPipe.message, L"Cannot read " + pipe + L": It is not a plain file.");

  // An empty file leaves the text read before.
  const fs::path notes = d.folder / "notes.txt";
  ScratchFolder::write(notes, "Grid A");
  setModified(notes, 0);
  const auto id = d.addField(textField(d.path("notes.txt")));
  d.evaluateAll();
  EXPECT_EQ(d.shown(id).value, L"Grid A");
  ScratchFolder::write(notes, "");
  setModified(notes, 10'000);
  d.evaluateAll();
  EXPECT_EQ(d.shown(id), (Shown{AcDbField::kInvalidCode, L"Grid A", d.path("notes.txt") + L" is empty."}));
}

TEST(TextFileField, RelativePathsLeadFromTheDrawingsFolder) {
  LinkedDrawing d;
  ScratchFolder::write(d.folder / "data" / "a.txt", "beside the drawing");
  // The current folder has a file of the same name that must not be read, and stays as it is.
  ScratchFolder elsewhere;
  ScratchFolder::write(elsewhere / "data" / "a.txt", "in the current folder");
  const fs::path before = fs::current_path();
  fs::current_path(elsewhere.path());
  const Shown relative = d.evaluate(textField(L"data/a.txt"));
  const Shown dotted = d.evaluate(textField(L"./data/../data\\a.txt"));
  const fs::path after = fs::current_path();
  fs::current_path(before);
  EXPECT_EQ(after, elsewhere.path());
  EXPECT_EQ(relative, (Shown{AcDbField::kSuccess, L"beside the drawing", L""}));
  EXPECT_EQ(dotted, relative);

  // A drawing never saved has no folder to lead from.
  d.db.setFilename(L"");
  const Shown unsaved = d.evaluate(textField(L"data/a.txt"));
  EXPECT_EQ(unsaved.status, AcDbField::kInvalidCode);
  EXPECT_EQ(unsaved.message, L"data/a.txt is relative to a drawing that has no folder.");
}

TEST(TextFileField, ReadsAgainOnlyWhenTheFileTimeChanges) {
  LinkedDrawing d;
  const fs::path notes = d.folder / "notes.txt";
  ScratchFolder::write(notes, "first");
  setModified(notes, 0);
  const auto id = d.addField(textField(d.path("notes.txt")));
  d.evaluateAll();
  EXPECT_EQ(d.shown(id).value, L"first");
  const auto stamp = ReadTimeStamp(d.field(id));
  ASSERT_TRUE(stamp);
  EXPECT_EQ(stamp, d.system.fileStatus(d.path("notes.txt")).modified);

  // Other text under the same time is not read: the field keeps what it had.
  ScratchFolder::write(notes, "second");
  setModified(notes, 400);
  d.evaluateAll();
  EXPECT_EQ(d.shown(id), (Shown{AcDbField::kSuccess, L"first", L""}));

  setModified(notes, 600);
  d.evaluateAll();
  EXPECT_EQ(d.shown(id).value, L"second");
  EXPECT_EQ(core::dateTimeText(*ReadTimeStamp(d.field(id))),
            core::dateTimeText(*d.system.fileStatus(d.path("notes.txt")).modified));
}

}  // namespace
}  // namespace corvane
