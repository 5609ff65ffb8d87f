// `corvane insert-fields` over a batch of drawings, each of about 10 MB: 1,000 references of a
// block whose WIDTH attribute a rule names, among lines, polylines, circles, texts and
// multiline texts. The program itself is run, as a user runs it, with --jobs 1 and --jobs 2;
// the drawings are put back between iterations, outside the timing.
//
// The arguments are the number of drawings and the jobs; --benchmark_filter=InsertFields/10/
// runs the small batch only.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "generateddrawing.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kReferences = 1000;
constexpr std::size_t kDrawingBytes = 10u << 20;

void writeFile(const fs::path& file, const std::string& bytes) {
  std::FILE* out = std::fopen(file.c_str(), "wb");
  const bool written = out && std::fwrite(bytes.data(), 1, bytes.size(), out) == bytes.size();
  if (out) std::fclose(out);
  if (!written) throw std::runtime_error("cannot write " + file.string());
}

// The generator's drawing holds one block reference in six entities; the rest of the 10 MB are
// lines and texts added at the end of the entities, with handles above the generator's.
std::string batchDrawing() {
  std::string drawing = corvane::bench::DrawingGenerator().drawing(kReferences * 6);
  const std::size_t entities = drawing.find("ENTITIES\r\n");
  const std::size_t end = drawing.find("  0\r\nENDSEC\r\n", entities);
  if (entities == std::string::npos || end == std::string::npos) throw std::runtime_error("no entities");
  std::string padding;
  std::size_t handle = 0x100000;
  char text[512];
  for (std::size_t i = 0; drawing.size() + padding.size() < kDrawingBytes; ++i, ++handle) {
    const double x = static_cast<double>(i % 2000) * 3.5 + 0.25, y = static_cast<double>(i / 2000) * 2.75 + 0.5;
    const int n =
        i % 2 ? std::snprintf(text, sizeof text,
                              "  0\r\nLINE\r\n  5\r\n%zX\r\n330\r\n1F\r\n100\r\nAcDbEntity\r\n  8\r\nLayer-7\r\n"
                              "100\r\nAcDbLine\r\n 10\r\n%.10g\r\n 20\r\n%.10g\r\n 30\r\n0\r\n 11\r\n%.10g\r\n"
                              " 21\r\n%.10g\r\n 31\r\n0\r\n",
                              handle, x, y, x + 1.5, y + 0.75)
              : std::snprintf(text, sizeof text,
                              "  0\r\nTEXT\r\n  5\r\n%zX\r\n330\r\n1F\r\n100\r\nAcDbEntity\r\n  8\r\nLayer-7\r\n"
                              "100\r\nAcDbText\r\n 10\r\n%.10g\r\n 20\r\n%.10g\r\n 30\r\n0\r\n 40\r\n0.5\r\n"
                              "  1\r\nNote %zu\r\n100\r\nAcDbText\r\n",
                              handle, x, y, i);
    padding.append(text, static_cast<std::size_t>(n));
  }
  drawing.insert(end, padding);
  // The next handle the drawing gives lies above the padding's.
  const std::string seed = "$HANDSEED\r\n  5\r\n";
  const std::size_t at = drawing.find(seed) + seed.size();
  const std::size_t line = drawing.find("\r\n", at);
  char next[32];
  std::snprintf(next, sizeof next, "%zX", handle + 1);
  drawing.replace(at, line - at, next);
  return drawing;
}

struct Batch {
  fs::path folder;
  std::string drawing;
  Batch() : folder(fs::temp_directory_path() / ("corvane-bench-insertfields-" + std::to_string(::getpid()))) {
    fs::create_directories(folder);
    drawing = batchDrawing();
    writeFile(folder / "rules.tsv", "DOOR\tWIDTH\t%<\\AcVar Filename>%\n");
  }
  ~Batch() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  }
  // The drawings as they were before any run, and their names.
  std::vector<std::string> reset(std::size_t count) const {
    std::vector<std::string> files;
    for (std::size_t i = 0; i < count; ++i) {
      const fs::path file = folder / ("plan" + std::to_string(i) + ".dxf");
      writeFile(file, drawing);
      std::error_code ignored;
      fs::remove(fs::path(file).replace_extension(".bak"), ignored);
      files.push_back(file.string());
    }
    return files;
  }
};

const Batch& batch() {
  static const Batch made;
  return made;
}

// Runs the program with the arguments, its output thrown away; its exit status.
int run(std::vector<std::string> args) {
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) return -1;
  int status = 0;
  if (::waitpid(pid, &status, 0) != pid) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void BM_InsertFields(benchmark::State& state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const std::string jobs = std::to_string(state.range(1));
  const Batch& b = batch();
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<std::string> args = {CORVANE_CLI, "insert-fields", "--jobs",
                                     jobs,        "--rules",       (b.folder / "rules.tsv").string()};
    for (std::string& file : b.reset(count)) args.push_back(std::move(file));
    ::sync();
    state.ResumeTiming();
    if (run(args) != 0) {
      state.SkipWithError("insert-fields failed");
      return;
    }
  }
  state.counters["drawings"] = static_cast<double>(count);
  state.counters["MB"] = static_cast<double>(b.drawing.size()) / (1 << 20);
  state.counters["drawings/s"] =
      benchmark::Counter(static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_InsertFields)
    ->ArgNames({"drawings", "jobs"})
    ->ArgsProduct({{10, 100}, {1, 2}})
    ->Unit(benchmark::kSecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(2);

}  // namespace

BENCHMARK_MAIN();
