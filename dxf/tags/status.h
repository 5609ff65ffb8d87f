// The outcome of an operation that can fail with a message for the user.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace corvane::dxf {

class Status {
 public:
  // What a caller may offer its user to do about a failure.
  enum class Cause : std::uint8_t {
    kOther,
    kReadOnly,  // the file would be replaced only when asked to
  };

  static Status success() { return Status(); }
  static Status failure(std::string message, Cause cause = Cause::kOther) { return Status(std::move(message), cause); }

  bool ok() const noexcept { return ok_; }
  explicit operator bool() const noexcept { return ok_; }
  const std::string& message() const noexcept { return message_; }
  Cause cause() const noexcept { return cause_; }

 private:
  Status() = default;
  Status(std::string message, Cause cause) : ok_(false), cause_(cause), message_(std::move(message)) {}
  bool ok_ = true;
  Cause cause_ = Cause::kOther;
  std::string message_;
};

}  // namespace corvane::dxf
