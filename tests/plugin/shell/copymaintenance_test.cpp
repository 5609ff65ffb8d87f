// Copied fields keep their references on the copies: area and length fields list the copies of
// the objects copied along, table cell fields name the copied table; what was not copied keeps
// its handle. Through the editor's COPY and COPYTOLAYOUT with the plug-in loaded, and through
// the reactor's deep-clone notification with a mapping made by hand.
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/textutil.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/circle.h"
#include "headless/db/deepclone.h"
#include "headless/db/field.h"
#include "headless/db/line.h"
#include "headless/db/mtext.h"
#include "headless/db/table.h"
#include "headless/db/texthost.h"
#include "headless/fields/fieldengine.h"
#include "host/acdbidmapping.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/editorsession.h"

namespace corvane {
namespace {

using host::AcDbObjectId;

struct CopyDrawing : testing::EditorSession {
  CCorvaneApp app{host, session};
  CopyDrawing() { EXPECT_EQ(session.loadApplication(app), host::AcRx::kRetOK); }
  ~CopyDrawing() { session.unloadApplication(app); }

  std::wstring handleOf(AcDbObjectId id) { return host.handle(id).text(); }
  std::wstring pick(AcDbObjectId id) { return L"(handent \"" + handleOf(id) + L"\")\n"; }
  AcDbObjectId circle(double x, double radius) {
    return db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{x, 0, 0}, radius));
  }
  AcDbObjectId line(double length) {
    return db.appendEntity(
        std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{length, 0, 0}));
  }
  // A multiline text holding a field of the code; the text's id.
  AcDbObjectId fieldText(const std::wstring& code) {
    const AcDbObjectId text = db.appendEntity(std::make_unique<headless::MText>(host::AcGePoint3d{}, 1.0, L""));
    headless::attachField(db, text, code);
    return text;
  }
  // The measuring field of a text made by fieldText (the text field's one child).
  headless::Field& measured(AcDbObjectId text) {
    return *db.get<headless::Field>(db.get<headless::Field>(headless::fieldOf(db, text))->children().at(0));
  }
  std::wstring record(const headless::Field& field, const wchar_t* key) {
    host::AcValue value;
    std::wstring text;
    if (field.getData(key, value) == host::Acad::eOk) value.get(text);
    return text;
  }
  void evaluateAll() { host.engine().evaluateFields(&db, {}, host::AcDbField::kDemand); }
  // Runs the script; the entities it added to the space, in drawing order.
  std::vector<AcDbObjectId> run(const std::wstring& script, AcDbObjectId space = {}) {
    if (space.isNull()) space = db.modelSpaceId();
    const auto before = db.get<headless::BlockTableRecord>(space)->entities().size();
    session.script() = headless::Script(script);
    session.runScript();
    const auto& after = db.get<headless::BlockTableRecord>(space)->entities();
    return std::vector<AcDbObjectId>(after.begin() + static_cast<std::ptrdiff_t>(before), after.end());
  }
};

std::wstring joined(const std::vector<std::wstring>& handles) {
  std::wstring out;
  for (const auto& h : handles) out += (out.empty() ? L"" : L";") + h;
  return out;
}

