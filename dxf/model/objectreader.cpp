#include "dxf/model/objectreader.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "core/textutil.h"
#include "dxf/model/entityproperties.h"
#include "dxf/model/tables/tablerecord.h"
#include "dxf/tags/numbertext.h"
#include "dxf/tags/textpieces.h"
#include "headless/db/arc.h"
#include "headless/db/attribute.h"
#include "headless/db/attributedefinition.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktable.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/field.h"
#include "headless/db/fieldlist.h"
#include "headless/db/hatch.h"
#include "headless/db/layertable.h"
#include "headless/db/layertablerecord.h"
#include "headless/db/layout.h"
#include "headless/db/line.h"
#include "headless/db/mleader.h"
#include "headless/db/mtext.h"
#include "headless/db/polyline.h"
#include "headless/db/table.h"
#include "headless/db/text.h"
#include "headless/db/viewport.h"

namespace corvane::dxf {

namespace {

using host::AcGePoint2d;
using host::AcGePoint3d;
using host::AcGeVector3d;
namespace geometry = headless::geometry;

constexpr double kDegrees = 3.14159265358979323846 / 180.0;

std::wstring widen(std::string_view text) { return std::wstring(text.begin(), text.end()); }

// The values of a run of tags, each code's first occurrence.
class Values {
 public:
  Values(const Document& doc, std::span<const Tag> tags, std::size_t begin, std::size_t end)
      : doc_(doc), tags_(tags.subspan(begin, end - begin)) {}

  const Tag* first(int code) const {
    for (const Tag& tag : tags_)
      if (tag.code == code) return &tag;
    return nullptr;
  }
  bool has(int code) const { return first(code) != nullptr; }
  double real(int code, double fallback = 0.0) const {
    const Tag* tag = first(code);
    return tag ? doc_.toDouble(*tag).value_or(fallback) : fallback;
  }
  std::int64_t integer(int code, std::int64_t fallback = 0) const {
    const Tag* tag = first(code);
    return tag ? doc_.toInteger(*tag).value_or(fallback) : fallback;
  }
  std::wstring text(int code) const {
    const Tag* tag = first(code);
    return tag ? doc_.text(*tag) : std::wstring();
  }
  std::wstring hostText(int code) const {
    const Tag* tag = first(code);
    return tag ? doc_.hostText(*tag) : std::wstring();
  }
  AcGePoint3d point(int code) const { return {real(code), real(code + 10), real(code + 20)}; }
  AcGeVector3d normal() const { return {real(210, 0.0), real(220, 0.0), real(230, 1.0)}; }
  std::span<const Tag> tags() const noexcept { return tags_; }

 private:
  const Document& doc_;
  std::span<const Tag> tags_;
};

// The tags of a subclass: from its marker to the next one; the record's whole data when the
// record has no markers at all (R12).
Values subclass(const Document& doc, std::span<const Tag> tags, const RecordHeader& header, std::string_view name) {
  const std::size_t marker = findSubclass(doc, tags, name, header.bodyBegin);
  if (marker != kNoIndex) return Values(doc, tags, marker + 1, subclassEnd(tags, marker));
  if (header.bodyBegin < header.xdataBegin && tags[header.bodyBegin].code == 100) return Values(doc, tags, 0, 0);
  return Values(doc, tags, 1, header.xdataBegin);
}

template <typename Entity>
void readEntityCommon(const Document& doc, std::span<const Tag> tags, const RecordHeader& header, Entity& entity,
                      ObjectReader& reader) {
  const Values common = subclass(doc, tags, header, "AcDbEntity");
  if (const Tag* layer = common.first(8)) entity.setLayer(reader.layerName(*layer));
  if (const auto look = readEntityProperties(doc, common.tags()); !(look == headless::EntityProperties{})) {
    entity.setProperties(reader.entityProperties(look));
  }
  entity.setVisible(common.integer(60, 0) == 0);
}

// The vertices of a lightweight polyline: each 10/20 starts one, its widths and bulge follow.
std::vector<geometry::Vertex> polylineVertices(const Document& doc, std::span<const Tag> tags) {
  std::vector<geometry::Vertex> vertices;
  vertices.reserve(static_cast<std::size_t>(
      std::count_if(tags.begin(), tags.end(), [](const Tag& tag) { return tag.code == 10; })));
  for (const Tag& tag : tags) {
    const double value = doc.toDouble(tag).value_or(0.0);
    switch (tag.code) {
      case 10: vertices.push_back({AcGePoint2d{value, 0.0}}); break;
      case 20: if (!vertices.empty()) vertices.back().point.y = value; break;
      case 40: if (!vertices.empty()) vertices.back().startWidth = value; break;
      case 41: if (!vertices.empty()) vertices.back().endWidth = value; break;
      case 42: if (!vertices.empty()) vertices.back().bulge = value; break;
      default: break;
    }
  }
  return vertices;
}

// Reads a hatch's boundary loops in file order.
class HatchLoops {
 public:
  HatchLoops(const Document& doc, std::span<const Tag> tags) : doc_(doc), tags_(tags) {}

