#include "headless/fields/fieldengine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/fieldlist.h"
#include "headless/hostapplication.h"
#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

using corvane::testing::TestDrawing;
using host::AcDbField;

TEST(Field, GetFieldCodeHonoursTheFlags) {
  TestDrawing d;
  const auto circle = d.addCircle(2);
  const std::wstring ref = TestDrawing::idReference(circle);
  const std::wstring code = L"%<\\VxExpr (%<\\AcObjProp Object(" + ref + L").Radius \\f \"%lu2\">% * %<\\AcVar LUPREC>%) \\f \"%lu2%pr1\">%";
  auto& field = d.field(d.addField(code));
  d.evaluateAll();

  // Raw code with markers gives back exactly what was set, nested options included.
  EXPECT_EQ(field.getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers), code);
  EXPECT_EQ(field.getFieldCode(AcDbField::kFieldCode), code.substr(2, code.size() - 4));
  EXPECT_EQ(field.getFormat(), L"%lu2%pr1");
  EXPECT_EQ(field.childCount(), 2);
  EXPECT_EQ(field.evaluatorId(), L"VxExpr");

  // Evaluated children, own option stripped: what a compiled record holds.
  auto& plain = d.field(d.addField(L"%<\\VxExpr (%<\\AcObjProp Object(" + ref +
                                       L").Radius>% * %<\\AcVar LUPREC>%) \\f \"%lu2%pr1\">%"));
  d.evaluateAll();
  EXPECT_EQ(plain.getFieldCode(AcDbField::kEvaluatedChildren | AcDbField::kStripOptions),
            L"\\VxExpr (2.000000 * 4)");
  EXPECT_EQ(plain.getFieldCode(AcDbField::kEvaluatedChildren | AcDbField::kAddMarkers),
            L"%<\\VxExpr (2.000000 * 4) \\f \"%lu2%pr1\">%");
}

TEST(Field, TextFieldIsItsTextWithoutMarkers) {
  TestDrawing d;
  auto& field = d.field(d.addFieldText(L"Units %<\\AcVar LUNITS>% and %<\\AcVar LUPREC \\f \"x\">%."));
  EXPECT_EQ(field.evaluatorId(), L"_text");
  EXPECT_EQ(field.getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers),
            L"Units %<\\AcVar LUNITS>% and %<\\AcVar LUPREC \\f \"x\">%.");
  EXPECT_EQ(field.ownCode(), L"Units %<\\_FldIdx 0>% and %<\\_FldIdx 1>%.");
}

TEST(FieldEngine, HostEvaluatorsAndHostText) {
  TestDrawing d;
  const auto circle = d.addCircle(1.5, L"Walls");
  const std::wstring ref = TestDrawing::idReference(circle);
  struct Case {
    std::wstring code;
    int status;
    std::wstring display;
  } const cases[] = {
      {L"%<\\AcVar LUNITS>%", AcDbField::kSuccess, L"2"},
      {L"%<\\AcVar lunits>%", AcDbField::kSuccess, L"2"},
      {L"%<\\AcVar NOSUCHVAR>%", AcDbField::kInvalidCode, L"####"},
      {L"%<\\AcObjProp Object(" + ref + L").Radius>%", AcDbField::kSuccess, L"1.500000"},
      {L"%<\\AcObjProp Object(" + ref + L").layer>%", AcDbField::kSuccess, L"Walls"},
      {L"%<\\AcObjProp Object(" + ref + L").Nothing>%", AcDbField::kInvalidCode, L"####"},
      {L"%<\\AcObjProp Object(%<\\_ObjId 12>%).Radius>%", AcDbField::kOtherError, L"####"},
      {L"%<\\NoSuchEvaluator 1>%", AcDbField::kEvaluatorNotFound, L"####"},
      {L"R=%<\\AcObjProp Object(" + ref + L").Radius>% on %<\\AcVar CLAYER>%", AcDbField::kSuccess,
       L"R=1.500000 on 0"},
  };
  for (const auto& c : cases) {
    const auto id = d.addField(c.code);
    host::AcFdFieldEngine::BatchResult batch;
    d.host.engine().evaluateFields(&d.db, {id}, AcDbField::kDemand, &batch);
    const auto& field = d.field(id);
    EXPECT_EQ(field.evaluationStatus(), c.status) << std::string(c.code.begin(), c.code.end());
    EXPECT_EQ(field.getDisplayText(), c.display);
    // The batch names the fields that failed.
    const bool failed = c.status != AcDbField::kSuccess;
    EXPECT_EQ(batch.failed, failed ? std::vector{id} : std::vector<host::AcDbObjectId>{});

    // In a text the field is wrapped in a text field, and the text shows what it shows; the
    // wrapper succeeds all the same.
    const auto text = d.addText(L"old");
    const auto wrapper = attachField(d.db, text, c.code);
    d.host.engine().evaluateFields(&d.db, {wrapper}, AcDbField::kDemand, &batch);
    EXPECT_EQ(d.field(wrapper).evaluatorId(), L"_text");
    EXPECT_EQ(d.field(wrapper).evaluationStatus(), AcDbField::kSuccess);
    EXPECT_EQ(d.db.get<Text>(text)->hostText(), c.display);
    EXPECT_EQ(batch.failed, failed ? std::vector{d.field(wrapper).getChild(0)} : std::vector<host::AcDbObjectId>{});
  }
}

