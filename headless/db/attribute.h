#pragma once

#include <string>

#include "headless/db/textentity.h"
#include "host/acdbattribute.h"

namespace corvane::headless {

// An attribute of a block reference (ATTRIB), owned by the reference. Its text can hold a
// field like any text.
class Attribute : public TextEntity<host::AcDbAttribute> {
 public:
  // The attribute flags of drawing files.
  enum Flags : int { kInvisible = 1, kConstant = 2, kVerify = 4, kPreset = 8 };

  Attribute() = default;
  Attribute(std::wstring tag, std::wstring text, host::AcGePoint3d position = {}, double height = 0.2, int flags = 0)
      : TextEntity(position, height, std::move(text)), tag_(tag), flags_(flags) {}
  std::wstring dxfName() const override { return L"ATTRIB"; }
  std::wstring className() const override { return L"AcDbAttribute"; }

  std::wstring tag() const override { return tag_.wide(); }
  void getTag(std::wstring& tag) const override { tag_.wide(tag); }
  void setTag(std::wstring tag);
  int flags() const noexcept { return flags_; }
  void setFlags(int flags);
  bool isInvisible() const override { return (flags_ & kInvisible) != 0; }
  bool isConstant() const override { return (flags_ & kConstant) != 0; }

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  CompactText tag_;
  int flags_ = 0;
};

}  // namespace corvane::headless