  std::vector<headless::HatchLoop> read(std::size_t count) {
    std::vector<headless::HatchLoop> loops;
    for (std::size_t n = 0; n < count && seek(92); ++n) {
      const int flags = static_cast<int>(integer());
      if (flags & headless::HatchLoop::kPolyline) {
        const bool bulges = expect(72) && integer() != 0;
        const bool closed = expect(73) && integer() != 0;
        const std::int64_t vertices = expect(93) ? integer() : 0;
        std::vector<geometry::Vertex> points;
        for (std::int64_t v = 0; v < vertices && expect(10); ++v) {
          geometry::Vertex vertex;
          vertex.point = point2();
          if (bulges && expect(42)) vertex.bulge = real();
          points.push_back(vertex);
        }
        auto loop = headless::HatchLoop::polyline(std::move(points), flags & ~headless::HatchLoop::kPolyline, closed);
        loop.flags = flags;
        loops.push_back(std::move(loop));
      } else {
        const std::int64_t edges = expect(93) ? integer() : 0;
        std::vector<geometry::Edge> list;
        for (std::int64_t e = 0; e < edges && expect(72); ++e) {
          if (auto edge = readEdge(integer())) list.push_back(std::move(*edge));
        }
        auto loop = headless::HatchLoop::edges(std::move(list), flags);
        loop.flags = flags;
        loops.push_back(std::move(loop));
      }
      // The source objects of the loop (97 count, 330 handles) follow; seek() passes them.
    }
    return loops;
  }

 private:
  bool seek(int code) {
    while (i_ < tags_.size() && tags_[i_].code != code) ++i_;
    return i_ < tags_.size();
  }
  // The next tag, when it has the code.
  bool expect(int code) { return i_ < tags_.size() && tags_[i_].code == code; }
  double real() { return doc_.toDouble(tags_[i_++]).value_or(0.0); }
  std::int64_t integer() { return doc_.toInteger(tags_[i_++]).value_or(0); }
  double optionalReal(int code, double fallback) { return expect(code) ? real() : fallback; }
  AcGePoint2d point2() {
    AcGePoint2d p{real(), 0.0};
    if (expect(tags_[i_ - 1].code + 10)) p.y = real();
    return p;
  }

  std::optional<geometry::Edge> readEdge(std::int64_t type) {
    switch (type) {
      case 1: {
        geometry::LineEdge edge;
        if (expect(10)) edge.start = point2();
        if (expect(11)) edge.end = point2();
        return edge;
      }
      case 2: {
        geometry::CircularArcEdge edge;
        if (expect(10)) edge.center = point2();
        edge.radius = optionalReal(40, 0.0);
        edge.startAngle = optionalReal(50, 0.0);
        edge.endAngle = optionalReal(51, 0.0);
        if (expect(73)) edge.counterClockwise = integer() != 0;
        return edge;
      }
      case 3: {
        geometry::EllipticArcEdge edge;
        if (expect(10)) edge.center = point2();
        if (expect(11)) {
          const AcGePoint2d axis = point2();
          edge.majorAxis = {axis.x, axis.y};
        }
        edge.ratio = optionalReal(40, 1.0);
        edge.startAngle = optionalReal(50, 0.0);
        edge.endAngle = optionalReal(51, 0.0);
        if (expect(73)) edge.counterClockwise = integer() != 0;
        return edge;
      }
      case 4: {
        geometry::SplineEdge edge;
        if (expect(94)) edge.degree = static_cast<int>(integer());
        if (expect(73)) edge.rational = integer() != 0;
        if (expect(74)) edge.periodic = integer() != 0;
        const std::int64_t knots = expect(95) ? integer() : 0;
        const std::int64_t controls = expect(96) ? integer() : 0;
        for (std::int64_t k = 0; k < knots && expect(40); ++k) edge.knots.push_back(real());
        for (std::int64_t c = 0; c < controls && expect(10); ++c) {
          edge.controlPoints.push_back(point2());
          if (edge.rational && expect(42)) edge.weights.push_back(real());
        }
        const std::int64_t fits = expect(97) ? integer() : 0;
        for (std::int64_t f = 0; f < fits && expect(11); ++f) edge.fitPoints.push_back(point2());
        if (expect(12)) {
          const AcGePoint2d t = point2();
          edge.startTangent = host::AcGeVector2d{t.x, t.y};
        }
        if (expect(13)) {
          const AcGePoint2d t = point2();
          edge.endTangent = host::AcGeVector2d{t.x, t.y};
        }
        return edge;
      }
      default: return std::nullopt;
    }
  }

