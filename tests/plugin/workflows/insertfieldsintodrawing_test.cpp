// The insert fields command run from a script over drawings saved as DXF files: the fields
// that matching attributes get, the tag that only differs in case, a missing drawing in the
// batch, the open drawing changed in place, and a save that fails.
#include "plugin/workflows/insertfieldsintodrawing.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/attribute.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/field.h"
#include "headless/db/texthost.h"
#include "headless/editor/osservices.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/editorsession.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using Holder = host::AcDbHostApplicationServices::DatabaseHolder;

const fs::path kExample = fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf";
const std::wstring kCode = L"%<\\AcVar Filename>%";

// The attributes of a drawing by tag: their texts and the codes of their fields ("" for none).
struct Stamp {
  std::wstring text;
  std::wstring code;
};
std::vector<Stamp> stamps(headless::Database& db, std::wstring_view tag) {
  std::vector<Stamp> found;
  for (const auto id : db.objectIds()) {
    auto* attribute = db.get<headless::Attribute>(id);
    if (!attribute || attribute->tag() != tag) continue;
    const host::AcDbObjectId field = headless::fieldOf(db, id);
    found.push_back({attribute->hostText(),
                     field.isNull() ? L"" : db.get<headless::Field>(field)->getFieldCode(host::AcDbField::kFieldCode)});
  }
  return found;
}

// The open drawing holds a reference of "Door" with a WIDTH attribute; others are read from
// and saved to DXF files.
struct Rig : testing::EditorSession {
  std::unique_ptr<CCorvaneApp> app;
  std::map<host::AcDbDatabase*, dxf::DrawingFile*> files;
  bool failSaves = false;
  host::AcDbObjectId openWidth;

  explicit Rig(std::wstring_view script) : EditorSession(script) {
    db.setFilename(path("open.dxf"));
    const auto block = db.addRecord(std::make_unique<headless::BlockTableRecord>(L"Door"));
    const auto reference = db.appendEntity(
        std::make_unique<headless::BlockReference>(block, host::AcGePoint3d{}, host::AcGeScale3d{}, 0.0));
    openWidth =
        db.addObject(std::make_unique<headless::Attribute>(L"WIDTH", L"700", host::AcGePoint3d{}, 0.2, 0), reference);
    host.setDrawingReader([this](std::wstring_view file, Holder& read, std::wstring& reason) {
      auto loaded = dxf::DrawingFile::load(headless::OsServices::localPath(file), host);
      if (!loaded.drawing) {
        reason = core::fromUtf8(loaded.error);
        return host::Acad::eBadDxfFile;
      }
      dxf::DrawingFile* drawing = loaded.drawing.release();
      files[&drawing->database()] = drawing;
      read = Holder(&drawing->database(), [this, drawing](host::AcDbDatabase* gone) {
        files.erase(gone);
        delete drawing;
      });
      return host::Acad::eOk;
    });
    host.setDrawingWriter([this](host::AcDbDatabase& saved, std::wstring_view file, std::wstring& reason) {
      if (failSaves) {
        reason = L"the disk is full";
        return host::Acad::eFileAccessErr;
      }
      const dxf::Status status = files.at(&saved)->saveAs(headless::OsServices::localPath(file));
      if (status) return host::Acad::eOk;
      reason = core::fromUtf8(status.message());
      return host::Acad::eFileAccessErr;
    });
  }
  ~Rig() {
    if (app) session.unloadApplication(*app);
  }
  std::wstring path(const std::string& name) const { return (folder / name).wstring(); }
  // A copy of the example drawing, whose "Door" references carry WIDTH attributes.
  std::wstring copyExample(const std::string& name) {
    fs::copy_file(kExample, folder / name);
    return path(name);
  }
  void run() {
    app = std::make_unique<CCorvaneApp>(host, session);
    ASSERT_EQ(session.loadApplication(*app), host::AcRx::kRetOK);
    session.runCommand(L"Corvane_Insert_Fields_To_Drawings");
  }
  std::vector<Stamp> saved(const std::wstring& file, std::wstring_view tag) {
    headless::HostApplication reader;
    auto loaded = dxf::DrawingFile::load(headless::OsServices::localPath(file), reader);
    EXPECT_TRUE(loaded.drawing) << loaded.error;
    return loaded.drawing ? stamps(loaded.drawing->database(), tag) : std::vector<Stamp>{};
  }
};

