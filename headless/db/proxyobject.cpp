#include "headless/db/proxyobject.h"

#include "core/textutil.h"

namespace corvane::headless {

std::optional<host::AcValue> ProxyObject::property(std::wstring_view name) const {
  if (!name_.empty() && core::equalsNoCase(name, L"Name")) return host::AcValue(name_);
  return ObjectImpl::property(name);
}

std::optional<host::AcValue> ProxyTextEntity::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"TextString") || core::equalsNoCase(name, L"Contents")) return host::AcValue(text_);
  return ProxyEntity::property(name);
}

}  // namespace corvane::headless
