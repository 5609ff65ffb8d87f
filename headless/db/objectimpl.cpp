#include "headless/db/objectimpl.h"

#include <algorithm>
#include <memory>

#include "core/textutil.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"

namespace corvane::headless {

using host::Acad;

Acad::ErrorStatus openRecord(ObjectRecord& record, host::AcDb::OpenMode mode, bool openErased) {
  if (record.erased && !openErased) return Acad::eWasErased;
  if (record.writeOpen) return Acad::eWasOpenForWrite;
  if (mode == host::AcDb::kForWrite) {
    if (record.readers > 0) return Acad::eWasOpenForRead;
    record.writeOpen = true;
  } else {
    ++record.readers;
  }
  return Acad::eOk;
}

Acad::ErrorStatus closeRecord(ObjectRecord& record) {
  if (record.writeOpen) {
    // Opening for write is the host's promise of a change; the save writes the object back.
    record.writeOpen = false;
    record.modified = true;
    return Acad::eOk;
  }
  if (record.readers == 0) return Acad::eNotOpenForRead;
  --record.readers;
  return Acad::eOk;
}

Acad::ErrorStatus upgradeRecord(ObjectRecord& record) {
  if (record.writeOpen) return Acad::eWasOpenForWrite;
  if (record.readers == 0) return Acad::eNotOpenForRead;
  if (record.readers > 1) return Acad::eWasOpenForRead;  // another reader still holds it
  record.readers = 0;
  record.writeOpen = true;
  return Acad::eOk;
}

Acad::ErrorStatus downgradeRecord(ObjectRecord& record) {
  if (!record.writeOpen) return Acad::eNotOpenForWrite;
  record.writeOpen = false;
  record.readers = 1;
  return Acad::eOk;
}

namespace {

// The range [first, last) of the groups of the application that starts at `first`.
std::size_t endOfApplication(const host::ResBufList& data, std::size_t first) {
  std::size_t i = first + 1;
  while (i < data.size() && data[i].restype != 1001) ++i;
  return i;
}

const std::wstring* appNameOf(const host::ResBuf& item) { return std::get_if<std::wstring>(&item.value); }

}  // namespace

host::ResBufList xdataOf(const ObjectRecord& record, std::wstring_view appName) {
  const host::ResBufList& xdata = record.xdata;
  if (appName.empty()) return xdata;
  for (std::size_t i = 0; i < xdata.size(); i = endOfApplication(xdata, i)) {
    const std::wstring* name = appNameOf(xdata[i]);
    if (name && core::equalsNoCase(*name, appName)) {
      return host::ResBufList(xdata.begin() + static_cast<std::ptrdiff_t>(i),
                              xdata.begin() + static_cast<std::ptrdiff_t>(endOfApplication(xdata, i)));
    }
  }
  return {};
}

Acad::ErrorStatus setXdataOf(ObjectRecord& record, const host::ResBufList& data) {
  // Every application named in the new data must be registered; each one's groups replace
  // that application's old groups, and a bare application name removes them.
  for (std::size_t i = 0; i < data.size(); i = endOfApplication(data, i)) {
    const std::wstring* name = appNameOf(data[i]);
    if (data[i].restype != 1001 || !name) return Acad::eInvalidInput;
    if (!record.database->isRegApp(*name)) return Acad::eRegappIdNotFound;
  }
  host::ResBufList xdata = record.xdata;
  for (std::size_t i = 0; i < data.size();) {
    const std::size_t end = endOfApplication(data, i);
    const std::wstring& name = *appNameOf(data[i]);
    for (std::size_t j = 0; j < xdata.size();) {
      const std::size_t jEnd = endOfApplication(xdata, j);
      const std::wstring* existing = appNameOf(xdata[j]);
      if (existing && core::equalsNoCase(*existing, name)) {
        xdata.erase(xdata.begin() + static_cast<std::ptrdiff_t>(j), xdata.begin() + static_cast<std::ptrdiff_t>(jEnd));
      } else {
        j = jEnd;
      }
    }
    if (end - i > 1) {
      xdata.insert(xdata.end(), data.begin() + static_cast<std::ptrdiff_t>(i),
                   data.begin() + static_cast<std::ptrdiff_t>(end));
    }
    i = end;
  }
  record.xdata = std::move(xdata);
  record.modified = true;
  return Acad::eOk;
}

Acad::ErrorStatus createExtensionDictionaryOf(ObjectRecord& record) {
  if (!record.writeOpen) return Acad::eNotOpenForWrite;
  if (!record.extensionDictionary.isNull()) return Acad::eAlreadyInDb;
  record.extensionDictionary = record.database->addObject(std::make_unique<Dictionary>(), record.id);
  record.modified = true;
  return Acad::eOk;
}

std::optional<host::AcValue> HeadlessObject::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"Handle")) return host::AcValue(record_.handle.text());
  return std::nullopt;
}

}  // namespace corvane::headless
