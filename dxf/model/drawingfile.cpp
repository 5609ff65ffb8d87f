#include "dxf/model/drawingfile.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <system_error>

#include "core/textutil.h"
#include "core/utf8.h"
#include "dxf/model/extendeddata.h"
#include "dxf/model/fieldrecord.h"
#include "dxf/model/objectreader.h"
#include "dxf/model/objectwriter.h"
#include "dxf/model/tables/newtable.h"
#include "dxf/model/tables/tablerecord.h"
#include "dxf/tags/numbertext.h"
#include "dxf/tags/recordheader.h"
#include "dxf/tags/recordview.h"
#include "dxf/tags/textpieces.h"
#include "headless/db/attribute.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktable.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/field.h"
#include "headless/db/fieldcode.h"
#include "headless/db/fieldlist.h"
#include "headless/db/layertable.h"
#include "headless/db/layout.h"
#include "headless/db/proxyobject.h"
#include "headless/db/table.h"
#include "headless/db/texthost.h"

namespace corvane::dxf {

namespace {

// The drawing's file as the database names it: the full path, as a host names an open drawing, so
// that files named relative to the drawing are found from any folder.
std::wstring databaseFileName(const std::filesystem::path& path) {
  if (path.empty()) return {};
  std::error_code error;
  const std::filesystem::path full = std::filesystem::absolute(path, error);
  return core::fromUtf8((error ? path : full.lexically_normal()).string());
}

using host::AcDbHandle;
using host::AcDbObjectId;

constexpr std::wstring_view kChecksumKey = L"ACFD_FIELDTEXT_CHECKSUM";
constexpr std::wstring_view kAttdefKey = L"ACFD_FIELDTEXT_ATTDEF";

bool isSection(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// A reference read before the object it names: resolved once every record has its object.
struct Pending {
  AcDbObjectId object;
  std::uint64_t handle;
  enum Kind : std::uint8_t { Owner, ExtensionDictionary, BlockEntity } kind;
};

headless::HeadlessObject* headlessOf(const headless::Database& db, AcDbObjectId id) {
  auto* object = db.objects().lookupHeadless(id);
  return object && object->record().database == &db ? object : nullptr;
}

std::wstring tableName(const Document& doc, RecordId id, std::size_t bodyBegin) {
  const auto tags = doc.tags(id);
  for (std::size_t i = 1; i < bodyBegin && i < tags.size(); ++i)
    if (tags[i].code == 2) return doc.text(tags[i]);
  return {};
}

}  // namespace

DrawingFile::DrawingFile(std::unique_ptr<Document> doc, headless::DatabaseHost& host, std::filesystem::path path)
    : doc_(std::move(doc)), path_(std::move(path)) {
  bind(host);
}

DrawingFile::~DrawingFile() = default;

LoadResult DrawingFile::load(const std::filesystem::path& path, headless::DatabaseHost& host) {
  ReadResult read = Document::readFile(path);
  if (!read.document) return {nullptr, std::move(read.error)};
  return {std::unique_ptr<DrawingFile>(new DrawingFile(std::move(read.document), host, path)), {}};
}

LoadResult DrawingFile::read(std::string bytes, headless::DatabaseHost& host, const std::filesystem::path& path) {
  ReadResult read = Document::read(std::move(bytes));
  if (!read.document) return {nullptr, std::move(read.error)};
  return {std::unique_ptr<DrawingFile>(new DrawingFile(std::move(read.document), host, path)), {}};
}

// --- the records of objects

RecordId DrawingFile::recordOf(AcDbObjectId id) const {
  const std::uint64_t value = id.asOldId();
  if (value >= firstId_ && value - firstId_ < loaded_.size()) return loaded_[value - firstId_];
  const auto other = others_.find(value);
  return other == others_.end() ? kNoRecord : other->second;
}

void DrawingFile::bindRecord(AcDbObjectId id, RecordId record) {
  const std::uint64_t value = id.asOldId();
  if (loaded_.empty() && others_.empty() && firstId_ == 0) firstId_ = value;
  if (value >= firstId_ && value - firstId_ == loaded_.size() && others_.count(value) == 0) {
    loaded_.push_back(record);
  } else if (value >= firstId_ && value - firstId_ < loaded_.size()) {
    loaded_[value - firstId_] = record;
  } else {
    others_[value] = record;
  }
}

void DrawingFile::unbind(AcDbObjectId id) {
  const std::uint64_t value = id.asOldId();
  if (value >= firstId_ && value - firstId_ < loaded_.size()) loaded_[value - firstId_] = kNoRecord;
  others_.erase(value);
}

// --- loading

// What loading carries from one step to the next.
struct DrawingFile::Loading {
  explicit Loading(const Document& doc, headless::Database& db) : reader(doc, db) {}
  ObjectReader reader;
  std::uint64_t highest = 0;  // new handles start past every handle of the file
  std::vector<Pending> pending;
  std::vector<std::pair<AcDbObjectId, RecordId>> linked;  // records that name other objects
  std::vector<std::pair<headless::Table*, TableLinks>> tables;
  headless::Database::StandardObjects standard;
  // Within a section: the block reference or polyline whose attributes or vertices follow,
  // and the block whose entities come one after another.
  AcDbObjectId parent;
  AcDbObjectId lastBlockId;
  headless::BlockTableRecord* lastBlock = nullptr;
};

AcDbObjectId DrawingFile::resolve(std::uint64_t handle) const {
  AcDbObjectId id;
  if (handle != 0) db_->getAcDbObjectId(id, AcDbHandle(handle));
  return id;
}

// A record's tags go once its object is made, and its block of tags with the last of them;
// the few records that later steps read are read again then.
void DrawingFile::release(RecordId id) {
  if (id != kNoRecord) doc_->release(id);
}

void DrawingFile::bind(headless::DatabaseHost& host) {
  db_ = std::make_unique<headless::Database>(host, headless::Database::Empty{});
  db_->setFilename(databaseFileName(path_));
  Loading loading(*doc_, *db_);
  makeObjects(loading);
  resolvePending(loading);
  linkObjects(loading);
  dropBrokenChildren(loading);
  // Fields go into their cells once the fields are complete.
  for (auto& [table, links] : loading.tables) resolveTableLinks(*db_, *table, links);
  makeStandardObjects(loading);
  readHeader(loading.highest);
  // What the steps above read again goes too: the records are read again only to be changed.
  for (const RecordId id : doc_->fileOrder()) doc_->release(id);
  db_->markUnmodified();
}

void DrawingFile::makeObjects(Loading& loading) {
  const Document& doc = *doc_;
  std::size_t recordCount = 0;
  for (const auto& section : doc.sections()) recordCount += section.records.size();
  db_->reserve(recordCount);
  loaded_.reserve(recordCount);
  release(doc.prologue());
  release(doc.eofRecord());
  for (std::size_t s = 0; s < doc.sections().size(); ++s) {
    const std::string_view section = doc.sectionName(s);
    release(doc.sections()[s].begin);
    release(doc.sections()[s].end);
    if (!isSection(section, {"TABLES", "BLOCKS", "ENTITIES", "OBJECTS"})) {
      for (const RecordId rid : doc.sections()[s].records) {
        loading.highest = std::max(loading.highest, RecordView(doc, rid).handle().value_or(0));
        release(rid);
      }
      continue;
    }
    loading.parent = {};
    loading.lastBlockId = {};
    loading.lastBlock = nullptr;
    RecordId done = kNoRecord;  // the record before, whatever way its turn ended
    for (const RecordId rid : doc.sections()[s].records) {
      release(done);
      done = rid;
      makeObject(loading, section, rid);
    }
    release(done);
  }
}

void DrawingFile::makeObject(Loading& loading, std::string_view section, RecordId rid) {
  const Document& doc = *doc_;
  headless::Database& db = *db_;
  const RecordHeader header = scanRecordHeader(doc, rid);
  // A handle found among the record's data counts as the tag layer counts it.
  loading.highest = std::max(loading.highest, header.handleIndex < header.bodyBegin
                                                  ? header.handle.value_or(0)
                                                  : RecordView(doc, rid).handle().value_or(0));
  if (!header.handle || *header.handle == 0) return;
  const std::string_view type = doc.recordType(rid);
  const bool entities = section == "ENTITIES" || section == "BLOCKS";
  // Owners come before what they own, save for a few objects; those wait for the rest.
  // Attributes, vertices and the end of their sequence belong to the entity they follow,
  // whatever owner a careless writer gave them.
  AcDbObjectId owner = resolve(header.owner);
  const bool subEntity = entities && (type == "ATTRIB" || type == "VERTEX" || type == "SEQEND");
  if (subEntity && !loading.parent.isNull()) owner = loading.parent;
  AcDbObjectId id;
  try {
    MadeObject made = loading.reader.make(rid, header, entities);
    id = db.addObject(std::move(made.object), *made.headless, owner, AcDbHandle(*header.handle));
  } catch (const std::invalid_argument&) {
    return;  // a handle used twice: the later record stays as it is, without an object
  }
  bindRecord(id, rid);
  headless::ObjectRecord& record = headlessOf(db, id)->record();
  if (owner.isNull() && header.owner != 0) loading.pending.push_back({id, header.owner, Pending::Owner});
  if (header.extensionDictionary != 0) {
    loading.pending.push_back({id, header.extensionDictionary, Pending::ExtensionDictionary});
  }
  if (type == "INSERT" || type == "POLYLINE") loading.parent = id;
  else if (!subEntity || type == "SEQEND") loading.parent = {};
  if (entities && !subEntity && type != "BLOCK" && type != "ENDBLK" && header.owner != 0) {
    // Entities come block by block: the last block found serves most of them.
    if (owner != loading.lastBlockId) {
      loading.lastBlockId = owner;
      loading.lastBlock = db.get<headless::BlockTableRecord>(owner);
    }
    if (loading.lastBlock) loading.lastBlock->append(id);
    else if (owner.isNull()) loading.pending.push_back({id, header.owner, Pending::BlockEntity});
  }
  const auto tags = doc.tags(rid);
  if (header.xdataBegin < tags.size()) record.xdata = readExtendedData(doc, tags, header.xdataBegin);
  noteRecordKind(loading, section, type, id, rid, header, owner);
}

// What later steps need of a record, by its kind.
void DrawingFile::noteRecordKind(Loading& loading, std::string_view section, std::string_view type, AcDbObjectId id,
                                 RecordId rid, const RecordHeader& header, AcDbObjectId owner) {
  headless::Database& db = *db_;
  headless::Database::StandardObjects& standard = loading.standard;
  if (type == "BLOCK") {
    loading.reader.describeBlock(rid, header, owner);
  } else if (type == "BLOCK_RECORD") {
    const auto* block = db.get<headless::BlockTableRecord>(id);
    loading.reader.addBlockName(block->name(), id);
    if (core::equalsNoCase(block->name(), L"*Model_Space") && standard.modelSpace.isNull()) standard.modelSpace = id;
    if (core::equalsNoCase(block->name(), L"*Paper_Space") && standard.paperSpace.isNull()) standard.paperSpace = id;
    loading.linked.emplace_back(id, rid);
  } else if (type == "DICTIONARY" || type == "FIELDLIST" || type == "FIELD" || type == "LAYOUT" ||
             type == "ACAD_TABLE") {
    if (section == "OBJECTS" && standard.namedObjects.isNull() && type == "DICTIONARY") standard.namedObjects = id;
    loading.linked.emplace_back(id, rid);
  } else if (type == "TABLE") {
    tables_.emplace(core::toUpper(tableName(*doc_, rid, header.bodyBegin)), id);
  } else if (type == "APPID") {
    if (const auto* app = dynamic_cast<const headless::ProxyObject*>(db.lookup(id)); app && !app->name().empty()) {
      db.registerApp(app->name());
      appIds_.insert(core::toUpper(app->name()));
    }
  }
  if (section == "OBJECTS" && standard.namedObjects.isNull()) standard.namedObjects = id;
}

void DrawingFile::resolvePending(const Loading& loading) {
  for (const auto& item : loading.pending) {
    const AcDbObjectId target = resolve(item.handle);
    if (target.isNull()) continue;
    auto& record = headlessOf(*db_, item.object)->record();
    if (item.kind == Pending::Owner) {
      record.owner = target;
    } else if (item.kind == Pending::ExtensionDictionary) {
      record.extensionDictionary = target;
    } else if (auto* block = db_->get<headless::BlockTableRecord>(target)) {
      block->append(item.object);
    }
  }
}

// Dictionary entries, field lists, fields, layouts, blocks and tables name other objects.
void DrawingFile::linkObjects(Loading& loading) {
  const Document& doc = *doc_;
  headless::Database& db = *db_;
  for (const auto& [id, rid] : loading.linked) {
    const auto tags = doc.tags(rid);
    const RecordHeader header = scanRecordHeader(doc, rid);
    auto own = [&](std::string_view subclass) {
      const std::size_t marker = findSubclass(doc, tags, subclass, header.bodyBegin);
      return marker == kNoIndex ? std::pair(header.bodyBegin, header.xdataBegin)
                                : std::pair(marker + 1, subclassEnd(tags, marker));
    };
    auto firstHandle = [&](std::pair<std::size_t, std::size_t> range, int code) -> AcDbObjectId {
      for (std::size_t i = range.first; i < range.second; ++i)
        if (tags[i].code == code) return resolve(doc.toHandle(tags[i]).value_or(0));
      return {};
    };
    if (auto* dictionary = db.get<headless::Dictionary>(id)) {
      const auto [begin, end] = own("AcDbDictionary");
      linkDictionary(*dictionary, tags.subspan(begin, end - begin));
    } else if (auto* list = db.get<headless::FieldList>(id)) {
      const auto [begin, end] = own("AcDbIdSet");
      for (std::size_t i = begin; i < end; ++i) {
        if (tags[i].code != 330) continue;
        const AcDbObjectId field = resolve(doc.toHandle(tags[i]).value_or(0));
        if (!field.isNull()) list->add(field);
      }
    } else if (auto* field = db.get<headless::Field>(id)) {
      restoreField(*field, rid);
    } else if (auto* table = db.get<headless::Table>(id)) {
      // A table whose record cannot be read stays empty; its record is written back as read.
      TableLinks links;
      if (readTable(doc, rid, db, *table, links)) loading.tables.emplace_back(table, std::move(links));
    } else if (auto* layout = db.get<headless::Layout>(id)) {
      layout->setBlockTableRecordId(firstHandle(own("AcDbLayout"), 330));
    } else if (auto* block = db.get<headless::BlockTableRecord>(id)) {
      block->setLayoutId(firstHandle(own("AcDbBlockTableRecord"), 340));
      block->setDynamicBlock(!headless::xdataOf(block->record(), L"AcDbDynamicBlockGUID").empty());
    }
  }
}

void DrawingFile::linkDictionary(headless::Dictionary& dictionary, std::span<const Tag> entries) {
  for (std::size_t i = 0; i + 1 < entries.size(); ++i) {
    if (entries[i].code != 3 || (entries[i + 1].code != 350 && entries[i + 1].code != 360)) continue;
    const AcDbObjectId entry = resolve(doc_->toHandle(entries[i + 1]).value_or(0));
    if (entry.isNull()) continue;
    // Entries keep the owner their own record names.
    auto* target = headlessOf(*db_, entry);
    const AcDbObjectId owner = target->record().owner;
    dictionary.put(doc_->text(entries[i]), entry);
    target->record().owner = owner;
    ++i;
  }
}

void DrawingFile::restoreField(headless::Field& field, RecordId rid) {
  const FieldRecord stored = readFieldRecord(*doc_, rid, *db_);
  std::vector<AcDbObjectId> children;
  std::vector<AcDbObjectId> objects;
  for (const auto handle : stored.children) children.push_back(resolve(handle));
  for (const auto handle : stored.objects) objects.push_back(resolve(handle));
  field.restore(stored.evaluatorId, stored.code, std::move(children), std::move(objects));
  for (const auto& entry : stored.data) field.putData(entry.key, entry.block.value);
  if (stored.value) field.storeValue(stored.value->value);
  field.storeStatus(stored.status, stored.errorCode, stored.errorMessage);
  field.storeDisplayText(stored.displayText);
  if (stored.evaluationOption >= 0 && stored.evaluationOption <= host::AcDbField::kAutomatic) {
    field.setEvaluationOption(stored.evaluationOption);
  }
  field.setState(stored.state);
}

// A child that is no field, or a field that contains itself, a damaged file may hold; the
// engine walks children depth first, so such links are dropped (the placeholder shows
// nothing).
void DrawingFile::dropBrokenChildren(const Loading& loading) {
  headless::Database& db = *db_;
  std::vector<AcDbObjectId> path;
  std::unordered_set<std::uint64_t> done;
  constexpr std::size_t kDeepest = 256;  // fields nest a few levels; a file may claim any
  std::function<void(headless::Field&)> checkChildren = [&](headless::Field& field) {
    if (!done.insert(field.objectId().asOldId()).second) return;
    path.push_back(field.objectId());
    std::vector<AcDbObjectId> children = field.children();
    bool dropped = false;
    for (auto& child : children) {
      auto* childField = db.get<headless::Field>(child);
      if (!childField || path.size() >= kDeepest || std::find(path.begin(), path.end(), child) != path.end()) {
        dropped |= !child.isNull();
        child = {};
        continue;
      }
      checkChildren(*childField);
    }
    if (dropped) field.restore(field.evaluatorId(), field.ownCode(), std::move(children), field.objectIds());
    path.pop_back();
  };
  for (const auto& [id, rid] : loading.linked) {
    if (auto* field = db.get<headless::Field>(id)) checkChildren(*field);
  }
}

// The objects every database has, made when the file lacks them; they reach the file only
// once they change.
void DrawingFile::makeStandardObjects(Loading& loading) {
  headless::Database& db = *db_;
  headless::Database::StandardObjects& standard = loading.standard;
  auto makeDefault = [&](std::unique_ptr<host::AcDbObject> object, AcDbObjectId owner) {
    const AcDbObjectId id = db.addObject(std::move(object), owner);
    unboundDefaults_.insert(id.asOldId());
    return id;
  };
  if (standard.namedObjects.isNull() || !db.get<headless::Dictionary>(standard.namedObjects)) {
    standard.namedObjects = makeDefault(std::make_unique<headless::Dictionary>(), {});
  }
  auto* root = db.get<headless::Dictionary>(standard.namedObjects);
  AcDbObjectId entry;
  if (root->getAt(L"ACAD_FIELDLIST", entry) == host::Acad::eOk && db.get<headless::FieldList>(entry)) {
    standard.fieldList = entry;
  } else {
    standard.fieldList = makeDefault(std::make_unique<headless::FieldList>(), standard.namedObjects);
  }
  if (root->getAt(L"ACAD_LAYOUT", entry) == host::Acad::eOk && db.get<headless::Dictionary>(entry)) {
    standard.layouts = entry;
  } else {
    standard.layouts = makeDefault(std::make_unique<headless::Dictionary>(), standard.namedObjects);
  }
  standard.blockTable = db.blockTableId();
  if (standard.blockTable.isNull()) standard.blockTable = makeDefault(std::make_unique<headless::BlockTable>(), {});
  standard.layerTable = db.layerTableId();
  if (standard.layerTable.isNull()) standard.layerTable = makeDefault(std::make_unique<headless::LayerTable>(), {});
  if (standard.modelSpace.isNull()) {
    standard.modelSpace =
        makeDefault(std::make_unique<headless::BlockTableRecord>(L"*Model_Space"), standard.blockTable);
  }
  if (standard.paperSpace.isNull()) {
    standard.paperSpace =
        makeDefault(std::make_unique<headless::BlockTableRecord>(L"*Paper_Space"), standard.blockTable);
  }
  db.setStandardObjects(standard);
}

// The header's variables, the drawing's name and folder, and the seed of new handles.
void DrawingFile::readHeader(std::uint64_t highestHandle) {
  const Document& doc = *doc_;
  headless::Database& db = *db_;
  header_.load(doc, db);
  const std::filesystem::path absolute = path_.empty() ? path_ : std::filesystem::absolute(path_);
  db.setSysVar(L"DWGNAME", {host::RTSTR, absolute.filename().wstring()});
  std::wstring prefix = absolute.parent_path().wstring();
  if (!prefix.empty() && prefix.back() != L'/') prefix.push_back(L'/');
  db.setSysVar(L"DWGPREFIX", {host::RTSTR, prefix});
  std::uint64_t seed = highestHandle + 1;
  if (const auto var = doc.headerVariable("$HANDSEED"); var && var->last > var->first) {
    seed = std::max(seed, doc.toHandle(doc.tags(doc.headerRecord())[var->first]).value_or(0));
  }
  db.raiseHandseed(AcDbHandle(seed));
}

// --- saving

void DrawingFile::prepareFields() {
  // A text's field keeps the check sum of the text it shows; an attribute definition's field
  // says that it is one.
  headless::Database& db = *db_;
  for (const AcDbObjectId id : db.get<headless::FieldList>(db.fieldListId())->ids()) {
    auto* field = db.get<headless::Field>(id);
    if (!field || field->isErased()) continue;
    const auto* fieldDict = db.lookup(field->ownerId());
    const auto* xdict = fieldDict ? db.lookup(fieldDict->ownerId()) : nullptr;
    host::AcDbObject* owner = xdict ? db.lookup(xdict->ownerId()) : nullptr;
    const auto* text = dynamic_cast<const headless::TextHost*>(owner);
    if (!text || headless::fieldOf(db, owner->objectId()) != id) continue;
    if (!field->record().modified && !headlessOf(db, owner->objectId())->record().modified) continue;
    const host::AcValue checksum(headless::fieldTextChecksum(text->hostText()));
    host::AcValue stored;
    if (field->getData(kChecksumKey, stored) != host::Acad::eOk || !(stored == checksum)) {
      field->putData(kChecksumKey, checksum);
    }
    if (owner->dxfName() == L"ATTDEF" && field->getData(kAttdefKey, stored) != host::Acad::eOk) {
      field->putData(kAttdefKey, host::AcValue(std::int32_t{1}));
    }
  }
}

void DrawingFile::prepareFieldList() {
  // A drawing read without a field list gets one once it holds fields.
  headless::Database& db = *db_;
  const AcDbObjectId listId = db.fieldListId();
  if (unboundDefaults_.count(listId.asOldId()) == 0) return;
  const auto* list = db.get<headless::FieldList>(listId);
  if (list->ids().empty()) return;
  auto* root = db.get<headless::Dictionary>(db.namedObjectsDictionaryId());
  if (!root->has(L"ACAD_FIELDLIST")) root->put(L"ACAD_FIELDLIST", listId);
}

std::vector<AcDbObjectId> DrawingFile::registerApplications(const std::vector<AcDbObjectId>& written) {
  // Extended data names its application, which the APPID table must hold.
  headless::Database& db = *db_;
  std::vector<AcDbObjectId> made;
  for (const auto id : written) {
    for (const auto& item : headlessOf(db, id)->record().xdata) {
      if (item.restype != 1001) continue;
      const auto* name = std::get_if<std::wstring>(&item.value);
      if (!name || appIds_.count(core::toUpper(*name)) != 0) continue;
      const auto table = tables_.find(L"APPID");
      if (table == tables_.end()) throw std::runtime_error("the drawing has no APPID table");
      const auto kind = std::make_shared<const headless::ProxyKind>(
          headless::ProxyKind{L"APPID", L"AcDbRegAppTableRecord"});
      made.push_back(db.addObject(std::make_unique<headless::ProxyObject>(kind, *name), table->second));
      appIds_.insert(core::toUpper(*name));
    }
  }
  return made;
}

std::size_t DrawingFile::placeNewRecord(const host::AcDbObject& object, std::size_t& section) const {
  const Document& doc = *doc_;
  auto sectionNamed = [&](const char* name) {
    const auto found = doc.findSection(name);
    if (!found) throw std::runtime_error(std::string("the drawing has no ") + name + " section");
    return *found;
  };
  const auto& record = dynamic_cast<const headless::HeadlessObject&>(object).record();
  if (object.dxfName() == L"APPID") {
    section = sectionNamed("TABLES");
    const RecordId table = recordOf(record.owner);
    const auto& records = doc.sections()[section].records;
    const auto at = std::find(records.begin(), records.end(), table);
    for (auto it = at; it != records.end(); ++it)
      if (doc.recordType(*it) == "ENDTAB") return static_cast<std::size_t>(it - records.begin());
    throw std::runtime_error("the APPID table has no end");
  }
  if (!ObjectWriter::isEntity(object)) {
    section = sectionNamed("OBJECTS");
    return doc.sections()[section].records.size();
  }
  if (db_->get<headless::BlockReference>(record.owner)) return placeAttribute(record.owner, section);
  const auto* block = db_->get<headless::BlockTableRecord>(record.owner);
  if (!block) throw std::runtime_error("a new entity must be owned by a block");
  if (core::equalsNoCase(block->name(), L"*Model_Space") || core::equalsNoCase(block->name(), L"*Paper_Space")) {
    section = sectionNamed("ENTITIES");
    return doc.sections()[section].records.size();
  }
  // Entities of other blocks go between their block's BLOCK and ENDBLK records.
  section = sectionNamed("BLOCKS");
  const auto& records = doc.sections()[section].records;
  const std::uint64_t owner = block->handle().value();
  bool inBlock = false;
  for (std::size_t i = 0; i < records.size(); ++i) {
    const std::string_view type = doc.recordType(records[i]);
    if (type == "BLOCK") inBlock = scanRecordHeader(doc, records[i]).owner == owner;
    else if (type == "ENDBLK" && inBlock) return i;
  }
  throw std::runtime_error("the block of a new entity has no definition in the drawing");
}

std::size_t DrawingFile::placeAttribute(AcDbObjectId reference, std::size_t& section) const {
  // After the attributes the reference has, before the end of their sequence.
  const Document& doc = *doc_;
  const RecordId owner = recordOf(reference);
  for (std::size_t s = 0; s < doc.sections().size(); ++s) {
    const auto& records = doc.sections()[s].records;
    const auto at = std::find(records.begin(), records.end(), owner);
    if (owner == kNoRecord || at == records.end()) continue;
    auto next = at + 1;
    while (next != records.end() && doc.recordType(*next) == "ATTRIB") ++next;
    if (next == records.end() || doc.recordType(*next) != "SEQEND") break;
    section = s;
    return static_cast<std::size_t>(next - records.begin());
  }
  throw std::runtime_error("an attribute cannot be added to a block reference saved without attributes");
}

bool DrawingFile::comesWithItsReference(const host::AcDbObject& object) const {
  const auto* attribute = dynamic_cast<const headless::Attribute*>(&object);
  return attribute && db_->get<headless::BlockReference>(attribute->ownerId()) &&
         recordOf(attribute->ownerId()) == kNoRecord;
}

void DrawingFile::ensureClasses() {
  Document& doc = *doc_;
  if (doc.version() < "AC1015") return;
  auto section = doc.findSection("CLASSES");
  if (!section) {
    const auto header = doc.findSection("HEADER");
    section = doc.insertSection(header ? *header + 1 : 0, "CLASSES");
  }
  bool haveField = false;
  bool haveFieldList = false;
  for (const RecordId id : doc.sections()[*section].records) {
    for (const Tag& tag : doc.tags(id)) {
      if (tag.code != 1) continue;
      const std::string_view name = core::trimBlanks(doc.bytes(tag));
      haveField |= name == "FIELD";
      haveFieldList |= name == "FIELDLIST";
      break;
    }
  }
  auto add = [&](const char* dxfName, const char* className) {
    std::vector<NewTag> tags = {{0, "CLASS"}, {1, dxfName}, {2, className}, {3, "ObjectDBX Classes"},
                                NewTag::integer(90, 1152)};
    if (doc.version() >= "AC1018") tags.push_back(NewTag::integer(91, 0));
    tags.push_back(NewTag::integer(280, 0));
    tags.push_back(NewTag::integer(281, 0));
    doc.insertRecord(*section, doc.sections()[*section].records.size(), tags);
  };
  if (!haveField) add("FIELD", "AcDbField");
  if (!haveFieldList) add("FIELDLIST", "AcDbFieldList");
}

// What saving carries from one step to the next: what became of every object.
struct DrawingFile::Saving {
  std::vector<AcDbObjectId> ids;  // every object of the database
  std::function<bool(AcDbObjectId)> gone;
  std::vector<std::pair<AcDbObjectId, RecordId>> removed;
  std::vector<AcDbObjectId> changed;
  std::vector<AcDbObjectId> added;
  std::vector<std::optional<std::vector<NewTag>>> spelt;  // the records of `added`, in order
  std::unordered_map<std::uint64_t, std::size_t> spelling;  // an added object's place in `spelt`
};

Status DrawingFile::update() {
  try {
    prepareFields();
    prepareFieldList();
    Saving saving;
    sortObjects(saving);
    if (!saving.added.empty() && doc_->version() < "AC1012") {
      return Status::failure("objects cannot be added to a drawing older than R13 (" + doc_->version() + ")");
    }
    ObjectWriter writer(*doc_, *db_, saving.gone);
    // Every new record is spelt, and its place found, before the drawing changes: a save
    // that cannot be done leaves the drawing as it was.
    if (auto spelt = spellNewRecords(saving, writer); !spelt) return spelt;
    removeRecords(saving);
    for (const auto id : saving.changed) writer.writeBack(recordOf(id), *db_->lookup(id));
    if (auto inserted = insertNewRecords(saving, writer); !inserted) return inserted;
    header_.save(*doc_, *db_);
    if (!saving.added.empty()) writeHandseed();
    db_->markUnmodified();
  } catch (const std::exception& e) {
    return Status::failure(std::string("cannot write the drawing: ") + e.what());
  }
  return Status::success();
}

// Every object as changed, new, or gone (erased, or owned by something erased, or destroyed).
void DrawingFile::sortObjects(Saving& saving) {
  headless::Database& db = *db_;
  saving.ids = db.objectIds();
  bool anyErased = false;
  for (const auto id : saving.ids) anyErased |= headlessOf(db, id)->record().erased;
  auto goneMemo = std::make_shared<std::unordered_map<std::uint64_t, bool>>();
  saving.gone = [&db, anyErased, goneMemo, &saving](AcDbObjectId id) -> bool {
    const auto* object = headlessOf(db, id);
    if (!object) return true;
    if (!anyErased) return false;
    if (const auto known = goneMemo->find(id.asOldId()); known != goneMemo->end()) return known->second;
    (*goneMemo)[id.asOldId()] = false;  // owner cycles end here
    const bool result =
        object->record().erased || (!object->record().owner.isNull() && saving.gone(object->record().owner));
    (*goneMemo)[id.asOldId()] = result;
    return result;
  };

  auto collectRemoved = [&](AcDbObjectId id, RecordId rid) {
    if (rid != kNoRecord && saving.gone(id)) saving.removed.emplace_back(id, rid);
  };
  for (std::size_t i = 0; i < loaded_.size(); ++i) collectRemoved(AcDbObjectId(firstId_ + i), loaded_[i]);
  for (const auto& [value, rid] : others_) collectRemoved(AcDbObjectId(value), rid);

  for (const auto id : saving.ids) {
    const auto& record = headlessOf(db, id)->record();
    if (saving.gone(id)) continue;
    if (recordOf(id) != kNoRecord) {
      if (record.modified) saving.changed.push_back(id);
    } else if (unboundDefaults_.count(id.asOldId()) != 0) {
      // Stand-ins for what the file lacks stay out of it, but for a field list that holds
      // fields now.
      const auto* list = db.get<headless::FieldList>(id);
      if (list && !list->ids().empty()) saving.added.push_back(id);
    } else if (!record.owner.isNull()) {
      // Objects no one owns (a field made and never placed) stay out of the drawing.
      saving.added.push_back(id);
    }
  }
  std::vector<AcDbObjectId> written = saving.changed;
  written.insert(written.end(), saving.added.begin(), saving.added.end());
  const auto applications = registerApplications(written);
  saving.added.insert(saving.added.end(), applications.begin(), applications.end());
}

Status DrawingFile::spellNewRecords(Saving& saving, const ObjectWriter& writer) {
  for (const auto id : saving.added) {
    const host::AcDbObject& object = *db_->lookup(id);
    std::size_t section = 0;
    if (const auto* table = dynamic_cast<const headless::Table*>(&object)) {
      if (const auto problem = unwritable(*table)) return Status::failure(*problem);
      if (recordOf(table->ownerId()) == kNoRecord) return Status::failure("a new table must be owned by a block");
      saving.spelt.emplace_back();  // a table is made with its block when it is inserted
      continue;
    }
    std::string error;
    saving.spelling[id.asOldId()] = saving.spelt.size();
    saving.spelt.push_back(writer.newRecord(object, error));
    if (!saving.spelt.back()) return Status::failure(error);
    if (!comesWithItsReference(object)) placeNewRecord(object, section);
  }
  return Status::success();
}

void DrawingFile::removeRecords(Saving& saving) {
  if (saving.removed.empty()) return;
  for (const auto& [id, rid] : saving.removed) {
    doc_->removeRecord(rid);
    unbind(id);
  }
  // References to what is gone leave the dictionaries and field lists that held them.
  for (const auto id : saving.ids) {
    if (saving.gone(id) || recordOf(id) == kNoRecord) continue;
    const auto* object = db_->lookup(id);
    if (dynamic_cast<const headless::Dictionary*>(object) || dynamic_cast<const headless::FieldList*>(object)) {
      if (!headlessOf(*db_, id)->record().modified) saving.changed.push_back(id);
    }
  }
}

Status DrawingFile::insertNewRecords(Saving& saving, const ObjectWriter& writer) {
  headless::Database& db = *db_;
  bool newField = false;
  bool newFieldList = false;
  for (std::size_t n = 0; n < saving.added.size(); ++n) {
    const AcDbObjectId id = saving.added[n];
    const host::AcDbObject& object = *db.lookup(id);
    if (const auto* table = dynamic_cast<const headless::Table*>(&object)) {
      // A table comes with its block, and a style when the drawing has none.
      NewTable created;
      const Status status = createTable(*doc_, recordOf(table->ownerId()), *table, created, [&db] {
        const std::uint64_t handle = db.handseed().value();
        db.raiseHandseed(AcDbHandle(handle + 1));
        return handle;
      });
      if (!status) return status;
      bindRecord(id, created.table);
      continue;
    }
    // Attributes of a new reference are written with it, right after it.
    if (recordOf(id) != kNoRecord || comesWithItsReference(object)) continue;
    std::size_t section = 0;
    const std::size_t position = placeNewRecord(object, section);
    bindRecord(id, doc_->insertRecord(section, position, *saving.spelt[n]));
    if (const auto* reference = dynamic_cast<const headless::BlockReference*>(&object)) {
      insertAttributes(saving, writer, *reference, section, position + 1);
    }
    newField |= object.dxfName() == L"FIELD";
    newFieldList |= object.dxfName() == L"FIELDLIST";
  }
  if (newField || newFieldList) ensureClasses();
  return Status::success();
}

void DrawingFile::insertAttributes(const Saving& saving, const ObjectWriter& writer,
                                   const headless::BlockReference& reference, std::size_t section,
                                   std::size_t position) {
  const auto attributes = writer.attributesOf(reference);
  if (attributes.empty()) return;
  for (const AcDbObjectId attribute : attributes) {
    const auto spelt = saving.spelling.find(attribute.asOldId());
    if (spelt == saving.spelling.end() || recordOf(attribute) != kNoRecord) continue;
    bindRecord(attribute, doc_->insertRecord(section, position++, *saving.spelt[spelt->second]));
  }
  // The end of the sequence is an object of the drawing, as one read from a file is, so that it
  // goes with its reference.
  auto end = std::make_unique<headless::ProxyEntity>(
      std::make_shared<const headless::ProxyKind>(headless::ProxyKind{L"SEQEND", L"AcDbSequenceEnd"}));
  end->setLayer(reference.layer());
  const AcDbObjectId endId = db_->addObject(std::move(end), reference.objectId());
  const auto tags = writer.sequenceEnd(reference, db_->objects().handle(endId).value());
  bindRecord(endId, doc_->insertRecord(section, position, tags));
}

// The header's seed stays past every handle the save gave out.
void DrawingFile::writeHandseed() {
  std::uint64_t seed = 0;
  if (const auto var = doc_->headerVariable("$HANDSEED"); var && var->last > var->first) {
    seed = doc_->toHandle(doc_->tags(doc_->headerRecord())[var->first]).value_or(0);
  }
  if (db_->handseed().value() > seed) {
    const NewTag value[] = {NewTag::handle(5, db_->handseed().value())};
    doc_->setHeaderVariable("$HANDSEED", value);
  }
}

Status DrawingFile::write(ByteSink& sink, std::optional<FileFormat> format) {
  if (auto updated = update(); !updated) return updated;
  return doc_->write(sink, format);
}

Status DrawingFile::save(const SaveOptions& options) {
  if (path_.empty()) return Status::failure("the drawing has no file name");
  if (auto updated = update(); !updated) return updated;
  return doc_->save(path_, options);
}

Status DrawingFile::saveAs(const std::filesystem::path& path, const SaveOptions& options) {
  if (auto updated = update(); !updated) return updated;
  if (auto saved = doc_->save(path, options); !saved) return saved;
  path_ = path;
  db_->setFilename(databaseFileName(path_));
  return Status::success();
}

}  // namespace corvane::dxf
