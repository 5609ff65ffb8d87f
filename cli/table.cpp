#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "dxf/model/tables/tablerecord.h"
#include "headless/db/database.h"
#include "headless/db/table.h"
#include "headless/hostapplication.h"
#include "output.h"

namespace corvane::cli {

namespace {

struct TableOptions {
  std::string drawing;
  std::string handle;
  bool json = false;
};

int fail(const std::string& message) {
  std::fprintf(stderr, "corvane table: %s\n", message.c_str());
  return 1;
}

int printTable(const TableOptions& options) {
  const auto handle = host::AcDbHandle::fromText(core::fromUtf8(options.handle));
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(options.drawing, host);
  if (!loaded.drawing) return fail(loaded.error);
  headless::Database& db = loaded.drawing->database();
  host.setWorkingDatabase(&db);

  // The table as the database holds it, or read from its record for a drawing that keeps
  // tables as records only.
  host::AcDbObjectId id;
  if (db.getAcDbObjectId(id, *handle) != host::Acad::eOk) return fail("the drawing has no object " + options.handle);
  const headless::Table* table = db.get<headless::Table>(id);
  headless::Table read;
  if (!table) {
    const auto record = loaded.drawing->document().findHandle(handle->value());
    if (!record || loaded.drawing->document().recordType(*record) != "ACAD_TABLE") {
      return fail("object " + options.handle + " is not a table");
    }
    dxf::TableLinks links;
    const dxf::Status status = dxf::readTable(loaded.drawing->document(), *record, db, read, links);
    if (!status) return fail(status.message());
    dxf::resolveTableLinks(db, read, links);
    table = &read;
  }

  std::wstring out;
  if (options.json) {
    out = core::format(L"{\"handle\": %s, \"rows\": %d, \"columns\": %d, \"cells\": [", jsonString(handle->text()),
                       table->numRows(), table->numColumns());
  }
  bool first = true;
  for (int r = 0; r < table->numRows(); ++r) {
    for (int c = 0; c < table->numColumns(); ++c) {
      host::AcValue::DataType type = host::AcValue::kUnknown;
      host::AcValueOptions::UnitType unit = host::AcValueOptions::kUnitless;
      table->getDataType(r, c, type, unit);
      std::wstring text;
      table->textString(r, c, host::AcValueOptions::kIgnoreMtextFormat, text);
      const int content = table->contentType(r, c);
      if (options.json) {
        out += first ? L"\n" : L",\n";
        out += core::format(L"  {\"row\": %d, \"column\": %d, \"content\": %d, \"dataType\": %d, \"text\": %s}", r, c,
                            content, static_cast<int>(type), jsonString(text));
      } else {
        out += core::format(L"%d\t%d\t%d\t%d\t%s\n", r, c, content, static_cast<int>(type), oneLine(text));
      }
      first = false;
    }
  }
  if (options.json) out += first ? L"]}\n" : L"\n]}\n";
  writeOut(out);
  return 0;
}

}  // namespace

void addTableCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<TableOptions>();
  auto* cmd = app.add_subcommand(
      "table", "List the cells of a table: row, column, content type, data type and plain text, one cell per line");
  cmd->add_option("DRAWING", options->drawing, "The drawing (DXF)")->required();
  cmd->add_option("HANDLE", options->handle, "The table's handle (hexadecimal)")
      ->required()
      ->check(CLI::Validator(
          [](std::string& text) -> std::string {
            return host::AcDbHandle::fromText(core::fromUtf8(text)) ? std::string() : "not a handle: " + text;
          },
          "HANDLE"));
  cmd->add_flag("--json", options->json, "Print a JSON object with the grid and every cell instead");
  cmd->callback([&action, options] { action = [options] { return printTable(*options); }; });
}

}  // namespace corvane::cli
