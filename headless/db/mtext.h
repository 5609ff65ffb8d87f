#pragma once

#include <string>
#include <string_view>

#include "headless/db/compacttext.h"
#include "headless/db/shape.h"
#include "headless/db/texthost.h"
#include "host/acdbmtext.h"

namespace corvane::headless {

// A multiline text (MTEXT). Its contents are kept with their inline formatting codes, as the
// host keeps them.
class MText : public ShapeEntity<host::AcDbMText>, public TextHost {
 public:
  // Where the location sits on the text's box: 1 top left ... 9 bottom right, row by row.
  enum Attachment : int {
    kTopLeft = 1,
    kTopCenter,
    kTopRight,
    kMiddleLeft,
    kMiddleCenter,
    kMiddleRight,
    kBottomLeft,
    kBottomCenter,
    kBottomRight,
  };

  MText() = default;
  MText(host::AcGePoint3d location, double height, std::wstring contents)
      : location_(location), height_(height), contents_(contents) {}
  std::wstring dxfName() const override { return L"MTEXT"; }
  std::wstring className() const override { return L"AcDbMText"; }

  std::wstring contents() const override { return contents_.wide(); }
  void setContents(std::wstring contents);
  std::wstring text() const override { return plainText(contents_.wide()); }
  std::wstring hostText() const override { return contents_.wide(); }
  void setHostText(std::wstring text) override { setContents(std::move(text)); }

  host::AcGePoint3d location() const override { return location_; }
  void setLocation(host::AcGePoint3d location);
  double textHeight() const override { return height_; }
  void setTextHeight(double height);
  double width() const noexcept { return width_; }  // 0: as wide as the longest line
  void setWidth(double width);
  int attachment() const noexcept { return attachment_; }
  void setAttachment(int attachment);
  double rotation() const noexcept { return rotation_; }
  void setRotation(double rotation);

  // The text as a reader sees it: formatting codes, grouping braces and carriage returns
  // dropped, paragraph and column breaks as line feeds, stacked fractions as "a/b", and the
  // "%%d", "%%p", "%%c" symbols as their characters.
  static std::wstring plainText(std::wstring_view contents);

  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  host::AcGePoint3d location_;
  double height_ = 0.2;
  double width_ = 0.0;
  int attachment_ = kTopLeft;
  double rotation_ = 0.0;
  CompactText contents_;
};

// The box of a block of lines of text whose anchor is at the attachment point (as MText).
void addTextBlockExtents(host::AcDbExtents& extents, const geometry::Transform& transform,
                         const host::AcGePoint3d& location, double rotation, int attachment, double height,
                         double width, std::wstring_view plainText);

}  // namespace corvane::headless
