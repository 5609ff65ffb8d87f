// The parts of a new workbook with one empty sheet, "Sheet1", as (part name, bytes) pairs in
// the order a zip should store them ([Content_Types].xml first). The styles hold the General
// cell format every cell starts with; the properties say the workbook was made at `now`.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace corvane::xlsx {

std::vector<std::pair<std::string, std::string>> newWorkbookParts(std::int64_t nowUnixSeconds);

}  // namespace corvane::xlsx
