// The update of the cells an export filled: notes read and split, fields grouped by drawing and
// evaluated there, values and "####" written back, and what is said along the way.
#include "plugin/workflows/updatefieldsinexcel.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/editor/osservices.h"
#include "plugin/fields/fieldreferences.h"
#include "plugin/linked/linkeddrawing.h"
#include "support/dxftext.h"
#include "support/editorsession.h"
#include "xlsx/bookapplication.h"

namespace corvane {
namespace {

using testing::LinkedDrawing;
using Options = UpdateFieldsInExcel::Options;
using Others = UpdateFieldsInExcel::OtherDrawings;
using Unreadable = UpdateFieldsInExcel::UnreadableDrawing;

// Another drawing on disk with one text, handle 1F.
void writeOtherDrawing(const std::filesystem::path& file, const std::string& text) {
  using dxf::testing::asciiDxf;
  testing::ScratchFolder::write(
      file, asciiDxf(dxf::testing::drawing(
                "AC1018", {{0, "TEXT"}, {5, "1F"}, {8, "0"}, {10, "0"}, {20, "0"}, {30, "0"}, {40, "1"}, {1, text}})));
}

const std::wstring kOtherCode = L"%<\\AcObjProp Object(%<\\_ObjHandle 1F>%).TextString>%";

// The working drawing, other drawings read from their DXF files, and a saved workbook.
struct NotedWorkbook : LinkedDrawing {
  host::AcDbObjectId text = addText(L"Hall 1");
  std::shared_ptr<host::ExcelWorkbook> book;

