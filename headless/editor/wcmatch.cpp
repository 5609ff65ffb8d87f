#include "headless/editor/wcmatch.h"

#include <cwctype>
#include <vector>

#include "core/textutil.h"

namespace corvane::headless {

namespace {

struct Item {
  enum Kind { kLiteral, kDigit, kLetter, kOther, kAny, kStar, kSet };
  explicit Item(Kind k, wchar_t c = 0) : kind(k), literal(c) {}
  Kind kind;
  wchar_t literal;
  bool negated = false;
  std::vector<std::pair<wchar_t, wchar_t>> ranges;
};

bool isLetter(wchar_t c) { return core::toLowerChar(c) != core::toUpperChar(c) || std::iswalpha(static_cast<wint_t>(c)); }
bool isDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

bool matchesItem(const Item& item, wchar_t c) {
  const wchar_t folded = core::toLowerChar(c);
  switch (item.kind) {
    case Item::kLiteral: return core::toLowerChar(item.literal) == folded;
    case Item::kDigit: return isDigit(c);
    case Item::kLetter: return isLetter(c);
    case Item::kOther: return !isDigit(c) && !isLetter(c);
    case Item::kAny: return true;
    case Item::kStar: return true;
    case Item::kSet: {
      bool in = false;
      for (const auto& [low, high] : item.ranges) {
        const wchar_t a = core::toLowerChar(low);
        const wchar_t b = core::toLowerChar(high);
        if ((folded >= a && folded <= b) || (c >= low && c <= high)) {
          in = true;
          break;
        }
      }
      return in != item.negated;
    }
  }
  return false;
}

// Splits at commas that are not escaped or inside brackets.
std::vector<std::wstring_view> alternatives(std::wstring_view pattern) {
  std::vector<std::wstring_view> out;
  std::size_t start = 0;
  bool inSet = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const wchar_t c = pattern[i];
    if (c == L'`') {
      ++i;
    } else if (c == L'[' && !inSet) {
      inSet = true;
    } else if (c == L']' && inSet) {
      inSet = false;
    } else if (c == L',' && !inSet) {
      out.push_back(pattern.substr(start, i - start));
      start = i + 1;
    }
  }
  out.push_back(pattern.substr(start));
  return out;
}

std::vector<Item> compile(std::wstring_view pattern) {
  std::vector<Item> items;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    const wchar_t c = pattern[i];
    switch (c) {
      case L'`':
        if (i + 1 < pattern.size()) {
          items.push_back(Item{Item::kLiteral, pattern[++i]});
        } else {
          items.push_back(Item{Item::kLiteral, c});
        }
        break;
      case L'#': items.push_back(Item{Item::kDigit}); break;
      case L'@': items.push_back(Item{Item::kLetter}); break;
      case L'.': items.push_back(Item{Item::kOther}); break;
      case L'?': items.push_back(Item{Item::kAny}); break;
      case L'*':
        if (items.empty() || items.back().kind != Item::kStar) items.push_back(Item{Item::kStar});
        break;
      case L'[': {
        const std::size_t close = pattern.find(L']', i + 2);
        if (close == std::wstring_view::npos) {  // an open bracket alone is itself
          items.push_back(Item{Item::kLiteral, c});
          break;
        }
        Item set(Item::kSet);
        std::size_t j = i + 1;
        if (pattern[j] == L'~' && j + 1 < close) {
          set.negated = true;
          ++j;
        }
        for (; j < close; ++j) {
          wchar_t low = pattern[j];
          if (low == L'`' && j + 1 < close) low = pattern[++j];
          if (j + 2 < close && pattern[j + 1] == L'-') {
            set.ranges.emplace_back(low, pattern[j + 2]);
            j += 2;
          } else {
            set.ranges.emplace_back(low, low);
          }
        }
        items.push_back(std::move(set));
        i = close;
        break;
      }
      default: items.push_back(Item{Item::kLiteral, c});
    }
  }
  return items;
}

// Items against text; a star backtracks to the latest one only, which is enough when the
// others match one character each.
bool matchItems(const std::vector<Item>& items, std::wstring_view text) {
  std::size_t p = 0, t = 0;
  std::size_t starItem = std::wstring_view::npos, starText = 0;
  while (t < text.size()) {
    if (p < items.size() && items[p].kind == Item::kStar) {
      starItem = p++;
      starText = t;
    } else if (p < items.size() && matchesItem(items[p], text[t])) {
      ++p;
      ++t;
    } else if (starItem != std::wstring_view::npos) {
      p = starItem + 1;
      t = ++starText;
    } else {
      return false;
    }
  }
  while (p < items.size() && items[p].kind == Item::kStar) ++p;
  return p == items.size();
}

}  // namespace

bool wcMatch(std::wstring_view text, std::wstring_view pattern) {
  for (std::wstring_view alternative : alternatives(pattern)) {
    bool negate = false;
    if (!alternative.empty() && alternative.front() == L'~') {
      negate = true;
      alternative.remove_prefix(1);
    }
    if (matchItems(compile(alternative), text) != negate) return true;
  }
  return false;
}

}  // namespace corvane::headless
