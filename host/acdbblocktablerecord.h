// A block definition, or the space of a layout (model space, a paper space).
#pragma once

#include <vector>

#include "host/acdbobjectiterator.h"
#include "host/acdbsymboltable.h"
#include "host/acgepoint.h"

namespace corvane::host {

class AcDbBlockTableRecord : public AcDbSymbolTableRecord {
 public:
  virtual bool isLayout() const = 0;
  virtual AcDbObjectId getLayoutId() const = 0;  // null for a block that is no layout's space
  virtual bool isAnonymous() const = 0;
  virtual bool isFromExternalReference() const = 0;
  virtual bool isFromOverlayReference() const = 0;
  virtual bool isUnloaded() const = 0;
  virtual bool hasAttributeDefinitions() const = 0;
  // The base point: the block's point that lands on a reference's position.
  virtual AcGePoint3d origin() const = 0;
  // The entities in drawing order, erased ones left out unless `skipErased` is false (a walk
  // that opens every entity finds the erased ones refuse to open, and saves a pass).
  virtual AcDbBlockTableRecordIterator newIterator(bool skipErased = true) const = 0;
  // The references to this block; without directOnly also those that reach it through other
  // blocks: the references of every block that holds a reference to it, and so on up.
  // Erased references are listed too; callers check.
  virtual Acad::ErrorStatus getBlockReferenceIds(std::vector<AcDbObjectId>& ids, bool directOnly = true) const = 0;

  // --- Read-only walk ---
  // A walk that opens every entity of a block for read, in one call. The reader is handed each
  // entity that an open for read would give (the erased ones, those open for write and objects
  // that are no entities are passed over), in drawing order, over the ids as they were when the
  // walk began. Each entity is open for read while the reader has it and closed after.
  // A host that can hand its entities out without a round trip per entity overrides it; this
  // one opens each through the host's services. eNoDatabase for a record in no database.
  class EntityReader {
   public:
    virtual void read(const AcDbEntity& entity) = 0;

   protected:
    ~EntityReader() = default;
  };
  virtual Acad::ErrorStatus readEntities(EntityReader& reader) const;
};

}  // namespace corvane::host
