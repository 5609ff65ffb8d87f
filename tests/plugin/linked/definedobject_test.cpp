// Defined object fields: the text of an object of another drawing, read from its DXF file as
// the command-line program reads it, as few times as the drawing's file time allows.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "linkeddrawing.h"
#include "plugin/linked/asdkdefinedobjectevaluator.h"
#include "plugin/linked/definedobjectvalue.h"
#include "plugin/linked/linkedtimestamp.h"
#include "support/dxftext.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using host::AcDbField;
using testing::LinkedDrawing;
using testing::ScratchFolder;
using testing::setModified;
using testing::Shown;

std::wstring definedObject(const std::wstring& data) { return L"%<\\AcDefinedObj " + data + L">%"; }

// The handles of what a plan drawing holds.
struct Plan {
  std::wstring text, mtext, attribute, circle;
};

// Writes a plan drawing: the example drawing (which has block references with attributes)
// with a text, a multiline text and a circle added, and its first attribute set to "101".
Plan writePlan(const fs::path& file, const std::wstring& title) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf", host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  if (!loaded.drawing) return {};
  headless::Database& db = loaded.drawing->database();
  const auto handleOf = [&](host::AcDbObjectId id) { return host.handle(id).text(); };
  Plan plan;
  for (const auto id : db.objectIds()) {
    auto* attribute = db.get<headless::Attribute>(id);
    if (!attribute) continue;
    attribute->setHostText(L"101");
    plan.attribute = handleOf(id);
    break;
  }
  EXPECT_FALSE(plan.attribute.empty());
  plan.text = handleOf(db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, 0, 0}, 0.2, title)));
  plan.mtext = handleOf(db.appendEntity(
      std::make_unique<headless::MText>(host::AcGePoint3d{}, 0.2, L"{\\fArial|b1;North} wing\\Pphase 2")));
  plan.circle = handleOf(db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{0, 0, 0}, 1.0)));
  const dxf::Status saved = loaded.drawing->saveAs(file);
  EXPECT_TRUE(saved) << saved.message();
  return plan;
}

// The working drawing, reading other drawings as DXF files and counting the reads.
struct PlanReadingDrawing : LinkedDrawing {
  int reads = 0;
  PlanReadingDrawing() {
    host.setDrawingReader(
        [this](std::wstring_view path, host::AcDbHostApplicationServices::DatabaseHolder& read, std::wstring& reason) {
          ++reads;
          auto loaded = dxf::DrawingFile::load(headless::OsServices::localPath(path), host);
          if (!loaded.drawing) {
            reason = core::fromUtf8(loaded.error);
            return host::Acad::eBadDxfFile;
          }
          dxf::DrawingFile* drawing = loaded.drawing.release();
          read = host::AcDbHostApplicationServices::DatabaseHolder(&drawing->database(),
                                                                   [drawing](host::AcDbDatabase*) { delete drawing; });
          return host::Acad::eOk;
        });
  }
  std::vector<Shown> evaluateMany(const std::vector<std::wstring>& codes) {
    std::vector<host::AcDbObjectId> ids;
    for (const auto& code : codes) ids.push_back(addField(code));
    evaluateAll();
    std::vector<Shown> out;
    for (const auto id : ids) out.push_back(shown(id));
    return out;
  }
};

Shown success(std::wstring value) { return {AcDbField::kSuccess, std::move(value), L""}; }

TEST(DefinedObject, CodesAndTypeNames) {
  EXPECT_EQ(DefinedObjectCode(L"C:\\Site\\plan.v2.dxf", L"1F", L"Contents"),
            L"%<\\AcDefinedObj C:\\Site\\plan.v2.dxf|1F.Contents>%");
  EXPECT_EQ(DefinedObjectCode(L"plan.dxf", L"", L"Contents"), L"%<\\AcDefinedObj >%");
  const struct {
    const wchar_t* record;
    DefinedObjectReference parts;
  } records[] = {
      {L"C:\\Site\\plan.v2.dxf|1F.Contents", {L"C:\\Site\\plan.v2.dxf", L"1F", L"Contents"}},
      {L" \"plan.dxf|1F.Contents \t", {L"plan.dxf", L"1F", L"Contents"}},
      {L"|1F.Contents", {}},
      {L"plan.dxf|1F", {L"plan.dxf", L"", L""}},
      {L"plan.dxf|.Contents", {L"plan.dxf", L"", L""}},
      {L"plan.dxf|1F.", {L"plan.dxf", L"1F", L""}},
  };
  for (const auto& r : records) EXPECT_EQ(SplitDefinedObjectReference(r.record), r.parts) << core::toUtf8(r.record);

  const struct {
    const wchar_t* className;
    const wchar_t* name;
  } names[] = {{L"AcDbBlockReference", L"Block Reference"},
               {L"AcDbMText", L"M Text"},
               {L"AcDbText", L"Text"},
               {L"AcDbAttribute", L"Attribute"},
               {L"Custom", L"Custom"}};
  for (const auto& n : names) EXPECT_EQ(DefinedObjectTypeName(n.className), n.name) << core::toUtf8(n.className);
}