TEST(CopyMaintenance, AMeasuredFieldListsTheCopiesOfTheObjectsCopiedAlong) {
  // Which of the three circles go along with the area field: each one copied is listed by its
  // copy's handle, the others keep theirs, in the order the list had.
  struct Case {
    const char* name;
    std::vector<int> copied;  // indexes of the circles copied with the field
  } const cases[] = {{"all three", {0, 1, 2}}, {"two of three", {0, 2}}, {"the field alone", {}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CopyDrawing d;
    const std::vector<AcDbObjectId> circles{d.circle(0, 1.0), d.circle(5, 2.0), d.circle(10, 3.0)};
    const std::wstring list = joined({d.handleOf(circles[0]), d.handleOf(circles[1]), d.handleOf(circles[2])});
    const AcDbObjectId text = d.fieldText(L"%<\\AcArea Object(<" + list + L">) \\f \"%lu2%pr2\">%");
    d.evaluateAll();
    const std::wstring sourceValue = d.measured(text).getDisplayText();

    std::wstring script = L"COPY\n" + d.pick(text);
    for (const int i : c.copied) script += d.pick(circles[static_cast<std::size_t>(i)]);
    const auto copies = d.run(script + L"\n0,0\n0,20\n\n");
    ASSERT_EQ(copies.size(), c.copied.size() + 1) << d.out;

    std::vector<std::wstring> expected;
    for (std::size_t i = 0; i < circles.size(); ++i) expected.push_back(d.handleOf(circles[i]));
    for (std::size_t k = 0; k < c.copied.size(); ++k) {
      expected[static_cast<std::size_t>(c.copied[k])] = d.handleOf(copies[k + 1]);
    }
    EXPECT_EQ(d.record(d.measured(copies[0]), L"AcArea Data"), L"\\AcArea Object(<" + joined(expected) + L">)");
    EXPECT_EQ(d.record(d.measured(text), L"AcArea Data"), L"\\AcArea Object(<" + list + L">)");
    EXPECT_EQ(d.out.find(L"Cannot"), std::wstring::npos) << d.out;
    d.evaluateAll();
    EXPECT_EQ(d.measured(copies[0]).getDisplayText(), sourceValue);  // copies measure as their sources
  }
}

TEST(CopyMaintenance, ALengthFieldCopiedIntoALayoutMeasuresTheCopies) {
  CopyDrawing d;
  const AcDbObjectId a = d.line(3.0), b = d.line(4.0);
  const AcDbObjectId text = d.fieldText(L"%<\\AcLength Object(<" + d.handleOf(a) + L";" + d.handleOf(b) + L">)>%");
  d.evaluateAll();
  const auto copies =
      d.run(L"COPYTOLAYOUT\n" + d.pick(a) + d.pick(text) + d.pick(b) + L"\nLayout1\n", d.db.paperSpaceId());
  ASSERT_EQ(copies.size(), 3u) << d.out;
  EXPECT_EQ(d.record(d.measured(copies[1]), L"AcLength Data"),
            L"\\AcLength Object(<" + d.handleOf(copies[0]) + L";" + d.handleOf(copies[2]) + L">)");
  d.evaluateAll();
  EXPECT_EQ(d.measured(copies[1]).evaluationStatus(), host::AcDbField::kSuccess);
  EXPECT_EQ(d.measured(copies[1]).getDisplayText(), d.measured(text).getDisplayText());
}

TEST(CopyMaintenance, ACopiedTableNamesItsCopyInUpperCase) {
  CopyDrawing d;
  auto made = std::make_unique<headless::Table>(2, 2);
  const AcDbObjectId table = d.db.appendEntity(std::move(made));
  auto& cells = *d.db.get<headless::Table>(table);
  cells.putValue(0, 1, host::AcValue(42.0));
  // A cell part in lower case, as a user may type it.
  cells.putTextString(0, 0, L"%<\\TableCell Table(<" + d.handleOf(table) + L">).$b$1>%");
  d.evaluateAll();
  const auto copies = d.run(L"COPY\n" + d.pick(table) + L"\n0,0\n100,0\n\n");
  ASSERT_EQ(copies.size(), 1u) << d.out;
  const auto& copy = *d.db.get<headless::Table>(copies[0]);
  const auto& container = *d.db.get<headless::Field>(copy.fieldId(0, 0));
  const auto& reference = *d.db.get<headless::Field>(container.children().at(0));
  EXPECT_EQ(reference.getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers),
            L"%<\\TABLECELL TABLE(<" + d.handleOf(copies[0]) + L">).$B$1>%");
  d.db.get<headless::Table>(copies[0])->putValue(0, 1, host::AcValue(7.0));  // the copy's own value now
  d.evaluateAll();
  // Each table's reference shows its own B1.
  for (const headless::Table* shownBy : std::vector<const headless::Table*>{&copy, &cells}) {
    std::wstring a1, b1;
    shownBy->textString(0, 0, 0, a1);
    shownBy->textString(0, 1, 0, b1);
    EXPECT_EQ(a1, b1);
  }
  std::wstring copied, source;
  copy.textString(0, 0, 0, copied);
  cells.textString(0, 0, 0, source);
  EXPECT_NE(copied, source);
}