TEST(FieldEngine, DisplaysValuesWithTheFieldsFormatAndTheDrawingsUnits) {
  TestDrawing d;
  const std::wstring ref = TestDrawing::idReference(d.addCircle(1.5));
  const auto fixed = d.addField(L"%<\\AcObjProp Object(" + ref + L").Radius \\f \"%lu2%pr2\">%");
  const auto current = d.addField(L"%<\\AcObjProp Object(" + ref + L").Radius \\f \"%lu2\">%");
  d.evaluateAll();
  EXPECT_EQ(d.field(current).getDisplayText(), L"1.5000");  // no precision: the drawing's LUPREC
  // A changed setting shows in the next evaluation.
  ASSERT_EQ(d.db.setSysVar(L"luprec", {host::RTSHORT, 3}), host::Acad::eOk);
  d.evaluateAll();
  EXPECT_EQ(d.field(fixed).getDisplayText(), L"1.50");
  EXPECT_EQ(d.field(current).getDisplayText(), L"1.500");
}

TEST(FieldEngine, ContextAgainstEvaluationOption) {
  TestDrawing d;
  auto& field = d.field(d.addField(L"%<\\AcVar LUNITS>%"));
  field.record().writeOpen = true;
  ASSERT_EQ(field.setEvaluationOption(AcDbField::kOnOpen), host::Acad::eOk);
  field.record().writeOpen = false;

  auto result = d.evaluateAll(AcDbField::kDemand);
  EXPECT_EQ(result.evaluated, 0);
  EXPECT_EQ(field.evaluationStatus(), AcDbField::kNotYetEvaluated);
  EXPECT_TRUE(result.failed.empty()) << "a field left alone did not fail";
  // A preview evaluates whatever the field's option says.
  result = d.evaluateAll(AcDbField::kPreview);
  EXPECT_EQ(result.evaluated, 1);
  EXPECT_EQ(field.evaluationStatus(), AcDbField::kSuccess);
}

class RecordingReactor : public host::AcFdFieldReactor {
 public:
  explicit RecordingReactor(std::vector<std::string>& log, std::string name) : log_(log), name_(std::move(name)) {}
  host::Acad::ErrorStatus beginEvaluateFields(int context, host::AcDbDatabase*) override {
    log_.push_back(name_ + " begin " + std::to_string(context));
    return host::Acad::eOk;
  }
  host::Acad::ErrorStatus endEvaluateFields(int context, host::AcDbDatabase*) override {
    log_.push_back(name_ + " end " + std::to_string(context));
    return host::Acad::eOk;
  }

 private:
  std::vector<std::string>& log_;
  std::string name_;
};

class RecordingEvaluator : public host::AcFdFieldEvaluator {
 public:
  explicit RecordingEvaluator(std::vector<std::string>& log) : log_(log) {}
  host::Acad::ErrorStatus evaluate(AcDbField* field, int, host::AcDbDatabase*, host::AcFdFieldResult* result) override {
    const std::wstring id = field->evaluatorId();
    log_.push_back("evaluate " + std::string(id.begin(), id.end()));
    result->setFieldValue(host::AcValue(L"ok"));
    result->setEvaluationStatus(AcDbField::kSuccess);
    return host::Acad::eOk;
  }

 private:
  std::vector<std::string>& log_;
};

class OneIdLoader : public host::AcFdFieldEvaluatorLoader {
 public:
  OneIdLoader(std::wstring id, host::AcFdFieldEvaluator& evaluator) : id_(std::move(id)), evaluator_(evaluator) {}
  host::AcFdFieldEvaluator* getEvaluator(const wchar_t* id) override { return id_ == id ? &evaluator_ : nullptr; }
  host::AcFdFieldEvaluator* findEvaluator(AcDbField*, const wchar_t*& id) override { return getEvaluator(id); }

