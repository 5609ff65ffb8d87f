#include "headless/db/attributedefinition.h"

#include <cstdint>

namespace corvane::headless {

void AttributeDefinition::setTag(std::wstring tag) {
  if (tag_ != tag) record_.modified = true;
  tag_ = std::move(tag);
}

void AttributeDefinition::setPrompt(std::wstring prompt) {
  if (prompt_ != prompt) record_.modified = true;
  prompt_ = std::move(prompt);
}

void AttributeDefinition::setFlags(int flags) {
  if (flags_ != flags) record_.modified = true;
  flags_ = flags;
}

std::optional<host::AcValue> AttributeDefinition::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"TagString")) return host::AcValue(tag_);
  if (core::equalsNoCase(name, L"PromptString")) return host::AcValue(prompt_);
  if (core::equalsNoCase(name, L"Invisible")) return host::AcValue(std::int32_t{isInvisible() ? 1 : 0});
  if (core::equalsNoCase(name, L"Constant")) return host::AcValue(std::int32_t{isConstant() ? 1 : 0});
  return TextEntity::property(name);
}

}  // namespace corvane::headless
