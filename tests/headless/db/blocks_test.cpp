// Symbol tables, blocks, layouts, block references with their attributes, dynamic blocks.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/acdbattribute.h"
#include "host/acdbattributedefinition.h"
#include "host/acdbblockreference.h"
#include "host/acdbblocktablerecord.h"
#include "host/acdbdynblockreference.h"
#include "host/acdblayertablerecord.h"
#include "host/acdblayout.h"
#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

using corvane::testing::TestDrawing;
using host::Acad;
using host::AcDbObjectId;

std::vector<std::wstring> recordNames(TestDrawing& d, host::AcDbSymbolTableIterator it) {
  std::vector<std::wstring> names;
  for (; !it.done(); it.step()) {
    AcDbObjectId id;
    EXPECT_EQ(it.getRecordId(id), Acad::eOk);
    host::AcDbObjectPointer<host::AcDbSymbolTableRecord> record(d.host, id, host::AcDb::kForRead, true);
    std::wstring name;
    record->getName(name);
    names.push_back(name);
  }
  return names;
}

TEST(Blocks, NewDrawingHasSpacesLayoutsAndLayerZero) {
  TestDrawing d;
  host::AcDbBlockTable* rawBlocks = nullptr;
  ASSERT_EQ(d.db.getSymbolTable(rawBlocks, host::AcDb::kForRead), Acad::eOk);
  host::AcDbObjectPointer<host::AcDbBlockTable> blocks(rawBlocks);
  EXPECT_EQ(recordNames(d, blocks->newIterator()), (std::vector<std::wstring>{L"*Model_Space", L"*Paper_Space"}));
  host::AcDbLayerTable* rawLayers = nullptr;
  ASSERT_EQ(d.db.getSymbolTable(rawLayers, host::AcDb::kForRead), Acad::eOk);
  host::AcDbObjectPointer<host::AcDbLayerTable> layers(rawLayers);
  EXPECT_EQ(recordNames(d, layers->newIterator()), (std::vector<std::wstring>{L"0"}));

  struct Case {
    std::wstring block;
    std::wstring layout;
    int tabOrder;
  } const cases[] = {{L"*Model_Space", L"Model", 0}, {L"*Paper_Space", L"Layout1", 1}};
  for (const auto& c : cases) {
    AcDbObjectId id;
    ASSERT_EQ(blocks->getAt(c.block, id), Acad::eOk);
    host::AcDbObjectPointer<host::AcDbBlockTableRecord> record(d.host, id, host::AcDb::kForRead);
    EXPECT_TRUE(record->isLayout());
    EXPECT_EQ(record->ownerId(), d.db.blockTableId());
    host::AcDbObjectPointer<host::AcDbLayout> layout(d.host, record->getLayoutId(), host::AcDb::kForRead);
    ASSERT_TRUE(layout);
    std::wstring name;
    layout->getLayoutName(name);
    EXPECT_EQ(name, c.layout);
    EXPECT_EQ(layout->getBlockTableRecordId(), id);
    EXPECT_EQ(layout->getTabOrder(), c.tabOrder);
    // The layout dictionary finds it by name.
    AcDbObjectId byName;
    EXPECT_EQ(d.db.get<Dictionary>(d.db.layoutDictionaryId())->getAt(c.layout, byName), Acad::eOk);
    EXPECT_EQ(byName, layout->objectId());
  }
  AcDbObjectId model;
  blocks->getAt(L"*MODEL_SPACE", model);
  EXPECT_EQ(model, d.db.currentSpaceId());
  // The tables are open for read until the pointers close them.
  EXPECT_TRUE(blocks->isReadEnabled());
}

