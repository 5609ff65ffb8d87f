#include "headless/settings/registrytree.h"

#include <algorithm>
#include <cstdint>

#include "core/printf.h"
#include "core/textutil.h"
#include "core/utf8.h"

namespace corvane::headless {

namespace {

constexpr std::wstring_view kHeader = L"Windows Registry Editor Version 5.00";
constexpr std::wstring_view kOldHeader = L"REGEDIT4";
constexpr wchar_t kSortSeparator = L'\x01';

void appendCodePoint(std::wstring& out, std::uint32_t code) {
  if constexpr (sizeof(wchar_t) == 2) {
    if (code >= 0x10000) {
      out.push_back(static_cast<wchar_t>(0xD800 + ((code - 0x10000) >> 10)));
      out.push_back(static_cast<wchar_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
      return;
    }
  }
  out.push_back(static_cast<wchar_t>(code));
}

std::wstring decodeUtf16(std::string_view bytes, bool bigEndian) {
  std::wstring out;
  out.reserve(bytes.size() / 2);
  const auto unitAt = [&](std::size_t i) -> std::uint32_t {
    const auto a = static_cast<std::uint8_t>(bytes[i]);
    const auto b = static_cast<std::uint8_t>(bytes[i + 1]);
    return bigEndian ? (static_cast<std::uint32_t>(a) << 8 | b) : (static_cast<std::uint32_t>(b) << 8 | a);
  };
  std::size_t i = 0;
  for (; i + 1 < bytes.size(); i += 2) {
    const std::uint32_t u = unitAt(i);
    if (u >= 0xD800 && u <= 0xDBFF && i + 3 < bytes.size()) {
      const std::uint32_t low = unitAt(i + 2);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        appendCodePoint(out, 0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00));
        i += 2;
        continue;
      }
    }
    out.push_back(static_cast<wchar_t>((u >= 0xD800 && u <= 0xDFFF) ? 0xFFFD : u));
  }
  if (i < bytes.size()) out.push_back(L'\xFFFD');  // half a unit at the end
  return out;
}

std::wstring decode(std::string_view bytes) {
  if (bytes.size() >= 2 && bytes[0] == '\xFF' && bytes[1] == '\xFE') return decodeUtf16(bytes.substr(2), false);
  if (bytes.size() >= 2 && bytes[0] == '\xFE' && bytes[1] == '\xFF') return decodeUtf16(bytes.substr(2), true);
  if (bytes.size() >= 3 && bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
  return core::fromUtf8(bytes);
}

bool isBlank(wchar_t c) { return c == L' ' || c == L'\t'; }

int hexDigit(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return -1;
}

// 1 to `maxDigits` hexadecimal digits and nothing else.
std::optional<std::uint32_t> parseHexNumber(std::wstring_view text, std::size_t maxDigits) {
  if (text.empty() || text.size() > maxDigits) return std::nullopt;
  std::uint32_t value = 0;
  for (const wchar_t c : text) {
    const int d = hexDigit(c);
    if (d < 0) return std::nullopt;
    value = value << 4 | static_cast<std::uint32_t>(d);
  }
  return value;
}

// A quoted text starting at `pos` (which holds the opening quote): "\\" and "\"" stand for the
// character itself; any other backslash is kept as written. Leaves `pos` after the closing quote.
bool parseQuoted(std::wstring_view line, std::size_t& pos, std::wstring& out) {
  out.clear();
  for (++pos; pos < line.size(); ++pos) {
    const wchar_t c = line[pos];
    if (c == L'"') {
      ++pos;
      return true;
    }
    if (c == L'\\' && pos + 1 < line.size() && (line[pos + 1] == L'\\' || line[pos + 1] == L'"')) {
      out.push_back(line[++pos]);
      continue;
    }
    out.push_back(c);
  }
  return false;
}

std::optional<std::vector<std::uint8_t>> parseHexBytes(std::wstring_view text) {
  std::vector<std::uint8_t> bytes;
  text = core::trimBlanks(text);
  if (text.empty()) return bytes;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t comma = text.find(L',', start);
    if (comma == std::wstring_view::npos) comma = text.size();
    const std::wstring_view part = core::trimBlanks(text.substr(start, comma - start));
    if (part.empty()) {
      if (comma == text.size() && start > 0) break;  // a trailing comma
      return std::nullopt;
    }
    const auto byte = parseHexNumber(part, 2);
    if (!byte) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(*byte));
    start = comma + 1;
  }
  return bytes;
}

