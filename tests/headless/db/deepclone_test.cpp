// Deep clones inside one drawing: what is copied along with an entity, what the mapping lists,
// which references move onto the copies, and what is refused without a change.
#include "headless/db/deepclone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "headless/db/fieldlist.h"
#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

using host::AcDbIdMapping;
using host::AcDbIdPair;
using host::AcDbObjectId;
using testing::TestDrawing;

std::vector<AcDbIdPair> pairsOf(const AcDbIdMapping& mapping) {
  std::vector<AcDbIdPair> pairs;
  host::AcDbIdMappingIter it(mapping);
  for (it.start(); !it.done(); it.next()) {
    AcDbIdPair pair;
    EXPECT_TRUE(it.getMap(pair));
    pairs.push_back(pair);
  }
  return pairs;
}

AcDbObjectId cloneOf(const AcDbIdMapping& mapping, AcDbObjectId source) {
  AcDbIdPair pair(source, {}, false);
  return mapping.compute(pair) ? pair.value() : AcDbObjectId();
}

TEST(DeepClone, ATextsFieldComesAlongWithEverythingItOwns) {
  TestDrawing d;
  const AcDbObjectId circle = d.addCircle(1.0);
  // A text field whose one child refers to the circle by id.
  const AcDbObjectId source = d.addText();
  const AcDbObjectId field =
      attachField(d.db, source, L"Area: %<\\AcObjProp " + TestDrawing::idReference(circle) + L".Area>%");
  const AcDbObjectId child = d.field(field).children().at(0);

  struct Case {
    const char* name;
    std::vector<AcDbObjectId> ids;
    bool circleFollows;  // the child's reference moves onto the circle's copy
  } const cases[] = {{"text alone", {source}, false}, {"text and circle", {circle, source}, true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    AcDbIdMapping mapping;
    ASSERT_EQ(deepCloneObjects(d.db, c.ids, d.db.modelSpaceId(), mapping), host::Acad::eOk);
    const auto pairs = pairsOf(mapping);
    // The text, its extension dictionary, the field dictionary, the field and its child (and
    // the circle), each once; only what was asked for is primary.
    ASSERT_EQ(pairs.size(), c.ids.size() + 4);
    for (const auto& pair : pairs) {
      EXPECT_TRUE(pair.isCloned());
      EXPECT_EQ(pair.isPrimary(), std::count(c.ids.begin(), c.ids.end(), pair.key()) == 1);
      EXPECT_NE(d.host.handle(pair.value()), d.host.handle(pair.key()));
    }
    const AcDbObjectId copy = cloneOf(mapping, source);
    const AcDbObjectId copiedField = fieldOf(d.db, copy);
    EXPECT_EQ(copiedField, cloneOf(mapping, field));
    EXPECT_EQ(d.db.lookup(copy)->ownerId(), d.db.modelSpaceId());
    const Field& made = d.field(copiedField);
    EXPECT_EQ(made.children(), std::vector<AcDbObjectId>{cloneOf(mapping, child)});
    EXPECT_EQ(d.db.lookup(made.children()[0])->ownerId(), copiedField);
    const AcDbObjectId referenced = d.field(made.children()[0]).objectIds().at(0);
    EXPECT_EQ(referenced, c.circleFollows ? cloneOf(mapping, circle) : circle);
    EXPECT_EQ(made.ownCode(), d.field(field).ownCode());
    const auto& listed = d.db.get<FieldList>(d.db.fieldListId())->ids();
    EXPECT_NE(std::find(listed.begin(), listed.end(), copiedField), listed.end());
    EXPECT_NE(std::find(listed.begin(), listed.end(), made.children()[0]), listed.end());
  }
}

TEST(DeepClone, TableCellsAttributesAndExtendedDataFollowTheirCopies) {
  TestDrawing d;
  const AcDbObjectId table = d.addTable({{L"%<\\AcVar Date>%", L"7"}});
  const AcDbObjectId block = d.addBlock(L"Door");
  const AcDbObjectId reference = d.addBlockReference(block);
  const AcDbObjectId attribute = d.addAttribute(reference, L"WIDTH", L"900");
  const AcDbObjectId line = d.addLine({0, 0, 0}, {1, 0, 0});
  const AcDbObjectId stays = d.addLine({0, 0, 0}, {0, 1, 0});
  d.db.registerApp(L"LINKS");
  d.db.objects().lookupHeadless(line)->record().xdata = {
      {1001, std::wstring(L"LINKS")}, {1005, d.host.handle(table).text()}, {1005, d.host.handle(stays).text()}};

  AcDbIdMapping mapping;
  ASSERT_EQ(deepCloneObjects(d.db, {table, reference, line}, d.db.paperSpaceId(), mapping), host::Acad::eOk);
  const AcDbObjectId tableCopy = cloneOf(mapping, table);
  const AcDbObjectId cellField = d.table(tableCopy).fieldId(0, 0);
  EXPECT_EQ(cellField, cloneOf(mapping, d.table(table).fieldId(0, 0)));
  EXPECT_EQ(d.db.lookup(cellField)->ownerId(), tableCopy);
  EXPECT_EQ(d.table(tableCopy).value(0, 1), d.table(table).value(0, 1));

  const auto* referenceCopy = d.db.get<BlockReference>(cloneOf(mapping, reference));
  EXPECT_EQ(referenceCopy->attributeIds(), std::vector<AcDbObjectId>{cloneOf(mapping, attribute)});
  EXPECT_EQ(d.db.get<BlockReference>(reference)->attributeIds(), std::vector<AcDbObjectId>{attribute});
  const auto& references = d.db.get<BlockTableRecord>(block)->referenceIds();
  EXPECT_NE(std::find(references.begin(), references.end(), referenceCopy->objectId()), references.end());

  const auto xdata = d.db.lookup(cloneOf(mapping, line))->xData(L"LINKS");
  ASSERT_EQ(xdata.size(), 3u);
  EXPECT_EQ(std::get<std::wstring>(xdata[1].value), d.host.handle(tableCopy).text());
  EXPECT_EQ(std::get<std::wstring>(xdata[2].value), d.host.handle(stays).text());

  const auto& space = d.db.get<BlockTableRecord>(d.db.paperSpaceId())->entities();
  EXPECT_EQ(space, (std::vector<AcDbObjectId>{tableCopy, referenceCopy->objectId(), cloneOf(mapping, line)}));
}

TEST(DeepClone, RefusalsCloneNothing) {
  TestDrawing d;
  const AcDbObjectId circle = d.addCircle(1.0);
  const AcDbObjectId erased = d.addCircle(2.0);
  d.db.objects().lookupHeadless(erased)->record().erased = true;
  Database other(d.host);  // another drawing open in the same host
  const AcDbObjectId foreign = other.appendEntity(std::make_unique<Circle>(Circle::Point{0, 0, 0}, 1.0));
  struct Case {
    const char* name;
    std::vector<AcDbObjectId> ids;
    AcDbObjectId owner;
    host::Acad::ErrorStatus expected;
  } const cases[] = {
      {"a dictionary", {circle, d.db.namedObjectsDictionaryId()}, d.db.modelSpaceId(), host::Acad::eNotAnEntity},
      {"an erased entity", {circle, erased}, d.db.modelSpaceId(), host::Acad::eWasErased},
      {"another drawing's entity", {circle, foreign}, d.db.modelSpaceId(), host::Acad::eWrongDatabase},
      {"an owner that is no block", {circle}, circle, host::Acad::eWrongObjectType},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::size_t before = d.db.objectIds().size();
    AcDbIdMapping mapping;
    EXPECT_EQ(deepCloneObjects(d.db, c.ids, c.owner, mapping), c.expected);
    EXPECT_EQ(mapping.size(), 0u);
    EXPECT_EQ(d.db.objectIds().size(), before);
  }
}

}  // namespace
}  // namespace corvane::headless
