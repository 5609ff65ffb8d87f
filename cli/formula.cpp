#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/hostapplication.h"
#include "host/acdbfield.h"
#include "host/acdbtable.h"
#include "plugin/formula/exprbinding.h"
#include "plugin/formula/exprengine.h"
#include "plugin/formula/exprerror.h"
#include "plugin/formula/exprfieldbinding.h"
#include "plugin/shell/ccorvaneapp.h"

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
  std::string drawing;
  std::string table;
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

void printExpressions(const FormulaOptions& options, ExprBinding& binding) {
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
}

// Formulas bound to a table of a drawing, as a formula field in one of its cells is bound.
int runInDrawing(const FormulaOptions& options) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(options.drawing, host);
  if (!loaded.drawing) {
    std::fprintf(stderr, "corvane formula: %s\n", loaded.error.c_str());
    return 1;
  }
  headless::Database& db = loaded.drawing->database();
  host.setWorkingDatabase(&db);
  ExprFieldBinding binding(host);
  if (!options.table.empty()) {
    const auto handle = host::AcDbHandle::fromText(core::fromUtf8(options.table));
    host::AcDbObjectId id;
    if (!handle || db.getAcDbObjectId(id, *handle) != host::Acad::eOk ||
        !host::AcDbObjectPointer<host::AcDbTable>(host, id, host::AcDb::kForRead)) {
      std::fprintf(stderr, "corvane formula: %s is not the handle of a table in %s\n", options.table.c_str(),
                   options.drawing.c_str());
      return 1;
    }
    binding.bindOwnerTable(id);
  }
  // Fields embedded in the formulas evaluate with the plug-in's own types too.
  CCorvaneApp app(host);
  app.onInitialize();
  printExpressions(options, binding);
  app.onUnload();
  return 0;
}

int runFormula(const FormulaOptions& options) {
  if (!options.drawing.empty()) return runInDrawing(options);
  NewDrawingBinding binding;
  printExpressions(options, binding);
  return 0;
}

}  // namespace

void addFormulaCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<FormulaOptions>();
  auto* formula = app.add_subcommand("formula", "Evaluate formula expressions, one output line per expression");
  formula->add_flag("--postfix", options->postfix, "Print each expression's postfix form instead of its value");
  auto* drawing = formula->add_option("--drawing", options->drawing, "Evaluate in this drawing (DXF)");
  formula->add_option("--table", options->table, "Bind the table with this handle, as for a field in one of its cells")
      ->needs(drawing);
  formula->add_option("EXPR", options->expressions, "Expressions; put -- first when one begins with '-'")
      ->required();
  formula->callback([&action, options] { action = [options] { return runFormula(*options); }; });
}

}  // namespace corvane::cli
