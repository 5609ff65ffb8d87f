// The eight field types: evaluator id, class and data key. The order is the order of
// construction, lookup and destruction.
#pragma once

#include <array>
#include <cstddef>

namespace corvane {

struct EvaluatorTableRow {
  const wchar_t* evaluatorId;
  const wchar_t* className;
  const wchar_t* dataKey;  // the id, a blank and "Data"
};

inline constexpr std::size_t kEvaluatorCount = 8;

inline constexpr std::array<EvaluatorTableRow, kEvaluatorCount> kEvaluatorTable = {{
    {L"AcLength", L"AsdkLengthEvaluator", L"AcLength Data"},
    {L"AcArea", L"AsdkAreaEvaluator", L"AcArea Data"},
    {L"AcBlockCount", L"AsdkBlockCountEvaluator", L"AcBlockCount Data"},
    {L"TextField", L"AsdkTextFileEvaluator", L"TextField Data"},
    {L"TableCell", L"AsdkTableCellEvaluator", L"TableCell Data"},
    {L"ExcelCell", L"AsdkExcelCellEvaluator", L"ExcelCell Data"},
    {L"VxExpr", L"AsdkExprEvaluator", L"VxExpr Data"},
    {L"AcDefinedObj", L"AsdkDefinedObjectEvaluator", L"AcDefinedObj Data"},
}};

// Rows of the table by name, for the evaluator classes.
enum EvaluatorRow : std::size_t {
  kLengthRow = 0,
  kAreaRow,
  kBlockCountRow,
  kTextFileRow,
  kTableCellRow,
  kExcelCellRow,
  kExprRow,
  kDefinedObjectRow,
};

}  // namespace corvane
