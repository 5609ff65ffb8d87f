// The AutoFill formulas command: the formula of the first cell of a picked range of table cells
// copied into the other cells of the range, its cell references moved as a spreadsheet moves them.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbdatabase.h"
#include "host/acdbtable.h"
#include "host/acedprompts.h"
#include "host/acfd.h"
#include "plugin/formula/autofill.h"
#include "plugin/formula/celladdress.h"
#include "plugin/shell/ccorvaneapp.h"

namespace corvane {

namespace {

constexpr std::wstring_view kFormulaField = L"%<\\VxExpr ";

// A system variable set for the length of a command and given its value back on every way out
// of it, a thrown one included.
class SysVarOverride {
 public:
  SysVarOverride(host::AcDbDatabase& db, std::wstring_view name, std::int32_t value) : db_(db), name_(name) {
    host::ResBuf saved;
    if (db_.getSysVar(name_, saved) != host::Acad::eOk) return;
    saved_ = saved;
    db_.setSysVar(name_, {host::RTSHORT, value});
  }
  ~SysVarOverride() {
    if (saved_) db_.setSysVar(name_, *saved_);
  }
  SysVarOverride(const SysVarOverride&) = delete;
  SysVarOverride& operator=(const SysVarOverride&) = delete;

 private:
  host::AcDbDatabase& db_;
  std::wstring name_;
  std::optional<host::ResBuf> saved_;
};

// A cell's code around its formula field: the text before "%<\VxExpr ", the rest of the field
// through its closing ">%", and the text after the field.
struct FormulaInCell {
  std::wstring_view before;
  std::wstring_view rest;
  std::wstring_view after;
};

std::optional<FormulaInCell> findFormula(const host::AcDbHostApplicationServices& services, std::wstring_view code) {
  const std::size_t at = core::findNoCase(code, kFormulaField);
  if (at == std::wstring_view::npos) return std::nullopt;
  const auto span = services.findField(code, at);
  if (!span || span->start != at) return std::nullopt;
  const std::size_t restAt = at + kFormulaField.size();
  return FormulaInCell{code.substr(0, at), code.substr(restAt, span->end - restAt), code.substr(span->end)};
}

}  // namespace

void CCorvaneApp::Corvane_AutoFill_Formulas() {
  if (!session_) return;
  host::AcDbDatabase* db = services_.workingDatabase();
  if (!db) return;
  // Object snaps would pull a pick to a line's end instead of the cell under it.
  const SysVarOverride noSnaps(*db, L"OSMODE", 0);
  const host::ResBufList tablesOnly{{0, std::wstring(L"ACAD_TABLE")}};
  host::AcDbObjectId tableId;
  host::AcCellRange range;
  if (session_->prompts().getTableCellRange(L"\nSelect cell range. The first cell should have the VX Formula:",
                                            &tablesOnly, tableId, range) != host::RTNORM)
    return;
  const std::vector<host::AcDbObjectId> formulas = fillFormulas(tableId, range);
  // One batch in reading order: a filled running total reads the cell above it as it is now.
  host::AcFdFieldEngine* engine = services_.fieldEngine();
  if (engine && !formulas.empty()) engine->evaluateFields(db, formulas, host::AcDbField::kDemand);
}

std::vector<host::AcDbObjectId> CCorvaneApp::fillFormulas(host::AcDbObjectId tableId, const host::AcCellRange& range) {
  host::AcDbObjectPointer<host::AcDbTable> table(services_, tableId, host::AcDb::kForRead);
  if (!table) {
    services_.print(core::format(L"\nCannot open the table: %s.", host::acadErrorStatusText(table.openStatus())));
    return {};
  }
  // The source is the range's top-left cell, where the host's sub-selection starts.
  const std::wstring code = table->getFormula(range.topRow, range.leftColumn);
  const auto formula = findFormula(services_, code);
  if (!formula) {
    services_.print(code.empty() ? std::wstring(L"\nCannot find an VX Formula field in the first cell.")
                                 : core::format(L"\nCannot find an VX Formula field in the first cell: %s", code));
    return {};
  }
  // Every cell is written through one open of the table, so that the whole fill is a single
  // change of it.
  if (const auto es = table->upgradeOpen(); es != host::Acad::eOk) {
    services_.print(core::format(L"\nCannot change the table: %s.", host::acadErrorStatusText(es)));
    return {};
  }
  for (int row = range.topRow; row <= range.bottomRow; ++row) {
    for (int column = range.leftColumn; column <= range.rightColumn; ++column) {
      if (row == range.topRow && column == range.leftColumn) continue;
      const std::wstring filled = std::wstring(formula->before) + std::wstring(kFormulaField) +
                                  ShiftFormulaFieldRest(formula->rest, row - range.topRow, column - range.leftColumn) +
                                  std::wstring(formula->after);
      const auto es = table->setValue(row, column, filled, host::AcValueOptions::kParseTextForFieldCode);
      if (es != host::Acad::eOk) {
        services_.print(core::format(L"\nCell %s is left as it was: %s.",
                                     FormatCellAddress(row + 1, column + 1, session_->ui()),
                                     host::acadErrorStatusText(es)));
      }
    }
  }
  // The table's formulas in reading order, so that those outside the range that read it (a
  // total below it) are brought up to date with it.
  std::vector<host::AcDbObjectId> formulas;
  for (int row = 0; row < table->numRows(); ++row) {
    for (int column = 0; column < table->numColumns(); ++column) {
      if (core::findNoCase(table->getFormula(row, column), kFormulaField) != std::wstring::npos)
        formulas.push_back(table->fieldId(row, column));
    }
  }
  return formulas;
}

}  // namespace corvane