std::string narrow(std::wstring_view text) { return core::toUtf8(text); }

void appendQuoted(std::wstring& out, std::wstring_view text) {
  out.push_back(L'"');
  for (const wchar_t c : text) {
    if (c == L'\\' || c == L'"') out.push_back(L'\\');
    out.push_back(c);
  }
  out.push_back(L'"');
}

// A string value written as a quoted text only when reading that text back gives the same
// bytes; line breaks and inner zeros would not survive.
bool quotableString(const host::RegValue& value, std::wstring& text) {
  if (value.type != host::REG_SZ || !host::readRegString(value, text)) return false;
  if (text.find_first_of(L"\r\n") != std::wstring::npos) return false;
  return host::regString(text).data == value.data;
}

void appendHex(std::wstring& out, const std::vector<std::uint8_t>& bytes) {
  static constexpr wchar_t kDigits[] = L"0123456789abcdef";
  std::size_t lineStart = out.rfind(L'\n') == std::wstring::npos ? 0 : out.rfind(L'\n') + 1;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    out.push_back(kDigits[bytes[i] >> 4]);
    out.push_back(kDigits[bytes[i] & 0xF]);
    if (i + 1 < bytes.size()) {
      out.push_back(L',');
      if (out.size() - lineStart > 76) {
        out += L"\\\n  ";
        lineStart = out.size() - 2;
      }
    }
  }
}

}  // namespace

std::optional<std::wstring> RegistryTree::normalizePath(std::wstring_view path) {
  while (!path.empty() && path.back() == L'\\') path.remove_suffix(1);
  if (path.empty()) return std::nullopt;
  for (const wchar_t c : path) {
    if (c < 0x20) return std::nullopt;  // key names are printable
  }
  std::size_t start = 0;
  while (true) {
    const std::size_t sep = path.find(L'\\', start);
    if (sep == start) return std::nullopt;  // an empty name
    if (sep == std::wstring_view::npos) break;
    start = sep + 1;
  }
  return std::wstring(path);
}

std::wstring RegistryTree::sortKey(std::wstring_view path) {
  std::wstring key = core::toLower(path);
  std::replace(key.begin(), key.end(), L'\\', kSortSeparator);
  return key;
}

bool RegistryTree::hasKey(std::wstring_view path) const {
  const auto normalized = normalizePath(path);
  if (!normalized) return false;
  const std::wstring key = sortKey(*normalized);
  const auto it = keys_.lower_bound(key);
  if (it == keys_.end()) return false;
  if (it->first == key) return true;
  return it->first.size() > key.size() && it->first.compare(0, key.size(), key) == 0 &&
         it->first[key.size()] == kSortSeparator;
}

RegistryTree::Key& RegistryTree::makeKey(std::wstring_view path) {
  const std::wstring normalized = normalizePath(path).value_or(std::wstring(path));
  auto [it, made] = keys_.try_emplace(sortKey(normalized));
  if (made) it->second.path = normalized;
  return it->second;
}

RegistryTree::Key* RegistryTree::findKey(std::wstring_view path) {
  const auto normalized = normalizePath(path);
  if (!normalized) return nullptr;
  const auto it = keys_.find(sortKey(*normalized));
  return it == keys_.end() ? nullptr : &it->second;
}

const RegistryTree::Key* RegistryTree::findKey(std::wstring_view path) const {
  return const_cast<RegistryTree*>(this)->findKey(path);
}

bool RegistryTree::removeKey(std::wstring_view path) {
  const auto normalized = normalizePath(path);
  if (!normalized) return false;
  const std::wstring key = sortKey(*normalized);
  bool removed = keys_.erase(key) > 0;
  const std::wstring prefix = key + kSortSeparator;
  auto it = keys_.lower_bound(prefix);
  while (it != keys_.end() && it->first.compare(0, prefix.size(), prefix) == 0) {
    it = keys_.erase(it);
    removed = true;
  }
  return removed;
}

