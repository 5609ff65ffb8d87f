#pragma once

#include <string>
#include <vector>

#include "headless/db/shape.h"
#include "host/acdbblockreference.h"

namespace corvane::headless {

// An insertion of a block (INSERT) with the attributes it owns. The block's record learns of
// the reference when the reference enters the database (and when it is pointed elsewhere).
//
// A dynamic block inserted with changed properties is drawn from an anonymous copy ("*U12")
// of its definition. The reference then knows its definition by name, or failing that the
// copy's extended data ("AcDbBlockRepBTag", whose handle names the definition) tells it; its
// dynamic properties are kept as names and values.
class BlockReference : public ShapeEntity<host::AcDbBlockReference> {
 public:
  BlockReference() = default;
  BlockReference(host::AcDbObjectId blockTableRecord, host::AcGePoint3d position, host::AcGeScale3d scale = {},
                 double rotation = 0.0)
      : block_(blockTableRecord), position_(position), scale_(scale), rotation_(rotation) {}
  std::wstring dxfName() const override { return L"INSERT"; }
  std::wstring className() const override { return L"AcDbBlockReference"; }

  host::AcDbObjectId blockTableRecord() const override { return block_; }
  void setBlockTableRecord(host::AcDbObjectId block);
  host::AcGePoint3d position() const override { return position_; }
  void setPosition(host::AcGePoint3d position);
  host::AcGeScale3d scaleFactors() const override { return scale_; }
  void setScaleFactors(host::AcGeScale3d scale);
  double rotation() const override { return rotation_; }  // radians
  void setRotation(double rotation);
  const host::AcGeVector3d& normal() const noexcept { return normal_; }
  void setNormal(host::AcGeVector3d normal);
  // The map from the block's coordinates (its origin first) to the world.
  geometry::Transform blockTransform() const;

  // Attributes in their order; the database adds one when an attribute enters it owned by this
  // reference.
  const std::vector<host::AcDbObjectId>& attributeIds() const noexcept { return attributes_; }
  void addAttributeId(host::AcDbObjectId attribute);
  // A copy made for a clone starts without the source's attributes; their clones join it.
  void clearAttributeIds() noexcept { attributes_.clear(); }
  host::AcDbObjectIterator attributeIterator() const override;

  const std::wstring& dynamicBlockName() const noexcept { return dynamicBlockName_; }
  void setDynamicBlockName(std::wstring name);
  const std::vector<host::AcDbDynBlockReferenceProperty>& dynamicProperties() const noexcept { return properties_; }
  void setDynamicProperties(std::vector<host::AcDbDynBlockReferenceProperty> properties);
  bool isDynamicBlock() const override { return !dynamicBlockTableRecord().isNull(); }
  host::AcDbObjectId dynamicBlockTableRecord() const override;
  host::Acad::ErrorStatus getBlockProperties(
      std::vector<host::AcDbDynBlockReferenceProperty>& properties) const override;

  // The name of the inserted block; the effective name is the dynamic block's for a variant.
  std::wstring blockName() const;
  std::wstring effectiveName() const;

  // The block's entities mapped into place, and the visible attributes.
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform, int depth) const;

  host::AcDbObjectId block_;
  host::AcGePoint3d position_;
  host::AcGeScale3d scale_;
  double rotation_ = 0.0;
  host::AcGeVector3d normal_{0, 0, 1};
  std::vector<host::AcDbObjectId> attributes_;
  std::wstring dynamicBlockName_;
  std::vector<host::AcDbDynBlockReferenceProperty> properties_;
};

}  // namespace corvane::headless