TEST(Blocks, RecordFlagsAndLookup) {
  TestDrawing d;
  const auto door = d.addBlock(L"Door");
  const auto variant = d.addBlock(L"*U3", BlockTableRecord::kAnonymous);
  const auto site = d.addBlock(L"Site", BlockTableRecord::kExternalReference);
  const auto overlay = d.addBlock(L"Survey", BlockTableRecord::kExternalReference | BlockTableRecord::kOverlay);
  d.db.get<BlockTableRecord>(overlay)->setUnloaded(true);
  const auto sheet = d.addLayout(L"Sheet A");
  struct Case {
    std::wstring lookup;
    AcDbObjectId id;
    bool layout, anonymous, xref, overlay, unloaded;
  } const cases[] = {
      {L"door", door, false, false, false, false, false},
      {L"*u3", variant, false, true, false, false, false},
      {L"SITE", site, false, false, true, false, false},
      {L"Survey", overlay, false, false, true, true, true},
      {L"*Paper_Space0", sheet, true, false, false, false, false},
  };
  const auto* table = d.db.get<host::AcDbBlockTable>(d.db.blockTableId());
  for (const auto& c : cases) {
    AcDbObjectId id;
    ASSERT_EQ(table->getAt(c.lookup, id), Acad::eOk) << std::string(c.lookup.begin(), c.lookup.end());
    EXPECT_EQ(id, c.id);
    host::AcDbObjectPointer<host::AcDbBlockTableRecord> record(d.host, id, host::AcDb::kForRead);
    EXPECT_EQ(record->isLayout(), c.layout);
    EXPECT_EQ(record->isAnonymous(), c.anonymous);
    EXPECT_EQ(record->isFromExternalReference(), c.xref);
    EXPECT_EQ(record->isFromOverlayReference(), c.overlay);
    EXPECT_EQ(record->isUnloaded(), c.unloaded);
  }
  AcDbObjectId none;
  EXPECT_EQ(table->getAt(L"Window", none), Acad::eKeyNotFound);
  EXPECT_FALSE(table->has(L"Window"));
  EXPECT_TRUE(table->has(L"DOOR"));
}

TEST(Blocks, ErasedAndRenamedRecords) {
  TestDrawing d;
  const auto walls = d.addLayer(L"Walls");
  const auto doors = d.addLayer(L"Doors");
  const auto* table = d.db.get<host::AcDbLayerTable>(d.db.layerTableId());
  {
    host::AcDbObjectPointer<host::AcDbLayerTableRecord> record(d.host, walls, host::AcDb::kForWrite);
    ASSERT_EQ(record->erase(), Acad::eOk);
  }
  AcDbObjectId id;
  EXPECT_EQ(table->getAt(L"walls", id), Acad::eKeyNotFound);
  EXPECT_EQ(table->getAt(L"walls", id, true), Acad::eOk);
  EXPECT_EQ(id, walls);
  EXPECT_EQ(recordNames(d, table->newIterator()), (std::vector<std::wstring>{L"0", L"Doors"}));

  // A new record may take an erased one's name.
  const auto again = d.addLayer(L"WALLS");
  EXPECT_EQ(table->getAt(L"Walls", id), Acad::eOk);
  EXPECT_EQ(id, again);

  d.db.get<LayerTableRecord>(doors)->setName(L"Openings");
  EXPECT_EQ(table->getAt(L"Doors", id), Acad::eKeyNotFound);
  EXPECT_EQ(table->getAt(L"openings", id), Acad::eOk);
  EXPECT_EQ(id, doors);
  EXPECT_TRUE(d.db.get<LayerTableRecord>(doors)->record().modified);
}

TEST(Blocks, LayerStates) {
  TestDrawing d;
  const auto id = d.addLayer(L"Hidden");
  auto* layer = d.db.get<LayerTableRecord>(id);
  layer->setIsOff(true);
  layer->setIsLocked(true);
  host::AcDbObjectPointer<host::AcDbLayerTableRecord> record(d.host, id, host::AcDb::kForRead);
  EXPECT_TRUE(record->isOff());
  EXPECT_FALSE(record->isFrozen());
  EXPECT_TRUE(record->isLocked());
  EXPECT_EQ(layer->property(L"LayerOn")->data(), host::AcValue(std::int32_t{0}).data());
  EXPECT_EQ(layer->property(L"name")->data(), host::AcValue(L"Hidden").data());
}

TEST(Blocks, LoaderGivesHandles) {
  TestDrawing d;
  const auto id = d.db.addRecord(std::make_unique<BlockTableRecord>(L"FromFile"), host::AcDbHandle(0x2A0));
  AcDbObjectId found;
  ASSERT_EQ(d.db.getAcDbObjectId(found, host::AcDbHandle(0x2A0)), Acad::eOk);
  EXPECT_EQ(found, id);
  EXPECT_GT(d.db.handseed().value(), 0x2A0u);
  EXPECT_TRUE(d.db.get<host::AcDbBlockTable>(d.db.blockTableId())->has(L"fromfile"));
  const auto entity = d.db.appendEntity(std::make_unique<Line>(), id, host::AcDbHandle(0x2B0));
  EXPECT_EQ(d.db.get<host::AcDbEntity>(entity)->handle(), host::AcDbHandle(0x2B0));
  EXPECT_EQ(d.db.get<BlockTableRecord>(id)->entities(), std::vector<AcDbObjectId>{entity});
  EXPECT_THROW(d.db.addRecord(std::make_unique<LayerTableRecord>(L"Clash"), host::AcDbHandle(0x2A0)),
               std::invalid_argument);
  EXPECT_THROW(d.db.addRecord(std::make_unique<Line>()), std::invalid_argument);
}

