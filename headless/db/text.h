#pragma once

#include <array>
#include <string>

#include "headless/db/textentity.h"
#include "host/acdbtext.h"

namespace corvane::headless {

// A single-line text (TEXT).
class Text : public TextEntity<host::AcDbText> {
 public:
  using Point = std::array<double, 3>;
  Text() = default;
  Text(Point position, double height, std::wstring text)
      : TextEntity(host::AcGePoint3d::fromArray(position), height, std::move(text)) {}
  std::wstring dxfName() const override { return L"TEXT"; }
  std::wstring className() const override { return L"AcDbText"; }
};

}  // namespace corvane::headless