 private:
  std::wstring id_;
  host::AcFdFieldEvaluator& evaluator_;
};

TEST(FieldEngine, EveryBatchIsBracketedByEachReactor) {
  TestDrawing d;
  std::vector<std::string> log;
  RecordingReactor first(log, "first"), second(log, "second");
  RecordingEvaluator evaluator(log);
  OneIdLoader loader(L"Mine", evaluator);
  auto& engine = d.host.engine();
  ASSERT_EQ(engine.addFieldReactor(&first), host::Acad::eOk);
  ASSERT_EQ(engine.addFieldReactor(&second), host::Acad::eOk);
  EXPECT_EQ(engine.addFieldReactor(&first), host::Acad::eDuplicateKey);
  ASSERT_EQ(engine.registerEvaluatorLoader(&loader), host::Acad::eOk);
  d.addField(L"%<\\Mine a>%");
  d.addField(L"%<\\Mine b>%");

  d.evaluateAll(AcDbField::kDemand);
  const std::vector<std::string> expected = {"first begin 32", "second begin 32", "evaluate Mine",
                                             "evaluate Mine", "first end 32",   "second end 32"};
  EXPECT_EQ(log, expected);

  // Once removed, a reactor hears nothing and a loader is no longer asked.
  log.clear();
  ASSERT_EQ(engine.removeFieldReactor(&first), host::Acad::eOk);
  ASSERT_EQ(engine.unregisterEvaluatorLoader(&loader), host::Acad::eOk);
  EXPECT_EQ(engine.unregisterEvaluatorLoader(&loader), host::Acad::eKeyNotFound);
  d.evaluateAll(AcDbField::kDemand);
  const std::vector<std::string> after = {"second begin 32", "second end 32"};
  EXPECT_EQ(log, after);
}

TEST(Database, OpenStatesFollowTheHostsRules) {
  TestDrawing d;
  const auto id = d.addCircle(1);
  auto& services = static_cast<host::AcDbHostApplicationServices&>(d.host);
  {
    host::AcDbObjectPointer<host::AcDbEntity> reader(services, id, host::AcDb::kForRead);
    ASSERT_EQ(reader.openStatus(), host::Acad::eOk);
    host::AcDbObjectPointer<host::AcDbEntity> writer(services, id, host::AcDb::kForWrite);
    EXPECT_EQ(writer.openStatus(), host::Acad::eWasOpenForRead);
    EXPECT_EQ(reader->upgradeOpen(), host::Acad::eOk);
    EXPECT_TRUE(reader->isWriteEnabled());
    host::AcDbObjectPointer<host::AcDbEntity> another(services, id, host::AcDb::kForRead);
    EXPECT_EQ(another.openStatus(), host::Acad::eWasOpenForWrite);
    EXPECT_EQ(reader->erase(), host::Acad::eOk);
  }
  // Closed on leaving the scope, erased since.
  host::AcDbObjectPointer<host::AcDbEntity> again(services, id, host::AcDb::kForRead);
  EXPECT_EQ(again.openStatus(), host::Acad::eWasErased);
  host::AcDbObjectPointer<host::AcDbEntity> erased(services, id, host::AcDb::kForRead, true);
  EXPECT_EQ(erased.openStatus(), host::Acad::eOk);
  // The wrong class, a null id and an id nobody holds.
  host::AcDbObjectPointer<host::AcDbField> wrongClass(services, d.addLine({0, 0, 0}, {1, 0, 0}), host::AcDb::kForRead);
  EXPECT_EQ(wrongClass.openStatus(), host::Acad::eNotThatKindOfClass);
  host::AcDbObjectPointer<host::AcDbObject> none(services, host::AcDbObjectId(), host::AcDb::kForRead);
  EXPECT_EQ(none.openStatus(), host::Acad::eNullObjectId);
  host::AcDbObjectPointer<host::AcDbObject> unknown(services, host::AcDbObjectId(7), host::AcDb::kForRead);
  EXPECT_EQ(unknown.openStatus(), host::Acad::eInvalidObjectId);
}

