#include "host/acvalue.h"

namespace corvane::host {

AcValue::DataType AcValue::dataType() const noexcept {
  switch (data_.index()) {
    case 1: return kLong;
    case 2: return kDouble;
    case 3: return kString;
    case 4: return kDate;
    case 5: return kPoint;
    case 6: return k3dPoint;
    case 7: return kObjectId;
    default: return kUnknown;
  }
}

namespace {
template <typename T>
bool read(const AcValue::Data& data, T& out) {
  if (const T* v = std::get_if<T>(&data)) {
    out = *v;
    return true;
  }
  return false;
}
}  // namespace

bool AcValue::get(std::int32_t& out) const noexcept { return read(data_, out); }
bool AcValue::get(double& out) const noexcept { return read(data_, out); }
bool AcValue::get(std::wstring& out) const { return read(data_, out); }
bool AcValue::get(Date& out) const noexcept { return read(data_, out); }
bool AcValue::get(Point2d& out) const noexcept { return read(data_, out); }
bool AcValue::get(Point3d& out) const noexcept { return read(data_, out); }
bool AcValue::get(AcDbObjectId& out) const noexcept { return read(data_, out); }

}  // namespace corvane::host
