#include <cstdio>

#include "commands.h"

namespace corvane::cli {

void addDemoCommand(CLI::App& app, Action& action) {
  auto* demo = app.add_subcommand("demo", "Run the main job on the embedded example and print every field");
  demo->callback([&action] {
    action = [] {
      std::printf("corvane demo\n");
      return 0;
    };
  });
}

}  // namespace corvane::cli
