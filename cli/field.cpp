#include "headless/db/field.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "drawingsave.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/editor/fieldplacement.h"
#include "headless/editor/osservices.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "linkedfiles.h"
#include "output.h"
#include "plugin/shell/asdkcustomoptiondialoghook.h"
#include "plugin/shell/ccorvaneapp.h"

namespace corvane::cli {

namespace {

// A field that ended in an error under --strict: the drawing is saved, and the caller can tell.
constexpr int kFieldError = 3;

struct AddOptions {
  std::string drawing;
  std::string into;
  std::string code;
  std::string output;
  bool force = false;
  bool strict = false;
};

int refuse(const std::wstring& message) {
  writeErr(L"corvane field add: " + message + L"\n");
  return 1;
}

// The placed field's own field: the one child of the text field that holds it.
const headless::Field* ownField(const headless::Database& db, const headless::Field& holder) {
  if (holder.children().size() != 1) return &holder;
  const auto* child = db.get<headless::Field>(holder.children().front());
  return child ? child : &holder;
}

int addField(const AddOptions& options) {
  const std::wstring code = core::fromUtf8(options.code);
  if (const std::wstring problem = headless::fieldCodeProblem(code); !problem.empty()) return refuse(problem);

  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(options.drawing, host);
  if (!loaded.drawing) return refuse(core::fromUtf8(loaded.error));
  dxf::DrawingFile& drawing = *loaded.drawing;
  headless::Database& db = drawing.database();
  host.setWorkingDatabase(&db);

  const headless::FieldPlaceLookup found = headless::findFieldPlace(db, core::fromUtf8(options.into));
  if (!found.place) return refuse(found.error);
  const dxf::SaveOptions save = saveOptions("field add", options.force);
  const std::filesystem::path target = options.output.empty() ? drawing.path() : std::filesystem::path(options.output);
  if (!savePossible("field add", target, save)) return 1;

  // The field evaluates as `corvane update` evaluates fields: the plug-in loaded outside any
  // editor, with files, workbooks and other drawings in reach.
  host.setOutput([](std::wstring_view) {});
  LinkedFiles linked(host);
  CCorvaneApp app(host, linked.system, &linked.excel);
  app.onInitialize();
  const host::AcDbObjectId holderId = headless::placeField(db, *found.place, code, host::AcDbField::kAutomatic);
  if (!holderId.isNull()) host.engine().evaluateFields(&db, {holderId}, host::AcDbField::kDemand);
  app.onUnload();

  const auto* holder = db.get<headless::Field>(holderId);
  if (!holder) return refuse(core::format(L"the %s %s cannot take the field", found.place->kind, found.place->handle));
  const headless::Field* field = ownField(db, *holder);
  std::wstring message;
  const int status = field->evaluationStatus(nullptr, &message);
  // A field that nothing can ever evaluate is refused, as the field dialog refuses it.
  if (status == host::AcDbField::kEvaluatorNotFound) {
    return refuse(core::format(L"%s: %s", AsdkCustomOptionDialogHook::kEvaluatorNotFound, field->evaluatorId()));
  }

  const dxf::Status saved = options.output.empty() ? drawing.save(save) : drawing.saveAs(options.output, save);
  if (!saved) {
    reportSaveFailure("field add", saved);
    return 1;
  }
  const bool failed = status != host::AcDbField::kSuccess && status != host::AcDbField::kNotYetEvaluated;
  const headless::FieldPlace& place = *found.place;
  const std::wstring where = headless::placeName(place);
  writeOut(core::format(
      L"%s\t%s\t%s\t%s\t%d\t%s\nsaved %s\n", where, place.kind, field->handle().text(), field->evaluatorId(), status,
      oneLine(failed && !message.empty() ? message : holder->getDisplayText()), core::fromUtf8(target.string())));
  return options.strict && failed ? kFieldError : 0;
}

struct ListOptions {
  bool json = false;
};

int listTypes(const ListOptions& options) {
  // The names in the system's language, as the field dialog shows them.
  headless::OsServices system(L"");
  AsdkCustomOptionDialogHook hook(&system);
  std::vector<std::wstring> names;
  std::vector<unsigned> ids;
  bool sort = false;
  hook.GetFieldNames(-1, names, ids, sort);
  std::wstring out = options.json ? L"[" : L"";
  for (std::size_t i = 0; i < names.size() && i < ids.size(); ++i) {
    const std::wstring evaluator(AsdkCustomOptionDialogHook::evaluatorIdOf(ids[i]));
    if (options.json) {
      out += core::format(L"%s\n  {\"id\": %u, \"name\": %s, \"evaluator\": %s}", i == 0 ? L"" : L",", ids[i],
                          jsonString(names[i]), jsonString(evaluator));
    } else {
      out += core::format(L"%u\t%s\t%s\n", ids[i], evaluator, names[i]);
    }
  }
  if (options.json) out += names.empty() ? L"]\n" : L"\n]\n";
  writeOut(out);
  return 0;
}

}  // namespace

void addFieldCommand(CLI::App& app, Action& action) {
  auto* field = app.add_subcommand("field", "Put a field into a drawing, or list the field types of the plug-in");
  field->require_subcommand(1);

  auto add = std::make_shared<AddOptions>();
  auto* cmd = field->add_subcommand(
      "add",
      "Put a field into a text, multiline text, attribute or table cell (its whole text becomes the field), "
      "evaluate it as update does, save the drawing (in place unless -o is given) and print the place, its kind, the "
      "field's handle, evaluator, status and value");
  cmd->add_option("DRAWING", add->drawing, "The drawing (DXF)")->required();
  cmd->add_option("--into", add->into,
                  "HANDLE of a text, multiline text or attribute, or HANDLE:ROW,COLUMN of a table cell (counted "
                  "from 0, as corvane table lists them)")
      ->required();
  cmd->add_option("--code", add->code, "The field code, one field: %<\\EVALUATOR ...>%")->required();
  cmd->add_option("-o,--output", add->output, "Save to this file instead; the drawing stays as it was")
      ->check(outputFile());
  addForceFlag(*cmd, add->force);
  cmd->add_flag("--strict", add->strict,
                "Exit with status 3 when the field ended in an error (the drawing is saved all the same)");
  cmd->footer(
      "Exit status: 0 done, 1 refused or failed (the drawing is left as it was), 2 a usage mistake, 3 the field "
      "ended in an error under --strict");
  cmd->callback([&action, add] { action = [add] { return addField(*add); }; });

  auto list = std::make_shared<ListOptions>();
  auto* types = field->add_subcommand("list-types", "The plug-in's field types: field id, evaluator id and name");
  types->add_flag("--json", list->json, "Print a JSON array of objects instead");
  types->callback([&action, list] { action = [list] { return listTypes(*list); }; });
}

}  // namespace corvane::cli