  const Document& doc_;
  std::span<const Tag> tags_;
  std::size_t i_ = 0;
};

}  // namespace

ObjectReader::ObjectReader(const Document& doc, headless::Database& db) : doc_(doc), db_(db) {
  const auto section = doc.findSection("CLASSES");
  if (!section) return;
  for (const RecordId id : doc.sections()[*section].records) {
    if (doc.recordType(id) != "CLASS") continue;
    std::string dxfName;
    std::string className;
    for (const Tag& tag : doc.tags(id)) {
      if (tag.code == 1) dxfName = core::trimBlanks(doc.bytes(tag));
      else if (tag.code == 2) className = core::trimBlanks(doc.bytes(tag));
    }
    if (!dxfName.empty() && !className.empty()) classNames_.emplace(std::move(dxfName), std::move(className));
  }
}

void ObjectReader::addBlockName(const std::wstring& name, host::AcDbObjectId id) {
  blocks_.emplace(core::toUpper(name), id);
}

std::shared_ptr<const std::wstring> ObjectReader::layerName(const Tag& tag) {
  if (tag.form() != TagForm::Text && tag.form() != TagForm::BinaryString) {
    return std::make_shared<const std::wstring>(doc_.text(tag));
  }
  // Entities come in runs on one layer; the last name found is tried first.
  const std::string_view bytes = doc_.bytes(tag);
  if (lastLayer_ && bytes == lastLayerBytes_) return lastLayer_;
  auto found = layers_.find(bytes);
  if (found == layers_.end()) {
    found = layers_.emplace(std::string(bytes), std::make_shared<const std::wstring>(doc_.text(tag))).first;
  }
  lastLayerBytes_ = found->first;
  lastLayer_ = found->second;
  return lastLayer_;
}

bool ObjectReader::PropertiesOrder::operator()(const headless::EntityProperties& a,
                                               const headless::EntityProperties& b) const {
  const auto key = [](const headless::EntityProperties& p) {
    return std::tie(p.color, p.trueColor, p.colorName, p.linetype, p.linetypeScale, p.lineweight, p.transparency,
                    p.plotStyle, p.material);
  };
  return key(a) < key(b);
}

std::shared_ptr<const headless::EntityProperties> ObjectReader::entityProperties(
    const headless::EntityProperties& properties) {
  auto& shared = looks_[properties];
  if (!shared) shared = std::make_shared<const headless::EntityProperties>(properties);
  return shared;
}

std::shared_ptr<const headless::ProxyKind> ObjectReader::kind(RecordId id, const RecordHeader& header) {
  const std::string_view type = doc_.recordType(id);
  std::string_view className;
  if (const auto known = classNames_.find(std::string(type)); known != classNames_.end()) {
    className = known->second;
  } else {
    // Built-in kinds: the most derived subclass is the last marker.
    const auto tags = doc_.tags(id);
    for (std::size_t i = header.bodyBegin; i < header.xdataBegin; ++i)
      if (tags[i].code == 100) className = core::trimBlanks(doc_.bytes(tags[i]));
    if (className.empty()) className = "AcDbObject";
  }
  auto& variants = kinds_[std::string(type)];
  for (const auto& [name, variant] : variants)
    if (name == className) return variant;
  variants.emplace_back(std::string(className),
                        std::make_shared<const headless::ProxyKind>(headless::ProxyKind{widen(type), widen(className)}));
  return variants.back().second;
}

std::optional<std::wstring> ObjectReader::hostText(RecordId id, const RecordHeader& header) const {
  const std::string_view type = doc_.recordType(id);
  const auto tags = doc_.tags(id);
  if (type == "MTEXT") {
    const Values text = subclass(doc_, tags, header, "AcDbMText");
    std::string bytes;
    const Tag* last = nullptr;
    bool pieces = false;
    for (const Tag& tag : text.tags()) {
      if (tag.code == 3 && !last) {
        doc_.appendValueText(tag, bytes);
        pieces = true;
      } else if (tag.code == 1 && !last) {
        last = &tag;
      }
    }
    // Most contents fit in their one 1 tag, decoded where it stands.
    if (!pieces) return last ? doc_.hostText(*last) : std::wstring();
    if (last) doc_.appendValueText(*last, bytes);
    return decodeCarets(doc_.codec().decode(bytes));
  }
  if (type == "TEXT" || type == "ATTRIB" || type == "ATTDEF")
    return subclass(doc_, tags, header, "AcDbText").hostText(1);
  return std::nullopt;
}

void ObjectReader::describeBlock(RecordId id, const RecordHeader& header, host::AcDbObjectId blockTableRecord) const {
  auto* block = db_.get<headless::BlockTableRecord>(blockTableRecord);
  if (!block) return;
  const Values begin = subclass(doc_, doc_.tags(id), header, "AcDbBlockBegin");
  const int flags = static_cast<int>(begin.integer(70));
  block->setFlags(flags);
  block->setOrigin(begin.point(10));
  if (flags & headless::BlockTableRecord::kExternalReference) {
    block->setPathName(begin.text(1));
    // A file cannot say that an external reference is unloaded; one that was never resolved
    // is the nearest sign.
    block->setUnloaded((flags & headless::BlockTableRecord::kResolved) == 0);
  }
}

std::unique_ptr<headless::Hatch> ObjectReader::makeHatch(RecordId id, const RecordHeader& header) {
  const auto tags = doc_.tags(id);
  const std::size_t marker = findSubclass(doc_, tags, "AcDbHatch", header.bodyBegin);
  const std::size_t begin = marker == kNoIndex ? 1 : marker + 1;
  const Values values(doc_, tags, begin, header.xdataBegin);
  // The loops start after the loop count; what follows them (style, pattern) is read after.
  std::size_t loopsAt = begin;
  while (loopsAt < header.xdataBegin && tags[loopsAt].code != 91) ++loopsAt;
  const std::int64_t count = loopsAt < header.xdataBegin ? doc_.toInteger(tags[loopsAt]).value_or(0) : 0;
  HatchLoops reader(doc_, tags.subspan(loopsAt, header.xdataBegin - loopsAt));
  auto loops = reader.read(count < 0 ? 0 : static_cast<std::size_t>(count));
  // The style and pattern type come after the loops; 75 and 76 are not used inside them.
  const auto style = static_cast<headless::Hatch::Style>(std::clamp<std::int64_t>(values.integer(75, 0), 0, 2));
  auto hatch = std::make_unique<headless::Hatch>(values.text(2), values.integer(70, 0) != 0, std::move(loops), style);
  hatch->setElevation(values.real(30, 0.0));
  hatch->setNormal(values.normal());
  return hatch;
}

MadeObject ObjectReader::makeEntity(RecordId id, const RecordHeader& header, std::string_view type) {
  const auto tags = doc_.tags(id);
  auto finish = [&](auto entity) -> MadeObject {
    readEntityCommon(doc_, tags, header, *entity, *this);
    return entity;
  };
  if (type == "TEXT" || type == "ATTRIB" || type == "ATTDEF") {
    const Values text = subclass(doc_, tags, header, "AcDbText");
    const AcGePoint3d position = text.point(10);
    const double height = text.real(40, 0.2);
    auto common = [&](auto& entity) {
      entity.setRotation(text.real(50) * kDegrees);
      entity.setWidthFactor(text.real(41, 1.0));
    };
    if (type == "TEXT") {
      auto entity = std::make_unique<headless::Text>(position.asArray(), height, text.hostText(1));
      common(*entity);
      return finish(std::move(entity));
    }
    const Values own = subclass(doc_, tags, header, type == "ATTRIB" ? "AcDbAttribute" : "AcDbAttributeDefinition");
    const int flags = static_cast<int>(own.integer(70));
    if (type == "ATTRIB") {
      auto entity = std::make_unique<headless::Attribute>(own.text(2), text.hostText(1), position, height, flags);
      common(*entity);
      return finish(std::move(entity));
    }
    auto entity =
        std::make_unique<headless::AttributeDefinition>(own.text(2), own.hostText(3), text.hostText(1), position, height, flags);
    common(*entity);
    return finish(std::move(entity));
  }
  if (type == "MTEXT") {
    const Values text = subclass(doc_, tags, header, "AcDbMText");
    auto entity = std::make_unique<headless::MText>(text.point(10), text.real(40, 0.2), *hostText(id, header));
    entity->setWidth(text.real(41));
    entity->setAttachment(static_cast<int>(text.integer(71, headless::MText::kTopLeft)));
    if (text.has(50)) {
      entity->setRotation(text.real(50));  // radians in a multiline text
    } else if (text.has(11)) {
      entity->setRotation(std::atan2(text.real(21), text.real(11)));
    }
    return finish(std::move(entity));
  }
  if (type == "INSERT") {
    // An insertion in rows and columns keeps its data under a subclass of its own.
    const bool grid = findSubclass(doc_, tags, "AcDbMInsertBlock", header.bodyBegin) != kNoIndex;
    const Values insert = subclass(doc_, tags, header, grid ? "AcDbMInsertBlock" : "AcDbBlockReference");
    host::AcDbObjectId block;
    if (const auto found = blocks_.find(core::toUpper(insert.text(2))); found != blocks_.end()) block = found->second;
    auto entity = std::make_unique<headless::BlockReference>(
        block, insert.point(10), host::AcGeScale3d{insert.real(41, 1.0), insert.real(42, 1.0), insert.real(43, 1.0)},
        insert.real(50) * kDegrees);
    entity->setNormal(insert.normal());
    return finish(std::move(entity));
  }
  if (type == "LINE") {
    const Values line = subclass(doc_, tags, header, "AcDbLine");
    return finish(std::make_unique<headless::Line>(line.point(10).asArray(), line.point(11).asArray()));
  }
  if (type == "CIRCLE") {
    const Values circle = subclass(doc_, tags, header, "AcDbCircle");
    return finish(std::make_unique<headless::Circle>(circle.point(10).asArray(), circle.real(40)));
  }
  if (type == "ARC") {
    const Values circle = subclass(doc_, tags, header, "AcDbCircle");
    const Values arc = subclass(doc_, tags, header, "AcDbArc");
    auto entity = std::make_unique<headless::Arc>(circle.point(10), circle.real(40), arc.real(50) * kDegrees,
                                                  arc.real(51) * kDegrees);
    entity->setNormal(circle.normal());
    return finish(std::move(entity));
  }
  if (type == "LWPOLYLINE") {
    const Values polyline = subclass(doc_, tags, header, "AcDbPolyline");
    auto entity = std::make_unique<headless::Polyline>(polylineVertices(doc_, polyline.tags()),
                                                       (polyline.integer(70) & 1) != 0, polyline.real(38));
    entity->setConstantWidth(polyline.real(43));
    entity->setNormal(polyline.normal());
    return finish(std::move(entity));
  }
  if (type == "HATCH") return finish(makeHatch(id, header));
  // A table's cells name fields and blocks and its content sits in later records: the loader
  // reads them once every record has its object. A record that is no readable table stays
  // what it is to everyone else, a proxy.
  if (type == "ACAD_TABLE") {
    headless::Table trial;
    TableLinks links;
    if (readTable(doc_, id, db_, trial, links)) return finish(std::make_unique<headless::Table>());
  }
  if (type == "VIEWPORT") {
    const Values viewport = subclass(doc_, tags, header, "AcDbViewport");
    auto entity = std::make_unique<headless::Viewport>(viewport.point(10), viewport.real(40), viewport.real(41),
                                                       static_cast<int>(viewport.integer(69, 2)));
    entity->setViewDirection({viewport.real(16), viewport.real(26), viewport.real(36, 1.0)});
    entity->setViewCenter({viewport.real(12), viewport.real(22)});
    entity->setViewHeight(viewport.real(45));
    return finish(std::move(entity));
  }
  if (type == "MULTILEADER") {
    // The text sits in the context data, before the first leader: 304 after the has-text flag.
    const Values leader = subclass(doc_, tags, header, "AcDbMLeader");
    std::wstring contents;
    AcGePoint3d location;
    double height = leader.real(41, 0.18);
    bool inText = false;
    for (std::size_t i = 0; i < leader.tags().size(); ++i) {
      const Tag& tag = leader.tags()[i];
      if (tag.code == 302) break;
      if (tag.code == 290 && !inText) inText = doc_.toInteger(tag).value_or(0) != 0;
      else if (tag.code == 304 && inText && contents.empty()) contents = doc_.hostText(tag);
      else if (tag.code == 12 && inText) location.x = doc_.toDouble(tag).value_or(0.0);
      else if (tag.code == 22 && inText) location.y = doc_.toDouble(tag).value_or(0.0);
      else if (tag.code == 32 && inText) location.z = doc_.toDouble(tag).value_or(0.0);
      else if (tag.code == 41 && !inText) height = doc_.toDouble(tag).value_or(height);
    }
    return finish(std::make_unique<headless::MLeader>(std::move(contents), location, height));
  }
  return finish(std::make_unique<headless::ProxyEntity>(kind(id, header)));
}

MadeObject ObjectReader::make(RecordId id, const RecordHeader& header, bool entity) {
  const std::string_view type = doc_.recordType(id);
  const auto tags = doc_.tags(id);
  if (entity && type != "BLOCK" && type != "ENDBLK") return makeEntity(id, header, type);
  if (type == "BLOCK" || type == "ENDBLK") {
    auto proxy = std::make_unique<headless::ProxyEntity>(kind(id, header));
    readEntityCommon(doc_, tags, header, *proxy, *this);
    return proxy;
  }
  if (type == "DICTIONARY") return std::make_unique<headless::Dictionary>();
  if (type == "FIELD") return std::make_unique<headless::Field>();
  if (type == "FIELDLIST") return std::make_unique<headless::FieldList>();
  if (type == "TABLE") {
    // The table's name stands before its subclass marker.
    std::wstring name;
    for (std::size_t i = 1; i < header.bodyBegin; ++i)
      if (tags[i].code == 2) name = doc_.text(tags[i]);
    if (core::equalsNoCase(name, L"BLOCK_RECORD")) return std::make_unique<headless::BlockTable>();
    if (core::equalsNoCase(name, L"LAYER")) return std::make_unique<headless::LayerTable>();
    return std::make_unique<headless::ProxyObject>(kind(id, header), std::move(name));
  }
  if (type == "LAYOUT") {
    const Values layout = subclass(doc_, tags, header, "AcDbLayout");
    return std::make_unique<headless::Layout>(layout.text(1), host::AcDbObjectId(),
                                              static_cast<int>(layout.integer(71)));
  }
  // Symbol table records keep their name (group 2 of their own subclass).
  std::wstring name;
  if (findSubclass(doc_, tags, "AcDbSymbolTableRecord", header.bodyBegin) != kNoIndex) {
    const Values all(doc_, tags, header.bodyBegin, header.xdataBegin);
    name = all.text(2);
  }
  if (type == "BLOCK_RECORD") {
    auto block = std::make_unique<headless::BlockTableRecord>(name);
    return block;
  }
  if (type == "LAYER") {
    const Values layer = subclass(doc_, tags, header, "AcDbLayerTableRecord");
    auto record = std::make_unique<headless::LayerTableRecord>(name);
    const std::int64_t flags = layer.integer(70);
    record->setIsFrozen((flags & 1) != 0);
    record->setIsLocked((flags & 4) != 0);
    record->setIsOff(layer.integer(62, 7) < 0);
    return record;
  }
  return std::make_unique<headless::ProxyObject>(kind(id, header), std::move(name));
}

}  // namespace corvane::dxf