TEST(Database, HandlesExtendedDataAndSystemVariables) {
  TestDrawing d;
  const auto first = d.addCircle(1);
  const auto second = d.addCircle(2);
  const auto h1 = d.host.handle(first);
  EXPECT_EQ(d.host.handle(second).value(), h1.value() + 1);
  EXPECT_EQ(d.db.handseed().value(), h1.value() + 2);
  host::AcDbObjectId found;
  EXPECT_EQ(d.db.getAcDbObjectId(found, h1), host::Acad::eOk);
  EXPECT_EQ(found, first);
  EXPECT_EQ(d.db.getAcDbObjectId(found, host::AcDbHandle(0xFFFFF)), host::Acad::eUnknownHandle);
  EXPECT_EQ(host::AcDbHandle(0x2AF).text(), L"2AF");
  EXPECT_EQ(host::AcDbHandle::fromText(L"002af")->value(), 0x2AFu);
  EXPECT_FALSE(host::AcDbHandle::fromText(L"2G").has_value());

  auto* circle = d.db.get<Circle>(first);
  circle->record().writeOpen = true;
  const host::ResBufList data = {{1001, std::wstring(L"STAMP")}, {1000, std::wstring(L"2026")}};
  EXPECT_EQ(circle->setXData(data), host::Acad::eRegappIdNotFound);
  ASSERT_EQ(d.db.registerApp(L"STAMP"), host::Acad::eOk);
  ASSERT_EQ(circle->setXData(data), host::Acad::eOk);
  EXPECT_EQ(circle->xData(L"stamp"), data);
  ASSERT_EQ(circle->setXData({{1001, std::wstring(L"STAMP")}}), host::Acad::eOk);  // removes it
  EXPECT_TRUE(circle->xData(L"STAMP").empty());

  host::ResBuf var;
  ASSERT_EQ(d.db.getSysVar(L"luprec", var), host::Acad::eOk);
  EXPECT_EQ(std::get<std::int32_t>(var.value), 4);
  EXPECT_EQ(d.db.setSysVar(L"LUPREC", {host::RTSHORT, 2}), host::Acad::eOk);
  EXPECT_EQ(d.db.setSysVar(L"LUPREC", {host::RTSTR, std::wstring(L"2")}), host::Acad::eInvalidInput);
  EXPECT_EQ(d.db.getSysVar(L"NOPE", var), host::Acad::eInvalidInput);
}

}  // namespace
}  // namespace corvane::headless

namespace corvane::headless {
namespace {

// Marking the database unmodified leaves no object with changes to write; afterwards each
// change marks the object it touched and no other.
TEST(Database, ObjectsKnowWhetherTheyChangedSinceMarkedUnmodified) {
  corvane::testing::TestDrawing d;
  const auto text = d.addText(L"plain");
  const auto mtext = d.addMText(L"Area", {0, 0, 0}, 2.5);
  const auto field = d.addFieldText(L"%<\\AcVar LUNITS>%");
  d.evaluateAll();
  d.db.get<Text>(text)->setTextString(L"edited before marking");
  // The objects changed since the last marking; marks the database again.
  const auto changed = [&d] {
    std::vector<host::AcDbObjectId> ids;
    for (const auto id : d.db.objectIds()) {
      if (d.db.objects().lookupHeadless(id)->record().modified) ids.push_back(id);
    }
    d.db.markUnmodified();
    return ids;
  };
  ASSERT_FALSE(changed().empty());
  EXPECT_TRUE(changed().empty());

  // Evaluating again with nothing changed writes nothing; a new value does.
  d.evaluateAll();
  EXPECT_TRUE(changed().empty());
  ASSERT_EQ(d.db.setSysVar(L"LUNITS", {host::RTSHORT, 4}), host::Acad::eOk);
  d.evaluateAll();
  const auto afterUnits = changed();
  EXPECT_NE(std::find(afterUnits.begin(), afterUnits.end(), d.field(field).children()[0]), afterUnits.end());
  // An open for write counts as a change once closed; a read does not.
  auto& services = static_cast<host::AcDbHostApplicationServices&>(d.host);
  { host::AcDbObjectPointer<host::AcDbEntity> reader(services, text, host::AcDb::kForRead); }
  EXPECT_TRUE(changed().empty());
  { host::AcDbObjectPointer<host::AcDbEntity> writer(services, text, host::AcDb::kForWrite); }
  EXPECT_EQ(changed(), std::vector<host::AcDbObjectId>{text});
  d.db.get<MText>(mtext)->setContents(L"{\\C1;Area}");
  EXPECT_EQ(changed(), std::vector<host::AcDbObjectId>{mtext});
}

}  // namespace
}  // namespace corvane::headless

