// Drawings read into the headless database: the sample drawings' entities, attributes and
// fields as the database sees them, and saves without changes that give back the file.
#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <string>
#include <vector>

#include "dxf/model/drawingfile.h"
#include "headless/db/attribute.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/field.h"
#include "headless/db/fieldlist.h"
#include "headless/db/layertablerecord.h"
#include "headless/db/mtext.h"
#include "headless/db/proxyobject.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "support/dxftext.h"
#include "support/samples.h"

namespace corvane::dxf {
namespace {

using host::AcDbField;
using host::AcDbObjectId;

const char* const kSamples[] = {
    "acadsharp-dynamic-BLOCKLINEARPARAMETER.dxf", "acadsharp-dynamic-BLOCKVISIBILITYPARAMETER.dxf",
    "acadsharp-sample_AC1032_ascii.dxf",          "ezdxf-acad_table_simple.dxf",
    "ezdxf-hatches_1.dxf",                        "ezdxf-hatches_2.dxf",
    "ezdxf-mtext_complex_inline_codes.dxf",       "ezdxf-multi_insert_with_attribs.dxf",
    "ezdxf-uncommon.dxf",
};

std::unique_ptr<DrawingFile> loadSample(const std::string& name, headless::HostApplication& host) {
  auto loaded = DrawingFile::load(testing::sampleFolder() / name, host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  return std::move(loaded.drawing);
}

std::vector<std::wstring> typesIn(const headless::Database& db, AcDbObjectId block) {
  std::vector<std::wstring> types;
  for (const auto id : db.get<headless::BlockTableRecord>(block)->entities()) types.push_back(db.lookup(id)->dxfName());
  return types;
}

TEST(DrawingFile, SavesEverySampleAsTheTagLayerDoes) {
  CORVANE_NEED_SAMPLES();
  for (const char* name : kSamples) {
    SCOPED_TRACE(name);
    const std::string bytes = testing::readBytes(testing::sampleFolder() / name);
    auto tagLayer = Document::read(bytes);
    ASSERT_TRUE(tagLayer.document) << tagLayer.error;
    StringSink expected;
    ASSERT_TRUE(tagLayer.document->write(expected).ok());

    headless::HostApplication host;
    auto loaded = DrawingFile::read(bytes, host, name);
    ASSERT_TRUE(loaded.drawing) << loaded.error;
    StringSink saved;
    const Status status = loaded.drawing->write(saved);
    ASSERT_TRUE(status.ok()) << status.message();
    EXPECT_TRUE(saved.data == expected.data) << "the save changed the drawing";
    EXPECT_TRUE(saved.data == bytes);
  }
}

TEST(DrawingFile, LoadsTheSamplesEntitiesAttributesAndFields) {
  CORVANE_NEED_SAMPLES();
  // Counted in the files: entities whose owner (the 330 outside the reactors) is a space, less
  // attributes and sequence ends, which belong to their block reference; the fields; and the
  // attribute values in file order.
  struct Case {
    const char* name;
    std::size_t modelSpace;
    std::vector<std::wstring> firstTypes;
    std::size_t paperSpace;
    std::size_t fields;
    std::vector<std::wstring> attributes;
  };
  const Case cases[] = {
      {"acadsharp-dynamic-BLOCKLINEARPARAMETER.dxf", 2, {L"INSERT", L"INSERT"}, 0, 0, {}},
      {"acadsharp-dynamic-BLOCKVISIBILITYPARAMETER.dxf", 4, {L"INSERT", L"INSERT", L"INSERT"}, 0, 0, {}},
      {"acadsharp-sample_AC1032_ascii.dxf", 163, {L"POINT", L"POINT", L"POINT"}, 2, 0, {L"17", L"", L"hello", L"bla bla"}},
      {"ezdxf-acad_table_simple.dxf", 1, {L"ACAD_TABLE"}, 0, 0, {}},
      {"ezdxf-hatches_1.dxf", 32, {L"LWPOLYLINE", L"LWPOLYLINE", L"LWPOLYLINE"}, 0, 0, {}},
      {"ezdxf-hatches_2.dxf", 11, {L"LWPOLYLINE", L"ARC", L"SPLINE"}, 0, 0, {}},
      {"ezdxf-mtext_complex_inline_codes.dxf", 12, {L"MTEXT", L"LINE", L"LINE"}, 0, 16, {}},
      {"ezdxf-multi_insert_with_attribs.dxf", 1, {L"INSERT"}, 0, 0, {L"Flag", L"x = 0.000", L"y = 0.000"}},
      {"ezdxf-uncommon.dxf", 82, {L"LINE", L"LINE", L"LINE"}, 2, 4, {L"21/04/2020"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    headless::HostApplication host;
    auto drawing = loadSample(c.name, host);
    ASSERT_TRUE(drawing);
    const headless::Database& db = drawing->database();
    const auto model = typesIn(db, db.modelSpaceId());
    EXPECT_EQ(model.size(), c.modelSpace);
    EXPECT_EQ(std::vector<std::wstring>(model.begin(), model.begin() + static_cast<std::ptrdiff_t>(c.firstTypes.size())),
              c.firstTypes);
    EXPECT_EQ(typesIn(db, db.paperSpaceId()).size(), c.paperSpace);
    EXPECT_EQ(db.get<headless::FieldList>(db.fieldListId())->ids().size(), c.fields);

    std::vector<std::wstring> attributes;
    for (const auto id : db.objectIds()) {
      const auto* attribute = db.get<headless::Attribute>(id);
      if (!attribute) continue;
      attributes.push_back(attribute->textString());
      // Each attribute is one of its block reference's, never an entity of a space.
      const auto* reference = db.get<headless::BlockReference>(attribute->ownerId());
      ASSERT_NE(reference, nullptr);
      EXPECT_NE(std::find(reference->attributeIds().begin(), reference->attributeIds().end(), id),
                reference->attributeIds().end());
    }
    EXPECT_EQ(attributes, c.attributes);
  }
}

TEST(DrawingFile, KeepsHandlesOwnersAndTheStandardObjectsOfTheFile) {
  CORVANE_NEED_SAMPLES();
  headless::HostApplication host;
  auto drawing = loadSample("ezdxf-uncommon.dxf", host);
  ASSERT_TRUE(drawing);
  const headless::Database& db = drawing->database();
  // Handles as in the file: the root dictionary C, the field list 5F0, model space 1F.
  EXPECT_EQ(db.namedObjectsDictionaryId(), [&] {
    AcDbObjectId id;
    db.getAcDbObjectId(id, host::AcDbHandle(0xC));
    return id;
  }());
  EXPECT_EQ(db.lookup(db.fieldListId())->handle(), host::AcDbHandle(0x5F0));
  EXPECT_EQ(db.lookup(db.modelSpaceId())->handle(), host::AcDbHandle(0x1F));
  EXPECT_EQ(db.get<headless::BlockTableRecord>(db.modelSpaceId())->name(), L"*Model_Space");
  // Every object's owner is the object its record names (here the ATTRIB's INSERT and the
  // field's dictionary).
  struct Owned {
    std::uint64_t handle;
    std::uint64_t owner;
    const wchar_t* type;
  };
  const Owned cases[] = {{0x5FC, 0x5FA, L"ATTRIB"}, {0x5FF, 0x5FE, L"FIELD"}, {0x600, 0x5FF, L"FIELD"},
                         {0x5FD, 0x5FC, L"DICTIONARY"}, {0x5F0, 0xC, L"FIELDLIST"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.type);
    AcDbObjectId id;
    ASSERT_EQ(db.getAcDbObjectId(id, host::AcDbHandle(c.handle)), host::Acad::eOk);
    EXPECT_EQ(db.lookup(id)->dxfName(), c.type);
    EXPECT_EQ(db.lookup(db.lookup(id)->ownerId())->handle(), host::AcDbHandle(c.owner));
  }
  // The drawing's own handle seed: new objects come after it.
  EXPECT_EQ(db.handseed(), host::AcDbHandle(0x6DC));
  // Layers are records of the layer table; everything else unmodelled is a proxy that keeps
  // its names.
  AcDbObjectId layer;
  ASSERT_EQ(db.getAcDbObjectId(layer, host::AcDbHandle(0x10)), host::Acad::eOk);
  ASSERT_NE(db.get<headless::LayerTableRecord>(layer), nullptr);
  EXPECT_EQ(db.get<headless::LayerTableRecord>(layer)->name(), L"0");
  AcDbObjectId group;
  ASSERT_EQ(db.getAcDbObjectId(group, host::AcDbHandle(0xD)), host::Acad::eOk);
  EXPECT_EQ(db.lookup(group)->dxfName(), L"DICTIONARY");
}

TEST(DrawingFile, FindsTheFieldsOfTextsThroughTheirExtensionDictionaries) {
  CORVANE_NEED_SAMPLES();
  struct Case {
    const char* file;
    std::uint64_t text;
    std::uint64_t field;
    std::wstring childCode;
    std::wstring childValue;
    double checksum;
  };
  const Case cases[] = {
      {"ezdxf-uncommon.dxf", 0x5F5, 0x5F8, L"%<\\AcVar Date \\f \"dd/MM/yyyy\">%", L"21/04/2020", 2687},
      {"ezdxf-uncommon.dxf", 0x5FC, 0x5FF, L"%<\\AcVar Date \\f \"dd/MM/yyyy\">%", L"21/04/2020", 2687},
      {"ezdxf-mtext_complex_inline_codes.dxf", 0x9A, 0xA9, L"%<\\AcVar Filename \\f \"%fn6\">%",
       L"mtext_complex_inline_codes.dxf", 206757213},
      {"ezdxf-mtext_complex_inline_codes.dxf", 0x10B, 0x10E, L"%<\\AcVar Filename \\f \"%fn6\">%",
       L"mtext_complex_inline_codes.dxf", 206757213},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file + std::string(" ") + std::to_string(c.text));
    headless::HostApplication host;
    auto drawing = loadSample(c.file, host);
    ASSERT_TRUE(drawing);
    const headless::Database& db = drawing->database();
    AcDbObjectId text;
    ASSERT_EQ(db.getAcDbObjectId(text, host::AcDbHandle(c.text)), host::Acad::eOk);
    const AcDbObjectId fieldId = headless::fieldOf(db, text);
    ASSERT_FALSE(fieldId.isNull());
    const auto* field = db.get<headless::Field>(fieldId);
    EXPECT_EQ(field->handle(), host::AcDbHandle(c.field));
    EXPECT_EQ(field->evaluatorId(), L"_text");
    ASSERT_EQ(field->childCount(), 1);
    const auto* child = db.get<headless::Field>(field->getChild(0));
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->evaluatorId(), L"AcVar");
    EXPECT_EQ(child->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers), c.childCode);
    EXPECT_EQ(child->getDisplayText(), c.childValue);
    EXPECT_EQ(child->evaluationStatus(), AcDbField::kSuccess);
    // The text field's code holds the child in place; evaluated children give the text back,
    // both as stored (caret escapes included).
    EXPECT_NE(field->getFieldCode(AcDbField::kFieldCode).find(c.childCode), std::wstring::npos);
    const std::wstring shown = dynamic_cast<const headless::TextHost*>(db.lookup(text))->hostText();
    EXPECT_EQ(field->getFieldCode(AcDbField::kEvaluatedChildren), shown);
    host::AcValue checksum;
    ASSERT_EQ(field->getData(L"ACFD_FIELDTEXT_CHECKSUM", checksum), host::Acad::eOk);
    EXPECT_EQ(checksum, host::AcValue(c.checksum));
    EXPECT_EQ(field->record().modified, false);
  }
}

TEST(DrawingFile, ReadsDateValuesAndTheirFormats) {
  CORVANE_NEED_SAMPLES();
  headless::HostApplication host;
  auto drawing = loadSample("ezdxf-uncommon.dxf", host);
  ASSERT_TRUE(drawing);
  const headless::Database& db = drawing->database();
  // 310 E4070400020015001000 2D002700 0000: 2020-04-21 16:45:39; 43942 is that day's OLE date.
  struct Case {
    std::uint64_t handle;
    double oleDate;
  };
  const Case cases[] = {{0x5F9, 43942 + (16 * 3600 + 45 * 60 + 39) / 86400.0},
                        {0x600, 43942 + (16 * 3600 + 46 * 60 + 47) / 86400.0}};
  for (const auto& c : cases) {
    AcDbObjectId id;
    ASSERT_EQ(db.getAcDbObjectId(id, host::AcDbHandle(c.handle)), host::Acad::eOk);
    host::AcValue value;
    db.get<headless::Field>(id)->getValue(value);
    host::AcValue::Date date;
    ASSERT_TRUE(value.get(date));
    EXPECT_NEAR(date.oleDate, c.oleDate, 1e-9);
    EXPECT_EQ(value.getFormat(), L"dd/MM/yyyy");
    host::AcValue variable;
    ASSERT_EQ(db.get<headless::Field>(id)->getData(L"Variable", variable), host::Acad::eOk);
    EXPECT_EQ(variable, host::AcValue(L"Date"));
  }
}

TEST(DrawingFile, ReadsUnitsIntoSystemVariablesAndNamesTheDrawing) {
  const std::string text = testing::asciiDxf(
      {{0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, "AC1032"}, {9, "$HANDSEED"}, {5, "40"},
       {9, "$LUNITS"}, {70, "4"}, {9, "$LUPREC"}, {70, "3"}, {9, "$DIMZIN"}, {70, "8"}, {9, "$CECOLOR"}, {62, "1"},
       {9, "$DIMDSEP"}, {70, "44"}, {9, "$LIMMAX"}, {10, "420.0"}, {20, "297.0"}, {0, "ENDSEC"}, {0, "EOF"}});
  headless::HostApplication host;
  auto loaded = DrawingFile::read(text, host, "/drawings/plan.dxf");
  ASSERT_TRUE(loaded.drawing) << loaded.error;
  const headless::Database& db = loaded.drawing->database();
  struct Case {
    const wchar_t* name;
    decltype(host::ResBuf{}.value) value;
  };
  const Case cases[] = {
      {L"LUNITS", std::int32_t{4}},
      {L"LUPREC", std::int32_t{3}},
      {L"DIMZIN", std::int32_t{8}},
      {L"UNITMODE", std::int32_t{0}},  // not in the header: the host's default stays
      {L"CECOLOR", std::wstring(L"1")},
      {L"DIMDSEP", std::wstring(L",")},
      {L"LIMMAX", std::array<double, 3>{420.0, 297.0, 0.0}},
      {L"DWGNAME", std::wstring(L"plan.dxf")},
      {L"DWGPREFIX", std::wstring(L"/drawings/")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.name, c.name + std::wcslen(c.name)));
    host::ResBuf value;
    ASSERT_EQ(db.getSysVar(c.name, value), host::Acad::eOk);
    EXPECT_EQ(value.value, c.value);
  }
  EXPECT_EQ(db.getFilename(), L"/drawings/plan.dxf");
  EXPECT_EQ(db.handseed(), host::AcDbHandle(0x40));
}

// A drawing whose objects are the given fields, all in its field list.
std::string drawingWithFields(const std::vector<std::vector<testing::TagText>>& fields) {
  std::vector<testing::TagText> tags = {{0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, "AC1032"},
                                        {9, "$HANDSEED"}, {5, "F000"}, {0, "ENDSEC"},
                                        {0, "SECTION"}, {2, "ENTITIES"}, {0, "LINE"}, {5, "30"}, {8, "0"},
                                        {10, "0.0"}, {20, "0.0"}, {11, "1.0"}, {21, "1.0"}, {0, "ENDSEC"},
                                        {0, "SECTION"}, {2, "OBJECTS"}, {0, "DICTIONARY"}, {5, "C"}, {330, "0"},
                                        {100, "AcDbDictionary"}, {3, "ACAD_FIELDLIST"}, {350, "D"},
                                        {0, "FIELDLIST"}, {5, "D"}, {330, "C"}, {100, "AcDbIdSet"},
                                        {90, std::to_string(fields.size())}};
  for (std::size_t i = 0; i < fields.size(); ++i) tags.push_back({330, std::to_string(100 + i)});
  tags.push_back({100, "AcDbFieldList"});
  for (std::size_t i = 0; i < fields.size(); ++i) {
    tags.push_back({0, "FIELD"});
    tags.push_back({5, std::to_string(100 + i)});
    tags.push_back({330, "D"});
    tags.insert(tags.end(), fields[i].begin(), fields[i].end());
  }
  tags.push_back({0, "ENDSEC"});
  tags.push_back({0, "EOF"});
  return testing::asciiDxf(tags);
}

TEST(DrawingFile, DamagedFieldsLoadEvaluateAndSaveAsRead) {
  using Tags = std::vector<testing::TagText>;
  // A chain of fields each holding the next: deeper than any drawing nests them.
  std::vector<Tags> chain;
  for (int i = 0; i < 300; ++i) {
    chain.push_back({{100, "AcDbField"}, {1, "_text"}, {2, "%<\\_FldIdx 0>%"}, {90, "1"},
                     {360, std::to_string(101 + i)}});
  }
  chain.push_back({{100, "AcDbField"}, {1, "AcVar"}, {2, "\\AcVar LUNITS"}});
  struct Case {
    const char* name;
    std::vector<Tags> fields;
    std::size_t children;  // of the first field, once read
  };
  const Case cases[] = {
      {"a field holding itself", {{{100, "AcDbField"}, {1, "_text"}, {2, "a %<\\_FldIdx 0>%"}, {90, "1"}, {360, "100"}}}, 0},
      {"two fields holding each other",
       {{{100, "AcDbField"}, {1, "_text"}, {2, "%<\\_FldIdx 0>%"}, {90, "1"}, {360, "101"}},
        {{100, "AcDbField"}, {1, "_text"}, {2, "%<\\_FldIdx 0>%"}, {90, "1"}, {360, "100"}}},
       1},
      {"a child that is a line", {{{100, "AcDbField"}, {1, "_text"}, {2, "%<\\_FldIdx 0>%"}, {90, "1"}, {360, "30"}}}, 0},
      {"a cut value block", {{{100, "AcDbField"}, {1, "AcVar"}, {2, "\\AcVar LUNITS"}, {93, "1"}, {6, "Variable"}, {93, "2"}}}, 0},
      {"a data count without data", {{{100, "AcDbField"}, {1, "AcVar"}, {93, "1000000"}, {7, "ACFD_FIELD_VALUE"}}}, 0},
      {"a date of seven bytes",
       {{{100, "AcDbField"}, {1, "AcVar"}, {2, "\\AcVar Date"}, {7, "ACFD_FIELD_VALUE"}, {93, "0"}, {90, "8"},
         {92, "7"}, {310, "E4070400020015"}, {94, "0"}, {304, "ACVALUE_END"}, {301, "x"}, {98, "1"}}},
       0},
      {"nothing but the subclass", {{{100, "AcDbField"}}}, 0},
      {"a chain 300 deep", chain, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string bytes = drawingWithFields(c.fields);
    headless::HostApplication host;
    auto loaded = DrawingFile::read(bytes, host);
    ASSERT_TRUE(loaded.drawing) << loaded.error;
    headless::Database& db = loaded.drawing->database();
    AcDbObjectId first;
    ASSERT_EQ(db.getAcDbObjectId(first, host::AcDbHandle(0x100)), host::Acad::eOk);
    const auto* field = db.get<headless::Field>(first);
    ASSERT_NE(field, nullptr);
    std::size_t children = 0;
    for (int i = 0; i < field->childCount(); ++i) children += field->getChild(i).isNull() ? 0 : 1;
    EXPECT_EQ(children, c.children);
    StringSink unchanged;
    ASSERT_TRUE(loaded.drawing->write(unchanged).ok());
    EXPECT_TRUE(unchanged.data == bytes);
    host.engine().evaluateFields(&db, {}, AcDbField::kDemand);
    StringSink evaluated;
    EXPECT_TRUE(loaded.drawing->write(evaluated).ok());
    headless::HostApplication again;
    EXPECT_TRUE(DrawingFile::read(evaluated.data, again).drawing);
  }
}

}  // namespace
}  // namespace corvane::dxf
