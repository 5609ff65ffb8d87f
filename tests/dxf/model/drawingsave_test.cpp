// Saving a drawing through the database: fields added and updated, objects erased, extended
// data and system variables changed. Each saved file is read back by our own reader and, when
// it is installed, by ezdxf, which shares no code with ours.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string_view>
#include <string>
#include <vector>

#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/arc.h"
#include "headless/db/attribute.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/field.h"
#include "headless/db/fieldcode.h"
#include "headless/db/fieldlist.h"
#include "headless/db/layertablerecord.h"
#include "headless/db/mtext.h"
#include "headless/db/polyline.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "support/dxftext.h"
#include "support/samples.h"

namespace corvane::dxf {
namespace {

using host::AcDbField;
using host::AcDbHandle;
using host::AcDbObjectId;

struct Loaded {
  headless::HostApplication host;
  std::unique_ptr<DrawingFile> drawing;

  explicit Loaded(const std::string& bytes, const std::string& name = "drawing.dxf") {
    auto loaded = DrawingFile::read(bytes, host, name);
    EXPECT_TRUE(loaded.drawing) << loaded.error;
    drawing = std::move(loaded.drawing);
    if (drawing) host.setWorkingDatabase(&drawing->database());
  }
  headless::Database& db() { return drawing->database(); }
  AcDbObjectId id(std::uint64_t handle) {
    AcDbObjectId found;
    db().getAcDbObjectId(found, AcDbHandle(handle));
    return found;
  }
  std::string save() {
    StringSink sink;
    const Status status = drawing->write(sink);
    EXPECT_TRUE(status.ok()) << status.message();
    return sink.data;
  }
};

std::string sample(const char* name) { return testing::readBytes(testing::sampleFolder() / name); }

std::unique_ptr<Document> parse(const std::string& bytes) {
  auto read = Document::read(bytes);
  EXPECT_TRUE(read.document) << read.error;
  return std::move(read.document);
}

std::uint64_t handleOf(const std::string& text) {
  std::uint64_t value = 0;
  parseHandle(text, value);
  return value;
}

// Runs a script over a saved drawing with ezdxf; its output, or "ERROR: ..." when it failed.
std::string runEzdxf(const std::string& script, const std::string& bytes) {
  const testing::ScratchFolder folder;
  const auto path = folder.path() / "saved.dxf";
  testing::writeBytes(path, bytes);
  return testing::runEzdxfScript(script, {path.string()});
}

// The text field linked to a text, with its texts and check sum, as a second read finds them.
void expectTextField(Loaded& loaded, std::uint64_t textHandle, const std::wstring& text,
                     const std::vector<std::wstring>& childCodes) {
  const AcDbObjectId textId = loaded.id(textHandle);
  ASSERT_FALSE(textId.isNull());
  const auto* host = dynamic_cast<const headless::TextHost*>(loaded.db().lookup(textId));
  ASSERT_NE(host, nullptr);
  EXPECT_EQ(host->hostText(), text);
  const auto* field = loaded.db().get<headless::Field>(headless::fieldOf(loaded.db(), textId));
  ASSERT_NE(field, nullptr);
  EXPECT_EQ(field->evaluatorId(), L"_text");
  EXPECT_EQ(field->getDisplayText(), text);
  EXPECT_EQ(field->evaluationStatus(), AcDbField::kSuccess);
  host::AcValue checksum;
  ASSERT_EQ(field->getData(L"ACFD_FIELDTEXT_CHECKSUM", checksum), host::Acad::eOk);
  EXPECT_EQ(checksum, host::AcValue(headless::fieldTextChecksum(text)));
  ASSERT_EQ(static_cast<std::size_t>(field->childCount()), childCodes.size());
  const auto& list = loaded.db().get<headless::FieldList>(loaded.db().fieldListId())->ids();
  EXPECT_NE(std::find(list.begin(), list.end(), field->objectId()), list.end());
  for (std::size_t i = 0; i < childCodes.size(); ++i) {
    const auto* child = loaded.db().get<headless::Field>(field->getChild(static_cast<int>(i)));
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers | AcDbField::kStripOptions).substr(0, childCodes[i].size()),
              childCodes[i]);
    EXPECT_EQ(child->ownerId(), field->objectId());
    EXPECT_NE(std::find(list.begin(), list.end(), child->objectId()), list.end());
  }
}

