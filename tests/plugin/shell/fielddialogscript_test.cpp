// The FIELD command of the headless editor, answered by a script as a user's script answers it:
// the object picked, a field of the plug-in chosen and set up on its page, previewed and put in
// place.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/printf.h"
#include "core/utf8.h"
#include "headless/editor/fieldplacement.h"
#include "headless/editor/session.h"
#include "headless/settings/registryfile.h"
#include "plugin/shell/asdkcustomoptiondialoghook.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/scratchfolder.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using host::AcDbField;

struct Rig {
  testing::ScratchFolder folder;
  testing::TestDrawing d;
  headless::RegistryFile registry{folder / "registry.reg", [](std::wstring_view) {}};
  headless::Session session;
  std::wstring out;

  Rig() : session(d.host, headless::Script(), options()) {
    d.host.setOutput([this](std::wstring_view text) { out += text; });
    session.openDocument(&d.db);
  }
  headless::Session::Options options() {
    headless::Session::Options o;
    o.registry = &registry;
    o.progress = nullptr;
    o.notice = [](std::wstring_view) {};
    return o;
  }
  std::wstring handle(host::AcDbObjectId id) const { return d.host.handle(id).text(); }
  // The text a place shows now.
  std::wstring shown(const headless::FieldPlace& place) {
    if (place.isCell) return d.table(place.owner).textString(place.row, place.column);
    if (const auto* mtext = d.db.get<headless::MText>(place.owner)) return mtext->contents();
    return d.db.get<host::AcDbText>(place.owner)->textString();
  }
};

TEST(FieldDialogScript, PutsAFieldIntoEachKindOfPlace) {
  const std::string notes = "Level 2 slab, pour on Friday";
  struct Case {
    const char* kind;
    std::wstring cell;  // the answer to the cell prompt of a table
  } const cases[] = {{"text", L""}, {"multiline text", L""}, {"attribute", L""}, {"table cell", L"1,0"}};
  for (const auto& c : cases) {
    Rig rig;
    testing::ScratchFolder::write(rig.folder / "notes.txt", notes);
    const std::string kind = c.kind;
    host::AcDbObjectId owner;
    if (kind == "text") owner = rig.d.addText(L"old");
    if (kind == "multiline text") owner = rig.d.addMText(L"old");
    if (kind == "attribute") {
      const auto block = rig.d.addBlock(L"Tag");
      owner = rig.d.addAttribute(rig.d.addBlockReference(block), L"NOTE", L"old");
    }
    if (kind == "table cell") owner = rig.d.addTable({{L"a", L"b"}, {L"old", L"d"}});
    const auto line = rig.d.addLine({0, 0, 0}, {1, 0, 0});

    std::wstring script = L"zz\n" + rig.handle(line) + L"\n" + rig.handle(owner) + L"\n";
    if (!c.cell.empty()) script += c.cell + L"\n";
    script += L"NAME VX Text File\nFILE " + (rig.folder / "notes.txt").wstring() + L"\nPREVIEW\nOK\n";
    CCorvaneApp app(rig.d.host, rig.session);
    ASSERT_EQ(rig.session.loadApplication(app), host::AcRx::kRetOK);
    rig.session.script().append(script);
    EXPECT_EQ(rig.session.runCommand(L"FIELD"), headless::Session::Outcome::kEnded) << kind;
    EXPECT_TRUE(rig.session.script().empty()) << kind << ": the dialog read every line";
    rig.session.unloadApplication(app);

    const std::wstring value = core::fromUtf8(notes);
    // Wrong picks are told and asked again.
    EXPECT_NE(rig.out.find(L"'zz' is no handle"), std::wstring::npos) << kind;
    EXPECT_NE(rig.out.find(core::format(L"object %s (LINE) cannot hold a field", rig.handle(line))), std::wstring::npos)
        << kind;
    EXPECT_NE(rig.out.find(L"\nPreview: " + value), std::wstring::npos) << core::toUtf8(rig.out);
    const auto place =
        headless::fieldPlaceOf(rig.d.db, owner, c.cell.empty() ? std::nullopt : std::optional(std::pair(1, 0)));
    ASSERT_TRUE(place.place) << kind;
    EXPECT_NE(rig.out.find(core::format(L"\nField placed in %s %s: %s", place.place->kind,
                                        rig.handle(owner) + (c.cell.empty() ? L"" : L":" + c.cell), value)),
              std::wstring::npos)
        << core::toUtf8(rig.out);
    EXPECT_EQ(rig.shown(*place.place), value) << kind;
    const auto* field = rig.d.db.get<headless::Field>(headless::fieldAt(rig.d.db, *place.place));
    ASSERT_NE(field, nullptr) << kind;
    EXPECT_EQ(field->evaluatorId(), L"TextField") << kind;
    EXPECT_EQ(field->evaluationOption(), AcDbField::kAutomatic) << kind;
    EXPECT_EQ(field->evaluationStatus(), AcDbField::kSuccess) << kind;
  }
}

