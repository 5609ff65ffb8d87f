// The host's value type: what a field evaluates to and what a table cell holds. The data
// type numbers are the host's.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>

#include "host/objectid.h"

namespace corvane::host {

class AcValue {
 public:
  enum DataType : int {
    kUnknown = 0,
    kLong = 1,
    kDouble = 2,
    kString = 4,
    kDate = 8,
    kPoint = 16,
    k3dPoint = 32,
    kObjectId = 64,
    kBuffer = 128,
    kResbuf = 256,
    kGeneral = 512,
  };

  using Point2d = std::array<double, 2>;
  using Point3d = std::array<double, 3>;
  // A date is kept as the OLE automation date the host uses: days since 1899-12-30.
  struct Date {
    double oleDate = 0.0;
    bool operator==(const Date&) const = default;
  };

  AcValue() = default;  // empty: data type kUnknown
  explicit AcValue(std::int32_t v) : data_(v) {}
  explicit AcValue(double v) : data_(v) {}
  explicit AcValue(std::wstring v) : data_(std::move(v)) {}
  explicit AcValue(const wchar_t* v) : data_(std::wstring(v ? v : L"")) {}
  explicit AcValue(Date v) : data_(v) {}
  explicit AcValue(Point2d v) : data_(v) {}
  explicit AcValue(Point3d v) : data_(v) {}
  explicit AcValue(AcDbObjectId v) : data_(v) {}

  DataType dataType() const noexcept;
  bool isEmpty() const noexcept { return std::holds_alternative<std::monostate>(data_); }

  // Typed reads: false when the value holds another type.
  bool get(std::int32_t& out) const noexcept;
  bool get(double& out) const noexcept;
  bool get(std::wstring& out) const;
  bool get(Date& out) const noexcept;
  bool get(Point2d& out) const noexcept;
  bool get(Point3d& out) const noexcept;
  bool get(AcDbObjectId& out) const noexcept;

  // The field format ("%lu2%pr3", ...) the host applies when it shows the value.
  const std::wstring& getFormat() const noexcept { return format_; }
  void setFormat(std::wstring format) { format_ = std::move(format); }

  bool operator==(const AcValue& other) const = default;

  using Data = std::variant<std::monostate, std::int32_t, double, std::wstring, Date, Point2d, Point3d, AcDbObjectId>;
  const Data& data() const noexcept { return data_; }

 private:
  Data data_;
  std::wstring format_;
};

// The value a field evaluator hands to the host.
using AcFdFieldValue = AcValue;

}  // namespace corvane::host