// A formula's embedded field code is spelt with unit separators between its characters, and a
// formula may hold carets and tabs: the file spells them all with escapes, and they come back
// as the characters.
TEST(DrawingSave, FieldCodesKeepSeparatorsAndCaretsThroughAFile) {
  CORVANE_NEED_SAMPLES();
  Loaded first(sample("ezdxf-uncommon.dxf"));
  headless::Database& db = first.db();
  std::wstring embedded;
  for (const wchar_t c : std::wstring_view(L"%<\\AcVar LUNITS>%")) {
    if (!embedded.empty()) embedded.push_back(L'\x1F');
    embedded.push_back(c);
  }
  // Long enough to need pieces, with escapes on both sides of a piece's end.
  const std::wstring formula =
      L"2^3 + ACAD_FIELD('" + embedded + L"') & '" + std::wstring(240, L'x') + L"^I\t^ \x1F'";
  const std::wstring code = L"%<\\VxExpr (" + formula + L")>%";
  const AcDbObjectId text =
      db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{1, 2, 0}, 2.5, L""));
  const std::uint64_t textHandle = db.lookup(text)->handle().value();
  headless::attachField(db, text, code);
  const auto codeOf = [](Loaded& loaded, AcDbObjectId id) {
    const auto* field = loaded.db().get<headless::Field>(headless::fieldOf(loaded.db(), id));
    return field ? field->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers) : std::wstring(L"no field");
  };
  ASSERT_EQ(codeOf(first, text), code);
  const std::string saved = first.save();
  EXPECT_NE(saved.find("2^ 3 + ACAD_FIELD('%^_<^_\\"), std::string::npos) << "carets and separators escaped";

  Loaded second(saved);
  EXPECT_EQ(codeOf(second, second.id(textHandle)), code);
  EXPECT_EQ(second.save(), saved);
}

TEST(DrawingSave, AddedFieldsSurviveASaveAndASecondRead) {
  CORVANE_NEED_SAMPLES();
  Loaded first(sample("ezdxf-uncommon.dxf"));
  headless::Database& db = first.db();
  const AcDbObjectId line = first.id(0x222);
  const AcDbObjectId mtext = first.id(0x248);
  ASSERT_FALSE(line.isNull());
  ASSERT_FALSE(mtext.isNull());
  const AcDbObjectId text =
      db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{1, 2, 0}, 2.5, L""));
  const std::uint64_t textHandle = db.lookup(text)->handle().value();
  EXPECT_GE(textHandle, 0x6DCu) << "new objects take handles from the drawing's seed";
  const AcDbObjectId onText = headless::attachField(
      db, text,
      core::format(L"Layer %%<\\AcObjProp Object(%%<\\_ObjId %llu>%%).Layer>%% in %%<\\AcVar LUNITS>%% units",
                   line.asOldId()));
  const AcDbObjectId onMtext = headless::attachField(db, mtext, L"Units: %<\\AcVar LUPREC>%");
  first.host.engine().evaluateFields(&db, {onText, onMtext}, AcDbField::kDemand);
  const std::string saved = first.save();
  EXPECT_EQ(first.save(), saved) << "a second save of the same state writes the same";

  const auto doc = parse(saved);
  ASSERT_TRUE(doc);
  EXPECT_GT(handleOf(std::string(core::trimBlanks(doc->valueText(
                doc->tags(doc->headerRecord())[doc->headerVariable("$HANDSEED")->first])))),
            doc->maxHandle());
  // The text's extension dictionary chain, as the host writes it: text -> xdict (no reactors)
  // -> "ACAD_FIELD" dictionary -> "TEXT" field.
  const RecordId textRecord = testing::recordOfHandle(*doc, textHandle);
  ASSERT_NE(textRecord, kNoRecord);
  const RecordView textView(*doc, textRecord);
  ASSERT_TRUE(textView.extensionDictionary());
  const RecordId xdict = testing::recordOfHandle(*doc, *textView.extensionDictionary());
  EXPECT_EQ(RecordView(*doc, xdict).owner(), textHandle);
  EXPECT_TRUE(RecordView(*doc, xdict).reactors().empty());
  EXPECT_EQ(testing::firstValue(*doc, xdict, 3), "ACAD_FIELD");
  const RecordId fieldDict = testing::recordOfHandle(*doc, handleOf(*testing::firstValue(*doc, xdict, 360)));
  EXPECT_EQ(RecordView(*doc, fieldDict).reactors(), std::vector<std::uint64_t>{*textView.extensionDictionary()});
  EXPECT_EQ(testing::firstValue(*doc, fieldDict, 3), "TEXT");

  Loaded second(saved);
  expectTextField(second, textHandle, L"Layer 0 in 2 units",
                  {L"%<\\AcObjProp Object(%<\\_ObjId ", L"%<\\AcVar LUNITS>%"});
  const auto* property = second.db().get<headless::Field>(
      second.db().get<headless::Field>(headless::fieldOf(second.db(), second.id(textHandle)))->getChild(0));
  ASSERT_EQ(property->objectIds().size(), 1u);
  EXPECT_EQ(second.db().lookup(property->objectIds()[0])->handle(), AcDbHandle(0x222));
  expectTextField(second, 0x248, L"Units: 4", {L"%<\\AcVar LUPREC>%"});
  // The drawing's two own fields are still there: 4 before, 3 + 2 new.
  EXPECT_EQ(second.db().get<headless::FieldList>(second.db().fieldListId())->ids().size(), 9u);

  if (testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const std::string script =
      "import sys, ezdxf\n"
      "doc = ezdxf.readfile(sys.argv[1])\n"
      "print(len(doc.audit().errors))\n"
      "print(doc.entitydb[\"" + formatHandle(textHandle) + "\"].dxf.text)\n"
      "print(doc.entitydb[\"248\"].text)\n";
  EXPECT_EQ(runEzdxf(script, saved), "0\nLayer 0 in 2 units\nUnits: 4\n");
}

