#pragma once

#include "headless/db/symboltable.h"
#include "host/acdbsymboltable.h"

namespace corvane::headless {

class LayerTable : public SymbolTable<host::AcDbLayerTable> {
 public:
  std::wstring className() const override { return L"AcDbLayerTable"; }
};

}  // namespace corvane::headless