TEST(DefinedObject, ShowsTheObjectsTextOrWhatIsWrong) {
  PlanReadingDrawing d;
  const Plan plan = writePlan(d.folder / "plan.dxf", L"Site plan");
  fs::create_directory(d.folder / "plans");
  ScratchFolder::write(d.folder / "broken.dxf", "not a drawing\n");
  const std::wstring path = d.path("plan.dxf");
  const std::wstring at = path + L"|";

  const std::vector<std::wstring> codes = {
      definedObject(L"|" + plan.text + L".Contents"),
      definedObject(at + plan.text),
      definedObject(at + plan.text + L"."),
      definedObject(d.path("gone.dxf") + L"|" + plan.text + L".Contents"),
      definedObject(at + plan.text + L".Contents"),
      definedObject(at + plan.mtext + L".Contents"),
      definedObject(at + plan.attribute + L".TextString"),
      definedObject(at + plan.circle + L".Contents"),
      definedObject(L"plan.dxf|" + plan.text + L".Contents"),
      definedObject(d.path("plans") + L"|" + plan.text + L".Contents"),
  };
  const std::vector<Shown> expected = {
      success(L"Invalid drawing path."),
      success(L"Invalid object handle."),
      success(L"Invalid property."),
      success(L"Cannot find " + d.path("gone.dxf") + L"."),
      success(L"Site plan"),
      success(L"North wing\nphase 2"),
      success(L"101"),
      success(L"Unsupported object and property."),
      success(L"Site plan"),  // beside the working drawing
      success(L"Failed to read dwg: it is not a file."),
  };
  EXPECT_EQ(d.evaluateMany(codes), expected);
  // Five fields over four objects of the plan: the plan was read once.
  EXPECT_EQ(d.reads, 1);

  // A drawing that does not read fails its own field, with the reader's reason; the others
  // of the batch still update.
  const auto shown = d.evaluateMany(
      {definedObject(d.path("broken.dxf") + L"|1F.Contents"), definedObject(at + plan.mtext + L".Contents")});
  const std::wstring prefix = L"Failed to read dwg: ";
  EXPECT_EQ(shown[0].value.substr(0, prefix.size()), prefix) << core::toUtf8(shown[0].value);
  EXPECT_GT(shown[0].value.size(), prefix.size() + 1);
  EXPECT_EQ(shown[0].value.back(), L'.');
  EXPECT_EQ(shown[1], success(L"North wing\nphase 2"));
}

TEST(DefinedObject, TheOtherDrawingIsReadAgainWhenItsFileTimeChanges) {
  PlanReadingDrawing d;
  const fs::path file = d.folder / "plan.dxf";
  const Plan plan = writePlan(file, L"Site plan");
  setModified(file, 0);
  const std::wstring at = d.path("plan.dxf") + L"|";
  const auto title = d.addField(definedObject(at + plan.text + L".Contents"));
  const auto room = d.addField(definedObject(at + plan.attribute + L".TextString"));
  d.evaluateAll();
  EXPECT_EQ(d.shown(title).value, L"Site plan");
  EXPECT_EQ(d.shown(room).value, L"101");
  EXPECT_EQ(d.reads, 1);
  EXPECT_EQ(ReadTimeStamp(d.field(title)), d.system.fileStatus(d.path("plan.dxf")).modified);

  // Written again with the same handles; within half a second of the old time it is the same file.
  writePlan(file, L"Site plan, revised");
  setModified(file, 400);
  d.evaluateAll();
  EXPECT_EQ(d.shown(title).value, L"Site plan");
  EXPECT_EQ(d.reads, 1);

  setModified(file, 600);
  d.evaluateAll();
  EXPECT_EQ(d.shown(title).value, L"Site plan, revised");
  EXPECT_EQ(d.shown(room).value, L"101");
  EXPECT_EQ(d.reads, 2);
}

TEST(DefinedObject, TheWorkingDrawingItselfIsReadFromItsOpenDatabase) {
  PlanReadingDrawing d;
  // The file on disk is no drawing at all: reading it would fail.
  ScratchFolder::write(d.folder / "site.dxf", "not a drawing");
  const auto text = d.addText(L"Level 2");
  const std::wstring handle = d.host.handle(text).text();
  const auto byPath = d.addField(definedObject(d.path("site.dxf") + L"|" + handle + L".Contents"));
  const auto byName = d.addField(definedObject(L"./site.dxf|" + handle + L".Contents"));
  d.evaluateAll();
  EXPECT_EQ(d.shown(byPath), success(L"Level 2"));
  EXPECT_EQ(d.shown(byName), success(L"Level 2"));
  EXPECT_EQ(d.reads, 0);
  EXPECT_TRUE(d.field(byPath).xData(kTimeStampApp).empty());

  // The open database's present text, not one kept from before.
  {
    host::AcDbObjectPointer<host::AcDbObject> open(d.host, text, host::AcDb::kForWrite);
    dynamic_cast<headless::TextHost&>(*open.object()).setHostText(L"Level 3");
  }
  d.evaluateAll();
  EXPECT_EQ(d.shown(byPath).value, L"Level 3");
  EXPECT_EQ(d.reads, 0);
}

}  // namespace
}  // namespace corvane
