#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "headless/sysvars.h"
#include "plugin/formula/exprbinding.h"
#include "plugin/formula/exprengine.h"
#include "plugin/formula/exprerror.h"

namespace corvane::cli {

namespace {

// Formulas typed on the command line stand in no drawing: cells, properties and fields are
// not found, and system variables have the values a new drawing starts with (the whole-number
// and text ones; reals and points would need the drawing's unit formatting).
class NewDrawingBinding : public ExprBinding {
 public:
  std::optional<std::wstring> SystemVariable(std::wstring_view name) override {
    for (const auto& var : headless::initialSysVars()) {
      if (!core::equalsNoCase(name, var.name)) continue;
      if (const auto* whole = std::get_if<std::int32_t>(&var.value.value)) return core::format(L"%d", *whole);
      if (const auto* text = std::get_if<std::wstring>(&var.value.value)) return *text;
      return std::nullopt;
    }
    return std::nullopt;
  }
};

struct FormulaOptions {
  bool postfix = false;
  std::vector<std::string> expressions;
};

// Control characters (the engine's own markers among them) are shown as \uXXXX so that every
// result stays on one line and the markers can be seen.
void printLine(std::wstring_view line) {
  std::wstring shown;
  shown.reserve(line.size());
  for (const wchar_t c : line) {
    if (c < 0x20) {
      shown += core::format(L"\\u%04X", static_cast<unsigned>(c));
    } else {
      shown += c;
    }
  }
  const std::string utf8 = core::toUtf8(shown);
  std::fwrite(utf8.data(), 1, utf8.size(), stdout);
  std::fputc('\n', stdout);
}

int runFormula(const FormulaOptions& options) {
  NewDrawingBinding binding;
  for (const auto& expression : options.expressions) {
    ExprEngine engine(core::fromUtf8(expression), binding);
    std::wstring line;
    if (options.postfix) {
      try {
        line = engine.Prepare();
      } catch (const ExprError& error) {
        line = error.message();
      }
    } else {
      engine.Evaluate(line);  // a failure's message is the line, as a field would show it
    }
    printLine(line);
  }
  std::fflush(stdout);
  return 0;
}

}  // namespace

void addFormulaCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<FormulaOptions>();
  auto* formula = app.add_subcommand("formula", "Evaluate formula expressions, one output line per expression");
  formula->add_flag("--postfix", options->postfix, "Print each expression's postfix form instead of its value");
  formula->add_option("EXPR", options->expressions, "Expressions; put -- first when one begins with '-'")
      ->required();
  formula->callback([&action, options] { action = [options] { return runFormula(*options); }; });
}

}  // namespace corvane::cli
