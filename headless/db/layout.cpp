#include "headless/db/layout.h"

#include <cstdint>

#include "core/textutil.h"

namespace corvane::headless {

void Layout::setName(std::wstring name) {
  if (name_ != name) record_.modified = true;
  name_ = std::move(name);
}

void Layout::setBlockTableRecordId(host::AcDbObjectId id) {
  if (blockTableRecord_ != id) record_.modified = true;
  blockTableRecord_ = id;
}

void Layout::setTabOrder(int order) {
  if (tabOrder_ != order) record_.modified = true;
  tabOrder_ = order;
}

std::optional<host::AcValue> Layout::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Name")) return host::AcValue(name_);
  if (core::equalsNoCase(name, L"TabOrder")) return host::AcValue(static_cast<std::int32_t>(tabOrder_));
  return ObjectImpl::property(name);
}

}  // namespace corvane::headless