namespace corvane::headless {
namespace {

TEST(HostApplication, TemporaryFieldsEvaluateAndLeaveNoTrace) {
  corvane::testing::TestDrawing d;
  const auto before = d.db.objectIds().size();
  const auto listed = d.db.get<FieldList>(d.db.fieldListId())->ids().size();
  {
    auto field = d.host.newField();
    ASSERT_TRUE(field);
    ASSERT_EQ(field->setFieldCode(L"%<\\AcVar LUPREC>% and %<\\AcVar LUNITS>%"), host::Acad::eOk);
    ASSERT_EQ(field->evaluate(AcDbField::kDemand), host::Acad::eOk);
    EXPECT_EQ(field->evaluationStatus(), AcDbField::kSuccess);
    EXPECT_EQ(field->getDisplayText(), L"4 and 2");
    EXPECT_EQ(d.db.get<FieldList>(d.db.fieldListId())->ids().size(), listed);  // never in the field list
  }
  EXPECT_EQ(d.db.objectIds().size(), before);  // field and children gone with the holder

  HostApplication noDrawing;
  EXPECT_FALSE(noDrawing.newField());
}

TEST(HostApplication, TemporaryFieldsEvaluateInTheDrawingTheyAreGiven) {
  // Two drawings of one host that differ in their variables and in the circle of the same
  // reference; the temporary field lives in the working one, `d`.
  corvane::testing::TestDrawing d;
  Database other(d.host);
  ASSERT_EQ(other.setSysVar(L"LUPREC", {host::RTSHORT, 2}), host::Acad::eOk);
  ASSERT_EQ(other.setSysVar(L"LUNITS", {host::RTSHORT, 3}), host::Acad::eOk);
  const auto here = d.addCircle(1.5);
  const auto there = other.appendEntity(std::make_unique<Circle>(Circle::Point{0, 0, 0}, 2.25));
  struct Row {
    const char* name;
    host::AcDbDatabase* db;
    host::AcDbObjectId circle;
    std::wstring shown;
  };
  const std::vector<Row> rows = {
      {"no drawing: the working one", nullptr, here, L"4 2 1.5000"},
      {"the working drawing", &d.db, here, L"4 2 1.5000"},
      {"the other drawing, in its own units", &other, there, L"2 3 2.25"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    auto field = d.host.newField();
    ASSERT_TRUE(field);
    ASSERT_EQ(field->setFieldCode(L"%<\\AcVar LUPREC>% %<\\AcVar LUNITS>% %<\\AcObjProp Object(" +
                                      TestDrawing::idReference(row.circle) + L").Radius \\f \"%lu2\">%"),
              host::Acad::eOk);
    ASSERT_EQ(field->evaluate(AcDbField::kPreview, row.db), host::Acad::eOk);
    EXPECT_EQ(field->evaluationStatus(), AcDbField::kSuccess);
    EXPECT_EQ(field->getDisplayText(), row.shown);
  }

  // A field kept in a drawing belongs to it: another drawing is refused and nothing changes.
  const auto kept = d.addField(L"%<\\AcVar LUPREC>%");
  d.evaluateAll();
  EXPECT_EQ(d.field(kept).evaluate(AcDbField::kDemand, &other), host::Acad::eWrongDatabase);
  EXPECT_EQ(d.field(kept).getDisplayText(), L"4");
  EXPECT_EQ(d.field(kept).evaluate(AcDbField::kDemand, &d.db), host::Acad::eOk);
  HostApplication elsewhere;
  Database foreign(elsewhere);
  auto field = d.host.newField();
  ASSERT_EQ(field->setFieldCode(L"%<\\AcVar LUPREC>%"), host::Acad::eOk);
  EXPECT_EQ(field->evaluate(AcDbField::kDemand, &foreign), host::Acad::eWrongDatabase);
}

TEST(HostApplication, PropertyValuesOfObjects) {
  corvane::testing::TestDrawing d;
  const auto circle = d.addCircle(2, L"Walls");
  host::AcValue value;
  EXPECT_EQ(d.host.getPropertyValue(circle, L"radius", value), host::Acad::eOk);
  EXPECT_EQ(value, host::AcValue(2.0));
  EXPECT_EQ(d.host.getPropertyValue(circle, L"Layer", value), host::Acad::eOk);
  EXPECT_EQ(value, host::AcValue(L"Walls"));
  EXPECT_EQ(d.host.getPropertyValue(circle, L"Nope", value), host::Acad::eKeyNotFound);
  EXPECT_EQ(d.host.getPropertyValue(host::AcDbObjectId(5), L"Radius", value), host::Acad::eInvalidObjectId);
  auto* object = d.db.get<Circle>(circle);
  object->record().writeOpen = true;
  ASSERT_EQ(object->erase(), host::Acad::eOk);
  object->record().writeOpen = false;
  EXPECT_EQ(d.host.getPropertyValue(circle, L"Radius", value), host::Acad::eWasErased);
}

}  // namespace
}  // namespace corvane::headless