// The reactor's notification with a mapping of the test's making: which pairs it lists decides
// what is fixed, and failures are told on the command line.
TEST(CopyMaintenance, HandListsAndTableReferencesFromAMappingMadeByHand) {
  CopyDrawing d;
  const AcDbObjectId a = d.circle(0, 1.0), b = d.circle(5, 1.0), aCopy = d.circle(0, 1.0);
  const AcDbObjectId table = d.db.appendEntity(std::make_unique<headless::Table>(1, 1));
  const AcDbObjectId tableCopy = d.db.appendEntity(std::make_unique<headless::Table>(1, 1));
  const std::wstring A = d.handleOf(a), B = d.handleOf(b), A2 = d.handleOf(aCopy);
  const std::wstring T = d.handleOf(table), T2 = d.handleOf(tableCopy);
  struct Case {
    const char* name;
    std::wstring code;  // of the copied field
    std::wstring data;  // its record (area and length fields)
    bool tableCopied;
    std::wstring expected;  // record, or code with markers
    std::wstring message;
  } const cases[] = {
      {"copied, empty and not copied", L"%<\\AcArea X>%", L"\\AcArea Object(<" + A + L";;" + B + L">)", false,
       L"\\AcArea Object(<" + A2 + L";;" + B + L">)", L""},
      {"no handle", L"%<\\AcLength X>%", L"\\AcLength Object(<ZZ;" + A + L">)", false,
       L"\\AcLength Object(<ZZ;" + A2 + L">)", L"\nCannot get the handle (ZZ) of the object. eInvalidInput."},
      {"an unknown handle", L"%<\\AcArea X>%", L"\\AcArea Object(<FFFFF>)", false, L"\\AcArea Object(<FFFFF>)",
       L"\nCannot get the handle (FFFFF) of the object. eUnknownHandle."},
      {"a named set, quietly kept", L"%<\\AcArea X>%", L"\\AcArea Object(<*AllObjects*>)", false,
       L"\\AcArea Object(<*AllObjects*>)", L""},
      {"options after the list", L"%<\\AcArea X>%",
       L"\\AcArea Object(<" + A + L";" + B + L">) \\objtype \"82\" \\layer \"Rooms\"", false,
       L"\\AcArea Object(<" + A2 + L";" + B + L">) \\objtype \"82\" \\layer \"Rooms\"", L""},
      {"no object set", L"%<\\AcArea X>%", L"\\AcArea X", false, L"\\AcArea X", L""},
      {"a table copied", L"%<\\TableCell Table(<" + T + L">).$c$4>%", L"", true,
       L"%<\\TABLECELL TABLE(<" + T2 + L">).$C$4>%", L""},
      {"a table not copied", L"%<\\TableCell Table(<" + T + L">).$c$4>%", L"", false,
       L"%<\\TableCell Table(<" + T + L">).$c$4>%", L""},
      {"no brackets: upper case, same handle", L"%<\\TableCell Table(" + T + L").c4>%", L"", true,
       L"%<\\TABLECELL TABLE(" + T + L").C4>%", L""},
      {"an unknown table", L"%<\\TableCell Table(<FFFFF>).A1>%", L"", true, L"%<\\TableCell Table(<FFFFF>).A1>%",
       L"\nCannot get the handle of the object. eUnknownHandle."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const AcDbObjectId field = headless::Field::create(d.db, c.code, d.db.modelSpaceId());
    auto& made = *d.db.get<headless::Field>(field);
    const std::wstring key = made.evaluatorId() + L" Data";
    if (!c.data.empty()) made.putData(key, host::AcValue(c.data));
    host::AcDbIdMapping mapping(&d.db, &d.db);
    mapping.assign({a, aCopy, true});
    if (c.tableCopied) mapping.assign({table, tableCopy, true});
    mapping.assign({field, field, true});
    d.out.clear();
    d.app.editorReactor()->endDeepClone(mapping);
    EXPECT_EQ(c.data.empty() ? made.getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers)
                             : d.record(made, key.c_str()),
              c.expected);
    EXPECT_EQ(d.out, c.message);
  }

  // A field another reader holds open cannot be changed.
  const AcDbObjectId field = headless::Field::create(d.db, L"%<\\AcArea X>%", d.db.modelSpaceId());
  d.db.get<headless::Field>(field)->putData(L"AcArea Data", host::AcValue(L"\\AcArea Object(<" + A + L">)"));
  host::AcDbObjectPointer<host::AcDbField> held(d.host, field, host::AcDb::kForRead);
  host::AcDbIdMapping mapping(&d.db, &d.db);
  mapping.assign({a, aCopy, true});
  mapping.assign({field, field, true});
  d.out.clear();
  d.app.editorReactor()->endDeepClone(mapping);
  EXPECT_EQ(d.out, L"\nCannot open the copied Field. eWasOpenForRead.");
  EXPECT_EQ(d.record(*d.db.get<headless::Field>(field), L"AcArea Data"), L"\\AcArea Object(<" + A + L">)");
}

