#include "headless/text.h"

namespace corvane::headless {

std::optional<host::AcValue> Text::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"TextString") || core::equalsNoCase(name, L"Contents")) return host::AcValue(text_);
  if (core::equalsNoCase(name, L"Height")) return host::AcValue(height_);
  if (core::equalsNoCase(name, L"InsertionPoint") || core::equalsNoCase(name, L"Position")) {
    return host::AcValue(position_);
  }
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
