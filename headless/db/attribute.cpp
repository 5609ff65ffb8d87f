#include "headless/db/attribute.h"

#include <cstdint>

namespace corvane::headless {

void Attribute::setTag(std::wstring tag) {
  CompactText compact(tag);
  if (compact != tag_) record_.modified = true;
  tag_ = std::move(compact);
}

void Attribute::setFlags(int flags) {
  if (flags_ != flags) record_.modified = true;
  flags_ = flags;
}

std::optional<host::AcValue> Attribute::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"TagString")) return host::AcValue(tag_.wide());
  if (core::equalsNoCase(name, L"Invisible")) return host::AcValue(std::int32_t{isInvisible() ? 1 : 0});
  if (core::equalsNoCase(name, L"Constant")) return host::AcValue(std::int32_t{isConstant() ? 1 : 0});
  return TextEntity::property(name);
}

}  // namespace corvane::headless
