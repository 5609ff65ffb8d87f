// Wildcard patterns as the host's selection filters use them, compared without regard to
// case: "*" any run, "?" any character, "#" a digit, "@" a letter, "." a character that is
// neither, "[...]" one of the listed characters or ranges ("[~...]" none of them), "`" takes
// the next character literally, "," separates alternatives and a leading "~" negates one.
#pragma once

#include <string_view>

namespace corvane::headless {

bool wcMatch(std::wstring_view text, std::wstring_view pattern);

}  // namespace corvane::headless
