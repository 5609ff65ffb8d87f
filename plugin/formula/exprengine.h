#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "plugin/formula/exprbinding.h"
#include "plugin/formula/topostfix.h"

namespace corvane {

// One formula: its text, its token and postfix lists, its variables and the binding through
// which names reach the drawing. Every value is a text; numbers the engine makes are printed
// with "%G". An engine is used for one formula on one thread.
class ExprEngine {
 public:
  // A formula with no drawing behind it: only "PI" and literal values.
  explicit ExprEngine(std::wstring expression);
  // The binding must outlive the engine.
  ExprEngine(std::wstring expression, ExprBinding& binding);

  const std::wstring& expression() const noexcept { return expression_; }
  const std::vector<std::wstring>& tokens() const noexcept { return tokens_; }
  std::vector<std::wstring> postfix() const;

  // Tokenizes and converts to postfix, keeps both lists, and returns the postfix tokens joined
  // by ", " for display. Throws ExprError.
  std::wstring Prepare();

  // Runs the formula. Returns true with the value in `result`, or false with the failure
  // message in `result`: a formula field shows either text the same way.
  bool Evaluate(std::wstring& result);

  // Whether a name is bound to a value: "PI", a name found before, or one the binding finds
  // (a cell or range of the owner table, "HANDLE!PROPERTY", a system variable). Found values
  // are kept for the rest of the engine's life.
  bool IsVariable(std::wstring_view name);
  // The bound value; throws ExprError "Variable [NAME] not defined" when there is none.
  std::wstring VariableValue(std::wstring_view name);

  // Runs a built-in function: pops its arguments (down to the nearest argument mark, or all of
  // the stack when it was written without parentheses) and pushes its result. Throws ExprError.
  void CallFunction(std::wstring_view name, std::vector<std::wstring>& stack);

 private:
  void prepareLists();
  void callFunction(int index, std::wstring_view name, std::vector<std::wstring>& stack);
  void run(std::vector<std::wstring>& stack);
  // Throws ExprError naming the bad address of an operand written as a cell range, or while a
  // table is bound as a cell address, that cannot be one.
  void checkCellReference(std::wstring_view operand) const;
  // Replaces `value` by the variable's value when it names one.
  void resolve(std::wstring& value);
  bool lookUp(const std::wstring& key);
  const std::wstring* findVariable(std::wstring_view key) const;
  std::wstring tableRangeList(int row1, int column1, int row2, int column2);

  // Function library helpers (the function library's own file).
  std::vector<std::wstring> popArguments(std::vector<std::wstring>& stack);
  void resolveArgument(std::wstring& argument);
  std::wstring aggregate(std::wstring_view name, int index, std::vector<std::wstring>& arguments);

  std::wstring expression_;
  ExprBinding& binding_;
  std::vector<std::wstring> tokens_;
  std::vector<PostfixStep> postfix_;  // points into tokens_
  // Ordered as upper-cased text, so that a name is found in any case without building its key.
  struct UpperCaseLess {
    using is_transparent = void;
    bool operator()(std::wstring_view a, std::wstring_view b) const noexcept;
  };
  // Names found so far, stored upper-cased; "PI" is there from the start without being stored
  // (see findVariable).
  std::map<std::wstring, std::wstring, UpperCaseLess> variables_;
};

}  // namespace corvane