std::vector<std::wstring> RegistryTree::subKeys(std::wstring_view path) const {
  std::vector<std::wstring> names;
  const auto normalized = normalizePath(path);
  if (!normalized) return names;
  const std::wstring prefix = sortKey(*normalized) + kSortSeparator;
  for (auto it = keys_.lower_bound(prefix); it != keys_.end() && it->first.compare(0, prefix.size(), prefix) == 0;
       ++it) {
    // The spelling of the child's name is the one in the first key that names it.
    const std::wstring& spelt = it->second.path;
    const std::size_t start = normalized->size() + 1;
    const std::size_t end = std::min(spelt.find(L'\\', start), spelt.size());
    std::wstring name = spelt.substr(start, end - start);
    if (names.empty() || !core::equalsNoCase(names.back(), name)) names.push_back(std::move(name));
  }
  return names;
}

const RegistryTree::Value* RegistryTree::findValue(std::wstring_view path, std::wstring_view name) const {
  const Key* key = findKey(path);
  if (!key) return nullptr;
  for (const auto& value : key->values) {
    if (core::equalsNoCase(value.name, name)) return &value;
  }
  return nullptr;
}

void RegistryTree::setValue(std::wstring_view path, std::wstring_view name, host::RegValue data) {
  Key& key = makeKey(path);
  for (auto& value : key.values) {
    if (core::equalsNoCase(value.name, name)) {
      value.data = std::move(data);
      return;
    }
  }
  key.values.push_back(Value{std::wstring(name), std::move(data)});
}

bool RegistryTree::removeValue(std::wstring_view path, std::wstring_view name) {
  Key* key = findKey(path);
  if (!key) return false;
  const auto it = std::find_if(key->values.begin(), key->values.end(),
                               [name](const Value& value) { return core::equalsNoCase(value.name, name); });
  if (it == key->values.end()) return false;
  key->values.erase(it);
  return true;
}

std::vector<const RegistryTree::Key*> RegistryTree::keys() const {
  std::vector<const Key*> out;
  out.reserve(keys_.size());
  for (const auto& entry : keys_) out.push_back(&entry.second);
  return out;
}

bool RegistryTree::operator==(const RegistryTree& other) const { return keys_ == other.keys_; }

