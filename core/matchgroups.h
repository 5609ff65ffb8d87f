// The pattern dialect used to take field codes apart.
//
//   x       a literal character        \x      x taken literally (\\ \( \. \{ ...)
//   .       any character              [a-z0-9_] a set, with first-last ranges; [^...] negates
//   *  +    zero-or-more / one-or-more of the preceding item, greedy
//   ?       zero-or-one, greedy        {...}   a capture group (braces may nest)
//   (...)   a group that captures nothing      a|b    either alternative
//
// Matching is case-sensitive and finds the leftmost match, preferring longer repetitions the
// way a backtracking matcher would; captures come back in the order of their opening braces.
// It runs in O(text length x pattern length) time on every input: there is no backtracking.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::core {

// False (with the captures emptied) when text or pattern is empty, when the pattern does not
// parse, or when nothing matches.
bool MatchGroups(std::wstring_view text, std::wstring_view pattern, std::vector<std::wstring>& captures);

}  // namespace corvane::core