TEST(DrawingSave, UpdatedDateFieldsKeepTextValueAndCheckSumInStep) {
  CORVANE_NEED_SAMPLES();
  Loaded loaded(sample("ezdxf-uncommon.dxf"));
  loaded.host.engine().evaluateFields(&loaded.db(), {}, AcDbField::kDemand);
  const std::string saved = loaded.save();
  const auto doc = parse(saved);
  ASSERT_TRUE(doc);
  // For each text (ATTDEF 5F5, ATTRIB 5FC): its wrapper field and that field's one child. The
  // definition's wrapper has one data entry more, which says it belongs to a definition.
  struct Case {
    std::uint64_t text;
    std::uint64_t wrapper;
    std::uint64_t child;
    long valueBlocks;
  };
  for (const Case c : {Case{0x5F5, 0x5F8, 0x5F9, 3}, Case{0x5FC, 0x5FF, 0x600, 2}}) {
    SCOPED_TRACE(c.text);
    const RecordId text = testing::recordOfHandle(*doc, c.text);
    const RecordId wrapper = testing::recordOfHandle(*doc, c.wrapper);
    const RecordId child = testing::recordOfHandle(*doc, c.child);
    const std::string shown = *testing::firstValue(*doc, child, 301);
    // The child's display text with its length; the database's view of it.
    EXPECT_EQ(*testing::firstValue(*doc, child, 98), std::to_string(shown.size()));
    const auto* field = loaded.db().get<headless::Field>(loaded.id(c.child));
    EXPECT_EQ(core::toUtf8(field->getDisplayText()), shown);
    EXPECT_EQ(*testing::firstValue(*doc, child, 95), std::to_string(field->evaluationStatus()));
    // The text shows the wrapper's code with the child's text in place of its placeholder.
    EXPECT_EQ(*testing::firstValue(*doc, wrapper, 2), "%<\\_FldIdx 0>%");
    const std::string textValue = *testing::firstValue(*doc, text, 1, RecordView(*doc, text).find(100).value_or(1) + 1);
    EXPECT_EQ(textValue, shown);
    EXPECT_EQ(*testing::firstValue(*doc, wrapper, 301), shown);
    // The check sum is that of the text: the 140 after the key.
    const auto tags = testing::recordTags(*doc, wrapper);
    const auto key = std::find(tags.begin(), tags.end(), std::pair<int, std::string>{6, "ACFD_FIELDTEXT_CHECKSUM"});
    ASSERT_NE(key, tags.end());
    const auto sum = std::find_if(key, tags.end(), [](const auto& tag) { return tag.first == 140; });
    ASSERT_NE(sum, tags.end());
    EXPECT_EQ(std::stod(sum->second), headless::fieldTextChecksum(core::fromUtf8(textValue)));
    // Each value block ends where it should.
    EXPECT_EQ(std::count(tags.begin(), tags.end(), std::pair<int, std::string>{304, "ACVALUE_END"}), c.valueBlocks);
  }
  // The update changed only the fields and their texts.
  const auto before = parse(sample("ezdxf-uncommon.dxf"));
  ASSERT_EQ(before->sections().size(), doc->sections().size());
  std::size_t changed = 0;
  for (std::size_t s = 0; s < doc->sections().size(); ++s) {
    ASSERT_EQ(before->sections()[s].records.size(), doc->sections()[s].records.size());
    for (std::size_t r = 0; r < doc->sections()[s].records.size(); ++r) {
      if (testing::recordTags(*before, before->sections()[s].records[r]) !=
          testing::recordTags(*doc, doc->sections()[s].records[r])) {
        ++changed;
      }
    }
  }
  EXPECT_EQ(changed, 6u) << "two texts and four fields";

  if (testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  EXPECT_EQ(runEzdxf("import sys, ezdxf\ndoc = ezdxf.readfile(sys.argv[1])\nprint(len(doc.audit().errors))\n", saved),
            "0\n");
}

TEST(DrawingSave, ADrawingWithoutFieldsGetsItsFieldListAndClasses) {
  CORVANE_NEED_SAMPLES();
  Loaded first(sample("ezdxf-multi_insert_with_attribs.dxf"));
  const AcDbObjectId attribute = first.id(0x3D);
  ASSERT_NE(first.db().get<headless::Attribute>(attribute), nullptr);
  headless::attachField(first.db(), attribute, L"%<\\AcVar LUNITS>%");
  first.host.engine().evaluateFields(&first.db(), {}, AcDbField::kDemand);
  const std::string saved = first.save();

  const auto doc = parse(saved);
  std::vector<std::string> classes;
  for (const RecordId id : testing::recordsOfType(*doc, "CLASS")) classes.push_back(*testing::firstValue(*doc, id, 1));
  EXPECT_NE(std::find(classes.begin(), classes.end(), "FIELD"), classes.end());
  EXPECT_NE(std::find(classes.begin(), classes.end(), "FIELDLIST"), classes.end());
  const auto lists = testing::recordsOfType(*doc, "FIELDLIST");
  ASSERT_EQ(lists.size(), 1u);
  EXPECT_EQ(*testing::firstValue(*doc, lists[0], 90), "2");
  // The root dictionary names it.
  const RecordId root = doc->sections()[*doc->findSection("OBJECTS")].records.front();
  const auto tags = testing::recordTags(*doc, root);
  const auto entry = std::find(tags.begin(), tags.end(), std::pair<int, std::string>{3, "ACAD_FIELDLIST"});
  ASSERT_NE(entry, tags.end());
  EXPECT_EQ(handleOf((entry + 1)->second), *RecordView(*doc, lists[0]).handle());

  Loaded second(saved);
  expectTextField(second, 0x3D, L"2", {L"%<\\AcVar LUNITS>%"});

  if (testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  EXPECT_EQ(runEzdxf("import sys, ezdxf\ndoc = ezdxf.readfile(sys.argv[1])\nprint(len(doc.audit().errors))\n"
                     "print(doc.entitydb[\"3D\"].dxf.text)\n",
                     saved),
            "0\n2\n");
}

TEST(DrawingSave, ErasedAndReplacedObjectsLeaveTheDrawing) {
  CORVANE_NEED_SAMPLES();
  struct Case {
    const char* name;
    std::function<void(Loaded&)> change;
    std::vector<std::uint64_t> gone;  // records no longer in the drawing
    std::size_t fields;               // in the field list afterwards
  };
  const Case cases[] = {
      // An erased multiline text takes its extension dictionary and fields along.
      {"erase a text with a field",
       [](Loaded& loaded) {
         host::AcDbObjectPointer<host::AcDbObject> text(loaded.host, loaded.id(0x9A), host::AcDb::kForWrite);
         ASSERT_EQ(text->erase(), host::Acad::eOk);
       },
       {0x9A, 0xA1, 0xAA, 0xA9, 0xCD},
       14},
      // A field replaced by another one: the old field and its child go, the new ones come.
      {"replace a text's field",
       [](Loaded& loaded) {
         headless::attachField(loaded.db(), loaded.id(0xDA), L"plain text");
       },
       {0xDD, 0xDE},
       15},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Loaded first(sample("ezdxf-mtext_complex_inline_codes.dxf"));
    c.change(first);
    const std::string saved = first.save();
    const auto doc = parse(saved);
    for (const auto handle : c.gone) EXPECT_EQ(testing::recordOfHandle(*doc, handle), kNoRecord) << handle;
    const auto lists = testing::recordsOfType(*doc, "FIELDLIST");
    ASSERT_EQ(lists.size(), 1u);
    EXPECT_EQ(*testing::firstValue(*doc, lists[0], 90), std::to_string(c.fields));
    for (const auto& [code, value] : testing::recordTags(*doc, lists[0])) {
      if (code == 330 && handleOf(value) != 0xC) {
        EXPECT_NE(testing::recordOfHandle(*doc, handleOf(value)), kNoRecord);
      }
    }
    Loaded second(saved);
    EXPECT_EQ(second.db().get<headless::FieldList>(second.db().fieldListId())->ids().size(), c.fields);
    if (!testing::pythonWithEzdxf().empty()) {
      EXPECT_EQ(runEzdxf("import sys, ezdxf\ndoc = ezdxf.readfile(sys.argv[1])\nprint(len(doc.audit().errors))\n", saved),
                "0\n");
    }
  }
}

TEST(DrawingSave, WritesChangedExtendedDataAndSystemVariables) {
  CORVANE_NEED_SAMPLES();
  Loaded first(sample("ezdxf-uncommon.dxf"));
  headless::Database& db = first.db();
  ASSERT_EQ(db.registerApp(L"CORVANE_TEST"), host::Acad::eOk);
  const host::ResBufList data = {{1001, std::wstring(L"CORVANE_TEST")},
                                 {1000, std::wstring(L"stamp")},
                                 {1070, std::int32_t{7}},
                                 {1040, 2.5},
                                 {1010, std::array<double, 3>{1, 2, 3}}};
  {
    host::AcDbObjectPointer<host::AcDbObject> line(first.host, first.id(0x222), host::AcDb::kForWrite);
    ASSERT_EQ(line->setXData(data), host::Acad::eOk);
  }
  ASSERT_EQ(db.setSysVar(L"LUNITS", {host::RTSHORT, std::int32_t{4}}), host::Acad::eOk);
  const std::string saved = first.save();

  const auto doc = parse(saved);
  std::vector<std::string> apps;
  for (const RecordId id : testing::recordsOfType(*doc, "APPID")) apps.push_back(*testing::firstValue(*doc, id, 2));
  EXPECT_EQ(std::count(apps.begin(), apps.end(), "CORVANE_TEST"), 1);
  const auto variable = doc->headerVariable("$LUNITS");
  ASSERT_TRUE(variable);
  EXPECT_EQ(doc->toInteger(doc->tags(doc->headerRecord())[variable->first]), 4);

  Loaded second(saved);
  EXPECT_EQ(second.db().lookup(second.id(0x222))->xData(L"CORVANE_TEST"), data);
  host::ResBuf units;
  ASSERT_EQ(second.db().getSysVar(L"LUNITS", units), host::Acad::eOk);
  EXPECT_EQ(units.value, (decltype(units.value){std::int32_t{4}}));
  EXPECT_TRUE(second.db().isRegApp(L"CORVANE_TEST"));
}

TEST(DrawingSave, ObjectsOpenedForWriteButUnchangedKeepTheirRecords) {
  CORVANE_NEED_SAMPLES();
  for (const char* name : {"ezdxf-uncommon.dxf", "acadsharp-sample_AC1032_ascii.dxf", "ezdxf-hatches_2.dxf"}) {
    SCOPED_TRACE(name);
    Loaded loaded(sample(name));
    for (const auto id : loaded.db().objectIds()) {
      host::AcDbObjectPointer<host::AcDbObject> object(loaded.host, id, host::AcDb::kForWrite);
      ASSERT_TRUE(object);
    }
    EXPECT_TRUE(loaded.save() == sample(name)) << "an unchanged object changed its record";
  }
}

TEST(DrawingSave, WritesChangedPropertiesIntoTheirGroups) {
  CORVANE_NEED_SAMPLES();
  constexpr double kPi = 3.14159265358979323846;
  using Point = host::AcGePoint3d;
  struct Case {
    const char* name;
    std::uint64_t handle;
    std::function<void(host::AcDbObject&)> change;
    std::function<void(const host::AcDbObject&)> check;
    std::vector<std::pair<int, std::string>> groups;  // in the saved record
  };
  const Case cases[] = {
      {"multiline text", 0x248,
       [](host::AcDbObject& o) {
         auto& text = dynamic_cast<headless::MText&>(o);
         text.setLocation({1, 2, 3});
         text.setWidth(12.5);
         text.setAttachment(5);
       },
       [](const host::AcDbObject& o) {
         const auto& text = dynamic_cast<const headless::MText&>(o);
         EXPECT_EQ(text.location(), (Point{1, 2, 3}));
         EXPECT_EQ(text.width(), 12.5);
         EXPECT_EQ(text.attachment(), 5);
       },
       {{10, "1.0"}, {20, "2.0"}, {30, "3.0"}, {41, "12.5"}, {71, "5"}}},
      {"arc", 0x321,
       [](host::AcDbObject& o) {
         auto& arc = dynamic_cast<headless::Arc&>(o);
         arc.setRadius(2);
         arc.setStartAngle(kPi / 2);
       },
       [](const host::AcDbObject& o) {
         const auto& arc = dynamic_cast<const headless::Arc&>(o);
         EXPECT_EQ(arc.radius(), 2.0);
         EXPECT_NEAR(arc.startAngle(), kPi / 2, 1e-12);
         EXPECT_NEAR(arc.endAngle(), 248.817378352542 * kPi / 180, 1e-12);
       },
       {{40, "2.0"}, {50, "90.0"}, {51, "248.817378352542"}}},
      {"block reference", 0x5FA,
       [](host::AcDbObject& o) {
         auto& reference = dynamic_cast<headless::BlockReference&>(o);
         reference.setPosition({5, 6, 0});
         reference.setRotation(kPi);
         reference.setScaleFactors({2, 2, 2});
       },
       [](const host::AcDbObject& o) {
         const auto& reference = dynamic_cast<const headless::BlockReference&>(o);
         EXPECT_EQ(reference.position(), (Point{5, 6, 0}));
         EXPECT_NEAR(reference.rotation(), kPi, 1e-12);
         EXPECT_EQ(reference.scaleFactors(), (host::AcGeScale3d{2, 2, 2}));
         EXPECT_EQ(reference.blockName(), L"DATE_BLOCK");
       },
       {{2, "DATE_BLOCK"}, {10, "5.0"}, {41, "2.0"}, {42, "2.0"}, {43, "2.0"}, {50, "180.0"}}},
      {"attribute", 0x5FC,
       [](host::AcDbObject& o) {
         auto& attribute = dynamic_cast<headless::Attribute&>(o);
         attribute.setTag(L"WHEN");
         attribute.setFlags(headless::Attribute::kInvisible);
         attribute.setHeight(0.75);
       },
       [](const host::AcDbObject& o) {
         const auto& attribute = dynamic_cast<const headless::Attribute&>(o);
         EXPECT_EQ(attribute.tag(), L"WHEN");
         EXPECT_TRUE(attribute.isInvisible());
         EXPECT_EQ(attribute.height(), 0.75);
         EXPECT_EQ(attribute.textString(), L"21/04/2020");
       },
       {{2, "WHEN"}, {70, "1"}, {40, "0.75"}, {1, "21/04/2020"}}},
      {"polyline", 0x5F4,
       [](host::AcDbObject& o) {
         auto& polyline = dynamic_cast<headless::Polyline&>(o);
         auto vertices = polyline.vertices();
         vertices.resize(2);
         vertices[0].bulge = 1.0;
         polyline.setVertices(vertices);
         polyline.setClosed(false);
       },
       [](const host::AcDbObject& o) {
         const auto& polyline = dynamic_cast<const headless::Polyline&>(o);
         ASSERT_EQ(polyline.vertices().size(), 2u);
         EXPECT_EQ(polyline.vertices()[0].bulge, 1.0);
         EXPECT_EQ(polyline.vertices()[1].point.x, 3.928978666877583);
         EXPECT_FALSE(polyline.isClosed());
       },
       {{90, "2"}, {70, "0"}, {42, "1.0"}}},
      {"layer", 0x10,
       [](host::AcDbObject& o) {
         auto& layer = dynamic_cast<headless::LayerTableRecord&>(o);
         layer.setIsLocked(true);
         layer.setIsOff(true);
       },
       [](const host::AcDbObject& o) {
         const auto& layer = dynamic_cast<const headless::LayerTableRecord&>(o);
         EXPECT_TRUE(layer.isLocked());
         EXPECT_TRUE(layer.isOff());
         EXPECT_FALSE(layer.isFrozen());
       },
       {{70, "4"}, {62, "-7"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Loaded first(sample("ezdxf-uncommon.dxf"));
    {
      host::AcDbObjectPointer<host::AcDbObject> object(first.host, first.id(c.handle), host::AcDb::kForWrite);
      ASSERT_TRUE(object);
      c.change(*object.object());
    }
    const std::string saved = first.save();
    const auto doc = parse(saved);
    const auto tags = testing::recordTags(*doc, testing::recordOfHandle(*doc, c.handle));
    for (const auto& group : c.groups) EXPECT_NE(std::find(tags.begin(), tags.end(), group), tags.end()) << group.first;
    Loaded second(saved);
    const auto* object = second.db().lookup(second.id(c.handle));
    ASSERT_NE(object, nullptr);
    c.check(*object);
  }
}

// A small drawing of any version with what a drawing needs around one text (handle 40).
std::string smallDrawing(const std::string& version) {
  return testing::asciiDxf({
      {0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, version}, {9, "$DWGCODEPAGE"}, {3, "ANSI_1252"},
      {9, "$HANDSEED"}, {5, "50"}, {9, "$LUPREC"}, {70, "3"}, {0, "ENDSEC"},
      {0, "SECTION"}, {2, "CLASSES"}, {0, "ENDSEC"},
      {0, "SECTION"}, {2, "TABLES"},
      {0, "TABLE"}, {2, "BLOCK_RECORD"}, {5, "1"}, {330, "0"}, {100, "AcDbSymbolTable"}, {70, "1"},
      {0, "BLOCK_RECORD"}, {5, "1F"}, {330, "1"}, {100, "AcDbSymbolTableRecord"}, {100, "AcDbBlockTableRecord"},
      {2, "*Model_Space"}, {0, "ENDTAB"},
      {0, "TABLE"}, {2, "APPID"}, {5, "9"}, {330, "0"}, {100, "AcDbSymbolTable"}, {70, "1"},
      {0, "APPID"}, {5, "12"}, {330, "9"}, {100, "AcDbSymbolTableRecord"}, {100, "AcDbRegAppTableRecord"},
      {2, "ACAD"}, {70, "0"}, {0, "ENDTAB"}, {0, "ENDSEC"},
      {0, "SECTION"}, {2, "ENTITIES"},
      {0, "TEXT"}, {5, "40"}, {330, "1F"}, {100, "AcDbEntity"}, {8, "0"}, {100, "AcDbText"}, {10, "0.0"},
      {20, "0.0"}, {30, "0.0"}, {40, "1.0"}, {1, "Gr\\U+00F6\\U+00DFe"}, {100, "AcDbText"}, {0, "ENDSEC"},
      {0, "SECTION"}, {2, "OBJECTS"}, {0, "DICTIONARY"}, {5, "C"}, {330, "0"}, {100, "AcDbDictionary"},
      {281, "1"}, {0, "ENDSEC"}, {0, "EOF"}});
}

TEST(DrawingSave, FieldsTakeTheLayoutOfTheDrawingsVersion) {
  struct Case {
    const char* version;
    bool longValues;  // flags, unit, format and end marker around each value
  };
  for (const Case c : {Case{"AC1015", false}, Case{"AC1018", false}, Case{"AC1024", true}, Case{"AC1032", true}}) {
    SCOPED_TRACE(c.version);
    Loaded first(smallDrawing(c.version));
    const AcDbObjectId text = first.id(0x40);
    ASSERT_NE(first.db().get<headless::Text>(text), nullptr);
    EXPECT_EQ(first.db().get<headless::Text>(text)->textString(), L"Gr\u00F6\u00DFe");
    headless::attachField(first.db(), text, L"%<\\AcVar LUPREC \\f \"%lu2\">% mm");
    first.host.engine().evaluateFields(&first.db(), {}, AcDbField::kDemand);
    const std::string saved = first.save();

    const auto doc = parse(saved);
    const auto fields = testing::recordsOfType(*doc, "FIELD");
    ASSERT_EQ(fields.size(), 2u);
    for (const RecordId field : fields) {
      const auto tags = testing::recordTags(*doc, field);
      const bool hasFormat = std::any_of(tags.begin(), tags.end(), [](const auto& tag) { return tag.first == 4; });
      const bool hasEnd = std::find(tags.begin(), tags.end(), std::pair<int, std::string>{304, "ACVALUE_END"}) != tags.end();
      EXPECT_EQ(hasFormat, !c.longValues);
      EXPECT_EQ(hasEnd, c.longValues);
    }
    // Classes for the new kinds of record, and the field list the drawing lacked.
    EXPECT_EQ(testing::recordsOfType(*doc, "CLASS").size(), 2u);
    EXPECT_EQ(testing::recordsOfType(*doc, "FIELDLIST").size(), 1u);

    Loaded second(saved);
    // Decimal units at the drawing's precision (LUPREC 3).
    expectTextField(second, 0x40, L"3.000 mm", {L"%<\\AcVar LUPREC"});
    const auto* child = second.db().get<headless::Field>(
        second.db().get<headless::Field>(headless::fieldOf(second.db(), second.id(0x40)))->getChild(0));
    host::AcValue value;
    child->getValue(value);
    EXPECT_EQ(value.data(), host::AcValue(std::int32_t{3}).data());
  }
}

TEST(DrawingSave, BinaryDrawingsWorkAsAsciiOnes) {
  CORVANE_NEED_SAMPLES();
  auto ascii = parse(sample("ezdxf-uncommon.dxf"));
  StringSink binary;
  ASSERT_TRUE(ascii->write(binary, FileFormat::Binary).ok());
  Loaded first(binary.data);
  ASSERT_EQ(first.drawing->document().format(), FileFormat::Binary);
  EXPECT_EQ(first.db().get<headless::FieldList>(first.db().fieldListId())->ids().size(), 4u);
  EXPECT_TRUE(first.save() == binary.data);
  headless::attachField(first.db(), first.id(0x248), L"%<\\AcVar LUPREC>% places");
  first.host.engine().evaluateFields(&first.db(), {}, AcDbField::kDemand);
  const std::string saved = first.save();
  ASSERT_EQ(saved.substr(0, 18), "AutoCAD Binary DXF");
  Loaded second(saved);
  expectTextField(second, 0x248, L"4 places", {L"%<\\AcVar LUPREC>%"});
}

TEST(DrawingSave, FailsWithoutWritingForObjectsItCannotSpell) {
  CORVANE_NEED_SAMPLES();
  const testing::ScratchFolder folder;
  const auto path = folder.path() / "drawing.dxf";
  testing::writeBytes(path, sample("ezdxf-uncommon.dxf"));
  headless::HostApplication host;
  auto loaded = DrawingFile::load(path, host);
  ASSERT_TRUE(loaded.drawing) << loaded.error;
  // A block definition made in memory has no BLOCK and ENDBLK records to go with it yet. The
  // erased line and the changed text are not written either: nothing is.
  headless::Database& db = loaded.drawing->database();
  AcDbObjectId line;
  ASSERT_EQ(db.getAcDbObjectId(line, AcDbHandle(0x222)), host::Acad::eOk);
  {
    host::AcDbObjectPointer<host::AcDbObject> erased(host, line, host::AcDb::kForWrite);
    ASSERT_EQ(erased->erase(), host::Acad::eOk);
  }
  AcDbObjectId text;
  ASSERT_EQ(db.getAcDbObjectId(text, AcDbHandle(0x248)), host::Acad::eOk);
  db.get<headless::MText>(text)->setContents(L"changed");
  db.addRecord(std::make_unique<headless::BlockTableRecord>(L"NEW_BLOCK"));
  const Status status = loaded.drawing->save();
  EXPECT_FALSE(status.ok());
  EXPECT_NE(status.message().find("BLOCK_RECORD"), std::string::npos) << status.message();
  EXPECT_EQ(testing::readBytes(path), sample("ezdxf-uncommon.dxf"));
  StringSink inMemory;
  ASSERT_TRUE(loaded.drawing->document().write(inMemory).ok());
  EXPECT_TRUE(inMemory.data == sample("ezdxf-uncommon.dxf")) << "the failed save changed the drawing in memory";
  EXPECT_EQ(folder.names(), std::vector<std::string>{"drawing.dxf"});
}

}  // namespace
}  // namespace corvane::dxf
