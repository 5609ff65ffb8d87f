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
// A decoded text in the stored form: control characters and the caret itself escaped, so that
// decodeCarets gives the text back whatever it holds.
std::wstring encodeCarets(std::wstring_view text);

// The pieces of a stored text, each of at most `size` decoded characters (an escape counts as
// one and is never cut), in order; an empty text is one empty piece.
std::vector<std::wstring_view> splitPieces(std::wstring_view text, std::size_t size = kTextPieceSize);

}  // namespace corvane::dxf
