// UTF-8 at the edges (files, command line, terminal); wide text everywhere inside.
#pragma once

#include <string>
#include <string_view>

namespace corvane::core {

// Malformed input never throws: each maximal run that starts like a valid sequence but is cut
// short becomes one U+FFFD, and every other stray byte one U+FFFD of its own. Overlong forms,
// surrogates and values above U+10FFFF are malformed.
std::wstring fromUtf8(std::string_view text);
// Code points outside Unicode and lone surrogates become U+FFFD; a high surrogate followed by a
// low one is written as the one code point they stand for.
std::string toUtf8(std::wstring_view text);

}  // namespace corvane::core
