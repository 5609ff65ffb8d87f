#include "plugin/shell/copymaintenance.h"

#include <optional>
#include <string>
#include <vector>

#include "core/matchgroups.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbdatabase.h"

namespace corvane {

using host::Acad;

namespace {

// The database the copied objects came from: the mapping's, or the working drawing's when the
// mapping does not say.
host::AcDbDatabase* sourceDatabase(host::AcDbHostApplicationServices& services, const host::AcDbIdMapping& mapping) {
  host::AcDbDatabase* db = nullptr;
  if (mapping.origDb(db) == Acad::eOk && db) return db;
  return services.workingDatabase();
}

Acad::ErrorStatus lookUpHandle(host::AcDbDatabase* db, std::wstring_view text, host::AcDbObjectId& id) {
  if (!db) return Acad::eNoDatabase;
  const auto handle = host::AcDbHandle::fromText(text);
  if (!handle) return Acad::eInvalidInput;
  return db->getAcDbObjectId(id, *handle);
}

// The handle of the object's copy, when the object was copied.
std::optional<std::wstring> copiedHandle(host::AcDbHostApplicationServices& services,
                                         const host::AcDbIdMapping& mapping, host::AcDbObjectId source) {
  host::AcDbIdPair pair(source, {}, false);
  if (!mapping.compute(pair)) return std::nullopt;
  return services.handle(pair.value()).text();
}

std::wstring enclosed(std::wstring_view list) { return core::format(L"(<%s>)", list); }

}  // namespace

void FixHandleList(host::AcDbHostApplicationServices& services, host::AcDbField& field,
                   const host::AcDbIdMapping& mapping, const wchar_t* dataKey) {
  host::AcValue record;
  std::wstring text;
  if (field.getData(dataKey, record) != Acad::eOk || !record.get(text)) return;
  constexpr std::wstring_view kOpening = L"Object(<";
  const std::size_t at = text.find(kOpening);
  if (at == std::wstring::npos) return;
  // The list ends at its ">": a record may go on with options (a type mask, layers), and no
  // handle holds a ">".
  std::wstring_view oldList = std::wstring_view(text).substr(at + kOpening.size());
  oldList = oldList.substr(0, oldList.find(L'>'));
  while (!oldList.empty() && (oldList.back() == L'>' || oldList.back() == L')')) oldList.remove_suffix(1);

  host::AcDbDatabase* db = sourceDatabase(services, mapping);
  std::vector<std::wstring> items = core::split(oldList, L';');
  for (std::wstring& item : items) {
    // A named set ("*MSPObjects*") names a whole space, which a copy does not change.
    if (item.empty() || item.front() == L'*') continue;
    host::AcDbObjectId source;
    if (const Acad::ErrorStatus es = lookUpHandle(db, item, source); es != Acad::eOk) {
      services.print(
          core::format(L"\nCannot get the handle (%s) of the object. %s.", item, host::acadErrorStatusText(es)));
      continue;
    }
    if (auto copy = copiedHandle(services, mapping, source)) item = std::move(*copy);
  }
  std::wstring newList;
  for (std::size_t i = 0; i < items.size(); ++i) newList += (i == 0 ? L"" : L";") + items[i];

  if (const Acad::ErrorStatus es = field.upgradeOpen(); es != Acad::eOk) {
    services.print(core::format(L"\nCannot open the copied Field. %s.", host::acadErrorStatusText(es)));
    return;
  }
  field.setData(dataKey, host::AcValue(core::replaceAll(text, enclosed(oldList), enclosed(newList))));
}

void FixTableReference(host::AcDbHostApplicationServices& services, host::AcDbField& field,
                       const host::AcDbIdMapping& mapping) {
  const std::wstring code = field.getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers);
  if (code.empty()) return;
  const std::wstring upper = core::toUpper(code);
  std::vector<std::wstring> captures;
  if (!core::MatchGroups(upper, LR"(TABLE\([<]*{[A-Z0-9a-z]+}[>]*\)\.{.*})", captures) || captures.size() != 2) return;

  host::AcDbObjectId table;
  if (const Acad::ErrorStatus es = lookUpHandle(sourceDatabase(services, mapping), captures[0], table);
      es != Acad::eOk) {
    services.print(core::format(L"\nCannot get the handle of the object. %s.", host::acadErrorStatusText(es)));
    return;
  }
  const auto copy = copiedHandle(services, mapping, table);
  if (!copy) return;
  if (const Acad::ErrorStatus es = field.upgradeOpen(); es != Acad::eOk) {
    services.print(core::format(L"\nCannot open the copied Field. %s.", host::acadErrorStatusText(es)));
    return;
  }
  field.setFieldCode(core::replaceAll(upper, enclosed(captures[0]), enclosed(*copy)));
}

}  // namespace corvane
