#include "dxf/objectwriter.h"

#include <map>
#include <stdexcept>

#include "core/textutil.h"
#include "dxf/extendeddata.h"
#include "dxf/fieldrecord.h"
#include "dxf/numbertext.h"
#include "dxf/recordedit.h"
#include "dxf/recordheader.h"
#include "dxf/tablerecord.h"
#include "dxf/textpieces.h"
#include "headless/blocktablerecord.h"
#include "headless/circle.h"
#include "headless/database.h"
#include "headless/dictionary.h"
#include "headless/field.h"
#include "headless/fieldlist.h"
#include "headless/hostapplication.h"
#include "headless/line.h"
#include "headless/mtext.h"
#include "headless/proxyobject.h"
#include "headless/table.h"
#include "headless/text.h"
#include "headless/texthost.h"

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

}  // namespace

ObjectWriter::ObjectWriter(Document& doc, const headless::Database& db, std::function<bool(host::AcDbObjectId)> removed)
    : doc_(doc), db_(db), removed_(std::move(removed)) {}

std::uint64_t ObjectWriter::handleOf(host::AcDbObjectId id) const {
  if (id.isNull() || removed_(id)) return 0;
  return db_.host().handle(id).value();
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
  if (const auto* entity = dynamic_cast<const host::AcDbEntity*>(&object)) changed |= writeEntity(id, *entity);
  return changed;
}

bool ObjectWriter::writeEntity(RecordId id, const host::AcDbEntity& entity) {
  const RecordHeader header = scanRecordHeader(doc_, id);
  const auto tags = doc_.tags(id);
  std::size_t begin = header.bodyBegin;
  std::size_t end = header.xdataBegin;
  const std::size_t marker = findSubclass(doc_, tags, "AcDbEntity", header.bodyBegin);
  if (marker != kNoIndex) {
    begin = marker + 1;
    end = subclassEnd(tags, marker);
  }
  std::size_t layerIndex = kNoIndex;
  std::size_t visibilityIndex = kNoIndex;
  for (std::size_t i = begin; i < end; ++i) {
    if (tags[i].code == 8 && layerIndex == kNoIndex) layerIndex = i;
    if (tags[i].code == 60 && visibilityIndex == kNoIndex) visibilityIndex = i;
  }
  bool changed = false;
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
  const std::size_t marker = findSubclass(doc_, tags, "AcDbText", header.bodyBegin);
  const std::size_t begin = marker == kNoIndex ? header.bodyBegin : marker + 1;
  const std::size_t end = marker == kNoIndex ? header.xdataBegin : subclassEnd(tags, marker);
  const NewTag value = textTag(doc_, 1, escapeControlCharacters(text));
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
    out.push_back(textTag(doc_, 1, escapeControlCharacters(text->hostText())));
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
  if (const auto* entity = dynamic_cast<const host::AcDbEntity*>(&object)) {
    out.push_back({100, "AcDbEntity"});
    const auto* block = db_.get<headless::BlockTableRecord>(record.owner);
    if (block && core::toUpper(block->name()).starts_with(L"*PAPER_SPACE")) out.push_back(NewTag::integer(67, 1));
    out.push_back(textTag(doc_, 8, entity->layer()));
    if (!entity->visible()) out.push_back(NewTag::integer(60, 1));
  }
  out.insert(out.end(), body.begin(), body.end());
  const auto xdata = extendedDataTags(doc_, record.xdata);
  out.insert(out.end(), xdata.begin(), xdata.end());
  return out;
}

}  // namespace corvane::dxf
