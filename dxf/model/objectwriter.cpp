#include "dxf/model/objectwriter.h"

#include <cmath>
#include <map>
#include <stdexcept>

#include "core/textutil.h"
#include "dxf/model/entityproperties.h"
#include "dxf/model/extendeddata.h"
#include "dxf/model/fieldrecord.h"
#include "dxf/model/tables/tablerecord.h"
#include "dxf/tags/numbertext.h"
#include "dxf/tags/recordedit.h"
#include "dxf/tags/recordheader.h"
#include "dxf/tags/textpieces.h"
#include "headless/db/arc.h"
#include "headless/db/attribute.h"
#include "headless/db/attributedefinition.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/field.h"
#include "headless/db/hatch.h"
#include "headless/db/fieldlist.h"
#include "headless/db/layertablerecord.h"
#include "headless/db/line.h"
#include "headless/db/mleader.h"
#include "headless/db/mtext.h"
#include "headless/db/polyline.h"
#include "headless/db/proxyobject.h"
#include "headless/db/table.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"

namespace corvane::dxf {

namespace {

const headless::ObjectRecord& recordOf(const host::AcDbObject& object) {
  return dynamic_cast<const headless::HeadlessObject&>(object).record();
}

std::string narrow(std::wstring_view text) { return std::string(text.begin(), text.end()); }

void appendPoint(std::vector<NewTag>& out, std::int16_t code, const host::AcGePoint3d& point) {
  out.push_back(NewTag::real(code, point.x));
  out.push_back(NewTag::real(static_cast<std::int16_t>(code + 10), point.y));
  out.push_back(NewTag::real(static_cast<std::int16_t>(code + 20), point.z));
}

constexpr double kDegrees = 3.14159265358979323846 / 180.0;

void appendNormal(std::vector<NewTag>& out, const host::AcGeVector3d& normal) {
  if (normal.x == 0.0 && normal.y == 0.0 && normal.z == 1.0) return;
  appendPoint(out, 210, {normal.x, normal.y, normal.z});
}

void appendPoint2(std::vector<NewTag>& out, std::int16_t code, double x, double y) {
  out.push_back(NewTag::real(code, x));
  out.push_back(NewTag::real(static_cast<std::int16_t>(code + 10), y));
}

void appendPolyline(std::vector<NewTag>& out, const headless::Polyline& polyline) {
  out.push_back({100, "AcDbPolyline"});
  out.push_back(NewTag::integer(90, static_cast<std::int64_t>(polyline.vertices().size())));
  out.push_back(NewTag::integer(70, polyline.isClosed() ? 1 : 0));
  if (polyline.constantWidth() != 0.0) out.push_back(NewTag::real(43, polyline.constantWidth()));
  if (polyline.elevation() != 0.0) out.push_back(NewTag::real(38, polyline.elevation()));
  // Widths go with every vertex once one vertex has them, as the host writes them.
  const bool widths = std::any_of(polyline.vertices().begin(), polyline.vertices().end(),
                                  [](const auto& v) { return v.startWidth != 0.0 || v.endWidth != 0.0; });
  for (const auto& vertex : polyline.vertices()) {
    appendPoint2(out, 10, vertex.point.x, vertex.point.y);
    if (widths) {
      out.push_back(NewTag::real(40, vertex.startWidth));
      out.push_back(NewTag::real(41, vertex.endWidth));
    }
    if (vertex.bulge != 0.0) out.push_back(NewTag::real(42, vertex.bulge));
  }
  appendNormal(out, polyline.normal());
}

void appendArc(std::vector<NewTag>& out, const headless::Arc& arc) {
  out.push_back({100, "AcDbCircle"});
  appendPoint(out, 10, arc.ocsCenter());
  out.push_back(NewTag::real(40, arc.radius()));
  appendNormal(out, arc.normal());
  out.push_back({100, "AcDbArc"});
  out.push_back(NewTag::real(50, arc.startAngle() / kDegrees));
  out.push_back(NewTag::real(51, arc.endAngle() / kDegrees));
}

// The text part an attribute and its definition share with a text.
template <typename TextEntity>
void appendTextPart(std::vector<NewTag>& out, const Document& doc, const TextEntity& text) {
  out.push_back({100, "AcDbText"});
  appendPoint(out, 10, text.position());
  out.push_back(NewTag::real(40, text.height()));
  out.push_back(escapedTextTag(doc, 1, text.hostText()));
  if (text.rotation() != 0.0) out.push_back(NewTag::real(50, text.rotation() / kDegrees));
  if (text.widthFactor() != 1.0) out.push_back(NewTag::real(41, text.widthFactor()));
}

// A hatch edge, its numbers as the model keeps them (angles in degrees, as stored).
struct EdgeTags {
  std::vector<NewTag>& out;
  bool fitData;  // spline fit data exists in newer files only