TEST(Blocks, ReferencesDirectAndThroughOtherBlocks) {
  TestDrawing d;
  const auto bolt = d.addBlock(L"Bolt");
  const auto plate = d.addBlock(L"Plate");
  const auto frame = d.addBlock(L"Frame");
  const auto boltInPlate1 = d.addBlockReference(bolt, {}, {}, 0, plate);
  const auto boltInPlate2 = d.addBlockReference(bolt, {}, {}, 0, plate);
  const auto plateInFrame = d.addBlockReference(plate, {}, {}, 0, frame);
  const auto plateInModel = d.addBlockReference(plate);
  const auto frameInModel = d.addBlockReference(frame);
  const auto boltInModel = d.addBlockReference(bolt);
  auto sorted = [](std::vector<AcDbObjectId> ids) {
    std::sort(ids.begin(), ids.end());
    return ids;
  };
  struct Case {
    const char* name;
    AcDbObjectId block;
    bool directOnly;
    std::vector<AcDbObjectId> ids;
  } const cases[] = {
      {"bolt direct", bolt, true, {boltInPlate1, boltInPlate2, boltInModel}},
      // through Plate (placed in Frame and in model space) and on through Frame
      {"bolt all", bolt, false, {boltInPlate1, boltInPlate2, boltInModel, plateInFrame, plateInModel, frameInModel}},
      {"plate all", plate, false, {plateInFrame, plateInModel, frameInModel}},
      {"frame all", frame, false, {frameInModel}},
  };
  for (const auto& c : cases) {
    host::AcDbObjectPointer<host::AcDbBlockTableRecord> record(d.host, c.block, host::AcDb::kForRead);
    std::vector<AcDbObjectId> ids;
    EXPECT_EQ(record->getBlockReferenceIds(ids, c.directOnly), Acad::eOk);
    EXPECT_EQ(sorted(ids), sorted(c.ids)) << c.name;
  }

  // Erased references stay listed; pointing one elsewhere moves it.
  {
    host::AcDbObjectPointer<host::AcDbBlockReference> reference(d.host, boltInModel, host::AcDb::kForWrite);
    reference->erase();
  }
  EXPECT_EQ(d.db.get<BlockTableRecord>(bolt)->referenceIds().size(), 3u);
  d.db.get<BlockReference>(boltInPlate1)->setBlockTableRecord(frame);
  EXPECT_EQ(sorted(d.db.get<BlockTableRecord>(bolt)->referenceIds()), sorted({boltInPlate2, boltInModel}));
  EXPECT_EQ(sorted(d.db.get<BlockTableRecord>(frame)->referenceIds()), sorted({frameInModel, boltInPlate1}));
  d.db.destroyObject(boltInPlate2);
  EXPECT_EQ(d.db.get<BlockTableRecord>(bolt)->referenceIds(), std::vector<AcDbObjectId>{boltInModel});
}

TEST(Blocks, EntitiesOfABlockInOrderWithoutErased) {
  TestDrawing d;
  const auto a = d.addLine({0, 0, 0}, {1, 0, 0});
  const auto b = d.addCircle(1);
  const auto c = d.addText(L"x");
  {
    host::AcDbObjectPointer<host::AcDbEntity> entity(d.host, b, host::AcDb::kForWrite);
    entity->erase();
  }
  host::AcDbObjectPointer<host::AcDbBlockTableRecord> space(d.host, d.db.modelSpaceId(), host::AcDb::kForRead);
  std::vector<AcDbObjectId> ids;
  for (auto it = space->newIterator(); !it.done(); it.step()) {
    AcDbObjectId id;
    EXPECT_EQ(it.getEntityId(id), Acad::eOk);
    ids.push_back(id);
  }
  EXPECT_EQ(ids, (std::vector<AcDbObjectId>{a, c}));
  auto done = space->newIterator();
  for (; !done.done(); done.step()) {
  }
  AcDbObjectId past;
  EXPECT_EQ(done.getEntityId(past), Acad::eInvalidIndex);
}

