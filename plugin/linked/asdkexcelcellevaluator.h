#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/excel.h"
#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

class LinkedSources;

// The evaluator of Excel cell fields: the text of a workbook cell as Excel displays it, read
// through the evaluations' hidden Excel (the user's for web workbooks), and not read at all
// while the workbook file keeps the time stamped on the field.
class AsdkExcelCellEvaluator : public AsdkFieldEvaluator<AsdkExcelCellEvaluator> {
 public:
  static constexpr std::size_t kRow = kExcelCellRow;
  explicit AsdkExcelCellEvaluator(LinkedSources* sources = nullptr) : sources_(sources) {}
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value,
                    std::wstring& message);

 private:
  // The cell's text from an Excel; false, with the field's value set to the failure, when the
  // workbook, the worksheet or the cell is not there.
  bool fetch(host::ExcelApplication& excel, std::wstring_view path,
             std::wstring_view worksheet, std::wstring_view cell, std::wstring_view code,
             host::AcFdFieldValue& value);

  LinkedSources* sources_;
};

// An automation failure in words: its own text, else "IDispatch error #n" for a dispatch
// error number, else the system's text for the code, else "Unknown error 0x...".
std::wstring ComErrorText(host::ExcelAutomation* excel, const host::ExcelError& error);

}  // namespace corvane
