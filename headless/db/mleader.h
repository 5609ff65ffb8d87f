#pragma once

#include <string>
#include <vector>

#include "headless/db/shape.h"
#include "headless/db/texthost.h"
#include "host/acdbobject.h"
#include "host/acgepoint.h"

namespace corvane::headless {

// A multileader (MULTILEADER): its text, kept like a multiline text's contents (inline codes
// included), where the text stands, and the points of its leader lines.
class MLeader : public ShapeEntity<host::AcDbEntity>, public TextHost {
 public:
  MLeader() = default;
  MLeader(std::wstring contents, host::AcGePoint3d textLocation, double textHeight)
      : contents_(std::move(contents)), textLocation_(textLocation), textHeight_(textHeight) {}
  std::wstring dxfName() const override { return L"MULTILEADER"; }
  std::wstring className() const override { return L"AcDbMLeader"; }

  const std::wstring& contents() const noexcept { return contents_; }
  void setContents(std::wstring contents);
  std::wstring text() const;  // plain, as a multiline text's
  std::wstring hostText() const override { return contents_; }
  void setHostText(std::wstring text) override { setContents(std::move(text)); }
  host::AcGePoint3d textLocation() const noexcept { return textLocation_; }
  void setTextLocation(host::AcGePoint3d location);
  double textHeight() const noexcept { return textHeight_; }
  void setTextHeight(double height);
  const std::vector<std::vector<host::AcGePoint3d>>& leaderLines() const noexcept { return leaderLines_; }
  void addLeaderLine(std::vector<host::AcGePoint3d> points);
  void setLeaderLines(std::vector<std::vector<host::AcGePoint3d>> lines) {
    if (lines != leaderLines_) record_.modified = true;
    leaderLines_ = std::move(lines);
  }

  void addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const override;

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  std::wstring contents_;
  host::AcGePoint3d textLocation_;
  double textHeight_ = 0.2;
  std::vector<std::vector<host::AcGePoint3d>> leaderLines_;
};

}  // namespace corvane::headless
