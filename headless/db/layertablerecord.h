#pragma once

#include <string>

#include "headless/db/symboltable.h"
#include "host/acdblayertablerecord.h"

namespace corvane::headless {

class LayerTableRecord : public SymbolTableRecordImpl<host::AcDbLayerTableRecord> {
 public:
  explicit LayerTableRecord(std::wstring name) : SymbolTableRecordImpl(std::move(name)) {}
  std::wstring dxfName() const override { return L"LAYER"; }
  std::wstring className() const override { return L"AcDbLayerTableRecord"; }

  bool isOff() const override { return off_; }
  bool isFrozen() const override { return frozen_; }
  bool isLocked() const override { return locked_; }
  void setIsOff(bool off);
  void setIsFrozen(bool frozen);
  void setIsLocked(bool locked);

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  bool off_ = false;
  bool frozen_ = false;
  bool locked_ = false;
};

}  // namespace corvane::headless
