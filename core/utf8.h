// UTF-8 at the edges (files, command line, terminal); wide text everywhere inside.
#pragma once

#include <string>
#include <string_view>

namespace corvane::core {

// Malformed sequences become U+FFFD, one per offending byte run, never an exception.
std::wstring fromUtf8(std::string_view text);
// Code points outside Unicode and lone surrogates become U+FFFD.
std::string toUtf8(std::wstring_view text);

}  // namespace corvane::core
