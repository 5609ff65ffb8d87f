// The dialog that takes a field code to embed in a formula. A formula field itself cannot be
// embedded: a formula does not evaluate a formula.
#pragma once

#include <string>

#include "plugin/formula/formulapagehost.h"

namespace corvane {

class CInsertFieldCodeDialog {
 public:
  static constexpr const wchar_t* kCaption = L"Corvane";
  static constexpr const wchar_t* kInvalidFieldCode = L"Invalid field code.";
  static constexpr const wchar_t* kCannotInsertFormula = L"Cannot insert the VxExpr field.";

  explicit CInsertFieldCodeDialog(FormulaPageHost& host) : host_(host) {}

  // The field code box.
  std::wstring text;

  // OK: the trimmed text becomes the result when it holds a field code that is no formula;
  // otherwise a message says why and the dialog stays open (false).
  bool onOK();
  const std::wstring& result() const noexcept { return result_; }

 private:
  FormulaPageHost& host_;
  std::wstring result_;
};

}  // namespace corvane
