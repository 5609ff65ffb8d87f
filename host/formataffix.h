// The prefix and suffix of a value's format string, "%ps[prefix,suffix]": hosts after
// version 16 read "\\", "\,", "\[" and "\]" inside the brackets as the plain character.
#pragma once

#include <string>
#include <string_view>

namespace corvane::host {

std::wstring escapeAffix(std::wstring_view text);
// Undoes escapeAffix; a backslash before any other character is kept as it is.
std::wstring unescapeAffix(std::wstring_view text);

}  // namespace corvane::host
