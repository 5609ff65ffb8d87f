#include "headless/fieldvaluetext.h"

#include <cstdio>

#include "core/printf.h"
#include "headless/database.h"

namespace corvane::headless {

namespace {

// The host shows a value with no format the C way: reals with six decimals, whatever LUPREC.
std::wstring plainText(const host::AcValue& value) {
  switch (value.dataType()) {
    case host::AcValue::kLong: {
      std::int32_t v = 0;
      value.get(v);
      return core::format(L"%d", v);
    }
    case host::AcValue::kDouble: {
      double v = 0;
      value.get(v);
      return core::format(L"%f", v);
    }
    case host::AcValue::kString: {
      std::wstring v;
      value.get(v);
      return v;
    }
    case host::AcValue::kPoint: {
      host::AcValue::Point2d p{};
      value.get(p);
      return core::format(L"%f, %f", p[0], p[1]);
    }
    case host::AcValue::k3dPoint: {
      host::AcValue::Point3d p{};
      value.get(p);
      return core::format(L"%f, %f, %f", p[0], p[1], p[2]);
    }
    case host::AcValue::kObjectId: {
      host::AcDbObjectId id;
      value.get(id);
      return core::format(L"%llu", id.asOldId());
    }
    default:
      return L"";
  }
}

}  // namespace

std::wstring displayFieldValue(const host::AcValue& value, const std::wstring& /*format*/, const Database& /*db*/) {
  return plainText(value);
}

}  // namespace corvane::headless