TEST(FieldDialogScript, EditingAFieldInATextKeepsTheTextAroundIt) {
  Rig rig;
  rig.d.addLine({0, 0, 0}, {3, 0, 0});
  rig.d.addCircle(1.0);
  const auto text = rig.d.addText();
  headless::attachField(rig.d.db, text, L"Measured: %<\\AcArea Object(<*MSPObjects*>) \\f \"%lu2%pr1\">% units");
  CCorvaneApp app(rig.d.host, rig.session);
  ASSERT_EQ(rig.session.loadApplication(app), host::AcRx::kRetOK);
  rig.session.script().append(rig.handle(text) + L"\nUNITS Decimal\nPRECISION 0.00\nOK\n");
  EXPECT_EQ(rig.session.runCommand(L"FIELD"), headless::Session::Outcome::kEnded);
  rig.session.unloadApplication(app);

  // The dialog opened on the area page, filled from the field.
  EXPECT_NE(rig.out.find(L"\nField: VX Objects Area"), std::wstring::npos) << core::toUtf8(rig.out);
  EXPECT_EQ(rig.d.db.get<headless::Text>(text)->textString(), L"Measured: 3.14 units");
}

TEST(FieldDialogScript, ARefusedFieldKeepsTheDialogOpenAndCancelChangesNothing) {
  Rig rig;
  const auto text = rig.d.addText(L"as it was");
  CCorvaneApp app(rig.d.host, rig.session);
  ASSERT_EQ(rig.session.loadApplication(app), host::AcRx::kRetOK);
  rig.session.script().append(rig.handle(text) +
                              L"\nOK\nNAME VX Formula\nNAME VX Text File\nNOSUCH x\nCODE %<\\Nope 1>%\nOK\nCANCEL\n");
  EXPECT_EQ(rig.session.runCommand(L"FIELD"), headless::Session::Outcome::kCancelled);
  ASSERT_EQ(rig.session.terminalUi().boxes().size(), 1u);
  EXPECT_EQ(rig.session.terminalUi().boxes()[0].text, AsdkCustomOptionDialogHook::kEvaluatorNotFound);
  EXPECT_NE(rig.out.find(L"Choose a field first"), std::wstring::npos);
  EXPECT_NE(rig.out.find(L"\nField: VX Formula"), std::wstring::npos);
  EXPECT_EQ(rig.out.find(L"(no option page)"), std::wstring::npos) << "every field has its page";
  EXPECT_NE(rig.out.find(L"\nThe page has no control NOSUCH."), std::wstring::npos);
  EXPECT_EQ(rig.d.db.get<headless::Text>(text)->textString(), L"as it was");
  EXPECT_TRUE(headless::fieldOf(rig.d.db, text).isNull());
  host::CAcFdUiFieldOptionDialog* page = nullptr;
  app.dialogHook()->GetOptionDialog(AsdkCustomOptionDialogHook::kTextFileId, page);
  EXPECT_EQ(page, nullptr) << "the pages went with the dialog";
  rig.session.unloadApplication(app);
}

}  // namespace
}  // namespace corvane
