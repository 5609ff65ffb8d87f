// New records of every entity kind the database models: a drawing with a new entity is saved,
// read again by our reader, and the entity comes back as it was made, with its look.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "dxf/model/drawingfile.h"
#include "headless/db/arc.h"
#include "headless/db/attribute.h"
#include "headless/db/attributedefinition.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/database.h"
#include "headless/db/hatch.h"
#include "headless/db/mleader.h"
#include "headless/db/polyline.h"
#include "headless/db/viewport.h"
#include "headless/hostapplication.h"
#include "support/dxftext.h"
#include "support/samples.h"
#include "support/scratchfolder.h"

namespace corvane::dxf {
namespace {

using host::AcDbHandle;
using host::AcDbObjectId;
using host::AcGePoint2d;
using host::AcGePoint3d;
namespace geometry = headless::geometry;

constexpr double kPi = geometry::kPi;

std::string exampleDrawing() {
  return testing::readBytes(std::filesystem::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf");
}

struct Drawing {
  headless::HostApplication host;
  std::unique_ptr<DrawingFile> file;

  explicit Drawing(const std::string& bytes) {
    auto loaded = DrawingFile::read(bytes, host, "drawing.dxf");
    EXPECT_TRUE(loaded.drawing) << loaded.error;
    file = std::move(loaded.drawing);
  }
  explicit Drawing(const std::filesystem::path& path) {
    auto loaded = DrawingFile::load(path, host);
    EXPECT_TRUE(loaded.drawing) << loaded.error;
    file = std::move(loaded.drawing);
  }
  headless::Database& db() { return file->database(); }
  AcDbObjectId id(std::uint64_t handle) {
    AcDbObjectId found;
    db().getAcDbObjectId(found, AcDbHandle(handle));
    return found;
  }
  AcDbObjectId block(const wchar_t* name) {
    AcDbObjectId found;
    db().get<host::AcDbBlockTable>(db().blockTableId())->getAt(name, found);
    return found;
  }
};

// The example drawing's own things the cases build on.
constexpr std::uint64_t kDoorReference = 0x125;  // a "Door" with its WIDTH attribute

template <typename T>
T& made(Drawing& drawing, AcDbObjectId id) {
  return *drawing.db().get<T>(id);
}

headless::EntityProperties someLook() {
  headless::EntityProperties look;
  look.color = 1;
  look.trueColor = 0xFF8000;
  look.linetype = L"Continuous";
  look.linetypeScale = 2.5;
  look.lineweight = 35;
  look.transparency = 0x02000080;
  return look;
}

geometry::SplineEdge spline() {
  geometry::SplineEdge edge;
  edge.degree = 2;
  edge.rational = true;
  edge.knots = {0, 0, 0, 1, 1, 1};
  edge.controlPoints = {{4, 0}, {5, 1}, {4, 2}};
  edge.weights = {1.0, 0.5, 1.0};
  edge.fitPoints = {{4, 0}, {4.6, 1}, {4, 2}};
  edge.startTangent = host::AcGeVector2d{1, 1};
  edge.endTangent = host::AcGeVector2d{-1, 1};
  return edge;
}

struct Case {
  const char* name;
  const char* recordType;
  std::function<AcDbObjectId(Drawing&)> make;
};

const std::vector<Case>& cases() {
  static const std::vector<Case> all = {
      {"closed polyline with bulges, widths, elevation, normal and a look", "LWPOLYLINE",
       [](Drawing& d) {
         auto polyline = std::make_unique<headless::Polyline>(
             std::vector<geometry::Vertex>{{{0, 0}, 0.5, 0.1, 0.2}, {{10, 0}, 0, 0.2, 0.2}, {{10, 5}, -1, 0, 0}}, true,
             2.5);
         polyline->setNormal({0, 0, -1});
         polyline->setProperties(someLook());
         polyline->setLayer(L"Walls");
         return d.db().appendEntity(std::move(polyline));
       }},
      {"open polyline with a constant width", "LWPOLYLINE",
       [](Drawing& d) {
         auto polyline = std::make_unique<headless::Polyline>(
             std::vector<geometry::Vertex>{{{1, 1}}, {{2, 3}}, {{4, 1}, 0.25}, {{6, 6}}}, false);
         polyline->setConstantWidth(0.3);
         return d.db().appendEntity(std::move(polyline));
       }},
      {"arc seen from below", "ARC",
       [](Drawing& d) {
         auto arc = std::make_unique<headless::Arc>(AcGePoint3d{1, 2, 3}, 4, kPi / 6, 5 * kPi / 3);
         arc->setNormal({0, 0, -1});
         return d.db().appendEntity(std::move(arc));
       }},
      {"solid hatch with a polyline loop and an island of every edge kind", "HATCH",
       [](Drawing& d) {
         std::vector<headless::HatchLoop> loops;
         loops.push_back(
             headless::HatchLoop::polyline({{{0, 0}}, {{10, 0}, 0.4}, {{10, 10}}, {{0, 10}}},
                                           headless::HatchLoop::kExternal | headless::HatchLoop::kOutermost));
         loops.push_back(headless::HatchLoop::edges(
             {geometry::LineEdge{{2, 2}, {4, 2}}, geometry::CircularArcEdge{{4, 3}, 1, 270, 90, true},
              geometry::LineEdge{{4, 4}, {2, 4}}, geometry::CircularArcEdge{{2, 3}, 1, -90, -270, false}},
             0));
         loops.push_back(headless::HatchLoop::edges(
             {geometry::EllipticArcEdge{{7, 7}, {2, 0}, 0.5, 0, 360, true}, spline()}, headless::HatchLoop::kDerived));
         auto hatch =
             std::make_unique<headless::Hatch>(L"SOLID", true, std::move(loops), headless::Hatch::Style::kOuter);
         hatch->setElevation(1.5);
         hatch->setProperties(someLook());
         return d.db().appendEntity(std::move(hatch));
       }},
      {"patterned hatch of an open polyline loop, seen from below", "HATCH",
       [](Drawing& d) {
         std::vector<headless::HatchLoop> loops{
             headless::HatchLoop::polyline({{{0, 0}}, {{3, 0}}, {{3, 3}}}, headless::HatchLoop::kExternal, false)};
         auto hatch = std::make_unique<headless::Hatch>(L"ANSI31", false, std::move(loops));
         hatch->setNormal({0, 0, -1});
         return d.db().appendEntity(std::move(hatch));
       }},
      {"block reference with attributes, scaled and turned", "INSERT",
       [](Drawing& d) {
         auto reference = std::make_unique<headless::BlockReference>(d.block(L"Door"), AcGePoint3d{5, 6, 0},
                                                                     host::AcGeScale3d{2, 2, 1}, 0.5);
         reference->setProperties(someLook());
         const AcDbObjectId id = d.db().appendEntity(std::move(reference));
         auto width = std::make_unique<headless::Attribute>(L"WIDTH", L"1200", AcGePoint3d{5, 7, 0}, 0.25);
         width->setRotation(0.5);
         width->setWidthFactor(0.8);
         d.db().addObject(std::move(width), id);
         d.db().addObject(std::make_unique<headless::Attribute>(L"NOTE", L"fire door", AcGePoint3d{5, 8, 0}, 0.2,
                                                                headless::Attribute::kInvisible),
                          id);
         return id;
       }},
      {"block reference without attributes in paper space", "INSERT",
       [](Drawing& d) {
         return d.db().appendEntity(std::make_unique<headless::BlockReference>(d.block(L"Door"), AcGePoint3d{1, 1, 0}),
                                    d.block(L"*Paper_Space"));
       }},
      {"attribute definition in a block", "ATTDEF",
       [](Drawing& d) {
         return d.db().appendEntity(
             std::make_unique<headless::AttributeDefinition>(L"MAKER", L"Who made it?", L"ACME", AcGePoint3d{0, -1, 0},
                                                             0.15, headless::AttributeDefinition::kPreset),
             d.block(L"Door"));
       }},
      {"attribute added to a reference read with attributes", "ATTRIB",
       [](Drawing& d) {
         return d.db().addObject(std::make_unique<headless::Attribute>(L"FIRE", L"EI30", AcGePoint3d{0, 2, 0}, 0.2),
                                 d.id(kDoorReference));
       }},
  };
  return all;
}

void expectSameLoops(const std::vector<headless::HatchLoop>& made, const std::vector<headless::HatchLoop>& read) {
  ASSERT_EQ(made.size(), read.size());
  for (std::size_t i = 0; i < made.size(); ++i) {
    EXPECT_EQ(made[i].flags, read[i].flags) << "loop " << i;
    EXPECT_EQ(made[i].path.isPolyline, read[i].path.isPolyline) << "loop " << i;
    EXPECT_EQ(made[i].path.closed, read[i].path.closed) << "loop " << i;
    EXPECT_EQ(made[i].path.vertices, read[i].path.vertices) << "loop " << i;
    EXPECT_TRUE(made[i].path.edges == read[i].path.edges) << "loop " << i;
  }
}

template <typename TextEntity>
void expectSameText(const TextEntity& made, const TextEntity& read) {
  EXPECT_EQ(made.tag(), read.tag());
  EXPECT_EQ(made.textString(), read.textString());
  EXPECT_EQ(made.position(), read.position());
  EXPECT_DOUBLE_EQ(made.height(), read.height());
  EXPECT_DOUBLE_EQ(made.rotation(), read.rotation());
  EXPECT_DOUBLE_EQ(made.widthFactor(), read.widthFactor());
  EXPECT_EQ(made.flags(), read.flags());
}

// What the model holds of an entity, made and read again.
void expectSame(Drawing& before, AcDbObjectId madeId, Drawing& after, AcDbObjectId readId) {
  const host::AcDbObject& made = *before.db().lookup(madeId);
  const host::AcDbObject* read = after.db().lookup(readId);
  ASSERT_NE(read, nullptr);
  ASSERT_EQ(made.dxfName(), read->dxfName());
  const auto& madeEntity = dynamic_cast<const host::AcDbEntity&>(made);
  const auto& readEntity = dynamic_cast<const host::AcDbEntity&>(*read);
  EXPECT_EQ(madeEntity.layer(), readEntity.layer());
  EXPECT_TRUE(dynamic_cast<const headless::EntityLook&>(made).properties() ==
              dynamic_cast<const headless::EntityLook&>(*read).properties());
  EXPECT_EQ(before.db().objects().handle(made.ownerId()), after.db().objects().handle(read->ownerId()));
  if (const auto* polyline = dynamic_cast<const headless::Polyline*>(&made)) {
    const auto& again = dynamic_cast<const headless::Polyline&>(*read);
    EXPECT_EQ(polyline->vertices(), again.vertices());
    EXPECT_EQ(polyline->isClosed(), again.isClosed());
    EXPECT_DOUBLE_EQ(polyline->elevation(), again.elevation());
    EXPECT_DOUBLE_EQ(polyline->constantWidth(), again.constantWidth());
    EXPECT_EQ(polyline->normal(), again.normal());
  } else if (const auto* arc = dynamic_cast<const headless::Arc*>(&made)) {
    const auto& again = dynamic_cast<const headless::Arc&>(*read);
    EXPECT_EQ(arc->ocsCenter(), again.ocsCenter());
    EXPECT_DOUBLE_EQ(arc->radius(), again.radius());
    EXPECT_NEAR(arc->startAngle(), again.startAngle(), 1e-12);
    EXPECT_NEAR(arc->endAngle(), again.endAngle(), 1e-12);
    EXPECT_EQ(arc->normal(), again.normal());
  } else if (const auto* hatch = dynamic_cast<const headless::Hatch*>(&made)) {
    const auto& again = dynamic_cast<const headless::Hatch&>(*read);
    EXPECT_EQ(hatch->patternName(), again.patternName());
    EXPECT_EQ(hatch->isSolidFill(), again.isSolidFill());
    EXPECT_EQ(hatch->style(), again.style());
    EXPECT_DOUBLE_EQ(hatch->elevation(), again.elevation());
    EXPECT_EQ(hatch->normal(), again.normal());
    expectSameLoops(hatch->loops(), again.loops());
    double area = 0;
    double areaAgain = 0;
    ASSERT_EQ(hatch->getArea(area), host::Acad::eOk);
    ASSERT_EQ(again.getArea(areaAgain), host::Acad::eOk);
    EXPECT_NEAR(area, areaAgain, 1e-9);
  } else if (const auto* reference = dynamic_cast<const headless::BlockReference*>(&made)) {
    const auto& again = dynamic_cast<const headless::BlockReference&>(*read);
    EXPECT_EQ(reference->blockName(), again.blockName());
    EXPECT_EQ(reference->position(), again.position());
    EXPECT_EQ(reference->scaleFactors().sx, again.scaleFactors().sx);
    EXPECT_EQ(reference->scaleFactors().sy, again.scaleFactors().sy);
    EXPECT_EQ(reference->scaleFactors().sz, again.scaleFactors().sz);
    EXPECT_NEAR(reference->rotation(), again.rotation(), 1e-12);
    ASSERT_EQ(reference->attributeIds().size(), again.attributeIds().size());
    for (std::size_t i = 0; i < reference->attributeIds().size(); ++i) {
      expectSame(before, reference->attributeIds()[i], after, again.attributeIds()[i]);
    }
  } else if (const auto* attribute = dynamic_cast<const headless::Attribute*>(&made)) {
    expectSameText(*attribute, dynamic_cast<const headless::Attribute&>(*read));
  } else if (const auto* definition = dynamic_cast<const headless::AttributeDefinition*>(&made)) {
    const auto& again = dynamic_cast<const headless::AttributeDefinition&>(*read);
    expectSameText(*definition, again);
    EXPECT_EQ(definition->prompt(), again.prompt());
  } else {
    ADD_FAILURE() << "no comparison for this kind";
  }
}

// The types of the records of the section that holds the record, from it on.
std::vector<std::string> typesFrom(const Document& doc, std::uint64_t handle, std::size_t count) {
  const RecordId record = testing::recordOfHandle(doc, handle);
  for (const auto& section : doc.sections()) {
    const auto at = std::find(section.records.begin(), section.records.end(), record);
    if (at == section.records.end()) continue;
    std::vector<std::string> types;
    for (auto it = at; it != section.records.end() && types.size() < count; ++it) {
      types.emplace_back(doc.recordType(*it));
    }
    return types;
  }
  return {};
}

TEST(NewRecords, EachModelledKindReadsBackAsItWasMade) {
  for (const Case& c : cases()) {
    SCOPED_TRACE(c.name);
    Drawing before(exampleDrawing());
    const AcDbObjectId id = c.make(before);
    const std::uint64_t handle = before.db().objects().handle(id).value();
    StringSink sink;
    const Status saved = before.file->write(sink);
    ASSERT_TRUE(saved.ok()) << saved.message();
    Drawing after(sink.data);
    const RecordId record = testing::recordOfHandle(after.file->document(), handle);
    ASSERT_NE(record, kNoRecord);
    EXPECT_EQ(after.file->document().recordType(record), c.recordType);
    expectSame(before, id, after, after.id(handle));
    // Saved again without changes, the drawing comes out as it went in.
    StringSink again;
    ASSERT_TRUE(after.file->write(again).ok());
    EXPECT_TRUE(again.data == sink.data);
  }
}

TEST(NewRecords, AttributesFollowTheirReferenceAndCloseWithTheEndOfTheSequence) {
  Drawing before(exampleDrawing());
  const AcDbObjectId reference = cases()[5].make(before);
  const std::uint64_t handle = before.db().objects().handle(reference).value();
  const AcDbObjectId added = cases()[8].make(before);
  StringSink sink;
  ASSERT_TRUE(before.file->write(sink).ok());
  const Document& doc = before.file->document();
  EXPECT_EQ(typesFrom(doc, handle, 4), (std::vector<std::string>{"INSERT", "ATTRIB", "ATTRIB", "SEQEND"}));
  EXPECT_EQ(testing::firstValue(doc, testing::recordOfHandle(doc, handle), 66), "1");
  // The read reference had one attribute: the new one comes second, before the end.
  EXPECT_EQ(typesFrom(doc, kDoorReference, 4), (std::vector<std::string>{"INSERT", "ATTRIB", "ATTRIB", "SEQEND"}));
  Drawing after(sink.data);
  const auto& door = made<headless::BlockReference>(after, after.id(kDoorReference));
  ASSERT_EQ(door.attributeIds().size(), 2u);
  EXPECT_EQ(door.attributeIds()[1], after.id(before.db().objects().handle(added).value()));
  // The end of the new sequence is the reference's: erased with it, it leaves the drawing too.
  {
    host::AcDbObjectPointer<host::AcDbObject> erased(after.host, after.id(handle), host::AcDb::kForWrite);
    ASSERT_EQ(erased->erase(), host::Acad::eOk);
  }
  StringSink erased;
  ASSERT_TRUE(after.file->write(erased).ok());
  EXPECT_EQ(testing::recordsOfType(after.file->document(), "SEQEND").size(),
            testing::recordsOfType(Drawing(exampleDrawing()).file->document(), "SEQEND").size());
}

TEST(NewRecords, ChangedLooksAreWrittenIntoTheirGroupsAndUnchangedOnesStayAsSpelt) {
  Drawing first(exampleDrawing());
  constexpr std::uint64_t kWall = 0x120;
  auto& wall = made<headless::Polyline>(first, first.id(kWall));
  headless::EntityProperties look = someLook();
  wall.setProperties(look);
  StringSink sink;
  ASSERT_TRUE(first.file->write(sink).ok());
  Drawing second(sink.data);
  EXPECT_TRUE(made<headless::Polyline>(second, second.id(kWall)).properties() == look);

  // Back to by layer but for the colour: the other groups leave the record.
  look = {};
  look.color = 3;
  made<headless::Polyline>(second, second.id(kWall)).setProperties(look);
  StringSink back;
  ASSERT_TRUE(second.file->write(back).ok());
  const Document& doc = second.file->document();
  const RecordId record = testing::recordOfHandle(doc, kWall);
  EXPECT_EQ(testing::firstValue(doc, record, 62), "3");
  for (const int code : {420, 6, 48, 370, 440}) EXPECT_EQ(testing::firstValue(doc, record, code), std::nullopt) << code;
  Drawing third(back.data);
  EXPECT_TRUE(made<headless::Polyline>(third, third.id(kWall)).properties() == look);
}

// An independent reader takes every new record, all in one drawing, and its audit finds nothing.
TEST(NewRecords, AnIndependentReaderAuditsEveryNewRecordWithoutErrors) {
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  Drawing drawing(exampleDrawing());
  const corvane::testing::ScratchFolder folder;
  std::vector<std::string> args = {(folder.path() / "saved.dxf").string()};
  std::string expected = "errors 0\n";
  for (const Case& c : cases()) {
    const std::wstring handle = drawing.db().objects().handle(c.make(drawing)).text();
    args.emplace_back(handle.begin(), handle.end());
    expected += std::string(c.recordType) + "\n";
  }
  ASSERT_TRUE(drawing.file->saveAs(args[0]).ok());
  const std::string found = corvane::testing::runEzdxfScript(
      "import sys, ezdxf\n"
      "doc = ezdxf.readfile(sys.argv[1])\n"
      "print('errors', len(doc.audit().errors))\n"
      "for handle in sys.argv[2:]:\n"
      "    print(doc.entitydb[handle].dxftype())\n",
      args);
  EXPECT_EQ(found, expected);
}

TEST(NewRecords, KindsWithoutEnoughInTheModelAreRefusedAndNothingIsWritten) {
  const std::string original = exampleDrawing();
  struct Refused {
    const char* kind;
    std::function<void(Drawing&)> make;
  };
  const Refused refused[] = {
      {"MULTILEADER",
       [](Drawing& d) { d.db().appendEntity(std::make_unique<headless::MLeader>(L"note", AcGePoint3d{}, 0.2)); }},
      {"VIEWPORT",
       [](Drawing& d) {
         d.db().appendEntity(std::make_unique<headless::Viewport>(AcGePoint3d{5, 5, 0}, 10, 8),
                             d.block(L"*Paper_Space"));
       }},
      {"block reference names no block",
       [](Drawing& d) {
         d.db().appendEntity(std::make_unique<headless::BlockReference>(AcDbObjectId(), AcGePoint3d{}));
       }},
  };
  for (const auto& row : refused) {
    SCOPED_TRACE(row.kind);
    const corvane::testing::ScratchFolder folder;
    const auto path = folder.path() / "drawing.dxf";
    testing::writeBytes(path, original);
    Drawing d(path);
    ASSERT_TRUE(d.file);
    row.make(d);
    const Status status = d.file->save();
    EXPECT_FALSE(status.ok());
    EXPECT_NE(status.message().find(row.kind), std::string::npos) << status.message();
    EXPECT_TRUE(testing::readBytes(path) == original);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"drawing.dxf"});
  }
}

}  // namespace
}  // namespace corvane::dxf
