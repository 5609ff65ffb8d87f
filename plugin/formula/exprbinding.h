// What the formula engine asks of the drawing a formula stands in. The engine itself knows no
// host: the formula field implements this over the drawing database, tests and tools over
// plain data. The base class answers as a formula with no drawing behind it would: nothing is
// bound and nothing is found.
//
// Variable names reach the binding upper-cased, as the engine stores them; block and property
// names of SUM's block form come as written. Compare names without regard to case.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace corvane {

class ExprBinding {
 public:
  ExprBinding() = default;
  ExprBinding(const ExprBinding&) = delete;
  ExprBinding& operator=(const ExprBinding&) = delete;
  virtual ~ExprBinding() = default;

  // The table the formula belongs to, whose cells bare cell addresses ("A1", "$B$2") and
  // ranges ("A1:C3") name. While one is bound, bare names are looked up only there.
  virtual bool HasOwnerTable() const { return false; }
  virtual int OwnerTableRows() const { return 0; }
  virtual int OwnerTableColumns() const { return 0; }
  // The displayed text of a cell, row and column 1-based as an address writes them (a numeric
  // cell gives its number). Asked only within the table's size.
  virtual std::optional<std::wstring> OwnerTableCell(int /*row*/, int /*column*/) { return std::nullopt; }

  // "HANDLE!PROPERTY": a property, as text, of the object with that handle (hexadecimal).
  virtual std::optional<std::wstring> ObjectProperty(std::wstring_view /*handle*/, std::wstring_view /*property*/) {
    return std::nullopt;
  }

  // A system variable's value as the host's own variable field shows it; nullopt when the
  // host does not know the name or cannot evaluate it.
  virtual std::optional<std::wstring> SystemVariable(std::wstring_view /*name*/) { return std::nullopt; }

  // The block reference holding the formula, whose dynamic properties "_SELFBLOCK." names and
  // VX_SELF read.
  virtual bool HasSelfBlock() const { return false; }
  virtual std::optional<std::wstring> SelfBlockProperty(std::wstring_view /*property*/) { return std::nullopt; }

  // The value text of an embedded field code (ACAD_FIELD), or "####" when it cannot be evaluated.
  virtual std::wstring EvaluateFieldCode(std::wstring_view /*fieldCode*/) { return L"####"; }

  // Sum of a dynamic-block property or attribute, read as a number, over every reference of the
  // named block that is not erased (anonymous variants of a dynamic block included); 0 when the
  // drawing has no such block.
  virtual double SumBlockProperty(std::wstring_view /*blockName*/, std::wstring_view /*property*/) { return 0.0; }
};

}  // namespace corvane
