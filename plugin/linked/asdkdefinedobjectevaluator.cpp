#include "plugin/linked/asdkdefinedobjectevaluator.h"

#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/hostservices.h"
#include "plugin/linked/definedobjectvalue.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/linked/linkedtimestamp.h"

namespace corvane {

using host::AcDbField;

DefinedObjectReference SplitDefinedObjectReference(std::wstring_view record) {
  const std::size_t first = record.find_first_not_of(L" \"");
  record = first == std::wstring_view::npos ? std::wstring_view() : record.substr(first);
  while (!record.empty() && core::isSpace(record.back())) record.remove_suffix(1);
  DefinedObjectReference parts;
  const std::size_t bar = record.find(L'|');
  if (bar == std::wstring_view::npos || bar == 0) return parts;
  parts.drawing = record.substr(0, bar);
  const std::wstring_view rest = record.substr(bar + 1);
  const std::size_t dot = rest.find(L'.');
  if (dot == std::wstring_view::npos || dot == 0) return parts;
  parts.handle = rest.substr(0, dot);
  parts.property = rest.substr(dot + 1);
  return parts;
}

std::wstring DefinedObjectCode(std::wstring_view drawing, std::wstring_view handle, std::wstring_view property) {
  if (drawing.empty() || handle.empty() || property.empty()) return L"%<\\AcDefinedObj >%";
  return core::format(L"%%<\\%s %s|%s.%s>%%", L"AcDefinedObj", drawing, handle, property);
}

int AsdkDefinedObjectEvaluator::evaluateField(AcDbField* field, host::AcDbDatabase* /*db*/,
                                              host::AcFdFieldValue& value) {
  host::AcValue record;
  if (field->getData(kEvaluatorTable[kRow].dataKey, record) != host::Acad::eOk) return AcDbField::kOtherError;
  std::wstring code;
  if (!record.get(code)) return AcDbField::kInvalidCode;
  if (!sources_ || !sources_->system()) return AcDbField::kOtherError;
  LinkedSources& sources = *sources_;
  host::AcDbHostApplicationServices& services = sources.services();
  const bool inDrawing = services.isValid(field->objectId());

  const DefinedObjectReference parts = SplitDefinedObjectReference(fieldArguments(code));
  const wchar_t* invalid = parts.drawing.empty()  ? L"Invalid drawing path."
                           : parts.handle.empty() ? L"Invalid object handle."
                           : parts.property.empty() ? L"Invalid property."
                                                    : nullptr;
  if (invalid) {
    value = host::AcFdFieldValue(invalid);
    // Stamped with a time no file has, so that the next update looks again.
    if (inDrawing) WriteTimeStamp(*field, 0.0);
    return AcDbField::kSuccess;
  }
  const auto path = sources.resolveAgainstWorkingDrawing(parts.drawing);
  if (!path) return AcDbField::kInvalidCode;
  const auto status = sources.fileStatus(*path);
  if (status.kind == host::HostSystem::FileKind::kMissing) {
    value = host::AcFdFieldValue(core::format(L"Cannot find %s.", *path));
    return AcDbField::kSuccess;
  }

  const bool current = core::samePath(*path, sources.currentDocumentPath());
  if (inDrawing && !current && status.modified) {
    if (auto kept = UnchangedValue(*field, *status.modified)) {
      value = std::move(*kept);
      return AcDbField::kSuccess;
    }
  }
  std::wstring text;
  ReadDefinedObjectValue(sources, *path, parts.handle, parts.property, text);
  value = host::AcFdFieldValue(text);
  if (inDrawing && !current && status.modified) WriteTimeStamp(*field, *status.modified);
  return AcDbField::kSuccess;
}

}  // namespace corvane
