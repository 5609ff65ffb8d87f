// Texts as DXF stores them. A line of the file cannot hold a control character, so control
// characters are spelt with a caret ("^I" a tab, "^J" a line feed, "^_" a unit separator) and a
// caret itself as "^ ". The drawing model holds texts as the host does, with the characters
// themselves: escapes are decoded where a text is read and written again where it is stored.
// Long texts are stored in pieces of 250 characters, counted before escaping.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::dxf {

inline constexpr std::size_t kTextPieceSize = 250;

// The stored text with its caret escapes decoded. A caret before anything else stays a caret.
std::wstring decodeCarets(std::wstring_view text);
// The same for a text of one's own, which comes back as it is when it holds no caret.
std::wstring decodeCarets(std::wstring&& text);
// The text as a file stores it: control characters and carets escaped.
std::wstring encodeCarets(std::wstring_view text);

// The pieces of a text, each of at most `size` characters, in order; an empty text is one
// empty piece.
std::vector<std::wstring_view> splitPieces(std::wstring_view text, std::size_t size = kTextPieceSize);

}  // namespace corvane::dxf
