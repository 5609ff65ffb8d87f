// Makes the headless object of a record: the kinds the database models as their own classes,
// everything else as a proxy that keeps its names. References to objects read later (owners,
// dictionary entries, a field's children, a layout's block) are left to the loader, which
// resolves them once every record has its object.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "dxf/tags/document.h"
#include "dxf/tags/recordheader.h"
#include "headless/db/entity.h"
#include "headless/db/proxyobject.h"
#include "host/acdbobject.h"

namespace corvane::headless {
class Database;
class Hatch;
class HeadlessObject;
}

namespace corvane::dxf {

// A made object with its headless side, known here without a cast.
struct MadeObject {
  template <typename T>
  MadeObject(std::unique_ptr<T> made) : headless(made.get()), object(std::move(made)) {}  // NOLINT: implicit
  headless::HeadlessObject* headless;
  std::unique_ptr<host::AcDbObject> object;
};

class ObjectReader {
 public:
  // Class names of custom records come from the drawing's CLASSES section. Block references
  // find their block by name among the block table records already in the database.
  ObjectReader(const Document& doc, headless::Database& db);

  // `entity`: the record sits in the ENTITIES or BLOCKS section. Never null.
  MadeObject make(RecordId id, const RecordHeader& header, bool entity);
  // A BLOCK record describes its block table record (the owner): flags, base point, path.
  void describeBlock(RecordId id, const RecordHeader& header, host::AcDbObjectId blockTableRecord) const;

  // The text of a record of a kind that holds one (TEXT, MTEXT, ATTRIB, ATTDEF) as stored;
  // nullopt for other kinds.
  std::optional<std::wstring> hostText(RecordId id, const RecordHeader& header) const;

  // Makes a block table record known by name, for the references read after it.
  void addBlockName(const std::wstring& name, host::AcDbObjectId id);

  // The layer name a tag holds; one copy per name, shared by every entity on the layer.
  std::shared_ptr<const std::wstring> layerName(const Tag& tag);
  // One copy of each combination of entity properties, shared by the entities that have it.
  std::shared_ptr<const headless::EntityProperties> entityProperties(const headless::EntityProperties& properties);

 private:
  std::shared_ptr<const headless::ProxyKind> kind(RecordId id, const RecordHeader& header);
  MadeObject makeEntity(RecordId id, const RecordHeader& header, std::string_view type);
  std::unique_ptr<headless::Hatch> makeHatch(RecordId id, const RecordHeader& header);

  const Document& doc_;
  headless::Database& db_;
  std::unordered_map<std::string, std::string> classNames_;
  // Per DXF name, one kind per class name seen with it.
  std::unordered_map<std::string, std::vector<std::pair<std::string, std::shared_ptr<const headless::ProxyKind>>>>
      kinds_;
  std::unordered_map<std::wstring, host::AcDbObjectId> blocks_;  // key: upper-case name
  struct BytesHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view bytes) const noexcept { return std::hash<std::string_view>()(bytes); }
  };
  // Key: the value bytes as the file spells them.
  std::unordered_map<std::string, std::shared_ptr<const std::wstring>, BytesHash, std::equal_to<>> layers_;
  struct PropertiesOrder {
    bool operator()(const headless::EntityProperties& a, const headless::EntityProperties& b) const;
  };
  std::map<headless::EntityProperties, std::shared_ptr<const headless::EntityProperties>, PropertiesOrder> looks_;
  std::string_view lastLayerBytes_;
  std::shared_ptr<const std::wstring> lastLayer_;
};

}  // namespace corvane::dxf
