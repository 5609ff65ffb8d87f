#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "core/crt.h"
#include "core/utf8.h"
#include "headless/format/valueformatter.h"
#include "host/acvalue.h"
#include "output.h"

namespace corvane::cli {

namespace {

struct FormatOptions {
  std::string value;
  std::string format;
  headless::DrawingUnits units;
};

}  // namespace

void addFormatCommand(CLI::App& app, Action& action) {
  auto options = std::make_shared<FormatOptions>();
  auto* cmd =
      app.add_subcommand("format", "Print a real number as a field with the given format string shows it");
  cmd->add_option("--lunits", options->units.lunits, "The drawing's LUNITS (default 2)")
      ->check(CLI::Range(1, 5));
  cmd->add_option("--luprec", options->units.luprec, "The drawing's LUPREC (default 4)")
      ->check(CLI::Range(0, 8));
  cmd->add_option("--dimzin", options->units.dimzin, "The drawing's DIMZIN (default 0)")
      ->check(CLI::Range(0, 15));
  cmd->add_option("--unitmode", options->units.unitmode, "The drawing's UNITMODE (default 0)")
      ->check(CLI::Range(0, 1));
  cmd->add_option("VALUE", options->value, "The number")->required()->check(finiteNumber());
  cmd->add_option("FORMAT", options->format, "The field's format string, such as %lu2%pr3 (may be empty)")
      ->required();
  cmd->callback([&action, options] {
    action = [options] {
      const host::AcValue value(core::wcstod(core::fromUtf8(options->value)));
      writeLine(headless::formatValue(value, core::fromUtf8(options->format), options->units));
      return 0;
    };
  });
}

}  // namespace corvane::cli
