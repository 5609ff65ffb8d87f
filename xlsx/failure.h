// How the workbook backend reports what Excel would raise: a refused call with its reason.
#pragma once

#include <string_view>

#include "core/utf8.h"
#include "host/excel.h"

namespace corvane::xlsx {

inline host::ExcelError failure(std::wstring_view text) { return {host::kExcelFailed, std::wstring(text)}; }
inline host::ExcelError failure(std::string_view text) { return {host::kExcelFailed, core::fromUtf8(text)}; }

}  // namespace corvane::xlsx
