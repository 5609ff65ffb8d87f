// What the subcommands print: UTF-8 on standard output, texts kept on one line, JSON strings,
// and the check of a number argument.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>

namespace corvane::cli {

void writeOut(std::wstring_view text);
// UTF-8 on standard error: the command line of a batch whose report goes to standard output.
void writeErr(std::wstring_view text);
void writeLine(std::wstring_view line);

// Control characters as \uXXXX, so that a text with line breaks or markers stays on one line.
std::wstring oneLine(std::wstring_view text);
// The text as a quoted JSON string.
std::wstring jsonString(std::wstring_view text);

// The whole argument must be one finite number in C notation.
CLI::Validator finiteNumber();

}  // namespace corvane::cli
