#include <charconv>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "output.h"
#include "xlsx/book.h"

namespace corvane::cli {

namespace {

struct CellsOptions {
  std::string workbook;
  std::string where;  // SHEET or SHEET!RANGE
  bool json = false;
};

// The shortest text that reads back as the same number.
std::wstring numberText(double value) {
  char buffer[32];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
  return core::fromUtf8(std::string_view(buffer, static_cast<std::size_t>(end - buffer)));
}

struct Row {
  std::wstring value, formula, text, note;
  bool quoted = false;  // the value is text (JSON string), not a number or TRUE/FALSE
  bool error = false;
};

int listCells(const CellsOptions& options) {
  std::string error;
  auto book = xlsx::Book::open(options.workbook, error);
  if (!book) {
    std::fprintf(stderr, "corvane cells: %s\n", error.c_str());
    return 1;
  }
  std::string sheetName = options.where;
  std::optional<xlsx::CellRange> only;
  if (const std::size_t bang = options.where.rfind('!'); bang != std::string::npos) {
    sheetName = options.where.substr(0, bang);
    only = xlsx::parseCellRange(options.where.substr(bang + 1));
    if (!only) {
      std::fprintf(stderr, "corvane cells: \"%s\" is not a cell or range such as B2 or A1:C10\n",
                   options.where.substr(bang + 1).c_str());
      return 2;
    }
  }
  std::vector<std::size_t> sheets;
  if (sheetName.empty()) {
    for (std::size_t i = 0; i < book->sheetCount(); ++i) sheets.push_back(i);
  } else if (const auto index = book->sheetIndex(sheetName)) {
    sheets.push_back(*index);
  } else {
    std::string names;
    for (std::size_t i = 0; i < book->sheetCount(); ++i) names += (i ? ", " : "") + book->sheetName(i);
    std::fprintf(stderr, "corvane cells: %s has no sheet \"%s\" (its sheets: %s)\n", options.workbook.c_str(),
                 sheetName.c_str(), names.c_str());
    return 1;
  }

  std::wstring out = options.json ? L"[" : L"";
  bool first = true;
  for (const std::size_t index : sheets) {
    xlsx::Worksheet* cells = book->sheet(index, error);
    xlsx::Comments* notes = cells ? book->notes(index, error) : nullptr;
    if (!cells || !notes) {
      std::fprintf(stderr, "corvane cells: %s: %s\n", options.workbook.c_str(), error.c_str());
      return 1;
    }
    const auto inside = [&](xlsx::CellRef at) {
      return !only || (at.row >= only->first.row && at.row <= only->last.row && at.column >= only->first.column &&
                       at.column <= only->last.column);
    };
    // Row-major order: the cells, and the notes of cells that hold nothing.
    std::map<std::pair<std::uint32_t, std::uint32_t>, Row> rows;
    cells->visit([&](const xlsx::CellView& cell) {
      if (!inside({cell.row, cell.column})) return;
      Row row;
      switch (cell.kind) {
        case xlsx::CellKind::kNumber: row.value = numberText(cells->number(cell.position)); break;
        case xlsx::CellKind::kBoolean: row.value = cells->number(cell.position) != 0 ? L"TRUE" : L"FALSE"; break;
        case xlsx::CellKind::kBlank: break;
        case xlsx::CellKind::kError:
          row.error = true;
          row.value = core::fromUtf8(cells->text(cell.position, book->strings()));
          break;
        default:
          row.quoted = true;
          row.value = core::fromUtf8(cells->text(cell.position, book->strings()));
      }
      if (cell.hasFormula) row.formula = L"=" + core::fromUtf8(cells->formula(cell.position));
      row.text = core::fromUtf8(book->displayText(*cells, cell));
      rows[{cell.row, cell.column}] = std::move(row);
    });
    for (const xlsx::Note& note : notes->notes()) {
      if (inside(note.ref)) rows[{note.ref.row, note.ref.column}].note = core::fromUtf8(note.text);
    }
    const std::wstring sheet = core::fromUtf8(book->sheetName(index));
    for (const auto& [at, row] : rows) {
      const std::wstring address = core::fromUtf8(xlsx::cellRefText({at.first, at.second}));
      if (options.json) {
        std::wstring value = L"null";
        if (row.error) value = L"{\"error\": " + jsonString(row.value) + L"}";
        else if (row.quoted) value = jsonString(row.value);
        else if (row.value == L"TRUE" || row.value == L"FALSE") value = row.value == L"TRUE" ? L"true" : L"false";
        else if (!row.value.empty()) value = row.value;
        out += first ? L"\n" : L",\n";
        out += core::format(L"  {\"sheet\": %s, \"address\": %s, \"value\": %s, \"formula\": %s, \"text\": %s, "
                            L"\"note\": %s}",
                            jsonString(sheet), jsonString(address), value, jsonString(row.formula),
                            jsonString(row.text), jsonString(row.note));
      } else {
        out += core::format(L"%s!%s\t%s\t%s\t%s\t%s\n", sheet, address, oneLine(row.value), oneLine(row.formula),
                            oneLine(row.text), oneLine(row.note));
      }
      first = false;
    }
  }
  if (options.json) out += first ? L"]\n" : L"\n]\n";
  writeOut(out);
  return 0;
}

}  // namespace

void addCellsCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<CellsOptions>();
  auto* cmd = app.add_subcommand("cells",
                                 "List the cells of a workbook (.xlsx): address, value, formula, the text Excel "
                                 "shows and the note, one per line");
  cmd->add_option("WORKBOOK", options->workbook, "The workbook (.xlsx)")->required();
  cmd->add_option("SHEET", options->where, "One sheet, or SHEET!RANGE for some of its cells (A1 or A1:C10)");
  cmd->add_flag("--json", options->json, "Print a JSON array of objects instead");
  cmd->callback([&action, options] { action = [options] { return listCells(*options); }; });
}

}  // namespace corvane::cli
