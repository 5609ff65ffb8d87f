#pragma once

#include "headless/db/symboltable.h"
#include "host/acdbsymboltable.h"

namespace corvane::headless {

class BlockTable : public SymbolTable<host::AcDbBlockTable> {
 public:
  std::wstring className() const override { return L"AcDbBlockTable"; }
};

}  // namespace corvane::headless