// The read-only walk, as this host serves it and as the port does for any host: the entities a
// read open gives, each open for read while the reader has it, over the ids of the walk's start.
TEST(Blocks, ReadOnlyWalkHandsOutWhatAReadOpenGives) {
  using Walk = Acad::ErrorStatus (*)(const host::AcDbBlockTableRecord&, host::AcDbBlockTableRecord::EntityReader&);
  struct Case {
    const char* name;
    Walk walk;
  } const cases[] = {
      {"this host", [](const host::AcDbBlockTableRecord& r, host::AcDbBlockTableRecord::EntityReader& reader) {
         return r.readEntities(reader);
       }},
      {"any host", [](const host::AcDbBlockTableRecord& r, host::AcDbBlockTableRecord::EntityReader& reader) {
         return r.host::AcDbBlockTableRecord::readEntities(reader);
       }},
  };
  for (const Case& c : cases) {
    TestDrawing d;
    const auto line = d.addLine({0, 0, 0}, {1, 0, 0});
    const auto erased = d.addCircle(1);
    const auto held = d.addCircle(2);
    const auto notAnEntity = d.db.appendEntity(std::make_unique<Dictionary>());
    const auto gone = d.addText(L"gone");
    const auto text = d.addText(L"x");
    d.db.destroyObject(gone);
    {
      host::AcDbObjectPointer<host::AcDbEntity> entity(d.host, erased, host::AcDb::kForWrite);
      entity->erase();
    }
    host::AcDbObjectPointer<host::AcDbEntity> writing(d.host, held, host::AcDb::kForWrite);
    ASSERT_TRUE(writing);

    struct Reader final : host::AcDbBlockTableRecord::EntityReader {
      TestDrawing* d = nullptr;
      std::vector<AcDbObjectId> ids;
      std::vector<bool> readEnabled;
      std::vector<Acad::ErrorStatus> writeOpens;
      void read(const host::AcDbEntity& entity) override {
        ids.push_back(entity.objectId());
        readEnabled.push_back(entity.isReadEnabled());
        host::AcDbObjectPointer<host::AcDbEntity> again(d->host, entity.objectId(), host::AcDb::kForWrite);
        writeOpens.push_back(again.openStatus());
        // Added during the walk: not in it.
        if (ids.size() == 1) d->addLine({5, 5, 0}, {6, 6, 0});
      }
    } reader;
    reader.d = &d;
    {
      host::AcDbObjectPointer<host::AcDbBlockTableRecord> space(d.host, d.db.modelSpaceId(), host::AcDb::kForRead);
      EXPECT_EQ(c.walk(*space.object(), reader), Acad::eOk) << c.name;
    }
    EXPECT_EQ(reader.ids, (std::vector<AcDbObjectId>{line, text})) << c.name;
    EXPECT_EQ(reader.readEnabled, (std::vector<bool>{true, true})) << c.name;
    EXPECT_EQ(reader.writeOpens, (std::vector<Acad::ErrorStatus>{Acad::eWasOpenForRead, Acad::eWasOpenForRead})) << c.name;
    // Each was closed after its turn.
    for (const AcDbObjectId id : {line, text}) {
      host::AcDbObjectPointer<host::AcDbEntity> after(d.host, id, host::AcDb::kForWrite);
      EXPECT_EQ(after.openStatus(), Acad::eOk) << c.name;
    }
    EXPECT_TRUE(d.db.get<Dictionary>(notAnEntity));

    // A reader that throws leaves the entity closed.
    struct Thrower final : host::AcDbBlockTableRecord::EntityReader {
      void read(const host::AcDbEntity&) override { throw std::runtime_error("reader failed"); }
    } thrower;
    {
      host::AcDbObjectPointer<host::AcDbBlockTableRecord> space(d.host, d.db.modelSpaceId(), host::AcDb::kForRead);
      EXPECT_THROW(c.walk(*space.object(), thrower), std::runtime_error) << c.name;
    }
    host::AcDbObjectPointer<host::AcDbEntity> first(d.host, line, host::AcDb::kForWrite);
    EXPECT_EQ(first.openStatus(), Acad::eOk) << c.name;

    // A block outside any drawing has nothing to walk.
    BlockTableRecord loose(L"Loose");
    EXPECT_EQ(c.walk(loose, reader), Acad::eNoDatabase) << c.name;
  }
}

