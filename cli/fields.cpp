#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/fieldlist.h"
#include "headless/hostapplication.h"
#include "output.h"

namespace corvane::cli {

namespace {

struct FieldsOptions {
  std::string drawing;
  bool json = false;
};

int listFields(const FieldsOptions& options) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(options.drawing, host);
  if (!loaded.drawing) {
    std::fprintf(stderr, "corvane fields: %s\n", loaded.error.c_str());
    return 1;
  }
  headless::Database& db = loaded.drawing->database();
  host.setWorkingDatabase(&db);

  std::wstring out = options.json ? L"[" : L"";
  bool first = true;
  // The field list's order, then the field objects the list misses (a list another program
  // left short, or fields of table cells it never named) in the order of the file.
  std::vector<host::AcDbObjectId> ids;
  if (const auto* list = db.get<headless::FieldList>(db.fieldListId())) ids = list->ids();
  const std::unordered_set<std::uint64_t> listed = [&] {
    std::unordered_set<std::uint64_t> set;
    for (const auto id : ids) set.insert(id.asOldId());
    return set;
  }();
  for (const auto id : db.objectIds()) {
    if (!listed.contains(id.asOldId()) && headless::Field::of(db.lookup(id))) ids.push_back(id);
  }
  for (const auto id : ids) {
    const auto* field = headless::Field::of(db.lookup(id));
    if (!field || field->isErased()) continue;
    const std::wstring handle = field->handle().text();
    const std::wstring owner = host.handle(field->ownerId()).text();
    const std::wstring code =
        field->getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers);
    const int status = field->evaluationStatus();
    if (options.json) {
      out += first ? L"\n" : L",\n";
      out += core::format(L"  {\"handle\": %s, \"owner\": %s, \"evaluator\": %s, \"code\": %s, \"status\": %d, "
                          L"\"value\": %s}",
                          jsonString(handle), jsonString(owner), jsonString(field->evaluatorId()), jsonString(code),
                          status, jsonString(field->getDisplayText()));
    } else {
      out += core::format(L"%s\t%s\t%s\t%d\t%s\t%s\n", handle, owner, field->evaluatorId(), status, oneLine(code),
                          oneLine(field->getDisplayText()));
    }
    first = false;
  }
  if (options.json) out += first ? L"]\n" : L"\n]\n";
  writeOut(out);
  return 0;
}

}  // namespace

void addFieldsCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<FieldsOptions>();
  auto* cmd = app.add_subcommand(
      "fields", "List the fields of a drawing: handle, owner, evaluator, status, code and value, one per line");
  cmd->add_option("DRAWING", options->drawing, "The drawing (DXF)")->required();
  cmd->add_flag("--json", options->json, "Print a JSON array of objects instead");
  cmd->callback([&action, options] { action = [options] { return listFields(*options); }; });
}

}  // namespace corvane::cli
