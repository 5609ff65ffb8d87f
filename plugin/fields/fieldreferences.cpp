#include "plugin/fields/fieldreferences.h"

#include <cstdint>
#include <cwctype>
#include <vector>

#include "core/crt.h"
#include "core/matchgroups.h"
#include "core/printf.h"
#include "core/textutil.h"

namespace corvane {

using host::Acad;

namespace {

constexpr std::wstring_view kObjPropPrefix = L"%<\\AcObjProp";
constexpr std::wstring_view kIdKeyword = L"%<\\_ObjId ";
constexpr std::wstring_view kIdPattern = L"%<\\\\_ObjId {[0-9]+}>%";
constexpr std::wstring_view kHandlePattern = L"%<\\\\_ObjHandle {[0-9a-zA-Z]+}>%";
constexpr wchar_t kUnitSeparator = L'\x1F';

bool isObjectPropertyCode(std::wstring_view code) { return code.substr(0, kObjPropPrefix.size()) == kObjPropPrefix; }

// An id written by the host with a 32-bit conversion, widened the way a signed long is.
host::AcDbObjectId idFromLong(std::int32_t value) {
  return host::AcDbObjectId(static_cast<std::uint64_t>(static_cast<std::int64_t>(value)));
}

// Steps shared by ObjIdToHandle and FieldToFormulaArgument, once the prefix is known.
std::wstring idReferenceToHandle(host::AcDbHostApplicationServices& services, std::wstring_view code) {
  std::vector<std::wstring> captures;
  if (!core::MatchGroups(code, kIdPattern, captures)) return std::wstring(code);
  const host::AcDbObjectId id = idFromLong(core::wtol(captures[0]));
  if (!services.isValid(id)) return std::wstring(code);
  const std::wstring handle = services.handle(id).text();
  return core::replaceAll(code, core::format(L"%%<\\_ObjId %s>%%", captures[0]),
                          core::format(L"%%<\\_ObjHandle %s>%%", handle));
}

// The id of the object with a handle in a database, never creating one.
Acad::ErrorStatus idOfHandle(host::AcDbDatabase* db, std::wstring_view text, host::AcDbObjectId& id) {
  if (!db) return Acad::eNoDatabase;
  const auto handle = host::AcDbHandle::fromText(text);
  if (!handle || handle->isNull()) return Acad::eNullHandle;
  return db->getAcDbObjectId(id, *handle);
}

}  // namespace

std::wstring ObjIdToHandle(host::AcDbHostApplicationServices& services, std::wstring_view code) {
  if (!isObjectPropertyCode(code)) return std::wstring(code);
  return idReferenceToHandle(services, code);
}

std::wstring ObjHandleToId(host::AcDbHostApplicationServices& services, std::wstring_view code,
                           host::AcDbDatabase* db) {
  if (!isObjectPropertyCode(code)) return std::wstring(code);
  std::vector<std::wstring> captures;
  if (!core::MatchGroups(code, kHandlePattern, captures)) return std::wstring(code);
  host::AcDbObjectId id;
  if (idOfHandle(db ? db : services.workingDatabase(), captures[0], id) != Acad::eOk) return std::wstring(code);
  if (!services.isValid(id)) return std::wstring(code);
  return core::replaceAll(code, core::format(L"%%<\\_ObjHandle %s>%%", captures[0]),
                          core::format(L"%%<\\_ObjId %llu>%%", id.asOldId()));
}

namespace {

// The scan both stored-form conversions share: each "%<\_ObjId X>%" in turn, X handed to
// `convert`, which may rewrite the whole text. A reference at the very start of the text
// ends the scan before it begins, and scanning goes on one character after each reference.
template <typename Convert>
std::wstring convertStoredReferences(std::wstring_view input, Convert convert) {
  std::wstring text(input);
  std::size_t pos = text.find(kIdKeyword);
  while (pos != std::wstring::npos && pos > 0) {
    const std::size_t end = text.find(L">%", pos);
    if (end == std::wstring::npos) break;
    const std::size_t first = pos + kIdKeyword.size();
    convert(text, end > first ? text.substr(first, end - first) : std::wstring());
    pos = text.find(kIdKeyword, pos + 1);
  }
  return text;
}

}  // namespace

std::wstring AllObjIdsToHandles(host::AcDbHostApplicationServices& services, std::wstring_view input) {
  return convertStoredReferences(input, [&services](std::wstring& text, const std::wstring& digits) {
    const host::AcDbObjectId id(static_cast<std::uint64_t>(core::wtoi64(digits)));
    const std::wstring handle = services.isValid(id) ? services.handle(id).text() : std::wstring();
    // Every occurrence of the digits anywhere in the text, not only this reference.
    if (!handle.empty() && !digits.empty()) text = core::replaceAll(text, digits, handle);
  });
}

std::wstring AllHandlesToObjIds(host::AcDbHostApplicationServices& services, std::wstring_view input) {
  return convertStoredReferences(input, [&services](std::wstring& text, const std::wstring& handle) {
    host::AcDbObjectId id;
    const Acad::ErrorStatus es = idOfHandle(services.workingDatabase(), handle, id);
    if (es != Acad::eOk) {
      services.print(core::format(L"\nERROR: Could not translate handle to objectId (%s)", host::acadErrorStatusText(es)));
    } else {
      text = core::replaceAll(text, handle, core::format(L"%ld", id.asOldId()));
    }
  });
}

std::wstring FieldToFormulaArgument(host::AcDbHostApplicationServices& services, std::wstring_view text) {
  std::wstring code;
  if (const auto span = services.findField(text)) code = std::wstring(text.substr(span->start, span->end - span->start));
  if (isObjectPropertyCode(code)) code = idReferenceToHandle(services, code);
  std::wstring separated;
  separated.reserve(code.size() * 2);
  for (std::size_t i = 0; i < code.size(); ++i) {
    if (i > 0) separated.push_back(kUnitSeparator);
    separated.push_back(code[i]);
  }
  return core::format(L"ACAD_FIELD('%s')", separated);
}

std::wstring FormulaFieldHandlesToIds(host::AcDbHostApplicationServices& services, std::wstring_view text) {
  if (text.size() < 2) return std::wstring(text);
  const auto span = services.findField(text);
  if (!span) return std::wstring(text);
  std::wstring code(text.substr(span->start, span->end - span->start));
  if (!isObjectPropertyCode(code)) return std::wstring(text);
  // Each handle reference in turn; a handle that does not resolve stays as it is.
  static constexpr std::wstring_view kHandleKeyword = L"%<\\_ObjHandle ";
  std::size_t pos = 0;
  while ((pos = code.find(kHandleKeyword, pos)) != std::wstring::npos) {
    const std::size_t first = pos + kHandleKeyword.size();
    std::size_t last = first;
    while (last < code.size() && std::iswalnum(code[last]) && code[last] < 0x80) ++last;
    if (last == first || code.compare(last, 2, L">%") != 0) {
      pos = first;
      continue;
    }
    host::AcDbObjectId id;
    if (idOfHandle(services.workingDatabase(), code.substr(first, last - first), id) != Acad::eOk ||
        !services.isValid(id)) {
      pos = last;
      continue;
    }
    const std::wstring reference = core::format(L"%%<\\_ObjId %ld>%%", id.asOldId());
    code.replace(pos, last + 2 - pos, reference);
    pos += reference.size();
  }
  return code;
}

}  // namespace corvane
