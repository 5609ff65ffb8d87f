// insert-fields: the rules of the insert fields command, read from a file or from the saved
// settings of its dialog, stamped into the block attributes of many drawings, each saved in
// place with a backup.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "drawingsave.h"
#include "dxf/model/drawingfile.h"
#include "excelbatch.h"
#include "headless/db/database.h"
#include "headless/hostapplication.h"
#include "headless/settings/registryfile.h"
#include "linkedfiles.h"
#include "output.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/support/corvanesettings.h"
#include "plugin/support/cregistry.h"
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
  bool dynamicVariants = false;
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
DrawingOutcome insertInto(const std::string& file, const FieldRules& rules, const InsertFieldsOptions& options) {
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
  outcome.count = InsertFieldsIntoDrawing(
      host, drawing.database(), rules,
      options.dynamicVariants ? InsertFieldsMatch::kDynamicBlockName : InsertFieldsMatch::kDefinitionName);
  app.onUnload();
  const dxf::Status saved = drawing.save(saveOptions("insert-fields", options.force));
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

// How far the batch is, on stderr: on a terminal one bar redrawn in place, otherwise a line a
// drawing. The time left is the mean time of the drawings done so far times the drawings to go.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  Progress(std::size_t total, bool terminal) : total_(total), terminal_(terminal), start_(Clock::now()) {
    if (terminal_ && total_ > 0) draw();
  }

  // Called by the worker that finished drawing `file`; workers may call it at once.
  void finished(const std::string& file, const DrawingOutcome& outcome) {
    const std::lock_guard lock(mutex_);
    ++done_;
    if (terminal_) {
      draw();
      return;
    }
    const std::string what =
        outcome.failure.empty()
            ? core::toUtf8(core::format(L"%d attributes given a field, %d evaluated, %d errors", outcome.count.stamped,
                                        outcome.count.evaluated, outcome.count.errors))
            : "not saved, told below";
    std::fprintf(stderr, "corvane insert-fields: [%zu/%zu] %s: %s; %s\n", done_, total_, file.c_str(), what.c_str(),
                 left().c_str());
  }

  // Takes the bar off the terminal, so that what follows starts on a clean line.
  void clear() {
    const std::lock_guard lock(mutex_);
    if (!terminal_ || width_ == 0) return;
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(width_), "");
    std::fflush(stderr);
    width_ = 0;
  }

 private:
  std::string left() const {
    if (done_ == total_) return "done";
    if (done_ == 0) return "time left unknown";
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    const double each = elapsed / static_cast<double>(done_);
    const long seconds = static_cast<long>(each * static_cast<double>(total_ - done_) + 0.5);
    char text[64];
    if (seconds >= 3600) {
      std::snprintf(text, sizeof text, "about %ld:%02ld:%02ld left", seconds / 3600, seconds / 60 % 60, seconds % 60);
    } else {
      std::snprintf(text, sizeof text, "about %ld:%02ld left", seconds / 60, seconds % 60);
    }
    return text;
  }

  void draw() {
    constexpr std::size_t kBar = 30;
    const std::size_t filled = total_ ? done_ * kBar / total_ : kBar;
    const std::string line = "[" + std::string(filled, '#') + std::string(kBar - filled, '.') + "] " +
                             std::to_string(done_) + "/" + std::to_string(total_) + " drawings, " + left();
    // The padding wipes what a longer line before left behind.
    const int pad = width_ > line.size() ? static_cast<int>(width_ - line.size()) : 0;
    std::fprintf(stderr, "\r%s%*s", line.c_str(), pad, "");
    std::fflush(stderr);
    width_ = std::max(width_, line.size());
  }

  std::mutex mutex_;
  const std::size_t total_;
  const bool terminal_;
  const Clock::time_point start_;
  std::size_t done_ = 0;
  std::size_t width_ = 0;
};

// What to do: the rules and drawings of the command line, or, without --rules, those the
// dialog of the insert fields command keeps in the settings.
struct Batch {
  FieldRules rules;
  std::vector<std::string> drawings;
};

