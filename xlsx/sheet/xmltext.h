// Text going into and coming out of the XML of a workbook's parts.
//
// Texts a sheet shows (cell strings, note texts) are ST_Xstring: characters XML cannot carry
// are written "_xHHHH_" (a UTF-16 unit in hex), and a literal "_xHHHH_" in the text is
// protected by writing its underscore as "_x005F_". Formulas and names are not; they go
// through the plain escapes only.
#pragma once

#include <string>
#include <string_view>

namespace corvane::xlsx {

// "_x000D_" becomes a carriage return, "_x005F_" an underscore; a surrogate pair written as
// two escapes becomes one character. Anything that only looks like an escape stays as it is.
std::string decodeXstring(std::string_view text);
void appendDecodedXstring(std::string& out, std::string_view text);
// The reverse: control characters other than tab and line feed, and "_xHHHH_" look-alikes.
std::string encodeXstring(std::string_view text);

// & < > in element text; in an attribute value also " and the white space that attribute
// normalisation would otherwise turn into blanks.
void appendEscapedText(std::string& out, std::string_view text);
void appendEscapedAttribute(std::string& out, std::string_view text);
// out += ' ' name="escaped value"
void appendAttribute(std::string& out, std::string_view name, std::string_view value);

}  // namespace corvane::xlsx
