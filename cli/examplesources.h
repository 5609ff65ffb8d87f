// The files beside the example drawing that its linked fields read: the supplier's price list (a
// workbook), the site notes (a text file) and the site plan (another drawing).
#pragma once

#include <filesystem>
#include <string>

namespace corvane::cli {

struct ExampleSources {
  static constexpr const char* kWorkbook = "prices.xlsx";
  static constexpr const char* kNotes = "site-notes.txt";
  static constexpr const char* kPlan = "site-plan.dxf";
  std::wstring planTitleHandle;  // the site plan's title text, which the example shows
};

// Writes the three files into `folder`, each whole or not at all; false, with the reason on stderr,
// when one cannot be written.
bool writeExampleSources(const std::filesystem::path& folder, ExampleSources& made);

}  // namespace corvane::cli
