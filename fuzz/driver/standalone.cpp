// Runs a fuzz target without libFuzzer: every seed file as it is, then seeded random inputs
// and mutations of the seeds. Fails when an input takes longer than the bound (thread CPU
// time, so a busy machine does not make it flaky). Crashes and sanitizer reports fail it by
// themselves.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

double cpuMilliseconds() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) / 1e6;
}

struct Options {
  long runs = 1000;
  size_t maxLen = 4096;
  double maxMs = 10.0;
  unsigned seed = 1;
  std::vector<std::string> seedPaths;
};

bool runOne(const std::vector<uint8_t>& input, const Options& options, const char* origin) {
  const double start = cpuMilliseconds();
  LLVMFuzzerTestOneInput(input.data(), input.size());
  const double spent = cpuMilliseconds() - start;
  if (spent > options.maxMs) {
    std::fprintf(stderr, "input from %s (%zu bytes) took %.2f ms, over the bound of %.2f ms\n", origin,
                 input.size(), spent, options.maxMs);
    const std::string path = "slow-input.bin";
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(input.data()),
                                                 static_cast<std::streamsize>(input.size()));
    std::fprintf(stderr, "written to %s\n", path.c_str());
    return false;
  }
  return true;
}

std::vector<std::vector<uint8_t>> loadSeeds(const Options& options) {
  std::vector<std::vector<uint8_t>> seeds;
  for (const auto& path : options.seedPaths) {
    std::vector<std::filesystem::path> files;
    if (std::filesystem::is_directory(path)) {
      for (const auto& entry : std::filesystem::directory_iterator(path))
        if (entry.is_regular_file()) files.push_back(entry.path());
    } else if (std::filesystem::exists(path)) {
      files.emplace_back(path);
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
      std::ifstream in(file, std::ios::binary);
      seeds.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
  }
  return seeds;
}

std::vector<uint8_t> mutate(std::vector<uint8_t> input, std::mt19937& rng, const Options& options,
                            const std::vector<std::vector<uint8_t>>& seeds) {
  std::uniform_int_distribution<int> op(0, 5);
  std::uniform_int_distribution<int> byte(0, 255);
  const int steps = 1 + static_cast<int>(rng() % 8);
  for (int i = 0; i < steps; ++i) {
    const size_t at = input.empty() ? 0 : rng() % input.size();
    switch (op(rng)) {
      case 0:  // flip a byte
        if (!input.empty()) input[at] = static_cast<uint8_t>(byte(rng));
        break;
      case 1:  // insert a byte
        input.insert(input.begin() + static_cast<std::ptrdiff_t>(at), static_cast<uint8_t>(byte(rng)));
        break;
      case 2:  // erase a run
        if (!input.empty()) {
          const size_t n = std::min<size_t>(input.size() - at, 1 + rng() % 16);
          input.erase(input.begin() + static_cast<std::ptrdiff_t>(at),
                      input.begin() + static_cast<std::ptrdiff_t>(at + n));
        }
        break;
      case 3:  // duplicate a run
        if (!input.empty()) {
          const size_t n = std::min<size_t>(input.size() - at, 1 + rng() % 64);
          std::vector<uint8_t> run(input.begin() + static_cast<std::ptrdiff_t>(at),
                                   input.begin() + static_cast<std::ptrdiff_t>(at + n));
          input.insert(input.begin() + static_cast<std::ptrdiff_t>(at), run.begin(), run.end());
        }
        break;
      case 4:  // splice in a piece of another seed
        if (!seeds.empty()) {
          const auto& other = seeds[rng() % seeds.size()];
          if (!other.empty()) {
            const size_t from = rng() % other.size();
            const size_t n = std::min<size_t>(other.size() - from, 1 + rng() % 64);
            input.insert(input.begin() + static_cast<std::ptrdiff_t>(at),
                         other.begin() + static_cast<std::ptrdiff_t>(from),
                         other.begin() + static_cast<std::ptrdiff_t>(from + n));
          }
        }
        break;
      default:  // truncate
        input.resize(at);
        break;
    }
  }
  if (input.size() > options.maxLen) input.resize(options.maxLen);
  return input;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto next = [&]() -> const char* {
      if (i + 1 >= argc) {
        std::fprintf(stderr, "%s needs a value\n", arg.c_str());
        std::exit(2);
      }
      return argv[++i];
    };
    if (arg == "--runs") options.runs = std::strtol(next(), nullptr, 10);
    else if (arg == "--max-len") options.maxLen = std::strtoul(next(), nullptr, 10);
    else if (arg == "--max-ms") options.maxMs = std::strtod(next(), nullptr);
    else if (arg == "--seed") options.seed = static_cast<unsigned>(std::strtoul(next(), nullptr, 10));
    else if (arg == "--seeds") options.seedPaths.emplace_back(next());
    else options.seedPaths.push_back(arg);
  }
  const auto seeds = loadSeeds(options);
  bool ok = true;
  for (const auto& s : seeds) ok = runOne(s, options, "a seed file") && ok;

  std::mt19937 rng(options.seed);
  for (long run = 0; run < options.runs && ok; ++run) {
    std::vector<uint8_t> input;
    if (!seeds.empty() && run % 4 != 0) {
      input = mutate(seeds[rng() % seeds.size()], rng, options, seeds);
    } else {
      input.resize(rng() % std::min<size_t>(options.maxLen + 1, 256));
      for (auto& b : input) b = static_cast<uint8_t>(rng() % 96 + 32);  // mostly printable
      input = mutate(std::move(input), rng, options, seeds);
    }
    ok = runOne(input, options, "the random stream") && ok;
  }
  std::printf("%zu seeds and %ld generated inputs: %s\n", seeds.size(), options.runs, ok ? "ok" : "FAILED");
  return ok ? 0 : 1;
}
