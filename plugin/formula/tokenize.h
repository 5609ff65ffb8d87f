#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

// Splits a formula into token texts. String literals come out as StringMarker followed by
// their text; a sign that belongs to a number (or to the name at the very start) is joined to
// it. An empty or all-blank formula gives no token. Throws ExprError.
std::vector<std::wstring> Tokenize(std::wstring_view expression);

}  // namespace corvane
