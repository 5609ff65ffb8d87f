#include "excelbatch.h"

#include <cstdio>

#include "core/utf8.h"
#include "output.h"
#include "xlsx/bookapplication.h"

namespace corvane::cli {

BatchWorkbook openBatchWorkbook(const std::string& command, xlsx::BookAutomation& excel, const std::string& path,
                                const std::string& sheet) {
  const auto said = [&command](const std::wstring& why) {
    std::fprintf(stderr, "corvane %s: %s\n", command.c_str(), core::toUtf8(why).c_str());
    return BatchWorkbook{};
  };
  auto opened = excel.start().openWorkbook(core::fromUtf8(path), 0, 0);
  if (!opened) return said(opened.error().text);
  BatchWorkbook result{*opened, nullptr};
  if (sheet.empty()) {
    result.sheet = result.book->activeSheet();
    if (!result.sheet) return said(L"the workbook has no worksheet");
    return result;
  }
  auto named = result.book->worksheet(core::fromUtf8(sheet));
  if (!named || !*named) return said(core::fromUtf8(path) + L" has no worksheet " + core::fromUtf8(sheet));
  result.sheet = *named;
  return result;
}

bool saveBatchWorkbook(const std::string& command, host::ExcelWorkbook& book) {
  if (auto saved = book.save(); !saved) {
    std::fprintf(stderr, "corvane %s: the workbook was left as it was: %s\n", command.c_str(),
                 core::toUtf8(saved.error().text).c_str());
    return false;
  }
  return true;
}

BatchTerminal::BatchTerminal() : ui_(noAnswers_, writeErr) {}

}  // namespace corvane::cli