TEST(Blocks, AttributesOfAReference) {
  TestDrawing d;
  const auto block = d.addBlock(L"Title");
  EXPECT_FALSE(d.db.get<BlockTableRecord>(block)->hasAttributeDefinitions());
  const auto definition = d.addAttributeDefinition(block, L"SHEET", L"A1", AttributeDefinition::kConstant);
  EXPECT_TRUE(d.db.get<BlockTableRecord>(block)->hasAttributeDefinitions());
  const auto reference = d.addBlockReference(block);
  const auto first = d.addAttribute(reference, L"NAME", L"Plan");
  const auto second = d.addAttribute(reference, L"SCALE", L"1:50", Attribute::kInvisible);
  const auto third = d.addAttribute(reference, L"DATE", L"today");
  {
    host::AcDbObjectPointer<host::AcDbAttribute> erased(d.host, third, host::AcDb::kForWrite);
    erased->erase();
  }
  host::AcDbObjectPointer<host::AcDbBlockReference> ref(d.host, reference, host::AcDb::kForRead);
  struct Expected {
    AcDbObjectId id;
    std::wstring tag, text;
    bool invisible;
  } const expected[] = {{first, L"NAME", L"Plan", false}, {second, L"SCALE", L"1:50", true}};
  std::size_t n = 0;
  std::wstring keptTag = L"a tag read before", keptText = L"a text read before", portTag, portText;
  for (auto it = ref->attributeIterator(); !it.done(); it.step(), ++n) {
    ASSERT_LT(n, std::size(expected));
    EXPECT_EQ(it.objectId(), expected[n].id);
    host::AcDbObjectPointer<host::AcDbAttribute> attribute(d.host, it.objectId(), host::AcDb::kForRead);
    EXPECT_EQ(attribute->tag(), expected[n].tag);
    EXPECT_EQ(attribute->textString(), expected[n].text);
    // Read into kept strings, by this host and as the port does for any host.
    attribute->getTag(keptTag);
    attribute->getTextString(keptText);
    attribute->host::AcDbAttribute::getTag(portTag);
    attribute->host::AcDbText::getTextString(portText);
    EXPECT_EQ(keptTag, expected[n].tag);
    EXPECT_EQ(keptText, expected[n].text);
    EXPECT_EQ(portTag, expected[n].tag);
    EXPECT_EQ(portText, expected[n].text);
    EXPECT_EQ(attribute->isInvisible(), expected[n].invisible);
    EXPECT_FALSE(attribute->isConstant());
    EXPECT_EQ(attribute->ownerId(), reference);
  }
  EXPECT_EQ(n, std::size(expected));
  // An attribute is a text too, as readers of texts test it.
  host::AcDbObjectPointer<host::AcDbText> asText(d.host, first, host::AcDb::kForRead);
  EXPECT_TRUE(asText);
  host::AcDbObjectPointer<host::AcDbAttributeDefinition> def(d.host, definition, host::AcDb::kForRead);
  EXPECT_EQ(def->tag(), L"SHEET");
  EXPECT_EQ(def->prompt(), L"SHEET?");
  EXPECT_EQ(def->textString(), L"A1");
  EXPECT_TRUE(def->isConstant());
}

// A reference with few attributes walks them from the iterator itself, one with many from a
// list; either way in order, erased ones left out, looking ahead as far as the walk goes.
TEST(Blocks, AttributeWalksOfEverySize) {
  for (const int count : {0, 1, 4, 5, 6, 9}) {
    TestDrawing d;
    const auto reference = d.addBlockReference(d.addBlock(L"Tag"));
    std::vector<AcDbObjectId> live;
    for (int i = 0; i < count; ++i) {
      const auto id = d.addAttribute(reference, core::format(L"T%d", i), L"");
      if (i % 3 == 2) {
        host::AcDbObjectPointer<host::AcDbAttribute> erased(d.host, id, host::AcDb::kForWrite);
        erased->erase();
      } else {
        live.push_back(id);
      }
    }
    host::AcDbObjectPointer<host::AcDbBlockReference> ref(d.host, reference, host::AcDb::kForRead);
    auto it = ref->attributeIterator();
    for (int pass = 0; pass < 2; ++pass, it.start()) {
      std::vector<AcDbObjectId> walked, aheadByTwo;
      for (; !it.done(); it.step()) {
        walked.push_back(it.objectId());
        aheadByTwo.push_back(it.peek(2));
      }
      EXPECT_EQ(walked, live) << count;
      for (std::size_t i = 0; i < live.size(); ++i) {
        EXPECT_EQ(aheadByTwo[i], i + 2 < live.size() ? live[i + 2] : AcDbObjectId()) << count << " at " << i;
      }
      EXPECT_TRUE(it.objectId().isNull());
    }
  }
}

