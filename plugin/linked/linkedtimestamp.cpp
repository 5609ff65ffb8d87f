#include "plugin/linked/linkedtimestamp.h"

#include <cmath>
#include <string>

#include "core/datetimetext.h"
#include "host/acdbdatabase.h"

namespace corvane {

namespace {

constexpr int kAppName = 1001;
constexpr int kText = 1000;
constexpr int kBrace = 1002;

// Index of the application's first text outside braces, or the size when there is none.
std::size_t firstOuterText(const host::ResBufList& data) {
  int depth = 0;
  for (std::size_t i = 0; i < data.size(); ++i) {
    const host::ResBuf& item = data[i];
    if (item.restype == kBrace) {
      const auto* brace = std::get_if<std::wstring>(&item.value);
      if (brace && *brace == L"{") ++depth;
      if (brace && *brace == L"}" && depth > 0) --depth;
    } else if (item.restype == kText && depth == 0 && std::holds_alternative<std::wstring>(item.value)) {
      return i;
    }
  }
  return data.size();
}

}  // namespace

bool SameTime(double a, double b) noexcept { return std::abs(a - b) < kSameTimeTolerance; }

std::optional<double> ReadTimeStamp(const host::AcDbObject& object) {
  const host::ResBufList data = object.xData(kTimeStampApp);
  const std::size_t at = firstOuterText(data);
  if (at == data.size()) return std::nullopt;
  return core::parseDateTimeText(std::get<std::wstring>(data[at].value));
}

host::Acad::ErrorStatus WriteTimeStamp(host::AcDbObject& object, double oleDate) {
  host::AcDbDatabase* db = object.database();
  if (!db) return host::Acad::eNotInDatabase;
  if (!db->isRegApp(kTimeStampApp)) {
    if (const auto es = db->registerApp(kTimeStampApp); es != host::Acad::eOk) return es;
  }
  host::ResBufList data = object.xData(kTimeStampApp);
  if (data.empty()) data.push_back({kAppName, std::wstring(kTimeStampApp)});
  host::ResBuf stamp{kText, core::dateTimeText(oleDate)};
  const std::size_t at = firstOuterText(data);
  if (at == data.size()) {
    data.insert(data.begin() + 1, std::move(stamp));
  } else {
    data[at] = std::move(stamp);
  }
  return object.setXData(data);
}

std::optional<host::AcValue> UnchangedValue(const host::AcDbField& field, double modified) {
  const auto stamp = ReadTimeStamp(field);
  if (!stamp || !SameTime(*stamp, modified)) return std::nullopt;
  host::AcValue present;
  if (field.getValue(present) != host::Acad::eOk || present.isEmpty()) return std::nullopt;
  return present;
}

}  // namespace corvane