TEST(CopyMaintenance, ATablesOwnPairFixesItsTableCellFieldsButNotItsMeasuredOnes) {
  CopyDrawing d;
  const AcDbObjectId a = d.circle(0, 1.0);
  const AcDbObjectId table = d.db.appendEntity(std::make_unique<headless::Table>(1, 2));
  auto& cells = *d.db.get<headless::Table>(table);
  cells.putTextString(0, 0, L"%<\\TableCell Table(<" + d.handleOf(table) + L">).$B$1>%");
  cells.putTextString(0, 1, L"%<\\AcArea Object(<" + d.handleOf(a) + L">)>%");
  d.evaluateAll();
  host::AcDbIdMapping full;
  ASSERT_EQ(headless::deepCloneObjects(d.db, {table, a}, d.db.modelSpaceId(), full), host::Acad::eOk);
  host::AcDbIdPair tablePair(table, {}, false), circlePair(a, {}, false);
  ASSERT_TRUE(full.compute(tablePair) && full.compute(circlePair));
  // Only the table and the circle, not the fields the table owns.
  host::AcDbIdMapping mapping(&d.db, &d.db);
  mapping.assign(tablePair);
  mapping.assign(circlePair);
  d.app.editorReactor()->endDeepClone(mapping);
  const auto& copy = *d.db.get<headless::Table>(tablePair.value());
  const auto child = [&](int column) -> headless::Field& {
    return *d.db.get<headless::Field>(d.db.get<headless::Field>(copy.fieldId(0, column))->children().at(0));
  };
  EXPECT_EQ(child(0).getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers),
            L"%<\\TABLECELL TABLE(<" + d.handleOf(tablePair.value()) + L">).$B$1>%");
  EXPECT_EQ(d.record(child(1), L"AcArea Data"), L"\\AcArea Object(<" + d.handleOf(a) + L">)");
}

TEST(CopyMaintenance, CommandsThatStopLeaveNothingBehind) {
  CopyDrawing d;
  d.session.commandStack().addCommand(L"TEST", L"_BOOM", L"BOOM", 0, [] { throw std::runtime_error("boom"); });
  const AcDbObjectId a = d.circle(0, 1.0);
  struct Case {
    const char* name;
    std::wstring script;
  } const cases[] = {
      {"cancelled at the base point", L"COPY\n" + d.pick(a) + L"\n^C\n"},
      {"cancelled at the layout", L"COPYTOLAYOUT\n" + d.pick(a) + L"\n^C\n"},
      {"a table edit cancelled", L"TABLEDIT\n^C\n"},
      {"a command that fails", L"BOOM\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ReactorState& state = d.app.reactorState();
    state.copyMap[L"1A"] = L"2B";
    state.tableEditInProgress = true;
    state.editedTableId = a;
    EXPECT_TRUE(d.run(c.script).empty()) << d.out;
    EXPECT_TRUE(state.copyMap.empty());
    EXPECT_FALSE(state.tableEditInProgress);
    EXPECT_TRUE(state.editedTableId.isNull());
  }
}

}  // namespace
}  // namespace corvane
