// The part single-line texts, attributes and attribute definitions share: one line of text
// at a position, with height, rotation and width factor, that can hold a field.
#pragma once

#include <string>

#include "headless/db/compacttext.h"
#include "headless/db/geometry.h"
#include "headless/db/shape.h"
#include "headless/db/texthost.h"
#include "host/acgepoint.h"

namespace corvane::headless {

template <typename Interface>
class TextEntity : public ShapeEntity<Interface>, public TextHost {
 public:
  TextEntity() = default;
  TextEntity(host::AcGePoint3d position, double height, std::wstring text)
      : position_(position), height_(height), text_(text) {}

  std::wstring textString() const override { return text_.wide(); }
  void getTextString(std::wstring& text) const override { text_.wide(text); }
  void setTextString(std::wstring text) {
    CompactText compact(text);
    if (compact != text_) this->record_.modified = true;
    text_ = std::move(compact);
  }
  std::wstring hostText() const override { return text_.wide(); }
  void setHostText(std::wstring text) override { setTextString(std::move(text)); }

  host::AcGePoint3d position() const override { return position_; }
  void setPosition(host::AcGePoint3d position) {
    if (!(position == position_)) this->record_.modified = true;
    position_ = position;
  }
  double height() const override { return height_; }
  void setHeight(double height) {
    if (height != height_) this->record_.modified = true;
    height_ = height;
  }
  double rotation() const override { return rotation_; }  // radians
  void setRotation(double rotation) {
    if (rotation != rotation_) this->record_.modified = true;
    rotation_ = rotation;
  }
  double widthFactor() const noexcept { return widthFactor_; }
  void setWidthFactor(double factor) {
    if (factor != widthFactor_) this->record_.modified = true;
    widthFactor_ = factor;
  }

  // From the position along the baseline, one text height up.
  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override {
    geometry::addRectangle(extents, transform, position_, rotation_, 0.0, 0.0,
                           geometry::estimatedTextWidth(text_.wide(), height_, widthFactor_), height_);
  }

  std::optional<host::AcValue> property(std::wstring_view name) const override {
    if (core::equalsNoCase(name, L"TextString") || core::equalsNoCase(name, L"Contents")) return host::AcValue(text_.wide());
    if (core::equalsNoCase(name, L"Height")) return host::AcValue(height_);
    if (core::equalsNoCase(name, L"Rotation")) return host::AcValue(rotation_);
    if (core::equalsNoCase(name, L"ScaleFactor")) return host::AcValue(widthFactor_);
    if (core::equalsNoCase(name, L"InsertionPoint") || core::equalsNoCase(name, L"Position")) {
      return host::AcValue(position_.asArray());
    }
    return EntityImpl<Interface>::property(name);
  }

 private:
  host::AcGePoint3d position_;
  double height_ = 0.2;
  double rotation_ = 0.0;
  double widthFactor_ = 1.0;
  CompactText text_;
};

}  // namespace corvane::headless
