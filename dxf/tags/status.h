// The outcome of an operation that can fail with a message for the user.
#pragma once

#include <string>
#include <utility>

namespace corvane::dxf {

class Status {
 public:
  static Status success() { return Status(); }
  static Status failure(std::string message) { return Status(std::move(message)); }

  bool ok() const noexcept { return ok_; }
  explicit operator bool() const noexcept { return ok_; }
  const std::string& message() const noexcept { return message_; }

 private:
  Status() = default;
  explicit Status(std::string message) : ok_(false), message_(std::move(message)) {}
  bool ok_ = true;
  std::string message_;
};

}  // namespace corvane::dxf
