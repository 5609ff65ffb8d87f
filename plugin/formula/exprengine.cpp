#include "plugin/formula/exprengine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/printf.h"
#include "core/textutil.h"
#include "plugin/formula/celladdress.h"
#include "plugin/formula/exprerror.h"
#include "plugin/formula/exprfunctiontable.h"
#include "plugin/formula/exprtoken.h"
#include "plugin/formula/exprvalue.h"
#include "plugin/formula/tokenize.h"
#include "plugin/formula/topostfix.h"

namespace corvane {

namespace {

constexpr std::wstring_view kSelfBlockPrefix = L"_SELFBLOCK.";
// No name the drawing knows is longer. Long texts (a concatenation growing step by step) are
// then neither copied nor sent to the host each time an operator consumes them.
constexpr std::size_t kMaxNameLength = 256;

ExprBinding& noDrawing() {
  static ExprBinding binding;  // stateless: answers "not found" to everything
  return binding;
}

void stripMarkersInPlace(std::wstring& text) {
  const std::wstring_view stripped = StripStringMarkers(text);
  if (stripped.size() == text.size()) return;
  const std::size_t front = static_cast<std::size_t>(stripped.data() - text.data());
  text.resize(front + stripped.size());
  text.erase(0, front);
}

// Truncation towards zero; "+ 0.0" keeps a truncated -0.4 from printing as "-0".
double truncated(double value) { return std::trunc(value) + 0.0; }

bool compareNumbers(ExprTokenKind op, double a, double b) {
  switch (op) {
    case ExprTokenKind::kEqual: return std::fabs(a - b) <= kExprTolerance;
    case ExprTokenKind::kNotEqual: return std::fabs(a - b) > kExprTolerance;
    case ExprTokenKind::kGreater: return a - b > kExprTolerance;
    case ExprTokenKind::kLess: return b - a > kExprTolerance;
    case ExprTokenKind::kGreaterEqual: return b - a < kExprTolerance;
    default: return a - b < kExprTolerance;  // "<="
  }
}

bool compareTexts(ExprTokenKind op, int order) {
  switch (op) {
    case ExprTokenKind::kEqual: return order == 0;
    case ExprTokenKind::kNotEqual: return order != 0;
    case ExprTokenKind::kGreater: return order > 0;
    case ExprTokenKind::kLess: return order < 0;
    case ExprTokenKind::kGreaterEqual: return order >= 0;
    default: return order <= 0;  // "<="
  }
}

wchar_t upper(wchar_t c) {
  if (c < 0x80) return (c >= L'a' && c <= L'z') ? static_cast<wchar_t>(c - (L'a' - L'A')) : c;
  return core::toUpperChar(c);
}

bool isComparison(ExprTokenKind kind) {
  const int k = static_cast<int>(kind);
  return k >= static_cast<int>(ExprTokenKind::kGreater) && k <= static_cast<int>(ExprTokenKind::kNotEqual);
}

}  // namespace

ExprEngine::ExprEngine(std::wstring expression) : ExprEngine(std::move(expression), noDrawing()) {}

ExprEngine::ExprEngine(std::wstring expression, ExprBinding& binding)
    : expression_(std::move(expression)), binding_(binding) {}

bool ExprEngine::UpperCaseLess::operator()(std::wstring_view a, std::wstring_view b) const noexcept {
  const std::size_t n = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < n; ++i) {
    const wchar_t ca = upper(a[i]);
    const wchar_t cb = upper(b[i]);
    if (ca != cb) return ca < cb;
  }
  return a.size() < b.size();
}

const std::wstring* ExprEngine::findVariable(std::wstring_view name) const {
  // "PI" is every engine's first variable; kept out of the map so that a fresh engine, made
  // for each evaluation of a field, allocates nothing for it.
  static const std::wstring kPi = L"3.1415926535897932384";
  if (name.size() == 2 && upper(name[0]) == L'P' && upper(name[1]) == L'I') return &kPi;
  const auto it = variables_.find(name);
  return it == variables_.end() ? nullptr : &it->second;
}

std::wstring ExprEngine::Prepare() {
  prepareLists();
  std::wstring display;
  for (std::size_t i = 0; i < postfix_.size(); ++i) {
    if (i > 0) display += L", ";
    display += postfix_[i].text;
  }
  return display;
}

std::vector<std::wstring> ExprEngine::postfix() const {
  std::vector<std::wstring> list;
  list.reserve(postfix_.size());
  for (const PostfixStep& step : postfix_) list.emplace_back(step.text);
  return list;
}