std::optional<RegistryTree> RegistryTree::parse(std::string_view bytes, ParseError* error) {
  const std::wstring text = decode(bytes);
  RegistryTree tree;
  int lineNumber = 0;
  const auto fail = [&](std::string message) -> std::optional<RegistryTree> {
    if (error) *error = ParseError{lineNumber, std::move(message)};
    return std::nullopt;
  };

  std::vector<std::wstring_view> lines;
  for (std::size_t start = 0; start <= text.size();) {
    std::size_t end = text.find(L'\n', start);
    if (end == std::wstring::npos) end = text.size();
    std::wstring_view line(text.data() + start, end - start);
    if (!line.empty() && line.back() == L'\r') line.remove_suffix(1);
    lines.push_back(line);
    start = end + 1;
  }

  bool headerSeen = false;
  std::optional<std::wstring> current;  // the key the values belong to; none after a deletion
  bool inDeletedKey = false;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    lineNumber = static_cast<int>(i) + 1;
    const std::wstring_view line = core::trimBlanks(lines[i]);
    if (line.empty() || line.front() == L';') continue;
    if (!headerSeen) {
      if (line != kHeader && line != kOldHeader)
        return fail("not a registry file: the first line is not \"" + narrow(kHeader) + "\"");
      headerSeen = true;
      continue;
    }
    if (line.front() == L'[') {
      const std::size_t close = line.rfind(L']');
      if (close == std::wstring_view::npos || close == 0 || !core::trimBlanks(line.substr(close + 1)).empty())
        return fail("a key line does not end with ']'");
      std::wstring_view path = line.substr(1, close - 1);
      const bool deletion = !path.empty() && path.front() == L'-';
      if (deletion) path.remove_prefix(1);
      const auto normalized = normalizePath(path);
      if (!normalized) return fail("a key path is empty, has an empty name or holds a control character");
      if (deletion) {
        tree.removeKey(*normalized);
        current.reset();
        inDeletedKey = true;
      } else {
        tree.makeKey(*normalized);
        current = *normalized;
        inDeletedKey = false;
      }
      continue;
    }
    if (line.front() != L'"' && line.front() != L'@') return fail("a line is neither a key nor a value");
    if (!current && !inDeletedKey) return fail("a value stands before the first key");

    std::size_t pos = 0;
    std::wstring name;
    if (line.front() == L'@') {
      pos = 1;
    } else if (!parseQuoted(line, pos, name)) {
      return fail("a value name has no closing quote");
    }
    while (pos < line.size() && isBlank(line[pos])) ++pos;
    if (pos >= line.size() || line[pos] != L'=') return fail("a value name is not followed by '='");
    std::wstring_view data = core::trimBlanks(line.substr(pos + 1));

    std::wstring joined;
    if (core::startsWithNoCase(data, L"hex") && !data.empty() && data.back() == L'\\') {
      // Long binary data goes on over the following lines, each but the last ending in "\".
      joined.assign(data.substr(0, data.size() - 1));
      while (i + 1 < lines.size()) {
        const std::wstring_view next = core::trimBlanks(lines[++i]);
        lineNumber = static_cast<int>(i) + 1;
        if (!next.empty() && next.back() == L'\\') {
          joined.append(next.substr(0, next.size() - 1));
          continue;
        }
        joined.append(next);
        break;
      }
      data = joined;
    }

    if (data.empty()) return fail("a value has no data after '='");
    host::RegValue value;
    if (data.front() == L'"') {
      std::size_t at = 0;
      std::wstring textValue;
      if (!parseQuoted(data, at, textValue)) return fail("a string value has no closing quote");
      if (!core::trimBlanks(data.substr(at)).empty()) return fail("text follows a string value's closing quote");
      value = host::regString(textValue);
    } else if (data == L"-") {
      if (current) tree.removeValue(*current, name);
      continue;
    } else if (core::startsWithNoCase(data, L"dword:")) {
      const auto number = parseHexNumber(core::trimBlanks(data.substr(6)), 8);
      if (!number) return fail("a double word is not 1 to 8 hexadecimal digits");
      value = host::regDword(*number);
    } else if (core::startsWithNoCase(data, L"hex")) {
      std::size_t at = 3;
      std::uint32_t type = host::REG_BINARY;
      if (at < data.size() && data[at] == L'(') {
        const std::size_t close = data.find(L')', at);
        if (close == std::wstring_view::npos) return fail("a value type has no closing parenthesis");
        const auto number = parseHexNumber(data.substr(at + 1, close - at - 1), 8);
        if (!number) return fail("a value type is not 1 to 8 hexadecimal digits");
        type = *number;
        at = close + 1;
      }
      if (at >= data.size() || data[at] != L':') return fail("binary data does not start with ':'");
      auto bytesValue = parseHexBytes(data.substr(at + 1));
      if (!bytesValue) return fail("binary data is not a list of hexadecimal bytes");
      value.type = type;
      value.data = std::move(*bytesValue);
    } else {
      return fail("a value's data is neither a string, a double word nor hexadecimal bytes");
    }
    if (current) tree.setValue(*current, name, std::move(value));
  }
  return tree;  // blank lines and comments alone hold an empty tree
}

std::string RegistryTree::text() const {
  std::wstring out(kHeader);
  out += L'\n';
  for (const auto& [sort, key] : keys_) {
    out += L"\n[";
    out += key.path;
    out += L"]\n";
    for (const auto& value : key.values) {
      if (value.name.empty()) {
        out += L'@';
      } else {
        appendQuoted(out, value.name);
      }
      out += L'=';
      std::wstring textValue;
      std::uint32_t dword = 0;
      if (quotableString(value.data, textValue)) {
        appendQuoted(out, textValue);
      } else if (host::readRegDword(value.data, dword)) {
        out += core::format(L"dword:%08x", dword);
      } else {
        out += value.data.type == host::REG_BINARY ? std::wstring(L"hex:")
                                                   : core::format(L"hex(%x):", value.data.type);
        appendHex(out, value.data.data);
      }
      out += L'\n';
    }
  }
  return core::toUtf8(out);
}

}  // namespace corvane::headless