TEST(Blocks, DynamicVariantsLeadToTheirDefinition) {
  TestDrawing d;
  const auto door = d.addBlock(L"Door");
  d.db.get<BlockTableRecord>(door)->setDynamicBlock(true);
  const auto plain = d.addBlock(L"Chair");
  const auto taggedVariant = d.addDynamicVariant(door, L"*U7");
  const auto untaggedVariant = d.addBlock(L"*U8", BlockTableRecord::kAnonymous);
  const auto otherAnonymous = d.addBlock(L"*U9", BlockTableRecord::kAnonymous);

  const auto byTag = d.addBlockReference(taggedVariant);
  const auto byName = d.addBlockReference(untaggedVariant);
  d.db.get<BlockReference>(byName)->setDynamicBlockName(L"DOOR");
  const auto direct = d.addBlockReference(door);
  const auto chair = d.addBlockReference(plain);
  const auto lone = d.addBlockReference(otherAnonymous);
  d.db.get<BlockReference>(byTag)->setDynamicProperties(
      {{L"Width", host::AcValue(0.9)}, {L"Visibility1", host::AcValue(L"Open")}});

  struct Case {
    const char* name;
    AcDbObjectId reference;
    bool dynamic;
    AcDbObjectId definition;
    std::wstring blockName, effectiveName;
  } const cases[] = {
      {"variant tagged with the definition's handle", byTag, true, door, L"*U7", L"Door"},
      {"variant named by the reference", byName, true, door, L"*U8", L"Door"},
      {"the definition itself", direct, true, door, L"Door", L"Door"},
      {"a plain block", chair, false, {}, L"Chair", L"Chair"},
      {"an anonymous block of no dynamic block", lone, false, {}, L"*U9", L"*U9"},
  };
  for (const auto& c : cases) {
    const host::AcDbDynBlockReference dyn(d.host, c.reference);
    EXPECT_EQ(dyn.isDynamicBlock(), c.dynamic) << c.name;
    EXPECT_EQ(dyn.dynamicBlockTableRecord(), c.definition) << c.name;
    const auto* reference = d.db.get<BlockReference>(c.reference);
    EXPECT_EQ(dyn.anonymousBlockTableRecord(), reference->blockTableRecord()) << c.name;
    EXPECT_EQ(reference->property(L"Name")->data(), host::AcValue(c.blockName).data()) << c.name;
    EXPECT_EQ(reference->property(L"EffectiveName")->data(), host::AcValue(c.effectiveName).data()) << c.name;
  }

  const host::AcDbDynBlockReference dyn(d.host, byTag);
  std::vector<host::AcDbDynBlockReferenceProperty> properties;
  ASSERT_EQ(dyn.getBlockProperties(properties), Acad::eOk);
  ASSERT_EQ(properties.size(), 2u);
  EXPECT_EQ(properties[0].propertyName(), L"Width");
  EXPECT_EQ(properties[1].value(), host::AcValue(L"Open"));
  // A dynamic property reads as a property of the reference.
  const auto field = d.addField(L"%<\\AcObjProp Object(" + TestDrawing::idReference(byTag) + L").width>%");
  d.evaluateAll();
  EXPECT_EQ(d.field(field).getDisplayText(), L"0.900000");

  // Neither an id that is no block reference nor a plain block gives properties.
  const host::AcDbDynBlockReference notAReference(d.host, door);
  EXPECT_FALSE(notAReference.isDynamicBlock());
  EXPECT_EQ(notAReference.getBlockProperties(properties), Acad::eNotThatKindOfClass);
  host::AcDbObjectPointer<host::AcDbBlockReference> chairRef(d.host, chair, host::AcDb::kForRead);
  EXPECT_EQ(chairRef->getBlockProperties(properties), Acad::eNotApplicable);
  EXPECT_EQ(host::AcDbDynBlockReference(d.host, chair).getBlockProperties(properties), Acad::eNotApplicable);
}

TEST(Blocks, TagWithAStaleHandleLeadsNowhere) {
  TestDrawing d;
  const auto door = d.addBlock(L"Door");
  const auto variant = d.addDynamicVariant(door, L"*U1");
  d.db.get<BlockTableRecord>(variant)->record().xdata.back().value = std::wstring(L"FFFF");
  const auto reference = d.addBlockReference(variant);
  EXPECT_FALSE(d.db.get<BlockReference>(reference)->isDynamicBlock());
}

}  // namespace
}  // namespace corvane::headless