void ExprEngine::prepareLists() {
  tokens_.clear();
  postfix_.clear();
  std::vector<std::wstring> tokens = Tokenize(expression_);
  if (tokens.empty()) throw ExprError(L"Unable to tokanize the expression.");
  // The steps stay valid when the list moves into tokens_: a vector hands its buffer over whole.
  std::vector<PostfixStep> postfix = ToPostfixSteps(tokens);
  if (postfix.empty()) throw ExprError(L"Unable to convert the expression to postfix form.");
  tokens_ = std::move(tokens);
  postfix_ = std::move(postfix);
}

bool ExprEngine::Evaluate(std::wstring& result) {
  try {
    if (postfix_.empty()) {
      prepareLists();
      if (postfix_.empty()) throw ExprError(L"Unable to parse the expression.");
    }
    std::vector<std::wstring> stack;
    stack.reserve(postfix_.size());
    run(stack);
    if (stack.size() != 1) throw ExprError(L"#VALUE!");
    result = std::move(stack.back());
    resolve(result);
    return true;
  } catch (const ExprError& error) {
    result = error.message();
    return false;
  }
}

void ExprEngine::run(std::vector<std::wstring>& stack) {
  // The operands of a binary operator, resolved: the right one taken off the stack, the left
  // one left there to take the result. Concatenation and comparison see them unmarked.
  struct Operands {
    std::wstring right;
    std::wstring& left;
  };
  const auto operands = [this, &stack](std::wstring_view op, bool unmarked) -> Operands {
    if (stack.size() < 2) throw ExprError(L"Stack is empty, can not perform [" + std::wstring(op) + L"]");
    std::wstring right = std::move(stack.back());
    stack.pop_back();
    std::wstring& left = stack.back();
    if (unmarked) {
      stripMarkersInPlace(right);
      stripMarkersInPlace(left);
    }
    resolve(right);
    resolve(left);
    return {std::move(right), left};
  };
  for (const PostfixStep& step : postfix_) {
    const std::wstring_view token = step.text;
    const ExprTokenKind kind = step.kind;
    switch (kind) {
      case ExprTokenKind::kPlus:
      case ExprTokenKind::kMinus: {
        auto [right, left] = operands(token, false);
        // Booleans and string literals (still marked) fail the numeric test as well.
        if (!IsNumericText(left) || !IsNumericText(right)) throw ExprError(L"#VAL!");
        const double a = TextToNumber(left);
        const double b = TextToNumber(right);
        left = FormatNumber(kind == ExprTokenKind::kPlus ? a + b : a - b);
        break;
      }
      case ExprTokenKind::kPower:
      case ExprTokenKind::kMultiply:
      case ExprTokenKind::kDivide:
      case ExprTokenKind::kRemainder: {
        auto [right, left] = operands(token, false);
        const double a = TextToNumber(left);
        const double b = TextToNumber(right);
        double value = 0;
        if (kind == ExprTokenKind::kPower) {
          value = std::pow(a, b);
        } else if (kind == ExprTokenKind::kMultiply) {
          value = a * b;
        } else if (kind == ExprTokenKind::kDivide) {
          if (std::fabs(b) <= kExprTolerance) throw ExprError(L"divider is 0.");
          value = a / b;
        } else {
          // Both sides are whole numbers by now, so fmod is exact and keeps the left sign.
          const double divisor = truncated(b);
          if (divisor == 0.0) throw ExprError(L"divider is 0.");
          value = std::fmod(truncated(a), divisor) + 0.0;
        }
        left = FormatNumber(value);
        break;
      }
      case ExprTokenKind::kConcat: {
        auto [right, left] = operands(token, true);
        left += right;
        break;
      }
      case ExprTokenKind::kAnd:
      case ExprTokenKind::kOr:
        throw ExprError(L"Logical operator requires LHS & RHS of boolean type.");
      case ExprTokenKind::kUnaryMinus: {
        if (stack.empty()) throw ExprError(L"No operand to negate.");
        std::wstring& value = stack.back();
        resolve(value);
        if (!IsNumericText(value)) throw ExprError(L"Not a numaric value.");
        value.insert(value.begin(), L'-');  // textual on purpose: "-5" becomes "--5"
        break;
      }
      default:
        if (isComparison(kind)) {
          auto [right, left] = operands(token, true);
          bool holds = false;
          if (IsNumericText(left) && IsNumericText(right)) {
            holds = compareNumbers(kind, TextToNumber(left), TextToNumber(right));
          } else if (IsBooleanText(left) && IsBooleanText(right) &&
                     (kind == ExprTokenKind::kEqual || kind == ExprTokenKind::kNotEqual)) {
            holds = (IsTrueText(left) == IsTrueText(right)) == (kind == ExprTokenKind::kEqual);
          } else {
            holds = compareTexts(kind, core::compareNoCase(left, right));
          }
          left = BooleanText(holds);
        } else if (step.function >= 0) {
          callFunction(step.function, token, stack);
        } else {
          // Operands wait on the stack as written; names are looked up when consumed.
          checkCellReference(token);
          stack.emplace_back(token);
        }
        break;
    }
  }
}

