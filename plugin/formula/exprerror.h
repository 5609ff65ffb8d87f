#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace corvane {

// A failure of the formula engine. The message is the text a formula field shows in place of
// its value, so it is kept wide and exactly as written.
class ExprError : public std::runtime_error {
 public:
  explicit ExprError(std::wstring message)
      : std::runtime_error("formula engine error"), message_(std::move(message)) {}
  const std::wstring& message() const noexcept { return message_; }

 private:
  std::wstring message_;
};

}  // namespace corvane
