#pragma once

#include <string>

#include "headless/db/textentity.h"
#include "host/acdbattributedefinition.h"

namespace corvane::headless {

// An attribute definition (ATTDEF) inside a block: its text is the default value, or for a
// constant definition the value every reference shows.
class AttributeDefinition : public TextEntity<host::AcDbAttributeDefinition> {
 public:
  enum Flags : int { kInvisible = 1, kConstant = 2, kVerify = 4, kPreset = 8 };

  AttributeDefinition() = default;
  AttributeDefinition(std::wstring tag, std::wstring prompt, std::wstring defaultText, host::AcGePoint3d position = {},
                      double height = 0.2, int flags = 0)
      : TextEntity(position, height, std::move(defaultText)),
        tag_(std::move(tag)),
        prompt_(std::move(prompt)),
        flags_(flags) {}
  std::wstring dxfName() const override { return L"ATTDEF"; }
  std::wstring className() const override { return L"AcDbAttributeDefinition"; }

  std::wstring tag() const override { return tag_; }
  void setTag(std::wstring tag);
  std::wstring prompt() const override { return prompt_; }
  void setPrompt(std::wstring prompt);
  int flags() const noexcept { return flags_; }
  void setFlags(int flags);
  bool isInvisible() const override { return (flags_ & kInvisible) != 0; }
  bool isConstant() const override { return (flags_ & kConstant) != 0; }

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  std::wstring tag_;
  std::wstring prompt_;
  int flags_ = 0;
};

}  // namespace corvane::headless
