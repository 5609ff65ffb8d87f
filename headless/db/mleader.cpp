#include "headless/db/mleader.h"

#include "headless/db/mtext.h"

namespace corvane::headless {

void MLeader::setContents(std::wstring contents) {
  if (contents_ != contents) record_.modified = true;
  contents_ = std::move(contents);
}

std::wstring MLeader::text() const { return MText::plainText(contents_); }

void MLeader::setTextLocation(host::AcGePoint3d location) {
  if (!(textLocation_ == location)) record_.modified = true;
  textLocation_ = location;
}

void MLeader::setTextHeight(double height) {
  if (textHeight_ != height) record_.modified = true;
  textHeight_ = height;
}

void MLeader::addLeaderLine(std::vector<host::AcGePoint3d> points) {
  leaderLines_.push_back(std::move(points));
  record_.modified = true;
}

void MLeader::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  if (!contents_.empty()) {
    addTextBlockExtents(extents, transform, textLocation_, 0.0, MText::kTopLeft, textHeight_, 0.0, text());
  }
  for (const auto& line : leaderLines_) {
    for (const auto& point : line) geometry::addPoint(extents, transform, point);
  }
}

std::optional<host::AcValue> MLeader::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"TextString")) return host::AcValue(contents_);
  if (core::equalsNoCase(name, L"Contents")) return host::AcValue(text());
  if (core::equalsNoCase(name, L"TextHeight")) return host::AcValue(textHeight_);
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
