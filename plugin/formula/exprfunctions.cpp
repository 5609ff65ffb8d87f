// The built-in functions of the formula language, dispatched by their index in
// ExprFunctionTable.
#include <algorithm>
#include <cmath>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "plugin/formula/exprengine.h"
#include "plugin/formula/exprerror.h"
#include "plugin/formula/exprfunctiontable.h"
#include "plugin/formula/exprtoken.h"
#include "plugin/formula/exprvalue.h"

namespace corvane {

namespace {

// SUBSTITUTE is the one way a formula can multiply its own length; nested calls would
// otherwise grow a value exponentially.
constexpr std::size_t kMaxSubstituteLength = 1u << 16;

[[noreturn]] void fail(std::wstring_view name, std::wstring_view what) {
  std::wstring message(name);
  message += what;
  throw ExprError(std::move(message));
}

void requireCount(std::wstring_view name, const std::vector<std::wstring>& arguments, std::size_t count) {
  static constexpr std::wstring_view kWords[] = {L"", L"one argument.", L"two arguments.", L"three arguments."};
  if (arguments.size() < count) fail(name, std::wstring(L" requires at least ") + std::wstring(kWords[count]));
  if (arguments.size() > count) fail(name, std::wstring(L" requires only ") + std::wstring(kWords[count]));
}

[[noreturn]] void notImplemented(std::wstring_view name) {
  throw ExprError(L"Function [" + std::wstring(name) + L"] is not implemented.");
}

std::wstring roundAt(ExprFunction function, double x, int places) {
  const double scale = places == 2 ? 100.0 : std::pow(10.0, places);
  double t = x * scale;
  switch (function) {
    case ExprFunction::kRound:
      t += x > kExprTolerance ? 0.5 : -0.5;
      break;
    case ExprFunction::kRoundUp:
      if (std::fabs(t - std::trunc(t)) > kExprTolerance) t += t > kExprTolerance ? 1.0 : -1.0;
      break;
    default:
      break;
  }
  // std::trunc agrees with a 32-bit truncation wherever that is defined and stays meaningful
  // beyond it; "+ 0.0" keeps a negative zero from printing as "-0".
  return FormatNumber((std::trunc(t) + 0.0) / scale);
}

std::wstring substitute(std::wstring_view name, std::wstring_view text, std::wstring_view from, std::wstring_view to) {
  if (from.empty()) return std::wstring(text);
  if (from.size() == 1) {
    // The common case, and the one that grows fastest: sized first, then filled in one pass.
    const wchar_t old = from[0];
    const auto hits = static_cast<std::size_t>(std::count(text.begin(), text.end(), old));
    const std::size_t length = text.size() - hits + hits * to.size();
    if (length > kMaxSubstituteLength) fail(name, L" result is too long.");
    std::wstring out(length, L'\0');
    wchar_t* next = out.data();
    for (const wchar_t c : text) {
      if (c != old) {
        *next++ = c;
      } else {
        next = std::copy(to.begin(), to.end(), next);
      }
    }
    return out;
  }
  std::wstring out;
  std::size_t pos = 0;
  while (true) {
    const std::size_t at = text.find(from, pos);
    const std::size_t piece = (at == std::wstring_view::npos ? text.size() : at) - pos;
    if (out.size() + piece + (at == std::wstring_view::npos ? 0 : to.size()) > kMaxSubstituteLength) {
      fail(name, L" result is too long.");
    }
    out.append(text.substr(pos, piece));
    if (at == std::wstring_view::npos) return out;
    out.append(to);
    pos = at + from.size();
  }
}

}  // namespace

std::vector<std::wstring> ExprEngine::popArguments(std::vector<std::wstring>& stack) {
  auto first = stack.end();
  auto mark = stack.begin();  // erased with the arguments when there is one
  while (first != stack.begin()) {
    const auto previous = first - 1;
    if (previous->size() == 1 && (*previous)[0] == kArgumentMarkChar) {
      mark = previous;
      break;
    }
    first = previous;
  }
  std::vector<std::wstring> arguments(std::make_move_iterator(first), std::make_move_iterator(stack.end()));
  stack.erase(mark, stack.end());
  for (auto& argument : arguments) {
    if (!argument.empty() && argument.front() == StringMarker) argument.erase(0, 1);
  }
  return arguments;
}

void ExprEngine::resolveArgument(std::wstring& argument) {
  if (!IsVariable(argument)) return;
  std::wstring value = VariableValue(argument);
  if (value.empty()) throw ExprError(core::format(L"Variable [%s] not defined", argument));
  argument = std::move(value);
}

void ExprEngine::CallFunction(std::wstring_view name, std::vector<std::wstring>& stack) {
  const int index = FunctionIndex(name);
  if (index < 0) throw ExprError(L"Unsupported function token [" + std::wstring(name) + L"]");
  callFunction(index, name, stack);
}

void ExprEngine::callFunction(int index, std::wstring_view name, std::vector<std::wstring>& stack) {
  std::vector<std::wstring> args = popArguments(stack);
  const auto function = static_cast<ExprFunction>(index);

  const auto resolved = [&](std::size_t count) {
    requireCount(name, args, count);
    for (auto& arg : args) resolveArgument(arg);
  };
  const auto number = [&](std::size_t i) { return TextToNumber(args[i]); };
  const auto requireNumeric = [&](std::size_t i, std::wstring_view what) {
    if (!IsNumericText(args[i])) fail(name, what);
  };

  std::wstring result;
  switch (function) {
    case ExprFunction::kAvg:
    case ExprFunction::kMax:
    case ExprFunction::kMin:
    case ExprFunction::kSum:
      result = aggregate(name, index, args);
      break;
    case ExprFunction::kAcos:
    case ExprFunction::kAsin:
    case ExprFunction::kAtan:
      notImplemented(name);
    case ExprFunction::kHex:
      resolved(1);
      notImplemented(name);
    case ExprFunction::kAbs:
      resolved(1);
      result = FormatNumber(std::fabs(number(0)));
      break;
    case ExprFunction::kAsc:
      resolved(1);
      if (args[0].empty()) fail(name, L" requires a char type operand.");
      result = core::format(L"%d", static_cast<int>(args[0][0]));
      break;
    case ExprFunction::kCos:
      resolved(1);
      result = FormatNumber(std::cos(number(0)));
      break;
    case ExprFunction::kSin:
      resolved(1);
      result = FormatNumber(std::sin(number(0)));
      break;
    case ExprFunction::kTan:
      resolved(1);
      result = FormatNumber(std::tan(number(0)));
      break;
    case ExprFunction::kSqrt:
      resolved(1);
      result = FormatNumber(std::sqrt(number(0)));
      break;
    case ExprFunction::kLog:
      resolved(1);
      result = FormatNumber(std::log10(number(0)));
      break;
    case ExprFunction::kFixed:
      resolved(1);
      result = FormatNumber(std::floor(number(0)));
      break;
    case ExprFunction::kIf:
      resolved(3);
      if (!IsBooleanText(args[0])) fail(name, L" oprator requires boolean condition.");
      result = std::move(IsTrueText(args[0]) ? args[1] : args[2]);
      break;
    case ExprFunction::kLcase:
      resolved(1);
      result = core::toLower(args[0]);
      break;
    case ExprFunction::kUcase:
      resolved(1);
      result = core::toUpper(args[0]);
      break;
    case ExprFunction::kLeft:
    case ExprFunction::kRight: {
      resolved(2);
      requireNumeric(1, L" oprator requires numaric length.");
      const std::wstring_view text = args[0];
      const std::size_t n = static_cast<std::size_t>(std::clamp<std::int64_t>(core::leadingInteger(args[1]), 0,
                                                                              static_cast<std::int64_t>(text.size())));
      result = function == ExprFunction::kLeft ? text.substr(0, n) : text.substr(text.size() - n);
      break;
    }
    case ExprFunction::kMid: {
      resolved(3);
      requireNumeric(1, L" oprator requires numaric lengths.");
      requireNumeric(2, L" oprator requires numaric lengths.");
      const std::wstring_view text = args[0];
      const std::int64_t start = std::max<std::int64_t>(core::leadingInteger(args[1]), 1);
      const std::int64_t length = core::leadingInteger(args[2]);
      if (length > 0 && start <= static_cast<std::int64_t>(text.size())) {
        result = text.substr(static_cast<std::size_t>(start - 1), static_cast<std::size_t>(length));
      }
      break;
    }
    case ExprFunction::kRound:
    case ExprFunction::kRoundUp:
    case ExprFunction::kRoundDown:
      resolved(2);
      requireNumeric(1, L" oprator requires numaric length.");
      result = roundAt(function, number(0), core::leadingInteger(args[1]));
      break;
    case ExprFunction::kSubstitute:
      resolved(3);
      result = substitute(name, args[0], args[1], args[2]);
      break;
    case ExprFunction::kAcadField:
      resolved(1);
      // The dialog weaves U+001F between the characters so the host does not take the code
      // for a field nested in the formula's own.
      if (args[0].find(kFieldCodeSpacer, 1) == std::wstring::npos) {
        result = std::move(args[0]);
      } else {
        std::wstring code;
        code.reserve(args[0].size());
        for (const wchar_t c : args[0]) {
          if (c != kFieldCodeSpacer) code += c;
        }
        result = binding_.EvaluateFieldCode(code);
      }
      break;
    case ExprFunction::kVxSelf:
      resolved(1);
      result = VariableValue(L"_SELFBLOCK." + args[0]);
      break;
  }
  stack.push_back(std::move(result));
}

std::wstring ExprEngine::aggregate(std::wstring_view name, int index, std::vector<std::wstring>& arguments) {
  const auto function = static_cast<ExprFunction>(index);
  if (function == ExprFunction::kSum && arguments.size() == 1) {
    const std::size_t dot = arguments[0].find(L'.', 1);
    if (dot != std::wstring::npos) {
      const std::wstring_view text = arguments[0];
      return FormatNumber(binding_.SumBlockProperty(text.substr(0, dot), text.substr(dot + 1)));
    }
  }
  if (arguments.empty()) fail(name, L" requires at least one operands.");
  if (arguments.size() == 1 && !IsVariable(arguments[0])) fail(name, L" requires at least two operands.");

  double sum = 0;
  double maximum = 0;
  double minimum = 0;
  bool first = true;
  const auto take = [&](double value) {
    sum += value;
    if (first) {
      maximum = minimum = value;
      first = false;
      return;
    }
    if (value - maximum > kExprTolerance) maximum = value;
    if (minimum - value > kExprTolerance) minimum = value;
  };
  for (auto& argument : arguments) {
    const bool variable = IsVariable(argument);
    resolveArgument(argument);
    if (variable && !argument.empty() && argument.front() == kListMarker) {
      std::wstring_view items = std::wstring_view(argument).substr(1);
      while (true) {
        const std::size_t comma = items.find(L',');
        take(TextToNumber(items.substr(0, comma)));
        if (comma == std::wstring_view::npos) break;
        items.remove_prefix(comma + 1);
      }
    } else {
      take(TextToNumber(argument));
    }
  }
  switch (function) {
    case ExprFunction::kAvg: return FormatNumber(sum / static_cast<double>(arguments.size()));
    case ExprFunction::kMax: return FormatNumber(maximum);
    case ExprFunction::kMin: return FormatNumber(minimum);
    default: return FormatNumber(sum);
  }
}

}  // namespace corvane
