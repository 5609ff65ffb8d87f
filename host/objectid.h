// Object ids and handles.
//
// A handle is the permanent 64-bit name of an object inside one drawing; its text form is
// upper-case hexadecimal without leading zeros ("1F", "0" for the null handle). An object id
// names an object of an open database for the life of the process; its numeric form is what
// the host writes into "%<\_ObjId N>%" references.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::host {

class AcDbHandle {
 public:
  constexpr AcDbHandle() = default;
  constexpr explicit AcDbHandle(std::uint64_t value) : value_(value) {}
  // Parses hexadecimal text (either letter case); nullopt when the text is empty, holds a
  // character that is not a hexadecimal digit, or has more than 16 significant digits.
  static std::optional<AcDbHandle> fromText(std::wstring_view text) noexcept;

  constexpr std::uint64_t value() const noexcept { return value_; }
  constexpr bool isNull() const noexcept { return value_ == 0; }
  std::wstring text() const;  // upper case, no leading zeros

  constexpr auto operator<=>(const AcDbHandle&) const = default;

 private:
  std::uint64_t value_ = 0;
};

class AcDbObjectId {
 public:
  constexpr AcDbObjectId() = default;
  constexpr explicit AcDbObjectId(std::uint64_t value) : value_(value) {}
  static constexpr AcDbObjectId kNull() { return AcDbObjectId(); }

  constexpr std::uint64_t asOldId() const noexcept { return value_; }
  constexpr bool isNull() const noexcept { return value_ == 0; }

  constexpr auto operator<=>(const AcDbObjectId&) const = default;

 private:
  std::uint64_t value_ = 0;
};

}  // namespace corvane::host
