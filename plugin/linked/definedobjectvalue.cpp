#include "plugin/linked/definedobjectvalue.h"

#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbattribute.h"
#include "host/acdbdatabase.h"
#include "host/acdbmtext.h"
#include "host/acdbtext.h"
#include "host/hostservices.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/linked/linkedtimestamp.h"

namespace corvane {

using ErrorStatus = host::Acad::ErrorStatus;

namespace {

// The drawing's time as the cache keeps it.
CDefinedObjectTime timeOf(const host::HostSystem::FileStatus& status) {
  if (!status.modified) return {CDefinedObjectTime::kInvalid, 0.0};
  return {CDefinedObjectTime::kValid, *status.modified};
}

bool sameTime(const CDefinedObjectTime& a, const CDefinedObjectTime& b) {
  if (a.status != b.status) return false;
  return a.status != CDefinedObjectTime::kValid || SameTime(a.date, b.date);
}

}  // namespace

std::wstring DefinedObjectTypeName(std::wstring_view className) {
  std::wstring name(className);
  if (name.size() >= 5 && core::startsWithNoCase(name, L"AcDb")) name.erase(0, 4);
  for (std::size_t i = name.size(); i-- > 1;) {
    if (name[i] >= L'A' && name[i] <= L'Z') name.insert(i, 1, L' ');
  }
  return name;
}

ErrorStatus ReadObjectText(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db,
                           std::wstring_view handle, std::wstring& type, std::wstring& value) {
  host::AcDbObjectId id;
  const auto parsed = host::AcDbHandle::fromText(handle);
  const ErrorStatus found = parsed ? db.getAcDbObjectId(id, *parsed) : host::Acad::eInvalidInput;
  if (found != host::Acad::eOk) {
    value = core::format(L"Failed to getAcDbObjectId: %s.", host::acadErrorStatusText(found));
    return found;
  }
  host::AcDbObjectPointer<host::AcDbObject> object(services, id, host::AcDb::kForRead);
  if (!object) {
    value = core::format(L"Failed to open object: %s.", host::acadErrorStatusText(object.openStatus()));
    return object.openStatus();
  }
  // An attribute is a text too: it is asked first.
  if (const auto* attribute = dynamic_cast<const host::AcDbAttribute*>(object.object())) {
    value = attribute->textString();
  } else if (const auto* mtext = dynamic_cast<const host::AcDbMText*>(object.object())) {
    value = mtext->text();
  } else if (const auto* text = dynamic_cast<const host::AcDbText*>(object.object())) {
    value = text->textString();
  } else {
    value = L"Unsupported object and property.";
  }
  type = DefinedObjectTypeName(object->className());
  return host::Acad::eOk;
}

ErrorStatus ReadDefinedObjectValue(LinkedSources& sources, std::wstring_view path, std::wstring_view handle,
                                   std::wstring_view /*property*/, std::wstring& text) {
  const auto status = sources.fileStatus(path);
  if (status.kind == host::HostSystem::FileKind::kMissing) {
    text = core::format(L"Cannot find %s.", path);
    return host::Acad::eInvalidInput;
  }
  const CDefinedObjectTime fileTime = timeOf(status);
  const bool current = core::samePath(path, sources.currentDocumentPath());

  CDefinedObjectArray& cache = sources.definedObjects();
  const auto matches = [&](const CDefinedObject& record) {
    return core::samePath(record.drawing, path) && core::equalsNoCase(record.handle, handle);
  };
  for (const CDefinedObject& record : cache) {
    if (matches(record) && !current && sameTime(record.timeStamp, fileTime)) {
      text = record.value;
      return host::Acad::eOk;
    }
  }

  host::AcDbHostApplicationServices& services = sources.services();
  host::AcDbDatabase* db = current ? services.workingDatabase() : nullptr;
  LinkedSources::OpenDrawing& last = sources.lastDrawing();
  if (!db && last.db && fileTime.status == CDefinedObjectTime::kValid && core::samePath(last.path, path) &&
      sameTime(last.time, fileTime)) {
    db = last.db.get();
  }
  if (!db) {
    if (status.kind != host::HostSystem::FileKind::kFile) {
      text = core::format(L"Failed to read dwg: %s.", L"it is not a file");
      return host::Acad::eFileAccessErr;
    }
    host::AcDbHostApplicationServices::DatabaseHolder side;
    std::wstring reason;
    const ErrorStatus read = services.readDrawingFile(path, side, reason);
    if (read != host::Acad::eOk || !side) {
      text = core::format(L"Failed to read dwg: %s.", reason.empty() ? host::acadErrorStatusText(read) : reason);
      return read != host::Acad::eOk ? read : host::Acad::eFilerError;
    }
    last = {std::wstring(path), fileTime, std::move(side)};
    db = last.db.get();
  }

  // Every object of this drawing in the cache is read again while the drawing is open.
  const CDefinedObject* requested = nullptr;
  for (CDefinedObject& record : cache) {
    if (!core::samePath(record.drawing, path)) continue;
    ReadObjectText(services, *db, record.handle, record.type, record.value);
    record.timeStamp = fileTime;
    if (core::equalsNoCase(record.handle, handle)) requested = &record;
  }
  if (!requested) {
    CDefinedObject record;
    record.handle = handle;
    record.drawing = path;
    ReadObjectText(services, *db, record.handle, record.type, record.value);
    record.timeStamp = fileTime;
    cache.push_back(std::move(record));
    requested = &cache.back();
  }
  text = requested->value;
  return host::Acad::eOk;
}

}  // namespace corvane