  NotedWorkbook() {
    host.setDrawingReader(
        [this](std::wstring_view file, host::AcDbHostApplicationServices::DatabaseHolder& read, std::wstring& reason) {
          auto loaded = dxf::DrawingFile::load(headless::OsServices::localPath(file), host);
          if (!loaded.drawing) {
            reason = core::fromUtf8(loaded.error);
            return host::Acad::eBadDxfFile;
          }
          dxf::DrawingFile* drawing = loaded.drawing.release();
          read = host::AcDbHostApplicationServices::DatabaseHolder(&drawing->database(),
                                                                   [drawing](host::AcDbDatabase*) { delete drawing; });
          return host::Acad::eOk;
        });
    book = *excel.start().addWorkbook();
    EXPECT_TRUE(book->saveAs(path("book.xlsx")));
  }
  std::wstring currentCode() const { return ObjIdToHandle(const_cast<headless::HostApplication&>(host), idCode()); }
  std::wstring idCode() const {
    return core::format(L"%%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).TextString>%%", text.asOldId());
  }
  host::ExcelWorksheet& sheet() { return *book->activeSheet(); }
  void note(const wchar_t* cell, const std::wstring& noteText, const wchar_t* value = L"old") {
    auto range = *sheet().range(cell);
    EXPECT_TRUE(range->setValues({{host::ExcelValue(std::wstring(value))}}));
    EXPECT_TRUE(range->addComment(noteText));
  }
  std::wstring valueAt(const wchar_t* cell) { return *(*sheet().range(cell))->text(); }
  std::optional<std::wstring> noteAt(const wchar_t* cell) { return *(*sheet().range(cell))->comment(); }
  UpdateFieldsInExcel::Summary update(Options options = {Others::kAll, Unreadable::kLeaveCells}) {
    EXPECT_TRUE(book->save());  // so that dirty() tells what the update changed
    UpdateFieldsInExcel run(sources(), nullptr, nullptr, options);
    EXPECT_TRUE(run.Update(*book, sheet()));
    return run.summary();
  }
  std::size_t count(const std::wstring& what) const {
    std::size_t n = 0;
    for (std::size_t at = printed.find(what); at != std::wstring::npos; at = printed.find(what, at + 1)) ++n;
    return n;
  }
};

TEST(SplitExcelFieldNote, SplitsAtTheFirstBar) {
  struct Case {
    std::wstring text;
    bool ok;
    std::wstring drawing, code;
  } const cases[] = {
      {L"C:\\plans\\a.dxf|%<\\AcVar Date>%", true, L"C:\\plans\\a.dxf", L"%<\\AcVar Date>%"},
      {L"../a.dxf|%<\\AcDefinedObj b.dxf|30.Contents>%", true, L"../a.dxf", L"%<\\AcDefinedObj b.dxf|30.Contents>%"},
      {L"checked by hand", false, L"", L""},
      {L"|%<\\AcVar Date>%", false, L"", L""},
      {L"a.dxf|", false, L"", L""},
      {L"  | ", false, L"", L""},
  };
  for (const auto& c : cases) {
    std::wstring drawing, code;
    EXPECT_EQ(SplitExcelFieldNote(c.text, drawing, code), c.ok) << core::toUtf8(c.text);
    EXPECT_EQ(drawing, c.drawing);
    EXPECT_EQ(code, c.code);
  }
}

TEST(UpdateFieldsInExcel, WritesTheValuesOfTheCurrentDrawing) {
  NotedWorkbook d;
  // Full and relative paths to the same drawing, one code in two cells.
  d.note(L"A1", d.path("site.dxf") + L"|" + d.currentCode());
  d.note(L"A2", L"./site.dxf|" + d.currentCode());
  d.note(L"B5", L"site.dxf|%<\\AcObjProp Object(%<\\_ObjHandle FFFFF>%).TextString>%");
  d.db.get<headless::Text>(d.text)->setTextString(L"Hall 2");
  const auto summary = d.update();
  EXPECT_EQ(d.valueAt(L"A1"), L"Hall 2");
  EXPECT_EQ(d.valueAt(L"A2"), L"Hall 2");
  EXPECT_EQ(d.valueAt(L"B5"), L"####");
  EXPECT_EQ(summary.cellsWritten, 3);
  EXPECT_EQ(summary.fieldsFailed, 1);
  EXPECT_NE(d.printed.find(L"\nError: Cannot evaluate the field %<\\AcObjProp Object(%<\\_ObjHandle FFFFF>%)"
                           L".TextString>% in " +
                           d.path("site.dxf") + L". Code: "),
            std::wstring::npos)
      << core::toUtf8(d.printed);
  EXPECT_EQ(d.noteAt(L"A2"), L"./site.dxf|" + d.currentCode());
  EXPECT_EQ(d.count(L"\nSuccessfully update the value(s) in book.xlsx."), 1u);
}

TEST(UpdateFieldsInExcel, LeavesWhatItCannotUseAsItWas) {
  struct Case {
    const char* name;
    const wchar_t* note;  // in A1; empty: no note at all
    std::wstring expected;
    int cells;
    int broken;
  } const cases[] = {
      {"no notes", L"", L"old", 0, 0},
      {"a note of the user's", L"checked by hand", L"old", 0, 1},
      {"no drawing", L"|%<\\AcVar Date>%", L"old", 0, 1},
      {"no code", L"site.dxf|", L"old", 0, 1},
  };
  for (const auto& c : cases) {
    NotedWorkbook d;
    if (*c.note)
      d.note(L"A1", c.note);
    else
      EXPECT_TRUE((*d.sheet().range(L"A1"))->setValues({{host::ExcelValue(std::wstring(L"old"))}}));
    const auto summary = d.update();
    EXPECT_EQ(d.valueAt(L"A1"), c.expected) << c.name;
    EXPECT_EQ(summary.cellsWritten, c.cells) << c.name;
    EXPECT_EQ(static_cast<int>(summary.brokenNotes.size()), c.broken) << c.name;
    EXPECT_FALSE(d.book->dirty()) << c.name;
    if (*c.note) {
      EXPECT_EQ(d.noteAt(L"A1"), std::wstring(c.note)) << c.name;
    }
    EXPECT_EQ(d.count(L"\nSuccessfully update the value(s) in book.xlsx."), 1u) << c.name;
  }
}

TEST(UpdateFieldsInExcel, ReadsOtherDrawingsFromTheirFiles) {
  struct Case {
    const char* name;
    Options options;
    const char* file;  // the other drawing's file, or a broken one
    std::wstring expected;
    int failedReads;
  } const cases[] = {
      {"updated", {Others::kAll, Unreadable::kLeaveCells}, "other.dxf", L"Block C", 0},
      {"left out", {Others::kNone, Unreadable::kLeaveCells}, "other.dxf", L"old", 0},
      {"broken, left", {Others::kAll, Unreadable::kLeaveCells}, "broken.dxf", L"old", 1},
      {"broken, marked", {Others::kAll, Unreadable::kMarkCells}, "broken.dxf", L"####", 1},
      {"missing, marked", {Others::kAll, Unreadable::kMarkCells}, "missing.dxf", L"####", 1},
  };
  for (const auto& c : cases) {
    NotedWorkbook d;
    writeOtherDrawing(d.folder / "other.dxf", "Block C");
    testing::ScratchFolder::write(d.folder / "broken.dxf", "0\nSECTION\nthis is not a drawing\n");
    d.note(L"A1", d.path(c.file) + L"|" + kOtherCode);
    d.note(L"C1", d.path(c.file) + L"|" + kOtherCode);
    d.note(L"A2", L"site.dxf|" + d.currentCode());
    const auto summary = d.update(c.options);
    EXPECT_EQ(d.valueAt(L"A1"), c.expected) << c.name;
    EXPECT_EQ(d.valueAt(L"C1"), c.expected) << c.name;
    EXPECT_EQ(d.valueAt(L"A2"), L"Hall 1") << c.name;
    EXPECT_EQ(static_cast<int>(summary.unreadableDrawings.size()), c.failedReads) << c.name;
    EXPECT_EQ(d.count(L"\nFailed to read " + d.path(c.file) + L": "), static_cast<std::size_t>(c.failedReads))
        << c.name << core::toUtf8(d.printed);
  }
}

// One code noted for two drawings whose values differ: each cell gets its own drawing's value,
// though the fields of the other drawing are evaluated while the current one is the working one.
TEST(UpdateFieldsInExcel, EvaluatesEachCodeInItsOwnDrawing) {
  NotedWorkbook d;
  auto tags = dxf::testing::drawing("AC1018", {{0, "TEXT"}, {5, "1F"}, {8, "0"}, {10, "0"}, {20, "0"}, {30, "0"},
                                                {40, "1"}, {1, "Block C"}});
  const std::vector<dxf::testing::TagText> precision = {{9, "$LUPREC"}, {70, "2"}};
  tags.insert(tags.begin() + 8, precision.begin(), precision.end());  // behind $HANDSEED
  testing::ScratchFolder::write(d.folder / "other.dxf", dxf::testing::asciiDxf(tags));
  const std::wstring code = L"%<\\AcVar LUPREC>% %<\\AcVar Filename>%";
  d.note(L"A1", L"site.dxf|" + code);
  d.note(L"A2", L"other.dxf|" + code);
  d.note(L"A3", L"other.dxf|" + kOtherCode);
  const auto summary = d.update();
  EXPECT_EQ(d.valueAt(L"A1"), L"4 site.dxf");
  EXPECT_EQ(d.valueAt(L"A2"), L"2 other.dxf");
  EXPECT_EQ(d.valueAt(L"A3"), L"Block C");
  EXPECT_EQ(summary.fieldsFailed, 0) << core::toUtf8(d.printed);
}

// The command asks before it reads other drawings; No, and Enter, keep to the current one.
TEST(UpdateFieldsInExcelCommand, AsksForOtherDrawings) {
  struct Case {
    const wchar_t* answer;
    std::wstring expected;
  } const cases[] = {{L"Yes", L"Block C"}, {L"No", L"old"}, {L"", L"old"}};
  for (const auto& c : cases) {
    testing::EditorSession s(std::wstring(c.answer) + L"\n");
    s.db.setFilename(core::fromUtf8((s.folder / "site.dxf").string()));
    s.host.setDrawingReader(
        [&s](std::wstring_view file, host::AcDbHostApplicationServices::DatabaseHolder& read, std::wstring& reason) {
          auto loaded = dxf::DrawingFile::load(headless::OsServices::localPath(file), s.host);
          if (!loaded.drawing) {
            reason = core::fromUtf8(loaded.error);
            return host::Acad::eBadDxfFile;
          }
          dxf::DrawingFile* drawing = loaded.drawing.release();
          read = host::AcDbHostApplicationServices::DatabaseHolder(&drawing->database(),
                                                                   [drawing](host::AcDbDatabase*) { delete drawing; });
          return host::Acad::eOk;
        });
    writeOtherDrawing(s.folder / "other.dxf", "Block C");
    xlsx::BookAutomation excel;
    s.session.setExcel(&excel);
    auto book = *excel.start().addWorkbook();
    auto cell = *book->activeSheet()->range(L"A1");
    ASSERT_TRUE(cell->setValues({{host::ExcelValue(std::wstring(L"old"))}}));
    ASSERT_TRUE(cell->addComment(core::fromUtf8((s.folder / "other.dxf").string()) + L"|" + kOtherCode));
    CCorvaneApp app(s.host, s.session);
    ASSERT_EQ(s.session.loadApplication(app), host::AcRx::kRetOK);
    s.out.clear();
    s.session.runCommand(L"Corvane_Update_Fields_In_Excel");
    s.session.unloadApplication(app);
    EXPECT_EQ(*cell->text(), c.expected) << core::toUtf8(c.answer);
    EXPECT_NE(s.out.find(L"\nYour workbook has the fields of other drawings. Do you want to update them? "
                         L"[Yes/No]<No>: "),
              std::wstring::npos)
        << core::toUtf8(s.out);
    EXPECT_NE(s.out.find(L"\nSuccessfully update the value(s) in Book1."), std::wstring::npos);
  }
}

}  // namespace
}  // namespace corvane
