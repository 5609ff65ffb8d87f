// The options that follow a field's arguments in its code: a blank, a backslash and a name,
// then a value in double quotes after a blank (\layer "A;B"), a value in parentheses right
// after the name (\Space(1F)), or no value at all (\nested).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

struct FieldOption {
  std::wstring name;   // without the backslash
  std::wstring value;  // without its quotes or parentheses
  bool operator==(const FieldOption&) const = default;
};

struct FieldOptions {
  std::vector<FieldOption> options;
  std::wstring error;  // empty when the text read whole

  // The value of the first option of the name (ignoring case).
  const FieldOption* find(std::wstring_view name) const noexcept;
};

// Reads the options of a text; what stands between options must be white space. A quoted value
// runs to the next double quote, a parenthesised one to its matching parenthesis. On a text it
// cannot read the options read so far are kept and `error` says what is wrong.
FieldOptions readFieldOptions(std::wstring_view text);

// The error for the first option whose name is not one of `known` (ignoring case), or empty.
std::wstring unknownOptionError(const FieldOptions& options, const std::vector<std::wstring_view>& known);

// Whether the list holds the name exactly (case and all).
bool isListed(const std::vector<std::wstring>& names, std::wstring_view name) noexcept;

// Splits a list at ";", leaving out empty entries.
std::vector<std::wstring> splitList(std::wstring_view text, wchar_t separator = L';');

}  // namespace corvane
