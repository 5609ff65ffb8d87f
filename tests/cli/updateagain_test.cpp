// Updating is what users do every day, again and again. Over the example and every sample
// drawing: an update, saved, reads back exactly as the database held it (every field with its
// code, children, objects, data and value, every text and table cell), and a second update of
// the saved drawing writes the same bytes.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/scratchfolder.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using host::AcDbObjectId;

std::wstring valueText(const host::AcValue& value) {
  std::ostringstream out;
  host::PrintTo(value, &out);
  return core::fromUtf8(out.str());
}

std::wstring handles(const headless::Database& db, const std::vector<AcDbObjectId>& ids) {
  std::wstring out;
  for (const auto id : ids) out += db.objects().handle(id).text() + L" ";
  return out;
}

// Whether an object is part of a table's drawing, its anonymous "*T" block.
bool drawsATable(const headless::Database& db, const host::AcDbObject& object) {
  const auto* block = db.get<headless::BlockTableRecord>(object.ownerId());
  return block && block->name().starts_with(L"*T");
}

// What a drawing holds that a save must keep, one line per field, text and cell, by handle.
// The texts of a table's drawing are left out: the save draws them from the table's cells.
std::vector<std::wstring> contentsOf(const headless::Database& db) {
  std::vector<std::wstring> lines;
  for (const AcDbObjectId id : db.objectIds()) {
    const host::AcDbObject* object = db.lookup(id);
    if (!object || object->isErased() || drawsATable(db, *object)) continue;
    const std::wstring handle = object->handle().text();
    if (const auto* field = dynamic_cast<const headless::Field*>(object)) {
      int error = 0;
      std::wstring message;
      const int status = field->evaluationStatus(&error, &message);
      host::AcValue value;
      field->getValue(value);
      lines.push_back(core::format(L"field %s in %s: %s | %s| %s| status %d %d %s | %s | %s", handle,
                                   db.objects().handle(field->ownerId()).text(),
                                   field->getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers),
                                   handles(db, field->children()), handles(db, field->objectIds()), status, error,
                                   message, valueText(value), field->getDisplayText()));
      for (const auto& [key, data] : field->dataSet())
        lines.push_back(core::format(L"field %s data %s: %s", handle, key, valueText(data)));
    } else if (const auto* text = dynamic_cast<const headless::TextHost*>(object)) {
      lines.push_back(core::format(L"text %s: %s", handle, text->hostText()));
    } else if (const auto* table = dynamic_cast<const headless::Table*>(object)) {
      for (int r = 0; r < table->numRows(); ++r) {
        for (int c = 0; c < table->numColumns(); ++c) {
          const headless::TableCell& cell = table->cell(r, c);
          lines.push_back(core::format(L"table %s cell %d,%d: %d %s | %s | field %s", handle, r, c,
                                       static_cast<int>(cell.type), cell.text, valueText(cell.value),
                                       db.objects().handle(cell.field).text()));
        }
      }
    }
  }
  return lines;
}

struct Updated {
  std::vector<std::wstring> contents;  // as the database held them after the save
  std::string bytes;                   // what the save wrote
};

// What `corvane update` does: every field evaluated on demand in one batch, then saved.
Updated update(const fs::path& drawing, const fs::path& saveTo) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(drawing, host);
  if (!loaded.drawing) {
    ADD_FAILURE() << drawing << ": " << loaded.error;
    return {};
  }
  headless::Database& db = loaded.drawing->database();
  host.setWorkingDatabase(&db);
  CCorvaneApp app(host);
  app.onInitialize();
  host.engine().evaluateFields(&db, {}, host::AcDbField::kDemand);
  app.onUnload();
  const dxf::Status saved = loaded.drawing->saveAs(saveTo);
  EXPECT_TRUE(saved) << saved.message();
  return {contentsOf(db), testing::ScratchFolder::read(saveTo)};
}

std::vector<std::wstring> contentsRead(const fs::path& drawing) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(drawing, host);
  if (!loaded.drawing) {
    ADD_FAILURE() << drawing << ": " << loaded.error;
    return {};
  }
  return contentsOf(loaded.drawing->database());
}

std::vector<fs::path> drawings() {
  std::vector<fs::path> out{fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf"};
  const fs::path samples = fs::path(CORVANE_SHARED_DIR) / "samples" / "dxf";
  if (fs::is_directory(samples)) {
    for (const auto& entry : fs::directory_iterator(samples))
      if (entry.path().extension() == ".dxf") out.push_back(entry.path());
  }
  return out;
}

TEST(UpdateAgain, ChangesNothingAndReadsBackAsHeld) {
  for (const fs::path& drawing : drawings()) {
    SCOPED_TRACE(drawing.filename().string());
    // Under one name throughout: a field may show the drawing's name.
    testing::ScratchFolder folder;
    const fs::path copy = folder / drawing.filename().string();
    const Updated first = update(drawing, copy);
    EXPECT_EQ(contentsRead(copy), first.contents);
    const Updated second = update(copy, copy);
    EXPECT_EQ(second.contents, first.contents);
    EXPECT_TRUE(second.bytes == first.bytes) << "the second update changed the file";
  }
}

}  // namespace
}  // namespace corvane
