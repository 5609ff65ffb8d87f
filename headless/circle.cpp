#include "headless/circle.h"

#include <cmath>

namespace corvane::headless {

std::optional<host::AcValue> Circle::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Radius")) return host::AcValue(radius_);
  if (core::equalsNoCase(name, L"Diameter")) return host::AcValue(2 * radius_);
  if (core::equalsNoCase(name, L"Circumference")) return host::AcValue(2 * M_PI * radius_);
  if (core::equalsNoCase(name, L"Area")) return host::AcValue(M_PI * radius_ * radius_);
  if (core::equalsNoCase(name, L"Center")) return host::AcValue(center_);
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