  void operator()(const headless::geometry::LineEdge& edge) const {
    out.push_back(NewTag::integer(72, 1));
    appendPoint2(out, 10, edge.start.x, edge.start.y);
    appendPoint2(out, 11, edge.end.x, edge.end.y);
  }
  void operator()(const headless::geometry::CircularArcEdge& edge) const {
    out.push_back(NewTag::integer(72, 2));
    appendPoint2(out, 10, edge.center.x, edge.center.y);
    out.push_back(NewTag::real(40, edge.radius));
    out.push_back(NewTag::real(50, edge.startAngle));
    out.push_back(NewTag::real(51, edge.endAngle));
    out.push_back(NewTag::integer(73, edge.counterClockwise ? 1 : 0));
  }
  void operator()(const headless::geometry::EllipticArcEdge& edge) const {
    out.push_back(NewTag::integer(72, 3));
    appendPoint2(out, 10, edge.center.x, edge.center.y);
    appendPoint2(out, 11, edge.majorAxis.x, edge.majorAxis.y);
    out.push_back(NewTag::real(40, edge.ratio));
    out.push_back(NewTag::real(50, edge.startAngle));
    out.push_back(NewTag::real(51, edge.endAngle));
    out.push_back(NewTag::integer(73, edge.counterClockwise ? 1 : 0));
  }
  void operator()(const headless::geometry::SplineEdge& edge) const {
    out.push_back(NewTag::integer(72, 4));
    out.push_back(NewTag::integer(94, edge.degree));
    out.push_back(NewTag::integer(73, edge.rational ? 1 : 0));
    out.push_back(NewTag::integer(74, edge.periodic ? 1 : 0));
    out.push_back(NewTag::integer(95, static_cast<std::int64_t>(edge.knots.size())));
    out.push_back(NewTag::integer(96, static_cast<std::int64_t>(edge.controlPoints.size())));
    for (const double knot : edge.knots) out.push_back(NewTag::real(40, knot));
    for (std::size_t i = 0; i < edge.controlPoints.size(); ++i) {
      appendPoint2(out, 10, edge.controlPoints[i].x, edge.controlPoints[i].y);
      if (edge.rational) out.push_back(NewTag::real(42, i < edge.weights.size() ? edge.weights[i] : 1.0));
    }
    if (!fitData) return;
    out.push_back(NewTag::integer(97, static_cast<std::int64_t>(edge.fitPoints.size())));
    for (const auto& point : edge.fitPoints) appendPoint2(out, 11, point.x, point.y);
    if (edge.startTangent) appendPoint2(out, 12, edge.startTangent->x, edge.startTangent->y);
    if (edge.endTangent) appendPoint2(out, 13, edge.endTangent->x, edge.endTangent->y);
  }
};

// A new hatch's boundaries are its own: they keep no associations to the objects that drew
// its source, and the pattern is the one its name gives, at the pattern's own angle and scale.
void appendHatch(std::vector<NewTag>& out, const Document& doc, const headless::Hatch& hatch, bool fitData) {
  out.push_back({100, "AcDbHatch"});
  appendPoint(out, 10, {0.0, 0.0, hatch.elevation()});
  const auto& normal = hatch.normal();
  appendPoint(out, 210, {normal.x, normal.y, normal.z});
  out.push_back(textTag(doc, 2, hatch.patternName()));
  out.push_back(NewTag::integer(70, hatch.isSolidFill() ? 1 : 0));
  out.push_back(NewTag::integer(71, 0));
  out.push_back(NewTag::integer(91, static_cast<std::int64_t>(hatch.loops().size())));
  for (const auto& loop : hatch.loops()) {
    out.push_back(NewTag::integer(92, loop.flags));
    if (loop.flags & headless::HatchLoop::kPolyline) {
      const auto& vertices = loop.path.vertices;
      const bool bulges = std::any_of(vertices.begin(), vertices.end(), [](const auto& v) { return v.bulge != 0.0; });
      out.push_back(NewTag::integer(72, bulges ? 1 : 0));
      out.push_back(NewTag::integer(73, loop.path.closed ? 1 : 0));
      out.push_back(NewTag::integer(93, static_cast<std::int64_t>(vertices.size())));
      for (const auto& vertex : vertices) {
        appendPoint2(out, 10, vertex.point.x, vertex.point.y);
        if (bulges) out.push_back(NewTag::real(42, vertex.bulge));
      }
    } else {
      out.push_back(NewTag::integer(93, static_cast<std::int64_t>(loop.path.edges.size())));
      for (const auto& edge : loop.path.edges) std::visit(EdgeTags{out, fitData}, edge);
    }
    out.push_back(NewTag::integer(97, 0));
  }
  out.push_back(NewTag::integer(75, static_cast<int>(hatch.style())));
  out.push_back(NewTag::integer(76, 1));
  if (!hatch.isSolidFill()) {
    out.push_back(NewTag::real(52, 0.0));
    out.push_back(NewTag::real(41, 1.0));
    out.push_back(NewTag::integer(77, 0));
    out.push_back(NewTag::integer(78, 0));
  }
  out.push_back(NewTag::integer(98, 0));
}

// The groups one subclass of a record keeps for an object's properties. Each set finds the
// first tag of its code in the subclass and gives it the value when it holds another one; a
// missing tag is added at the subclass's end unless the value is the one a missing tag means.
class Subclass {
 public:
  Subclass(Document& doc, RecordId id, std::string_view name) : doc_(doc), id_(id), name_(name) {}

  bool exists() const { return range().first != kNoIndex; }

