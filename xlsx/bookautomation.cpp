#include "xlsx/bookautomation.h"

#include "xlsx/bookapplication.h"

namespace corvane::xlsx {

BookAutomation::BookAutomation() = default;
BookAutomation::~BookAutomation() = default;

BookApplication& BookAutomation::start() {
  if (!running_) {
    running_ = std::make_shared<BookApplication>();
    running_->setVisible(true);  // the user's Excel is on screen
    made_.push_back(running_);
  }
  return *running_;
}

host::ExcelResult<std::shared_ptr<host::ExcelApplication>> BookAutomation::activeObject() {
  if (!running_) return host::ExcelError{host::kExcelUnavailable, L"Excel is not running."};
  return std::shared_ptr<host::ExcelApplication>(running_);
}

host::ExcelResult<std::shared_ptr<host::ExcelApplication>> BookAutomation::createObject() {
  auto made = std::make_shared<BookApplication>();
  made_.push_back(made);
  return std::shared_ptr<host::ExcelApplication>(made);
}

std::intptr_t BookAutomation::findWindow(std::wstring_view className, std::wstring_view title) {
  if (className != L"XLMAIN") return 0;
  for (std::size_t i = 0; i < made_.size(); ++i) {
    const auto application = made_[i].lock();
    if (application && application->caption() == title) return static_cast<std::intptr_t>(i + 1);
  }
  return 0;
}

std::wstring BookAutomation::errorText(std::int32_t code) {
  switch (code) {
    case host::kExcelUnavailable: return L"Operation unavailable";
    case host::kExcelInvalidArgument: return L"The parameter is incorrect.";
    case host::kExcelNotFound: return L"Invalid index.";
    default: return {};
  }
}

}  // namespace corvane::xlsx