void ExprEngine::checkCellReference(std::wstring_view operand) const {
  // A cell reference typed wrong would otherwise go on as plain text and fail far from its
  // cause. Only names as typed are checked: texts the formula makes may hold a ":" of their
  // own, and so may string literals. Without a table a bare name may be a system variable
  // ("USERI1").
  if (operand.starts_with(StringMarker) || operand.find(L'!') != std::wstring_view::npos) return;
  auto problem = CellRangeProblem(operand);
  if (!problem && binding_.HasOwnerTable()) problem = CellAddressProblem(operand);
  if (problem) throw ExprError(std::move(*problem));
}

void ExprEngine::resolve(std::wstring& value) {
  if (IsVariable(value)) value = VariableValue(value);
}

bool ExprEngine::IsVariable(std::wstring_view name) {
  // A number is never a name the drawing knows: plain arithmetic stays away from the host.
  // Most operands are numbers, so that test comes first.
  if (name.empty() || name.size() > kMaxNameLength || IsNumericText(name)) return false;
  if (OccursInOperatorTables(name) || IsFunctionName(name)) return false;
  while (!name.empty() && core::isSpace(name.front())) name.remove_prefix(1);
  while (!name.empty() && core::isSpace(name.back())) name.remove_suffix(1);
  if (name.empty()) return false;
  if (findVariable(name) != nullptr) return true;
  const std::wstring key = core::toUpper(name);
  return !IsNumericText(key) && lookUp(key);
}

bool ExprEngine::lookUp(const std::wstring& key) {
  const std::size_t bang = key.find(L'!');
  std::optional<std::wstring> found;
  if (bang != std::wstring::npos && bang > 0) {
    found = binding_.ObjectProperty(std::wstring_view(key).substr(0, bang), std::wstring_view(key).substr(bang + 1));
  } else if (bang == std::wstring::npos && binding_.HasOwnerTable()) {
    if (const auto cell = ParseCellAddress(key)) {
      if (cell->row >= 1 && cell->column >= 1 && cell->row <= binding_.OwnerTableRows() &&
          cell->column <= binding_.OwnerTableColumns()) {
        found = binding_.OwnerTableCell(cell->row, cell->column);
      }
    } else if (const auto range = ParseCellRange(key)) {
      const int rows = binding_.OwnerTableRows();
      const int columns = binding_.OwnerTableColumns();
      const int row1 = std::max(1, std::min(range->first.row, range->last.row));
      const int row2 = std::min(rows, std::max(range->first.row, range->last.row));
      const int column1 = std::max(1, std::min(range->first.column, range->last.column));
      const int column2 = std::min(columns, std::max(range->first.column, range->last.column));
      if (row1 <= row2 && column1 <= column2) found = tableRangeList(row1, column1, row2, column2);
    }
  } else if (bang == std::wstring::npos && binding_.HasSelfBlock() && key.starts_with(kSelfBlockPrefix)) {
    return true;  // read when its value is asked for
  } else {
    found = binding_.SystemVariable(key);
  }
  if (!found) return false;
  variables_.emplace(key, std::move(*found));
  return true;
}

std::wstring ExprEngine::tableRangeList(int row1, int column1, int row2, int column2) {
  std::wstring list(1, kListMarker);
  for (int row = row1; row <= row2; ++row) {
    for (int column = column1; column <= column2; ++column) {
      if (row != row1 || column != column1) list += L',';
      if (auto cell = binding_.OwnerTableCell(row, column)) list += *cell;
    }
  }
  return list;
}

std::wstring ExprEngine::VariableValue(std::wstring_view name) {
  if (const std::wstring* value = findVariable(name)) return *value;
  const std::wstring key = core::toUpper(name);
  if (binding_.HasSelfBlock() && key.starts_with(kSelfBlockPrefix)) {
    if (auto value = binding_.SelfBlockProperty(std::wstring_view(key).substr(kSelfBlockPrefix.size()))) {
      return std::move(*value);
    }
  }
  throw ExprError(core::format(L"Variable [%s] not defined", key));
}

}  // namespace corvane
