// The pattern dialect used to take field codes apart.
//
//   x       a literal character        \x      x taken literally (\\ \( \. \{ ...)
//   .       any character              [a-z0-9_] a set, with first-last ranges; [^...] negates
//   *  +    zero-or-more / one-or-more of the preceding item, greedy
//   ?       zero-or-one, greedy        {...}   a capture group (braces may nest)
//   (...)   a group that captures nothing      a|b    either alternative
//
// In a set, a ']' right after "[" or "[^" is a member, and \x is x. Outside sets, characters
// not listed above stand for themselves: '^' and '$' are not anchors.
//
// Matching is case-sensitive and finds the leftmost match, preferring longer repetitions and
// earlier alternatives the way a backtracking matcher would; captures come back in the order
// of their opening braces. A capture inside a repeat holds its last pass; one that took no
// part in the match is empty. There is no backtracking: the time is bounded by text length x
// pattern length steps on every input (each step carries the capture positions along).
//
// A pattern does not parse when a brace, parenthesis or bracket is unbalanced, a backslash
// ends it, a repeat has nothing before it (a second repeat right after one included), a range
// runs backwards, or groups nest more than 256 deep.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::core {

// False (with the captures emptied) when text or pattern is empty, when the pattern does not
// parse, or when nothing matches.
bool MatchGroups(std::wstring_view text, std::wstring_view pattern, std::vector<std::wstring>& captures);

}  // namespace corvane::core
