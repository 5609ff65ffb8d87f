#include "dxf/tags/numbertext.h"

#include <charconv>
#include <system_error>

#include "core/textutil.h"

namespace corvane::dxf {

namespace {

int hexDigit(char c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

constexpr char kHexDigits[] = "0123456789ABCDEF";

}  // namespace

bool parseDouble(std::string_view text, double& value) noexcept {
  text = core::trimBlanks(text);
  // from_chars takes no '+', but writers put one in exponents and sometimes in front.
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return false;
  }
  if (text.empty()) return false;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

bool parseInteger(std::string_view text, std::int64_t& value) noexcept {
  text = core::trimBlanks(text);
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return false;
  }
  if (text.empty()) return false;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

bool parseHandle(std::string_view text, std::uint64_t& value) noexcept {
  text = core::trimBlanks(text);
  if (text.empty() || text.size() > 16) return false;
  std::uint64_t result = 0;
  for (char c : text) {
    const int digit = hexDigit(c);
    if (digit < 0) return false;
    result = (result << 4) | static_cast<std::uint64_t>(digit);
  }
  value = result;
  return true;
}

bool parseHexBytes(std::string_view text, std::string& bytes) {
  text = core::trimBlanks(text);
  if (text.size() % 2 != 0) return false;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = hexDigit(text[i]);
    const int low = hexDigit(text[i + 1]);
    if (high < 0 || low < 0) return false;
    bytes.push_back(static_cast<char>(high * 16 + low));
  }
  return true;
}

void appendDouble(std::string& out, double value) {
  char buffer[40];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  const std::string_view text(buffer, static_cast<std::size_t>(result.ptr - buffer));
  out += text;
  if (text.find_first_of(".eEni") == std::string_view::npos) out += ".0";
}

void appendInteger(std::string& out, std::int64_t value) {
  char buffer[24];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.append(buffer, result.ptr);
}

void appendHandle(std::string& out, std::uint64_t value) {
  char buffer[16];
  std::size_t n = 0;
  do {
    buffer[n++] = kHexDigits[value & 15];
    value >>= 4;
  } while (value != 0);
  while (n > 0) out.push_back(buffer[--n]);
}

void appendHexBytes(std::string& out, std::string_view bytes) {
  for (unsigned char c : bytes) {
    out.push_back(kHexDigits[c >> 4]);
    out.push_back(kHexDigits[c & 15]);
  }
}

}  // namespace corvane::dxf