  bool set(const NewTag& value, const NewTag* absentMeans = nullptr) {
    const auto [begin, end] = range();
    if (begin == kNoIndex) return false;
    const auto tags = doc_.tags(id_);
    for (std::size_t i = begin; i < end; ++i) {
      if (tags[i].code != value.code) continue;
      if (holdsValue(doc_, tags[i], value)) return false;
      doc_.setValue(id_, i, value.value);
      return true;
    }
    if (absentMeans && absentMeans->value == value.value) return false;
    doc_.insertTag(id_, end, value);
    return true;
  }
  // A real number the file keeps in other units (degrees for radians): the stored value
  // times `scale` is the object's. Values equal but for the last bits of the conversion stay.
  bool setReal(std::int16_t code, double value, double scale = 1.0, std::optional<double> absentMeans = {}) {
    const auto [begin, end] = range();
    if (begin == kNoIndex) return false;
    const auto tags = doc_.tags(id_);
    for (std::size_t i = begin; i < end; ++i) {
      if (tags[i].code != code) continue;
      const auto stored = doc_.toDouble(tags[i]);
      if (stored && std::fabs(*stored * scale - value) <= 1e-12 * std::max(1.0, std::fabs(value))) return false;
      doc_.setValue(id_, i, formatDouble(value / scale));
      return true;
    }
    if (absentMeans && *absentMeans == value) return false;
    doc_.insertTag(id_, end, NewTag::real(code, value / scale));
    return true;
  }
  bool setPoint(std::int16_t code, const host::AcGePoint3d& point) {
    bool changed = setReal(code, point.x);
    changed |= setReal(static_cast<std::int16_t>(code + 10), point.y);
    changed |= setReal(static_cast<std::int16_t>(code + 20), point.z, 1.0, 0.0);
    return changed;
  }
  bool setNormal(const host::AcGeVector3d& normal) {
    bool changed = setReal(210, normal.x, 1.0, 0.0);
    changed |= setReal(220, normal.y, 1.0, 0.0);
    changed |= setReal(230, normal.z, 1.0, 1.0);
    return changed;
  }
  // Sets the bits of `mask` in the first integer of the code to those of `bits`.
  bool setBits(std::int16_t code, std::int64_t mask, std::int64_t bits) {
    const auto [begin, end] = range();
    if (begin == kNoIndex) return false;
    const auto tags = doc_.tags(id_);
    for (std::size_t i = begin; i < end; ++i) {
      if (tags[i].code != code) continue;
      const std::int64_t stored = doc_.toInteger(tags[i]).value_or(0);
      const std::int64_t wanted = (stored & ~mask) | (bits & mask);
      if (wanted == stored) return false;
      doc_.setInteger(id_, i, wanted);
      return true;
    }
    if ((bits & mask) == 0) return false;
    doc_.insertTag(id_, end, NewTag::integer(code, bits & mask));
    return true;
  }
  // The subclass's tags [begin, end), from after its marker; kNoIndex when it has none.
  std::pair<std::size_t, std::size_t> range() const {
    const RecordHeader header = scanRecordHeader(doc_, id_);
    const auto tags = doc_.tags(id_);
    const std::size_t marker = findSubclass(doc_, tags, name_, header.bodyBegin);
    if (marker == kNoIndex) return {kNoIndex, kNoIndex};
    return {marker + 1, subclassEnd(tags, marker)};
  }

