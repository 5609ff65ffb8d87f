// An in-memory drawing database.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <vector>

#include "core/handleindex.h"
#include "headless/db/databasehost.h"
#include "headless/db/objecttable.h"
#include "headless/format/valueformatter.h"
#include "host/acdbdatabase.h"
#include "host/acdbobject.h"

namespace corvane::headless {

class HeadlessObject;

class Database : public host::AcDbDatabase {
 public:
  // A new drawing: the named objects dictionary with its field list, the block table with
  // model and paper space, the layer table with layer "0", the layouts "Model" and "Layout1"
  // in the "ACAD_LAYOUT" dictionary, the "ACAD" application and the host's initial system
  // variables.
  explicit Database(DatabaseHost& host);
  // An empty drawing for a file to fill: no objects, the "ACAD" application and the host's
  // initial system variables. Whoever fills it names the standard objects it read.
  struct Empty {};
  Database(DatabaseHost& host, Empty);
  struct StandardObjects {
    host::AcDbObjectId namedObjects;
    host::AcDbObjectId fieldList;
    host::AcDbObjectId modelSpace;
    host::AcDbObjectId paperSpace;
    host::AcDbObjectId blockTable;
    host::AcDbObjectId layerTable;
    host::AcDbObjectId layouts;
  };
  void setStandardObjects(const StandardObjects& objects);
  ~Database() override;
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  host::AcDbHostApplicationServices& services() override;
  DatabaseHost& host() const noexcept { return host_; }
  ObjectTable& objects() const noexcept { return table_; }
  std::wstring getFilename() const override { return fileName_; }
  void setFilename(std::wstring name) { fileName_ = std::move(name); }

  host::Acad::ErrorStatus getAcDbObjectId(host::AcDbObjectId& id, host::AcDbHandle handle) const override;
  host::AcDbObjectId namedObjectsDictionaryId() const override { return namedObjects_; }
  host::AcDbObjectId currentSpaceId() const override { return modelSpace_; }
  host::AcDbObjectId modelSpaceId() const noexcept { return modelSpace_; }
  host::AcDbObjectId blockTableId() const override { return blockTable_; }
  host::AcDbObjectId layerTableId() const override { return layerTable_; }
  host::AcDbObjectId layoutDictionaryId() const noexcept { return layouts_; }
  host::AcDbObjectId fieldListId() const noexcept { return fieldList_; }

  host::Acad::ErrorStatus getSysVar(std::wstring_view name, host::ResBuf& value) const override;
  host::Acad::ErrorStatus setSysVar(std::wstring_view name, const host::ResBuf& value) override;
  // LUNITS, LUPREC, DIMZIN and UNITMODE together, as every display of a number needs them.
  const DrawingUnits& drawingUnits() const;
  bool isRegApp(std::wstring_view name) const override;
  host::Acad::ErrorStatus registerApp(std::wstring_view name) override;
  const std::vector<std::wstring>& regApps() const noexcept { return regApps_; }

  // Adds an object (which must be a headless object) with the given owner. A null handle
  // takes the next one from the handle seed; a given handle must be free and raises the seed
  // past itself. The drawing's structure follows what is added: a symbol table record owned
  // by a table joins it, a block reference is made known to its block, an attribute owned by
  // a block reference joins its attributes.
  host::AcDbObjectId addObject(std::unique_ptr<host::AcDbObject> object, host::AcDbObjectId owner,
                               host::AcDbHandle handle = {});
  // The same for a caller that holds the object's headless side already (`headless` is part
  // of `object`): loaders add objects by the million.
  host::AcDbObjectId addObject(std::unique_ptr<host::AcDbObject> object, HeadlessObject& headless,
                               host::AcDbObjectId owner, host::AcDbHandle handle);
  // Room for this many more objects, for a loader that knows how many it will add.
  void reserve(std::size_t objects);
  // Adds a block table record or layer table record to its table.
  host::AcDbObjectId addRecord(std::unique_ptr<host::AcDbObject> record, host::AcDbHandle handle = {});
  template <typename T, typename... Args>
  T* create(host::AcDbObjectId owner, Args&&... args) {
    auto object = std::make_unique<T>(std::forward<Args>(args)...);
    T* raw = object.get();
    addObject(std::move(object), owner);
    return raw;
  }
  // Removes an object for good (the id becomes invalid); used for objects that were never
  // saved, such as a field whose code was replaced.
  void destroyObject(host::AcDbObjectId id);

  // Direct access without opening, for the headless host's own code.
  template <typename T>
  T* get(host::AcDbObjectId id) const {
    return dynamic_cast<T*>(lookup(id));
  }
  host::AcDbObject* lookup(host::AcDbObjectId id) const;
  std::vector<host::AcDbObjectId> objectIds() const;
  // No object has changes left to write: the drawing is as read, or as just saved. Done in
  // place, without a list of ids, when memory is at its fullest after a load.
  void markUnmodified();

  host::AcDbHandle handseed() const noexcept { return handseed_; }
  // Raises the seed of new handles (never lowers it): a drawing read from a file keeps its own.
  void raiseHandseed(host::AcDbHandle seed);
  host::AcDbObjectId paperSpaceId() const noexcept { return paperSpace_; }

  // Puts an entity into model space (or the given block) and makes it owned there.
  host::AcDbObjectId appendEntity(std::unique_ptr<host::AcDbObject> entity, host::AcDbObjectId block = {},
                                  host::AcDbHandle handle = {});

 private:
  void linkStructure(host::AcDbObject& object);
  enum : std::uint8_t {
    kBlockTableRole = 1,
    kLayerTableRole = 2,
    kTableRecordRole = 4,
    kBlockReferenceRole = 8,
    kAttributeRole = 16,
  };
  std::uint8_t structureRoles(const host::AcDbObject& object) const;

  DatabaseHost& host_;
  ObjectTable& table_;  // the host's, looked up once: every object access goes through it
  std::wstring fileName_;
  // In creation order, which is the order of ids: an object is found by a binary search. A
  // destroyed object leaves its entry empty until the empty ones are half of all, so that
  // fields made and destroyed by the thousand cost no shifting of a big drawing's objects.
  struct Entry {
    host::AcDbObjectId id;
    std::unique_ptr<host::AcDbObject> object;
  };
  std::vector<Entry> objects_;
  std::size_t destroyed_ = 0;  // empty entries in objects_
  core::HandleIndex byHandle_;
  mutable std::vector<std::pair<const std::type_info*, std::uint8_t>> roles_;  // by class
  host::AcDbHandle handseed_{1};
  host::AcDbObjectId namedObjects_;
  host::AcDbObjectId fieldList_;
  host::AcDbObjectId modelSpace_;
  host::AcDbObjectId paperSpace_;
  host::AcDbObjectId blockTable_;
  host::AcDbObjectId layerTable_;
  host::AcDbObjectId layouts_;
  // Names compare without case and without making an upper-case copy: a field's display reads
  // several variables each time.
  struct NameLess {
    using is_transparent = void;
    bool operator()(std::wstring_view a, std::wstring_view b) const noexcept;
  };
  std::map<std::wstring, host::ResBuf, NameLess> sysvars_;
  mutable std::optional<DrawingUnits> units_;  // read from sysvars_; any change clears it
  std::vector<std::wstring> regApps_;
};

}  // namespace corvane::headless
