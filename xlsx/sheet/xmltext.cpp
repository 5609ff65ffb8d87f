#include "xlsx/sheet/xmltext.h"

#include <cstdint>
#include <optional>

namespace corvane::xlsx {
namespace {

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The UTF-16 unit of an escape starting at `at`, which holds '_'.
std::optional<std::uint32_t> escapeAt(std::string_view text, std::size_t at) {
  if (at + 7 > text.size() || text[at + 1] != 'x' || text[at + 6] != '_') return std::nullopt;
  std::uint32_t unit = 0;
  for (std::size_t i = at + 2; i < at + 6; ++i) {
    const int digit = hexValue(text[i]);
    if (digit < 0) return std::nullopt;
    unit = unit * 16 + static_cast<std::uint32_t>(digit);
  }
  return unit;
}

void appendUtf8(std::string& out, std::uint32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

}  // namespace

void appendDecodedXstring(std::string& out, std::string_view text) {
  std::size_t done = 0;
  for (std::size_t at = text.find('_'); at != std::string_view::npos; at = text.find('_', at)) {
    auto unit = escapeAt(text, at);
    if (!unit) {
      ++at;
      continue;
    }
    out.append(text.substr(done, at - done));
    std::size_t next = at + 7;
    std::uint32_t code = *unit;
    if (code >= 0xD800 && code <= 0xDBFF) {
      const auto low = next < text.size() && text[next] == '_' ? escapeAt(text, next) : std::nullopt;
      if (low && *low >= 0xDC00 && *low <= 0xDFFF) {
        code = 0x10000 + ((code - 0xD800) << 10) + (*low - 0xDC00);
        next += 7;
      } else {
        code = 0xFFFD;
      }
    } else if (code >= 0xDC00 && code <= 0xDFFF) {
      code = 0xFFFD;
    }
    appendUtf8(out, code);
    done = at = next;
  }
  out.append(text.substr(done));
}

std::string decodeXstring(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  appendDecodedXstring(out, text);
  return out;
}

std::string encodeXstring(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto c = static_cast<unsigned char>(text[at]);
    if (c < 0x20 && c != '\t' && c != '\n') {
      out += "_x00";
      out += kHex[c >> 4];
      out += kHex[c & 0xF];
      out += '_';
    } else if (c == '_' && escapeAt(text, at)) {
      out += "_x005F_";
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

namespace {

// The characters XML cannot carry as they are; an attribute value also keeps its quotes, tabs
// and line ends only as references, since a reader would fold them into spaces.
const char* escapeOf(char c, bool attribute) noexcept {
  switch (c) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    case '\r': return "&#13;";
    case '"': return attribute ? "&quot;" : nullptr;
    case '\t': return attribute ? "&#9;" : nullptr;
    case '\n': return attribute ? "&#10;" : nullptr;
    default: return nullptr;
  }
}

void appendEscaped(std::string& out, std::string_view text, bool attribute) {
  for (const char c : text) {
    if (const char* escape = escapeOf(c, attribute)) out += escape;
    else out += c;
  }
}

}  // namespace

void appendEscapedText(std::string& out, std::string_view text) { appendEscaped(out, text, false); }

void appendEscapedAttribute(std::string& out, std::string_view text) { appendEscaped(out, text, true); }

void appendAttribute(std::string& out, std::string_view name, std::string_view value) {
  out += ' ';
  out += name;
  out += "=\"";
  appendEscapedAttribute(out, value);
  out += '"';
}

}  // namespace corvane::xlsx
