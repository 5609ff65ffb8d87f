// Long texts as DXF stores them. Control characters are spelt with a caret ("^I" a tab, "^J" a
// line feed) and a caret itself as "^ ". Texts are kept as stored, escapes included, as the
// host keeps a multiline text's contents; the host's character counts (piece sizes, lengths,
// check sums) are counts of the decoded text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::dxf {

inline constexpr std::size_t kTextPieceSize = 250;

// The text with its caret escapes decoded, as the host displays and counts it.
std::wstring decodeCarets(std::wstring_view text);
// Control characters (which a DXF line cannot hold) as caret escapes; everything else as it is.
std::wstring escapeControlCharacters(std::wstring_view text);
// The stored text with its unit separators ("^_") read as the character itself and every
// other escape left as stored: a formula's embedded field code is built of separators, which
// the formula engine looks for, while the rest of a code is kept as stored, as the texts it
// shows are. Writing escapes the separators again.
std::wstring decodeUnitSeparators(std::wstring_view text);

// The pieces of a stored text, each of at most `size` decoded characters (an escape counts as
// one and is never cut), in order; an empty text is one empty piece.
std::vector<std::wstring_view> splitPieces(std::wstring_view text, std::size_t size = kTextPieceSize);

}  // namespace corvane::dxf
