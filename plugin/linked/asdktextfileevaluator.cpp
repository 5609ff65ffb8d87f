#include "plugin/linked/asdktextfileevaluator.h"

#include <cstdint>

#include "core/printf.h"
#include "core/utf8.h"
#include "host/hostservices.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/linked/linkedtimestamp.h"

namespace corvane {

using host::AcDbField;

namespace {

bool isValidUtf8(std::string_view bytes) noexcept {
  std::size_t i = 0;
  while (i < bytes.size()) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    std::size_t length = 0;
    std::uint32_t minimum = 0;
    if (lead < 0x80) {
      ++i;
      continue;
    }
    if ((lead & 0xE0) == 0xC0) {
      length = 2;
      minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
      length = 3;
      minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
      length = 4;
      minimum = 0x10000;
    } else {
      return false;
    }
    if (i + length > bytes.size()) return false;
    std::uint32_t code = lead & (0x7F >> length);
    for (std::size_t k = 1; k < length; ++k) {
      const auto next = static_cast<unsigned char>(bytes[i + k]);
      if ((next & 0xC0) != 0x80) return false;
      code = code << 6 | (next & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    i += length;
  }
  return true;
}

std::wstring fromUtf16(std::string_view bytes) {
  std::wstring text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); i += 2) {
    // An odd last byte meets the zero after the file's end.
    const auto low = static_cast<unsigned char>(bytes[i]);
    const auto high = i + 1 < bytes.size() ? static_cast<unsigned char>(bytes[i + 1]) : 0u;
    const std::uint32_t unit = low | high << 8;
    if (unit == 0) break;
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 3 < bytes.size()) {
      const std::uint32_t next =
          static_cast<unsigned char>(bytes[i + 2]) | static_cast<unsigned char>(bytes[i + 3]) << 8;
      if (next >= 0xDC00 && next <= 0xDFFF) {
        text += static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
        i += 2;
        continue;
      }
    }
    text += static_cast<wchar_t>(unit);
  }
  return text;
}

}  // namespace

std::wstring DecodeTextFile(std::string_view bytes) {
  if (bytes.size() >= 2) {
    const std::uint32_t mark = static_cast<unsigned char>(bytes[0]) | static_cast<unsigned char>(bytes[1]) << 8;
    if (mark == 0xFEFF || mark == 0xFFFE) return fromUtf16(bytes.substr(2));
  }
  const std::size_t end = bytes.find('\0');
  if (end != std::string_view::npos) bytes = bytes.substr(0, end);
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") return core::fromUtf8(bytes.substr(3));
  if (isValidUtf8(bytes)) return core::fromUtf8(bytes);
  std::wstring text;
  text.reserve(bytes.size());
  for (const char c : bytes) text += static_cast<wchar_t>(static_cast<unsigned char>(c));
  return text;
}

int AsdkTextFileEvaluator::evaluateField(AcDbField* field, host::AcDbDatabase* /*db*/, host::AcFdFieldValue& value,
                                         std::wstring& message) {
  host::AcValue record;
  if (field->getData(kEvaluatorTable[kRow].dataKey, record) != host::Acad::eOk) return AcDbField::kOtherError;
  std::wstring code;
  if (!record.get(code)) return AcDbField::kInvalidCode;
  // The record is the code; all after the evaluator id is the path.
  const std::wstring stored(fieldArguments(code));
  if (!sources_ || !sources_->system()) {
    message = L"No files can be read here.";
    return AcDbField::kOtherError;
  }
  LinkedSources& sources = *sources_;

  const auto path = sources.resolveAgainstWorkingDrawing(stored);
  if (!path) {
    message = core::format(L"%s is relative to a drawing that has no folder.", stored);
    return AcDbField::kInvalidCode;
  }
  const auto status = sources.fileStatus(*path);
  if (status.kind == host::HostSystem::FileKind::kMissing) {
    value = host::AcFdFieldValue(core::format(L"%s is not found.", *path));
    return AcDbField::kSuccess;
  }

  host::AcDbHostApplicationServices& services = sources.services();
  const bool inDrawing = services.isValid(field->objectId());
  if (inDrawing && status.modified) {
    if (auto kept = UnchangedValue(*field, *status.modified)) {
      value = std::move(*kept);
      return AcDbField::kSuccess;
    }
  }

  std::string bytes;
  std::wstring reason;
  if (!sources.system()->readFile(*path, bytes, reason)) {
    message = core::format(L"Cannot read %s: %s", *path, reason);
    return AcDbField::kInvalidCode;
  }
  if (bytes.empty()) {
    message = core::format(L"%s is empty.", *path);
    return AcDbField::kInvalidCode;
  }
  value = host::AcFdFieldValue(DecodeTextFile(bytes));
  if (inDrawing && status.modified) WriteTimeStamp(*field, *status.modified);
  return AcDbField::kSuccess;
}

}  // namespace corvane
