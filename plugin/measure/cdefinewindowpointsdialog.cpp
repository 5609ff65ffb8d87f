#include "plugin/measure/cdefinewindowpointsdialog.h"

#include <cmath>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acedprompts.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"
#include "plugin/support/corvanesettings.h"

namespace corvane {

namespace {

constexpr const wchar_t* kValueNames[] = {settings::kFirstCornerX,    settings::kFirstCornerY,
                                          settings::kFirstCornerZ,    settings::kOppositeCornerX,
                                          settings::kOppositeCornerY, settings::kOppositeCornerZ};
constexpr const wchar_t* kCornerNames[] = {L"first corner", L"opposite corner"};
constexpr const wchar_t* kAxisNames[] = {L"X", L"Y", L"Z"};

}  // namespace

std::wstring coordinateText(double value) { return core::format(L"%g", value); }

bool CDefineWindowPointsDialog::readCoordinate(const std::wstring& text, double& value) {
  const std::wstring_view trimmed = core::trimmed(text);
  std::size_t used = 0;
  const double read = core::wcstod(trimmed, &used);
  if (trimmed.empty() || used != trimmed.size() || !std::isfinite(read)) return false;
  value = read;
  return true;
}

void CDefineWindowPointsDialog::onInitDialog(const Texts& defaults) {
  object.clear();
  for (std::size_t i = 0; i < corners.size(); ++i)
    corners[i] = registry_.getString(settings::kCorvane, kValueNames[i], defaults[i]);
  result_ = corners;
}

int CDefineWindowPointsDialog::onSelectObject() {
  EntityFacts picked;
  host::AcDbExtents extents;
  const int result = host_.pickExtents(kSelectObjectPrompt, picked, extents);
  if (result != host::RTNORM) return result;
  object = picked.handle;
  const host::AcGePoint3d lo = extents.minPoint(), hi = extents.maxPoint();
  corners = {coordinateText(lo.x), coordinateText(lo.y), coordinateText(lo.z),
             coordinateText(hi.x), coordinateText(hi.y), coordinateText(hi.z)};
  return result;
}

bool CDefineWindowPointsDialog::onOK() {
  std::array<double, 6> values{};
  for (std::size_t i = 0; i < corners.size(); ++i) {
    if (!readCoordinate(corners[i], values[i])) {
      host_.messageBox(core::format(L"The %s coordinate of the %s is not a number: \"%s\".", kAxisNames[i % 3],
                                    kCornerNames[i / 3], corners[i]),
                       kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
      return false;
    }
  }
  values_ = values;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    result_[i] = core::trim(corners[i]);
    registry_.writeString(settings::kCorvane, kValueNames[i], result_[i]);
  }
  return true;
}

}  // namespace corvane
