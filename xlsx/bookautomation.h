// The Excel of the headless host: an application over .xlsx files that the program starts
// when the user hands it workbooks (the "running" Excel that commands attach to), and the
// hidden instances the program makes for itself.
#pragma once

#include <memory>
#include <vector>

#include "host/excel.h"

namespace corvane::xlsx {

class BookApplication;

class BookAutomation : public host::ExcelAutomation {
 public:
  BookAutomation();
  ~BookAutomation() override;

  // The Excel the user runs, started on first call; commands attach to it from then on.
  BookApplication& start();
  bool running() const noexcept { return running_ != nullptr; }

  host::ExcelResult<std::shared_ptr<host::ExcelApplication>> activeObject() override;
  host::ExcelResult<std::shared_ptr<host::ExcelApplication>> createObject() override;
  std::intptr_t findWindow(std::wstring_view className, std::wstring_view title) override;
  std::wstring errorText(std::int32_t code) override;

 private:
  std::shared_ptr<BookApplication> running_;
  std::vector<std::weak_ptr<BookApplication>> made_;  // every instance, for the window lookup
};

}  // namespace corvane::xlsx
