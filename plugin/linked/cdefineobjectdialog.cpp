#include "plugin/linked/cdefineobjectdialog.h"

#include <algorithm>

#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbdatabase.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"
#include "plugin/linked/definedobjectvalue.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/support/corvanesettings.h"

namespace corvane {

namespace {

std::wstring valueName(const CDefinedObject& record) {
  return core::format(L"%s|%s|%s", record.drawing, record.handle, record.type);
}

bool drawingBefore(const CDefinedObject& a, const CDefinedObject& b) {
  return core::compareNoCase(a.drawing, b.drawing) < 0;
}

}  // namespace

CDefinedObjectArray ReadDefinedObjects(const CRegistry& registry) {
  CDefinedObjectArray records;
  for (const std::wstring& name : registry.valueNames(settings::kDefinedObject)) {
    // "drawing|handle|type", read from the right: a path may hold anything but the last two bars.
    const std::size_t typeBar = name.rfind(L'|');
    if (typeBar == std::wstring::npos || typeBar == 0) continue;
    const std::size_t handleBar = name.rfind(L'|', typeBar - 1);
    if (handleBar == std::wstring::npos || handleBar == 0) continue;
    CDefinedObject record;
    record.drawing = name.substr(0, handleBar);
    record.handle = name.substr(handleBar + 1, typeBar - handleBar - 1);
    record.type = name.substr(typeBar + 1);
    record.description = registry.getString(settings::kDefinedObject, name, L"");
    records.push_back(std::move(record));
  }
  std::stable_sort(records.begin(), records.end(), drawingBefore);
  return records;
}

CDefineObjectDialog::CDefineObjectDialog(LinkedSources& sources, CRegistry& registry)
    : sources_(sources), registry_(registry) {
  Load();
}

void CDefineObjectDialog::Load() {
  rows_ = ReadDefinedObjects(registry_);
  selected = -1;
}

int CDefineObjectDialog::message(std::wstring_view text, unsigned flags) {
  return LinkedMessage(sources_, text, kMessageCaption, flags);
}

bool CDefineObjectDialog::Add(std::wstring_view handle, std::wstring_view description) {
  host::AcDbHostApplicationServices& services = sources_.services();
  host::AcDbDatabase* working = services.workingDatabase();
  CDefinedObject record;
  record.drawing = sources_.currentDocumentPath();
  record.description = description;
  if (!working || ReadObjectText(services, *working, handle, record.type, record.value) != host::Acad::eOk) {
    message(L"Invalid object handle.", host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  record.handle = core::toUpper(handle);
  const bool listed = std::any_of(rows_.begin(), rows_.end(), [&record](const CDefinedObject& row) {
    return core::samePath(row.drawing, record.drawing) && core::equalsNoCase(row.handle, record.handle);
  });
  if (listed) {
    message(L"An object you specified already exists.", host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  registry_.writeString(settings::kDefinedObject, valueName(record), record.description);
  const auto at = std::upper_bound(rows_.begin(), rows_.end(), record, drawingBefore);
  selected = static_cast<int>(at - rows_.begin());
  rows_.insert(at, std::move(record));
  return true;
}

bool CDefineObjectDialog::Remove() {
  if (selected < 0 || selected >= static_cast<int>(rows_.size())) {
    message(L"Please select a item first.", host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  if (message(L"Are you sure you want to remove this item?", host::MB_YESNO | host::MB_ICONQUESTION) != host::IDYES)
    return false;
  registry_.removeValue(settings::kDefinedObject, valueName(rows_[static_cast<std::size_t>(selected)]));
  rows_.erase(rows_.begin() + selected);
  selected = -1;
  return true;
}

bool CDefineObjectDialog::ReplaceFolder(std::wstring_view oldFolder, std::wstring_view newFolder) {
  if (oldFolder.empty()) {
    message(L"Invalid old folder.", host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  if (newFolder.empty()) {
    message(L"Invalid new folder.", host::MB_OK | host::MB_ICONINFORMATION);
    return false;
  }
  if (message(core::format(L"Would you like to replace \"%s\" with \"%s\"", oldFolder, newFolder),
              host::MB_YESNO | host::MB_ICONQUESTION) != host::IDYES) {
    return false;
  }
  Load();
  for (CDefinedObject& record : rows_) {
    if (!core::startsWithNoCase(record.drawing, oldFolder)) continue;
    registry_.removeValue(settings::kDefinedObject, valueName(record));
    record.drawing = std::wstring(newFolder) + record.drawing.substr(oldFolder.size());
    registry_.writeString(settings::kDefinedObject, valueName(record), record.description);
  }
  std::stable_sort(rows_.begin(), rows_.end(), drawingBefore);
  return true;
}

}  // namespace corvane
