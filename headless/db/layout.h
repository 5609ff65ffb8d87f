#pragma once

#include <string>

#include "headless/db/objectimpl.h"
#include "host/acdblayout.h"

namespace corvane::headless {

// A layout, kept in the "ACAD_LAYOUT" dictionary. Its block table record points back at it
// (BlockTableRecord::setLayoutId); whoever links one links the other.
class Layout : public ObjectImpl<host::AcDbLayout> {
 public:
  Layout(std::wstring name, host::AcDbObjectId blockTableRecord, int tabOrder = 0)
      : name_(std::move(name)), blockTableRecord_(blockTableRecord), tabOrder_(tabOrder) {}
  std::wstring dxfName() const override { return L"LAYOUT"; }
  std::wstring className() const override { return L"AcDbLayout"; }

  host::Acad::ErrorStatus getLayoutName(std::wstring& name) const override {
    name = name_;
    return host::Acad::eOk;
  }
  const std::wstring& name() const noexcept { return name_; }
  void setName(std::wstring name);
  host::AcDbObjectId getBlockTableRecordId() const override { return blockTableRecord_; }
  void setBlockTableRecordId(host::AcDbObjectId id);
  int getTabOrder() const override { return tabOrder_; }
  void setTabOrder(int order);

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  std::wstring name_;
  host::AcDbObjectId blockTableRecord_;
  int tabOrder_ = 0;
};

}  // namespace corvane::headless
