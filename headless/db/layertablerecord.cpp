#include "headless/db/layertablerecord.h"

#include <cstdint>

namespace corvane::headless {

namespace {
host::AcValue flagValue(bool on) { return host::AcValue(std::int32_t{on ? 1 : 0}); }
}  // namespace

void LayerTableRecord::setIsOff(bool off) {
  if (off_ != off) record_.modified = true;
  off_ = off;
}

void LayerTableRecord::setIsFrozen(bool frozen) {
  if (frozen_ != frozen) record_.modified = true;
  frozen_ = frozen;
}

void LayerTableRecord::setIsLocked(bool locked) {
  if (locked_ != locked) record_.modified = true;
  locked_ = locked;
}

std::optional<host::AcValue> LayerTableRecord::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"LayerOn")) return flagValue(!off_);
  if (core::equalsNoCase(name, L"Freeze")) return flagValue(frozen_);
  if (core::equalsNoCase(name, L"Lock")) return flagValue(locked_);
  return SymbolTableRecordImpl::property(name);
}

}  // namespace corvane::headless