std::optional<Batch> batchOf(const InsertFieldsOptions& options, int& status) {
  Batch batch;
  std::string error;
  if (!options.rules.empty()) {
    auto rules = readRules(options.rules, error);
    if (!rules) {
      std::fprintf(stderr, "corvane insert-fields: %s\n", error.c_str());
      status = 1;
      return std::nullopt;
    }
    batch.rules = std::move(*rules);
  }
  if (options.rules.empty() || options.drawings.empty()) {
    // The settings are read as the dialog reads them when it opens, and nothing is written.
    headless::RegistryFile file(headless::RegistryFile::defaultPath(), writeErr);
    CRegistry registry(&file);
    registry.setRoot(host::RegistryHive::kCurrentUser, settings::kMaker);
    BatchTerminal terminal;
    CInsertFieldsToDrawingsDialog dialog(registry, terminal.ui());
    dialog.OnInitDialog({});
    dialog.OnOK();
    if (options.rules.empty()) {
      if (dialog.run().codes.empty()) {
        std::fprintf(stderr,
                     "corvane insert-fields: no --rules given and the settings (%s) hold no rules; "
                     "give a rules file or add rules with Corvane_Insert_Fields_To_Drawings\n",
                     file.path().string().c_str());
        status = 2;
        return std::nullopt;
      }
      batch.rules = dialog.run().codes;
    }
    if (options.drawings.empty()) {
      for (const std::wstring& drawing : dialog.run().drawings) batch.drawings.push_back(core::toUtf8(drawing));
      if (batch.drawings.empty()) {
        std::fprintf(stderr,
                     "corvane insert-fields: no DRAWING given and the settings (%s) list no drawings\n",
                     file.path().string().c_str());
        status = 2;
        return std::nullopt;
      }
    }
  }
  if (!options.drawings.empty()) batch.drawings = options.drawings;
  return batch;
}

int insertFields(const InsertFieldsOptions& options) {
  int status = 0;
  const std::optional<Batch> batch = batchOf(options, status);
  if (!batch) return status;
  const std::vector<std::string>& drawings = batch->drawings;
  std::vector<DrawingOutcome> outcomes(drawings.size());
  Progress progress(drawings.size(), ::isatty(STDERR_FILENO) == 1);
  std::atomic<std::size_t> next{0};
  // Each worker takes the next drawing and writes only that drawing's outcome.
  const auto work = [&] {
    for (std::size_t i = next++; i < drawings.size(); i = next++) {
      outcomes[i] = insertInto(drawings[i], batch->rules, options);
      progress.finished(drawings[i], outcomes[i]);
    }
  };
  const std::size_t workers = std::min<std::size_t>(static_cast<std::size_t>(options.jobs), drawings.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 1; i < workers; ++i) threads.emplace_back(work);
  work();
  for (auto& thread : threads) thread.join();
  progress.clear();

  int failed = 0;
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    if (!outcomes[i].messages.empty()) writeErr(core::fromUtf8(drawings[i]) + L":" + outcomes[i].messages + L"\n");
    if (outcomes[i].failure.empty()) continue;
    ++failed;
    std::fprintf(stderr, "corvane insert-fields: %s: %s; the drawing is left as it was\n", drawings[i].c_str(),
                 outcomes[i].failure.c_str());
  }
  writeOut(report(drawings, outcomes, options.json));
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
                  "one rule a line; without it, the rules saved by the insert fields command");
  cmd->add_option("DRAWING", options->drawings,
                  "The drawings (DXF); without them, the drawings saved by the insert fields command");
  cmd->add_option("--jobs", options->jobs, "Drawings worked on at once")->check(CLI::PositiveNumber);
  cmd->add_flag("--dynamic-variants", options->dynamicVariants,
                "A rule naming a dynamic block also gives its fields to the block's anonymous variants "
                "(a rule naming the variant itself comes first)");
  addForceFlag(*cmd, options->force);
  cmd->add_flag("--json", options->json, "Print the report as one JSON object");
  cmd->footer(
      "Progress goes to stderr: a bar on a terminal, otherwise a line a drawing.\n"
      "Exit status: 0 done, 1 a drawing could not be read or saved (it is left as it was), 2 a usage mistake "
      "or nothing to do");
  cmd->callback([&action, options] { action = [options] { return insertFields(*options); }; });
}

}  // namespace corvane::cli
