#include "plugin/measure/fieldoptions.h"

#include "core/printf.h"
#include "core/textutil.h"

namespace corvane {

const FieldOption* FieldOptions::find(std::wstring_view name) const noexcept {
  for (const FieldOption& option : options) {
    if (core::equalsNoCase(option.name, name)) return &option;
  }
  return nullptr;
}

namespace {

bool isNameChar(wchar_t c) noexcept {
  return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') || c == L'_';
}

std::wstring shown(std::wstring_view text) {
  constexpr std::size_t kShown = 40;
  return text.size() <= kShown ? std::wstring(text) : std::wstring(text.substr(0, kShown)) + L"...";
}

}  // namespace

FieldOptions readFieldOptions(std::wstring_view text) {
  FieldOptions read;
  std::size_t at = 0;
  const std::size_t end = text.size();
  while (true) {
    while (at < end && core::isSpace(text[at])) ++at;
    if (at == end) break;
    if (text[at] != L'\\') {
      read.error = core::format(L"Expected an option (a backslash and a name) at \"%s\".", shown(text.substr(at)).c_str());
      break;
    }
    std::size_t nameEnd = at + 1;
    while (nameEnd < end && isNameChar(text[nameEnd])) ++nameEnd;
    if (nameEnd == at + 1) {
      read.error = core::format(L"A backslash without an option name at \"%s\".", shown(text.substr(at)).c_str());
      break;
    }
    FieldOption option{std::wstring(text.substr(at + 1, nameEnd - at - 1)), {}};
    at = nameEnd;
    if (at < end && text[at] == L'(') {
      int depth = 0;
      std::size_t close = at;
      for (; close < end; ++close) {
        if (text[close] == L'(') ++depth;
        else if (text[close] == L')' && --depth == 0) break;
      }
      if (close == end) {
        read.error = core::format(L"The value of option \\%s has no closing parenthesis.", option.name.c_str());
        break;
      }
      option.value = text.substr(at + 1, close - at - 1);
      at = close + 1;
    } else {
      std::size_t quote = at;
      while (quote < end && core::isSpace(text[quote])) ++quote;
      if (quote < end && text[quote] == L'"') {
        const std::size_t close = text.find(L'"', quote + 1);
        if (close == std::wstring_view::npos) {
          read.error = core::format(L"The value of option \\%s has no closing double quote.", option.name.c_str());
          break;
        }
        option.value = text.substr(quote + 1, close - quote - 1);
        at = close + 1;
      }
    }
    read.options.push_back(std::move(option));
  }
  return read;
}

std::wstring unknownOptionError(const FieldOptions& options, const std::vector<std::wstring_view>& known) {
  for (const FieldOption& option : options.options) {
    bool found = false;
    for (const std::wstring_view name : known) found = found || core::equalsNoCase(option.name, name);
    if (!found) return core::format(L"Unknown option \\%s.", option.name.c_str());
  }
  return {};
}

bool isListed(const std::vector<std::wstring>& names, std::wstring_view name) noexcept {
  for (const std::wstring& entry : names) {
    if (entry == name) return true;
  }
  return false;
}

std::vector<std::wstring> splitList(std::wstring_view text, wchar_t separator) {
  std::vector<std::wstring> entries;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t stop = text.find(separator, start);
    if (stop == std::wstring_view::npos) stop = text.size();
    if (stop > start) entries.emplace_back(text.substr(start, stop - start));
    start = stop + 1;
  }
  return entries;
}

}  // namespace corvane
