#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "headless/database.h"
#include "headless/hostapplication.h"
#include "host/acdbfield.h"
#include "plugin/formula/exprbinding.h"
#include "plugin/formula/exprengine.h"
#include "plugin/formula/exprerror.h"

namespace corvane::cli {

namespace {

// Formulas typed on the command line stand in a new, empty drawing: cells, properties and
// blocks are not found; system variables and embedded field codes are evaluated by the host's
// own field evaluators, as a formula field's would be.
class NewDrawingBinding : public ExprBinding {
 public:
  NewDrawingBinding() { host_.setWorkingDatabase(&db_); }

  std::optional<std::wstring> SystemVariable(std::wstring_view name) override {
    return evaluate(core::format(L"%%<\\AcVar %s>%%", std::wstring(name)));
  }
  std::wstring EvaluateFieldCode(std::wstring_view fieldCode) override {
    return evaluate(std::wstring(fieldCode)).value_or(L"####");
  }

 private:
  // A temporary field made from the code, evaluated on demand and dropped again.
  std::optional<std::wstring> evaluate(const std::wstring& code) {
    const auto field = host_.newField();
    if (!field || field->setFieldCode(code) != host::Acad::eOk) return std::nullopt;
    field->evaluate(host::AcDbField::kDemand, &db_);
    if (field->evaluationStatus() != host::AcDbField::kSuccess) return std::nullopt;
    return field->getDisplayText();
  }

  headless::HostApplication host_;
  headless::Database db_{host_};
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