TEST(InsertFieldsToDrawings, MatchingAttributesOfEveryDrawingGetTheField) {
  const struct {
    const char* what;
    std::wstring tag;  // of the rule
    bool stamped;      // whether the WIDTH attributes of "Door" get the field
  } cases[] = {
      {"the tag as the drawing has it", L"WIDTH", true},
      {"a tag differing in case only", L"width", false},
  };
  for (const auto& c : cases) {
    Rig rig(L"");
    const std::wstring first = rig.copyExample("plan-a.dxf");
    const std::wstring second = rig.copyExample("plan-b.dxf");
    const std::wstring missing = rig.path("gone.dxf");
    const auto before = rig.saved(first, L"WIDTH");
    ASSERT_EQ(before.size(), 4u);  // three references of "Door" and one of an anonymous block
    rig.session.script().append(L"Rule\nDoor\n" + c.tag + L"\n" + kCode + L"\nDrawing\n" + first + L"\nDrawing\n" +
                                missing + L"\nDrawing\n" + second + L"\nDrawing\n" + rig.path("open.dxf") + L"\nOK\n");
    rig.run();

    EXPECT_NE(rig.out.find(L"\nCannot find " + missing + L"."), std::wstring::npos) << c.what;
    for (const auto& [file, name] : {std::pair{first, L"plan-a.dxf"}, std::pair{second, L"plan-b.dxf"}}) {
      EXPECT_NE(rig.out.find(L"\nSuccessfully update " + file + L"."), std::wstring::npos) << c.what;
      const auto after = rig.saved(file, L"WIDTH");
      ASSERT_EQ(after.size(), before.size());
      int fields = 0;
      for (std::size_t i = 0; i < after.size(); ++i) {
        if (after[i].code.empty()) {
          EXPECT_EQ(after[i].text, before[i].text) << c.what;
          continue;
        }
        ++fields;
        EXPECT_EQ(after[i].code, kCode) << c.what;
        EXPECT_EQ(after[i].text, name) << c.what;  // the field's value, the drawing's file name
      }
      EXPECT_EQ(fields, c.stamped ? 3 : 0) << c.what;
    }
    // The open drawing is changed in place and not written.
    const auto open = stamps(rig.db, L"WIDTH");
    ASSERT_EQ(open.size(), 1u);
    EXPECT_EQ(open[0].code, c.stamped ? kCode : L"") << c.what;
    EXPECT_EQ(open[0].text, c.stamped ? L"open.dxf" : L"700") << c.what;
    EXPECT_FALSE(fs::exists(rig.folder / "open.dxf")) << c.what;
    EXPECT_EQ(rig.host.workingDatabase(), &rig.db) << c.what;
  }
}

TEST(InsertFieldsToDrawings, AFailedSaveIsToldAndTheFileKept) {
  Rig rig(L"");
  const std::wstring file = rig.copyExample("plan.dxf");
  const std::string bytes = testing::ScratchFolder::read(rig.folder / "plan.dxf");
  rig.failSaves = true;
  rig.session.script().append(L"Rule\nDoor\nWIDTH\n" + kCode + L"\nDrawing\n" + file + L"\nOK\n");
  rig.run();
  EXPECT_NE(rig.out.find(L"\nFailed to save " + file + L": the disk is full.\nSuccessfully update " + file + L"."),
            std::wstring::npos)
      << core::toUtf8(rig.out);
  EXPECT_EQ(testing::ScratchFolder::read(rig.folder / "plan.dxf"), bytes);
}

TEST(InsertFieldsToDrawings, CountsWhatTheWalkDid) {
  Rig rig(L"");
  const struct {
    const char* what;
    FieldRules rules;
    InsertFieldsCount count;
  } cases[] = {
      {"no rule", {}, {0, 0, 0}},
      {"a rule for another block", {{L"Window*WIDTH", kCode}}, {0, 0, 0}},
      {"the open drawing's one attribute", {{L"Door*WIDTH", kCode}}, {1, 1, 0}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(InsertFieldsIntoDrawing(rig.host, rig.db, c.rules), c.count) << c.what;
  }
}

}  // namespace
}  // namespace corvane
