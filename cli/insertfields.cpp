// insert-fields: the rules of the insert fields command, read from a file, stamped into the
// block attributes of many drawings, each saved in place with a backup.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "drawingsave.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/hostapplication.h"
#include "linkedfiles.h"
#include "output.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/workflows/insertfieldsintodrawing.h"
#include "plugin/workflows/insertfieldstodrawingsdialog.h"

namespace corvane::cli {

namespace {

struct InsertFieldsOptions {
  std::string rules;
  std::vector<std::string> drawings;
  int jobs = 1;
  bool force = false;
  bool json = false;
};

// One line a rule: block name, attribute tag and field code, separated by tabs. Blank lines
// are left out. On a malformed line, `error` names the file and the line.
std::optional<FieldRules> readRules(const std::string& file, std::string& error) {
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    error = core::toUtf8(core::format(L"cannot read the rules file '%s'", core::fromUtf8(file)));
    return std::nullopt;
  }
  FieldRules rules;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.find_first_not_of(" \t") == std::string::npos) continue;
    const std::size_t first = line.find('\t');
    const std::size_t second = first == std::string::npos ? first : line.find('\t', first + 1);
    if (second == std::string::npos || first == 0 || second == first + 1 || second + 1 == line.size()) {
      error =
          file + ":" + std::to_string(number) + ": expected block name, attribute tag and field code separated by tabs";
      return std::nullopt;
    }
    rules[RuleKey(core::fromUtf8(line.substr(0, first)), core::fromUtf8(line.substr(first + 1, second - first - 1)))] =
        core::fromUtf8(line.substr(second + 1));
  }
  return rules;
}

struct DrawingOutcome {
  InsertFieldsCount count;
  std::wstring messages;  // what the walk printed
  std::string failure;    // empty when the drawing was saved
};

// One drawing with a host and an application of its own, so that drawings can go in parallel.
DrawingOutcome insertInto(const std::string& file, const FieldRules& rules, bool force) {
  DrawingOutcome outcome;
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(file, host);
  if (!loaded.drawing) {
    outcome.failure = loaded.error;
    return outcome;
  }
  dxf::DrawingFile& drawing = *loaded.drawing;
  host.setWorkingDatabase(&drawing.database());
  host.setOutput([&outcome](std::wstring_view text) { outcome.messages += text; });
  LinkedFiles linked(host);
  CCorvaneApp app(host, linked.system, &linked.excel);
  app.onInitialize();
  outcome.count = InsertFieldsIntoDrawing(host, drawing.database(), rules);
  app.onUnload();
  const dxf::Status saved = drawing.save(saveOptions("insert-fields", force));
  if (!saved) outcome.failure = saved.message();
  return outcome;
}

std::wstring report(const std::vector<std::string>& files, const std::vector<DrawingOutcome>& outcomes, bool json) {
  std::wstring text;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const DrawingOutcome& o = outcomes[i];
    const std::wstring file = core::fromUtf8(files[i]);
    if (json) {
      text += core::format(
          L"%s{\"drawing\": %s, \"saved\": %s, \"stamped\": %d, \"evaluated\": %d, \"errors\": %d, \"messages\": %s, "
          L"\"failure\": %s}",
          i ? L", " : L"", jsonString(file), o.failure.empty() ? L"true" : L"false", o.count.stamped, o.count.evaluated,
          o.count.errors, jsonString(o.messages), jsonString(core::fromUtf8(o.failure)));
    } else if (o.failure.empty()) {
      text += core::format(L"%s\t%d attributes given a field, %d evaluated, %d errors\n", file, o.count.stamped,
                           o.count.evaluated, o.count.errors);
    }
  }
  return json ? L"{\"drawings\": [" + text + L"]}\n" : text;
}

int insertFields(const InsertFieldsOptions& options) {
  std::string error;
  const auto rules = readRules(options.rules, error);
  if (!rules) {
    std::fprintf(stderr, "corvane insert-fields: %s\n", error.c_str());
    return 1;
  }
  std::vector<DrawingOutcome> outcomes(options.drawings.size());
  std::atomic<std::size_t> next{0};
  // Each worker takes the next drawing and writes only that drawing's outcome.
  const auto work = [&] {
    for (std::size_t i = next++; i < options.drawings.size(); i = next++) {
      outcomes[i] = insertInto(options.drawings[i], *rules, options.force);
    }
  };
  const std::size_t workers = std::min<std::size_t>(static_cast<std::size_t>(options.jobs), options.drawings.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 1; i < workers; ++i) threads.emplace_back(work);
  work();
  for (auto& thread : threads) thread.join();

  int failed = 0;
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    if (!outcomes[i].messages.empty())
      writeErr(core::fromUtf8(options.drawings[i]) + L":" + outcomes[i].messages + L"\n");
    if (outcomes[i].failure.empty()) continue;
    ++failed;
    std::fprintf(stderr, "corvane insert-fields: %s: %s; the drawing is left as it was\n", options.drawings[i].c_str(),
                 outcomes[i].failure.c_str());
  }
  writeOut(report(options.drawings, outcomes, options.json));
  return failed ? 1 : 0;
}

}  // namespace

void addInsertFieldsCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<InsertFieldsOptions>();
  auto* cmd = app.add_subcommand(
      "insert-fields",
      "Give the block attributes of drawings fields by rules: every attribute whose block and tag (matched exactly) "
      "a rule names gets the rule's field, evaluated once; each drawing is saved in place, the old file kept as .bak");
  cmd->add_option("--rules", options->rules,
                  "The rules file: block name, attribute tag and field code, tab-separated, "
                  "one rule a line")
      ->required();
  cmd->add_option("DRAWING", options->drawings, "The drawings (DXF)")->required();
  cmd->add_option("--jobs", options->jobs, "Drawings worked on at once")->check(CLI::PositiveNumber);
  addForceFlag(*cmd, options->force);
  cmd->add_flag("--json", options->json, "Print the report as one JSON object");
  cmd->footer("Exit status: 0 done, 1 a drawing could not be read or saved (it is left as it was), 2 a usage mistake");
  cmd->callback([&action, options] { action = [options] { return insertFields(*options); }; });
}

}  // namespace corvane::cli
