#pragma once

#include <array>
#include <string>

#include "headless/entity.h"
#include "headless/texthost.h"
#include "host/acdbobject.h"

namespace corvane::headless {

// A single-line text (TEXT).
class Text : public EntityImpl<host::AcDbEntity>, public TextHost {
 public:
  using Point = std::array<double, 3>;
  Text() = default;
  Text(std::array<double, 3> position, double height, std::wstring text)
      : position_(position), height_(height), text_(std::move(text)) {}
  std::wstring dxfName() const override { return L"TEXT"; }
  std::wstring className() const override { return L"AcDbText"; }

  std::wstring hostText() const override { return text_; }
  void setHostText(std::wstring text) override {
    if (text != text_) record_.modified = true;
    text_ = std::move(text);
  }
  const std::array<double, 3>& position() const noexcept { return position_; }
  double height() const noexcept { return height_; }

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  std::array<double, 3> position_{};
  double height_ = 0.2;
  std::wstring text_;
};

}  // namespace corvane::headless
