#include "headless/format/rtos.h"

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "core/crt.h"
#include "core/utf8.h"
#include "output.h"

namespace corvane::cli {

namespace {

struct RtosOptions {
  std::string value;
  int mode = 2;
  int precision = 4;
  int dimzin = 0;
  int unitmode = 0;
};

}  // namespace

void addRtosCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<RtosOptions>();
  auto* cmd =
      app.add_subcommand("rtos", "Print a real number as the host's real-to-text conversion writes it");
  cmd->add_option("--dimzin", options->dimzin,
                  "Zero suppression: 0-3 feet and inches, +4 leading, +8 trailing")
      ->check(CLI::Range(0, 15));
  cmd->add_option("--unitmode", options->unitmode, "1: the input form without blanks")
      ->check(CLI::Range(0, 1));
  cmd->add_option("VALUE", options->value, "The number")->required()->check(finiteNumber());
  cmd->add_option("MODE", options->mode,
                  "1 Scientific, 2 Decimal, 3 Engineering, 4 Architectural, 5 Fractional")
      ->required()
      ->check(CLI::Range(1, 5));
  cmd->add_option("PRECISION", options->precision, "Decimal places, or the smallest fraction 1/2^PRECISION")
      ->required()
      ->check(CLI::Range(0, 8));
  cmd->callback([&action, options] {
    action = [options] {
      const double value = core::wcstod(core::fromUtf8(options->value));
      const auto text =
          headless::rtos(value, {options->mode, options->precision, options->dimzin, options->unitmode});
      if (!text) {
        std::fprintf(stderr, "corvane rtos: %s cannot be written in these units\n", options->value.c_str());
        return 2;
      }
      writeLine(*text);
      return 0;
    };
  });
}

}  // namespace corvane::cli
