#pragma once

#include <string>
#include <vector>

#include "headless/db/symboltable.h"
#include "host/acdbblocktablerecord.h"

namespace corvane::headless {

// A block definition or a layout's space: a name, its entities in drawing order, and the
// references that insert it.
class BlockTableRecord : public SymbolTableRecordImpl<host::AcDbBlockTableRecord> {
 public:
  // The block-type flags of drawing files.
  enum Flags : int {
    kAnonymous = 1,
    kHasAttributeDefinitions = 2,
    kExternalReference = 4,
    kOverlay = 8,
    kExternallyDependent = 16,
    kResolved = 32,
    kReferenced = 64,
  };

  explicit BlockTableRecord(std::wstring name, int flags = 0)
      : SymbolTableRecordImpl(std::move(name)), flags_(flags) {}
  std::wstring dxfName() const override { return L"BLOCK_RECORD"; }
  std::wstring className() const override { return L"AcDbBlockTableRecord"; }

  int flags() const noexcept { return flags_; }
  void setFlags(int flags);
  // The space of a layout. Model and paper space are spaces even in a drawing written without
  // layout objects, as the host makes those objects when it opens one.
  bool isLayout() const override;
  host::AcDbObjectId getLayoutId() const override { return layout_; }
  void setLayoutId(host::AcDbObjectId layout);
  bool isAnonymous() const override { return (flags_ & kAnonymous) != 0; }
  bool isFromExternalReference() const override { return (flags_ & kExternalReference) != 0; }
  bool isFromOverlayReference() const override { return (flags_ & kOverlay) != 0; }
  // Drawing files do not say so outright; whoever reads one decides.
  bool isUnloaded() const override { return unloaded_; }
  void setUnloaded(bool unloaded);
  // Whether the block holds an attribute definition that is not erased.
  bool hasAttributeDefinitions() const override;
  host::AcGePoint3d origin() const override { return origin_; }
  void setOrigin(host::AcGePoint3d origin);
  const std::wstring& pathName() const noexcept { return pathName_; }  // of an external reference
  void setPathName(std::wstring path);
  // A dynamic block's own definition (its anonymous variants point back to it).
  bool isDynamicBlock() const noexcept { return dynamic_; }
  void setDynamicBlock(bool dynamic);

  const std::vector<host::AcDbObjectId>& entities() const noexcept { return entities_; }
  void append(host::AcDbObjectId id) { entities_.push_back(id); }
  host::AcDbBlockTableRecordIterator newIterator(bool skipErased = true) const override;
  // Hands each entity out of the id table with the open's bookkeeping done in place.
  host::Acad::ErrorStatus readEntities(EntityReader& reader) const override;

  // Direct references, erased ones included. The database keeps them as references are added.
  const std::vector<host::AcDbObjectId>& referenceIds() const noexcept { return references_; }
  void addReference(host::AcDbObjectId reference);
  void removeReference(host::AcDbObjectId reference);
  host::Acad::ErrorStatus getBlockReferenceIds(std::vector<host::AcDbObjectId>& ids,
                                               bool directOnly = true) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  int flags_ = 0;
  host::AcDbObjectId layout_;
  bool unloaded_ = false;
  bool dynamic_ = false;
  host::AcGePoint3d origin_;
  std::wstring pathName_;
  std::vector<host::AcDbObjectId> entities_;
  std::vector<host::AcDbObjectId> references_;
  host::AcDbObjectId newestReference_;  // the highest id ever added to references_
};

}  // namespace corvane::headless