 private:
  Document& doc_;
  RecordId id_;
  std::string_view name_;
};

template <typename TextEntity>
bool writeTextProperties(Document& doc, RecordId id, const TextEntity& text) {
  Subclass own(doc, id, "AcDbText");
  bool changed = own.setPoint(10, text.position());
  changed |= own.setReal(40, text.height());
  changed |= own.setReal(50, text.rotation(), kDegrees, 0.0);
  changed |= own.setReal(41, text.widthFactor(), 1.0, 1.0);
  return changed;
}

}  // namespace

ObjectWriter::ObjectWriter(Document& doc, const headless::Database& db, std::function<bool(host::AcDbObjectId)> removed)
    : doc_(doc), db_(db), removed_(std::move(removed)) {}

std::uint64_t ObjectWriter::handleOf(host::AcDbObjectId id) const {
  if (id.isNull() || removed_(id)) return 0;
  return db_.objects().handle(id).value();
}

bool ObjectWriter::isEntity(const host::AcDbObject& object) {
  return dynamic_cast<const host::AcDbEntity*>(&object) != nullptr;
}

// --- write-back

bool ObjectWriter::writeBack(RecordId id, const host::AcDbObject& object) {
  // From the back of the record to its front, so that each step finds its tags where the
  // record's scan left them.
  bool changed = writeExtendedData(id, object);
  changed |= writeBody(id, object);
  changed |= writeCommon(id, object);
  return changed;
}

bool ObjectWriter::writeExtendedData(RecordId id, const host::AcDbObject& object) {
  const auto& record = recordOf(object);
  const RecordHeader header = scanRecordHeader(doc_, id);
  const auto tags = doc_.tags(id);
  if (readExtendedData(doc_, tags, header.xdataBegin) == record.xdata) return false;
  return replaceTags(doc_, id, header.xdataBegin, tags.size(), extendedDataTags(doc_, record.xdata));
}

bool ObjectWriter::writeCommon(RecordId id, const host::AcDbObject& object) {
  const auto& record = recordOf(object);
  bool changed = false;
  RecordHeader header = scanRecordHeader(doc_, id);
  const std::uint64_t owner = handleOf(record.owner);
  if (header.ownerIndex != kNoIndex) {
    if (header.owner != owner) {
      doc_.setHandle(id, header.ownerIndex, owner);
      changed = true;
    }
  } else if (owner != 0 && header.handleIndex != kNoIndex) {
    std::size_t at = header.handleIndex + 1;
    if (header.reactorsEnd != kNoIndex) at = std::max(at, header.reactorsEnd + 1);
    if (header.xdictionaryEnd != kNoIndex) at = std::max(at, header.xdictionaryEnd + 1);
    doc_.insertTag(id, at, NewTag::handle(330, owner));
    changed = true;
  }

  header = scanRecordHeader(doc_, id);
  const std::uint64_t xdict = handleOf(record.extensionDictionary);
  if (header.xdictionaryIndex != kNoIndex) {
    if (xdict == 0 && header.xdictionaryEnd != kNoIndex) {
      // The group's opening tag sits right before its handle.
      for (std::size_t i = header.xdictionaryEnd + 1; i-- > header.xdictionaryIndex - 1;) doc_.removeTag(id, i);
      changed = true;
    } else if (xdict != 0 && header.extensionDictionary != xdict) {
      doc_.setHandle(id, header.xdictionaryIndex, xdict);
      changed = true;
    }
  } else if (xdict != 0 && header.handleIndex != kNoIndex) {
    // After the handle and the reactors, before the owner.
    std::size_t at = header.handleIndex + 1;
    if (header.reactorsEnd != kNoIndex) at = std::max(at, header.reactorsEnd + 1);
    doc_.insertTag(id, at, {102, "{ACAD_XDICTIONARY"});
    doc_.insertTag(id, at + 1, NewTag::handle(360, xdict));
    doc_.insertTag(id, at + 2, {102, "}"});
    changed = true;
  }
  return changed;
}

bool ObjectWriter::writeBody(RecordId id, const host::AcDbObject& object) {
  if (const auto* field = dynamic_cast<const headless::Field*>(&object)) {
    const auto before = readFieldRecord(doc_, id, db_);
    const auto body = fieldBodyTags(*field, doc_, db_, id);
    return replaceTags(doc_, id, before.bodyBegin, before.bodyEnd, body);
  }
  if (const auto* table = dynamic_cast<const headless::Table*>(&object)) {
    const Status status = writeTable(doc_, id, *table);
    if (!status) throw std::runtime_error(status.message());
    writeEntity(id, *table);
    return true;
  }
  if (dynamic_cast<const headless::Dictionary*>(&object)) return writeDictionary(id, object);
  if (dynamic_cast<const headless::FieldList*>(&object)) return writeFieldList(id, object);
  bool changed = false;
  if (const auto* text = dynamic_cast<const headless::TextHost*>(&object)) {
    changed |= writeHostText(id, object, text->hostText());
  }
  changed |= writeProperties(id, object);
  if (const auto* entity = dynamic_cast<const host::AcDbEntity*>(&object)) changed |= writeEntity(id, *entity);
  return changed;
}

bool ObjectWriter::writeProperties(RecordId id, const host::AcDbObject& object) {
  // The properties the modelled kinds keep in their own subclasses. Kinds not listed here
  // (hatches, viewports, block definitions, layouts) keep their records as read.
  if (const auto* text = dynamic_cast<const headless::Text*>(&object)) return writeTextProperties(doc_, id, *text);
  if (const auto* attribute = dynamic_cast<const headless::Attribute*>(&object)) {
    bool changed = writeTextProperties(doc_, id, *attribute);
    Subclass own(doc_, id, "AcDbAttribute");
    changed |= own.set(textTag(doc_, 2, attribute->tag()));
    changed |= own.set(NewTag::integer(70, attribute->flags()));
    return changed;
  }
  if (const auto* definition = dynamic_cast<const headless::AttributeDefinition*>(&object)) {
    bool changed = writeTextProperties(doc_, id, *definition);
    Subclass own(doc_, id, "AcDbAttributeDefinition");
    changed |= own.set(escapedTextTag(doc_, 3, definition->prompt()));
    changed |= own.set(textTag(doc_, 2, definition->tag()));
    changed |= own.set(NewTag::integer(70, definition->flags()));
    return changed;
  }
  if (const auto* mtext = dynamic_cast<const headless::MText*>(&object)) {
    Subclass own(doc_, id, "AcDbMText");
    bool changed = own.setPoint(10, mtext->location());
    changed |= own.setReal(40, mtext->textHeight());
    changed |= own.setReal(41, mtext->width(), 1.0, 0.0);
    changed |= own.set(NewTag::integer(71, mtext->attachment()));
    // The rotation is an angle (50) or the direction of the text's x axis (11, 21, 31),
    // whichever the record keeps; an angle when it keeps neither.
    const auto [begin, end] = own.range();
    const auto tags = doc_.tags(id);
    std::optional<double> x;
    std::optional<double> y;
    bool angle = false;
    for (std::size_t i = begin; i < end; ++i) {
      if (tags[i].code == 50) angle = true;
      if (tags[i].code == 11 && !x) x = doc_.toDouble(tags[i]);
      if (tags[i].code == 21 && !y) y = doc_.toDouble(tags[i]);
    }
    if (angle || !x || !y) {
      changed |= own.setReal(50, mtext->rotation(), 1.0, 0.0);
    } else if (std::fabs(std::atan2(*y, *x) - mtext->rotation()) > 1e-12) {
      changed |= own.setReal(11, std::cos(mtext->rotation()));
      changed |= own.setReal(21, std::sin(mtext->rotation()));
    }
    return changed;
  }
  if (const auto* line = dynamic_cast<const headless::Line*>(&object)) {
    Subclass own(doc_, id, "AcDbLine");
    bool changed = own.setPoint(10, line->startPoint());
    changed |= own.setPoint(11, line->endPoint());
    return changed;
  }
  if (const auto* arc = dynamic_cast<const headless::Arc*>(&object)) {
    Subclass circle(doc_, id, "AcDbCircle");
    Subclass own(doc_, id, "AcDbArc");
    bool changed = circle.setPoint(10, arc->ocsCenter());
    changed |= circle.setReal(40, arc->radius());
    changed |= circle.setNormal(arc->normal());
    changed |= own.setReal(50, arc->startAngle(), kDegrees);
    changed |= own.setReal(51, arc->endAngle(), kDegrees);
    return changed;
  }
  if (const auto* circle = dynamic_cast<const headless::Circle*>(&object)) {
    Subclass own(doc_, id, "AcDbCircle");
    bool changed = own.setPoint(10, circle->center());
    changed |= own.setReal(40, circle->radius());
    return changed;
  }
  if (const auto* reference = dynamic_cast<const headless::BlockReference*>(&object)) {
    Subclass own(doc_, id, "AcDbBlockReference");
    bool changed = false;
    if (const auto* block = db_.get<headless::BlockTableRecord>(reference->blockTableRecord())) {
      changed |= own.set(textTag(doc_, 2, block->name()));
    }
    changed |= own.setPoint(10, reference->position());
    changed |= own.setReal(41, reference->scaleFactors().sx, 1.0, 1.0);
    changed |= own.setReal(42, reference->scaleFactors().sy, 1.0, 1.0);
    changed |= own.setReal(43, reference->scaleFactors().sz, 1.0, 1.0);
    changed |= own.setReal(50, reference->rotation(), kDegrees, 0.0);
    changed |= own.setNormal(reference->normal());
    return changed;
  }
  if (const auto* polyline = dynamic_cast<const headless::Polyline*>(&object)) return writePolyline(id, *polyline);
  if (const auto* layer = dynamic_cast<const headless::LayerTableRecord*>(&object)) {
    Subclass own(doc_, id, "AcDbLayerTableRecord");
    bool changed = own.set(textTag(doc_, 2, layer->name()));
    changed |= own.setBits(70, 1 | 4, (layer->isFrozen() ? 1 : 0) | (layer->isLocked() ? 4 : 0));
    // An off layer keeps its colour negative.
    const auto [begin, end] = own.range();
    for (std::size_t i = begin; begin != kNoIndex && i < end; ++i) {
      if (doc_.tags(id)[i].code != 62) continue;
      const std::int64_t color = doc_.toInteger(doc_.tags(id)[i]).value_or(7);
      if ((color < 0) != layer->isOff()) {
        doc_.setInteger(id, i, -color);
        changed = true;
      }
      break;
    }
    return changed;
  }
  return false;
}

bool ObjectWriter::writePolyline(RecordId id, const headless::Polyline& polyline) {
  Subclass own(doc_, id, "AcDbPolyline");
  auto [begin, end] = own.range();
  if (begin == kNoIndex) return false;
  bool changed = own.setBits(70, 1, polyline.isClosed() ? 1 : 0);
  changed |= own.setReal(38, polyline.elevation(), 1.0, 0.0);
  changed |= own.setReal(43, polyline.constantWidth(), 1.0, 0.0);
  changed |= own.setNormal(polyline.normal());
  // The vertices: the count, then from the first 10 to the last vertex tag, rewritten as a run
  // where the tags that keep their values stay.
  std::tie(begin, end) = own.range();
  auto tags = doc_.tags(id);
  // Widths are written when a vertex has one, or when the record spelt them out already.
  bool widths = std::any_of(polyline.vertices().begin(), polyline.vertices().end(), [](const auto& v) {
    return v.startWidth != 0.0 || v.endWidth != 0.0;
  });
  for (std::size_t i = begin; i < end; ++i) widths |= tags[i].code == 40;
  std::vector<NewTag> vertices;
  for (const auto& vertex : polyline.vertices()) {
    vertices.push_back(NewTag::real(10, vertex.point.x));
    vertices.push_back(NewTag::real(20, vertex.point.y));
    if (widths) {
      vertices.push_back(NewTag::real(40, vertex.startWidth));
      vertices.push_back(NewTag::real(41, vertex.endWidth));
    }
    if (vertex.bulge != 0.0) vertices.push_back(NewTag::real(42, vertex.bulge));
  }
  std::size_t first = end;
  std::size_t last = end;
  for (std::size_t i = begin; i < end; ++i) {
    const int code = tags[i].code;
    if (code == 10 && first == end) first = i;
    if (first != end && (code == 10 || code == 20 || code == 40 || code == 41 || code == 42 || code == 91)) last = i + 1;
  }
  if (first == end) last = first;
  // Vertex ids (91) of newer files go with the vertices they stood with.
  changed |= replaceTags(doc_, id, first, last, vertices);
  std::tie(begin, end) = own.range();
  tags = doc_.tags(id);
  for (std::size_t i = begin; i < end; ++i) {
    if (tags[i].code != 90) continue;
    const NewTag count = NewTag::integer(90, static_cast<std::int64_t>(polyline.vertices().size()));
    if (!holdsValue(doc_, tags[i], count)) {
      doc_.setValue(id, i, count.value);
      changed = true;
    }
    break;
  }
  return changed;
}

bool ObjectWriter::writeEntity(RecordId id, const host::AcDbEntity& entity) {
  const auto range = [this, id] {
    const RecordHeader header = scanRecordHeader(doc_, id);
    const std::size_t marker = findSubclass(doc_, doc_.tags(id), "AcDbEntity", header.bodyBegin);
    if (marker == kNoIndex) return std::pair(header.bodyBegin, header.xdataBegin);
    return std::pair(marker + 1, subclassEnd(doc_.tags(id), marker));
  };
  bool changed = false;
  if (const auto* look = dynamic_cast<const headless::EntityLook*>(&entity)) {
    const auto [first, last] = range();
    changed |= writeEntityProperties(doc_, id, first, last, look->properties());
  }
  const auto [begin, end] = range();
  const auto tags = doc_.tags(id);
  std::size_t layerIndex = kNoIndex;
  std::size_t visibilityIndex = kNoIndex;
  for (std::size_t i = begin; i < end; ++i) {
    if (tags[i].code == 8 && layerIndex == kNoIndex) layerIndex = i;
    if (tags[i].code == 60 && visibilityIndex == kNoIndex) visibilityIndex = i;
  }
  const NewTag visibility = NewTag::integer(60, entity.visible() ? 0 : 1);
  if (visibilityIndex != kNoIndex) {
    if (!holdsValue(doc_, tags[visibilityIndex], visibility)) {
      doc_.setValue(id, visibilityIndex, visibility.value);
      changed = true;
    }
  } else if (!entity.visible()) {
    doc_.insertTag(id, layerIndex != kNoIndex ? layerIndex + 1 : begin, visibility);
    changed = true;
  }
  const NewTag layer = textTag(doc_, 8, entity.layer());
  if (layerIndex != kNoIndex) {
    if (!holdsValue(doc_, doc_.tags(id)[layerIndex], layer)) {
      doc_.setValue(id, layerIndex, layer.value);
      changed = true;
    }
  } else {
    doc_.insertTag(id, begin, layer);
    changed = true;
  }
  return changed;
}

bool ObjectWriter::writeHostText(RecordId id, const host::AcDbObject& object, std::wstring_view text) {
  const RecordHeader header = scanRecordHeader(doc_, id);
  const auto tags = doc_.tags(id);
  if (object.dxfName() == L"MTEXT") {
    const std::size_t marker = findSubclass(doc_, tags, "AcDbMText", header.bodyBegin);
    const std::size_t begin = marker == kNoIndex ? header.bodyBegin : marker + 1;
    const std::size_t end = marker == kNoIndex ? header.xdataBegin : subclassEnd(tags, marker);
    // The pieces: a run of 3s closed by a 1.
    std::size_t last = kNoIndex;
    for (std::size_t i = begin; i < end && last == kNoIndex; ++i)
      if (tags[i].code == 1) last = i;
    std::size_t first = last == kNoIndex ? end : last;
    while (first > begin && tags[first - 1].code == 3) --first;
    std::vector<NewTag> pieces;
    appendPieces(pieces, doc_, text, 3, 1);
    return replaceTags(doc_, id, first, last == kNoIndex ? first : last + 1, pieces);
  }
  if (object.dxfName() == L"MULTILEADER") {
    // The text of the context data: the 304 after the has-text flag, before the leaders.
    const std::size_t marker = findSubclass(doc_, tags, "AcDbMLeader", header.bodyBegin);
    if (marker == kNoIndex) return false;
    const NewTag value = escapedTextTag(doc_, 304, text);
    bool hasText = false;
    for (std::size_t i = marker + 1; i < header.xdataBegin && tags[i].code != 302; ++i) {
      if (tags[i].code == 290 && !hasText) hasText = doc_.toInteger(tags[i]).value_or(0) != 0;
      if (tags[i].code != 304 || !hasText) continue;
      if (holdsValue(doc_, tags[i], value)) return false;
      doc_.setValue(id, i, value.value);
      return true;
    }
    return false;
  }
  const std::size_t marker = findSubclass(doc_, tags, "AcDbText", header.bodyBegin);
  const std::size_t begin = marker == kNoIndex ? header.bodyBegin : marker + 1;
  const std::size_t end = marker == kNoIndex ? header.xdataBegin : subclassEnd(tags, marker);
  const NewTag value = escapedTextTag(doc_, 1, text);
  for (std::size_t i = begin; i < end; ++i) {
    if (tags[i].code != 1) continue;
    if (holdsValue(doc_, tags[i], value)) return false;
    doc_.setValue(id, i, value.value);
    return true;
  }
  doc_.insertTag(id, end, value);
  return true;
}

std::vector<NewTag> ObjectWriter::dictionaryEntries(const host::AcDbObject& object,
                                                    const std::vector<NewTag>* old, bool hardOwner) const {
  // An entry keeps the pointer kind (350 soft, 360 hard) it had; new ones follow the
  // dictionary's ownership flag.
  std::map<std::string, std::int16_t> codes;
  if (old) {
    for (std::size_t i = 0; i + 1 < old->size(); ++i)
      if ((*old)[i].code == 3) codes[(*old)[i].value] = (*old)[i + 1].code;
  }
  std::vector<NewTag> out;
  const auto& dictionary = dynamic_cast<const headless::Dictionary&>(object);
  for (const auto& [name, id] : dictionary.entries()) {
    const std::uint64_t handle = handleOf(id);
    if (handle == 0) continue;
    NewTag key = textTag(doc_, 3, name);
    const auto known = codes.find(key.value);
    const std::int16_t code = known != codes.end() ? known->second : static_cast<std::int16_t>(hardOwner ? 360 : 350);
    out.push_back(std::move(key));
    out.push_back(NewTag::handle(code, handle));
  }
  return out;
}

bool ObjectWriter::writeDictionary(RecordId id, const host::AcDbObject& object) {
  const RecordHeader header = scanRecordHeader(doc_, id);
  const auto tags = doc_.tags(id);
  const std::size_t marker = findSubclass(doc_, tags, "AcDbDictionary", header.bodyBegin);
  std::size_t begin = marker == kNoIndex ? header.bodyBegin : marker + 1;
  bool hardOwner = false;
  while (begin < header.xdataBegin && (tags[begin].code == 280 || tags[begin].code == 281)) {
    if (tags[begin].code == 280) hardOwner = doc_.toInteger(tags[begin]).value_or(0) != 0;
    ++begin;
  }
  std::size_t end = begin;
  std::vector<NewTag> old;
  while (end + 1 < header.xdataBegin && tags[end].code == 3 &&
         (tags[end + 1].code == 350 || tags[end + 1].code == 360)) {
    old.push_back({3, std::string(doc_.bytes(tags[end]))});
    old.push_back({tags[end + 1].code, {}});
    end += 2;
  }
  return replaceTags(doc_, id, begin, end, dictionaryEntries(object, &old, hardOwner));
}

bool ObjectWriter::writeFieldList(RecordId id, const host::AcDbObject& object) {
  const RecordHeader header = scanRecordHeader(doc_, id);
  const auto tags = doc_.tags(id);
  const std::size_t marker = findSubclass(doc_, tags, "AcDbIdSet", header.bodyBegin);
  const std::size_t begin = marker == kNoIndex ? header.bodyBegin : marker + 1;
  const std::size_t end = marker == kNoIndex ? header.xdataBegin : subclassEnd(tags, marker);
  std::vector<NewTag> list;
  appendBody(list, object);
  // appendBody spells the whole list with its markers; the record keeps its own markers.
  std::vector<NewTag> ids(list.begin() + 1, list.end() - 1);
  return replaceTags(doc_, id, begin, end, ids);
}

// --- new records

void ObjectWriter::appendBody(std::vector<NewTag>& out, const host::AcDbObject& object) const {
  if (const auto* text = dynamic_cast<const headless::Text*>(&object)) {
    out.push_back({100, "AcDbText"});
    appendPoint(out, 10, text->position());
    out.push_back(NewTag::real(40, text->height()));
    out.push_back(escapedTextTag(doc_, 1, text->hostText()));
    if (text->rotation() != 0.0) out.push_back(NewTag::real(50, text->rotation() / kDegrees));
    if (text->widthFactor() != 1.0) out.push_back(NewTag::real(41, text->widthFactor()));
    out.push_back({100, "AcDbText"});
  } else if (const auto* mtext = dynamic_cast<const headless::MText*>(&object)) {
    out.push_back({100, "AcDbMText"});
    appendPoint(out, 10, mtext->location());
    out.push_back(NewTag::real(40, mtext->textHeight()));
    out.push_back(NewTag::real(41, mtext->width()));
    out.push_back(NewTag::integer(71, mtext->attachment()));
    appendPieces(out, doc_, mtext->contents(), 3, 1);
    if (mtext->rotation() != 0.0) out.push_back(NewTag::real(50, mtext->rotation()));
  } else if (const auto* attribute = dynamic_cast<const headless::Attribute*>(&object)) {
    appendTextPart(out, doc_, *attribute);
    out.push_back({100, "AcDbAttribute"});
    out.push_back(textTag(doc_, 2, attribute->tag()));
    out.push_back(NewTag::integer(70, attribute->flags()));
  } else if (const auto* definition = dynamic_cast<const headless::AttributeDefinition*>(&object)) {
    appendTextPart(out, doc_, *definition);
    out.push_back({100, "AcDbAttributeDefinition"});
    out.push_back(escapedTextTag(doc_, 3, definition->prompt()));
    out.push_back(textTag(doc_, 2, definition->tag()));
    out.push_back(NewTag::integer(70, definition->flags()));
  } else if (const auto* reference = dynamic_cast<const headless::BlockReference*>(&object)) {
    appendBlockReference(out, *reference);
  } else if (const auto* polyline = dynamic_cast<const headless::Polyline*>(&object)) {
    appendPolyline(out, *polyline);
  } else if (const auto* arc = dynamic_cast<const headless::Arc*>(&object)) {
    appendArc(out, *arc);
  } else if (const auto* hatch = dynamic_cast<const headless::Hatch*>(&object)) {
    appendHatch(out, doc_, *hatch, doc_.version() >= "AC1024");
  } else if (const auto* line = dynamic_cast<const headless::Line*>(&object)) {
    out.push_back({100, "AcDbLine"});
    appendPoint(out, 10, line->startPoint());
    appendPoint(out, 11, line->endPoint());
  } else if (const auto* circle = dynamic_cast<const headless::Circle*>(&object)) {
    out.push_back({100, "AcDbCircle"});
    appendPoint(out, 10, circle->center());
    out.push_back(NewTag::real(40, circle->radius()));
  } else if (const auto* field = dynamic_cast<const headless::Field*>(&object)) {
    out.push_back({100, "AcDbField"});
    const auto body = fieldBodyTags(*field, doc_, db_);
    out.insert(out.end(), body.begin(), body.end());
  } else if (dynamic_cast<const headless::Dictionary*>(&object)) {
    out.push_back({100, "AcDbDictionary"});
    out.push_back(NewTag::integer(280, 1));
    out.push_back(NewTag::integer(281, 1));
    const auto entries = dictionaryEntries(object, nullptr, true);
    out.insert(out.end(), entries.begin(), entries.end());
  } else if (const auto* list = dynamic_cast<const headless::FieldList*>(&object)) {
    out.push_back({100, "AcDbIdSet"});
    std::vector<NewTag> handles;
    for (const auto id : list->ids()) {
      if (const std::uint64_t handle = handleOf(id)) handles.push_back(NewTag::handle(330, handle));
    }
    out.push_back(NewTag::integer(90, static_cast<std::int64_t>(handles.size())));
    out.insert(out.end(), handles.begin(), handles.end());
    out.push_back({100, "AcDbFieldList"});
  } else if (const auto* proxy = dynamic_cast<const headless::ProxyObject*>(&object);
             proxy && proxy->dxfName() == L"APPID") {
    out.push_back({100, "AcDbSymbolTableRecord"});
    out.push_back({100, "AcDbRegAppTableRecord"});
    out.push_back(textTag(doc_, 2, proxy->name()));
    out.push_back(NewTag::integer(70, 0));
  }
}

host::AcDbObjectId ObjectWriter::spaceOf(const host::AcDbObject& object) const {
  // Attributes and the end of their sequence are in the space of the reference that owns them.
  host::AcDbObjectId owner = object.ownerId();
  if (const auto* entity = dynamic_cast<const host::AcDbEntity*>(db_.lookup(owner))) owner = entity->ownerId();
  return owner;
}

void ObjectWriter::appendEntityCommon(std::vector<NewTag>& out, const host::AcDbEntity& entity) const {
  out.push_back({100, "AcDbEntity"});
  const auto* block = db_.get<headless::BlockTableRecord>(spaceOf(entity));
  if (block && core::toUpper(block->name()).starts_with(L"*PAPER_SPACE")) out.push_back(NewTag::integer(67, 1));
  out.push_back(textTag(doc_, 8, entity.layer()));
  if (!entity.visible()) out.push_back(NewTag::integer(60, 1));
  if (const auto* look = dynamic_cast<const headless::EntityLook*>(&entity)) {
    // A copy names the plot style and material of its source while they are in the drawing.
    headless::EntityProperties properties = look->properties();
    const auto live = [this](std::uint64_t handle) {
      host::AcDbObjectId id;
      return handle != 0 && db_.getAcDbObjectId(id, host::AcDbHandle(handle)) == host::Acad::eOk && !removed_(id);
    };
    if (!live(properties.plotStyle)) properties.plotStyle = 0;
    if (!live(properties.material)) properties.material = 0;
    appendEntityProperties(out, doc_, properties);
  }
}

std::vector<NewTag> ObjectWriter::sequenceEnd(const headless::BlockReference& reference, std::uint64_t handle) const {
  std::vector<NewTag> out{{0, "SEQEND"}, NewTag::handle(5, handle),
                          NewTag::handle(330, handleOf(reference.objectId()))};
  out.push_back({100, "AcDbEntity"});
  const auto* block = db_.get<headless::BlockTableRecord>(reference.ownerId());
  if (block && core::toUpper(block->name()).starts_with(L"*PAPER_SPACE")) out.push_back(NewTag::integer(67, 1));
  out.push_back(textTag(doc_, 8, reference.layer()));
  return out;
}

void ObjectWriter::appendBlockReference(std::vector<NewTag>& out, const headless::BlockReference& reference) const {
  const auto* block = db_.get<headless::BlockTableRecord>(reference.blockTableRecord());
  if (!block || removed_(reference.blockTableRecord())) {
    throw std::runtime_error("a new block reference names no block of the drawing");
  }
  out.push_back({100, "AcDbBlockReference"});
  if (!attributesOf(reference).empty()) out.push_back(NewTag::integer(66, 1));
  out.push_back(textTag(doc_, 2, block->name()));
  appendPoint(out, 10, reference.position());
  const auto scale = reference.scaleFactors();
  if (scale.sx != 1.0) out.push_back(NewTag::real(41, scale.sx));
  if (scale.sy != 1.0) out.push_back(NewTag::real(42, scale.sy));
  if (scale.sz != 1.0) out.push_back(NewTag::real(43, scale.sz));
  if (reference.rotation() != 0.0) out.push_back(NewTag::real(50, reference.rotation() / kDegrees));
  appendNormal(out, reference.normal());
}

std::vector<host::AcDbObjectId> ObjectWriter::attributesOf(const headless::BlockReference& reference) const {
  std::vector<host::AcDbObjectId> attributes;
  for (const auto id : reference.attributeIds()) {
    const auto* attribute = db_.lookup(id);
    if (attribute && !removed_(id) && attribute->ownerId() == reference.objectId()) attributes.push_back(id);
  }
  return attributes;
}

std::optional<std::vector<NewTag>> ObjectWriter::newRecord(const host::AcDbObject& object, std::string& error) const {
  const auto& record = recordOf(object);
  std::vector<NewTag> body;
  appendBody(body, object);
  if (body.empty()) {
    error = "a new " + narrow(object.dxfName()) + " cannot be written to a drawing yet";
    return std::nullopt;
  }
  std::vector<NewTag> out;
  out.push_back({0, narrow(object.dxfName())});
  out.push_back(NewTag::handle(5, record.handle.value()));
  const std::uint64_t owner = handleOf(record.owner);
  // Objects owned by a dictionary name it as their reactor, as the host does.
  if (owner != 0 && db_.get<headless::Dictionary>(record.owner)) {
    out.push_back({102, "{ACAD_REACTORS"});
    out.push_back(NewTag::handle(330, owner));
    out.push_back({102, "}"});
  }
  if (const std::uint64_t xdict = handleOf(record.extensionDictionary)) {
    out.push_back({102, "{ACAD_XDICTIONARY"});
    out.push_back(NewTag::handle(360, xdict));
    out.push_back({102, "}"});
  }
  out.push_back(NewTag::handle(330, owner));
  if (const auto* entity = dynamic_cast<const host::AcDbEntity*>(&object)) appendEntityCommon(out, *entity);
  out.insert(out.end(), body.begin(), body.end());
  const auto xdata = extendedDataTags(doc_, record.xdata);
  out.insert(out.end(), xdata.begin(), xdata.end());
  return out;
}

}  // namespace corvane::dxf
