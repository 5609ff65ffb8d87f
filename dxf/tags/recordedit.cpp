#include "dxf/tags/recordedit.h"

#include <algorithm>

#include "core/utf8.h"
#include "dxf/tags/groupcode.h"
#include "dxf/tags/numbertext.h"
#include "dxf/tags/textpieces.h"

namespace corvane::dxf {

namespace {

bool isHandleCode(int code) noexcept {
  return code == 5 || code == 105 || (code >= 320 && code <= 369) || (code >= 390 && code <= 399) ||
         code == 480 || code == 481 || code == 1005;
}

}  // namespace

NewTag textTag(const Document& doc, std::int16_t code, std::wstring_view text) {
  return {code, doc.encodeText(text)};
}

NewTag escapedTextTag(const Document& doc, std::int16_t code, std::wstring_view text) {
  return {code, doc.encodeText(encodeCarets(text))};
}

void appendPieces(std::vector<NewTag>& out, const Document& doc, std::wstring_view text, std::int16_t leadCode,
                  std::int16_t lastCode) {
  const auto pieces = splitPieces(text);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    out.push_back({i + 1 == pieces.size() ? lastCode : leadCode, doc.encodeText(encodeCarets(pieces[i]))});
  }
}

void appendPoint(std::vector<NewTag>& out, int code, double x, double y, double z) {
  out.push_back(NewTag::real(static_cast<std::int16_t>(code), x));
  out.push_back(NewTag::real(static_cast<std::int16_t>(code + 10), y));
  out.push_back(NewTag::real(static_cast<std::int16_t>(code + 20), z));
}

void appendEntityStart(std::vector<NewTag>& out, const char* type, std::uint64_t handle, std::uint64_t owner) {
  out.push_back({0, type});
  out.push_back(NewTag::handle(5, handle));
  out.push_back(NewTag::handle(330, owner));
  out.push_back({100, "AcDbEntity"});
  out.push_back({8, "0"});
}

namespace {

// A tag's value in one spelling: numbers and handles as they read, text as it decodes (an
// escape such as "\U+00B0" or "^ " and the character itself are the same text).
std::string canonical(const Document& doc, int code, std::string_view spelt) {
  std::string key = std::to_string(code);
  key.push_back(':');
  if (isHandleCode(code)) {
    std::uint64_t handle = 0;
    if (parseHandle(spelt, handle)) {
      appendHandle(key, handle);
      return key;
    }
  } else if (valueKind(code) == ValueKind::Double) {
    double real = 0;
    if (parseDouble(spelt, real)) {
      appendDouble(key, real);
      return key;
    }
  } else if (isNumeric(valueKind(code))) {
    std::int64_t integer = 0;
    if (parseInteger(spelt, integer)) {
      appendInteger(key, integer);
      return key;
    }
  }
  if (valueKind(code) == ValueKind::String &&
      (spelt.find("\\U+") != std::string_view::npos || spelt.find('^') != std::string_view::npos)) {
    key += core::toUtf8(decodeCarets(doc.codec().decode(spelt)));
    return key;
  }
  key.append(spelt);
  return key;
}

// Applies one run of differences: the old tags [at, at + removed) become `added`. Tags whose
// code stays take the new value in place.
void applyGap(Document& doc, RecordId id, std::size_t at, std::size_t removed, std::span<const NewTag> added) {
  std::size_t same = 0;
  while (same < removed && same < added.size() && doc.tags(id)[at + same].code == added[same].code) {
    if (!holdsValue(doc, doc.tags(id)[at + same], added[same])) doc.setValue(id, at + same, added[same].value);
    ++same;
  }
  for (std::size_t i = removed; i > same; --i) doc.removeTag(id, at + i - 1);
  for (std::size_t i = same; i < added.size(); ++i) doc.insertTag(id, at + i, added[i]);
}

}  // namespace

bool holdsValue(const Document& doc, const Tag& tag, const NewTag& value) {
  if (tag.code != value.code) return false;
  const std::string spelt = doc.valueText(tag);
  if (spelt == value.value) return true;
  return canonical(doc, tag.code, spelt) == canonical(doc, value.code, value.value);
}

bool replaceTags(Document& doc, RecordId id, std::size_t begin, std::size_t end, std::span<const NewTag> tags) {
  const std::size_t n = end - begin;
  const std::size_t m = tags.size();
  std::vector<std::string> before(n);
  std::vector<std::string> after(m);
  {
    const auto old = doc.tags(id);
    for (std::size_t i = 0; i < n; ++i) before[i] = canonical(doc, old[begin + i].code, doc.valueText(old[begin + i]));
  }
  for (std::size_t j = 0; j < m; ++j) after[j] = canonical(doc, tags[j].code, tags[j].value);

  // The tags both runs keep, as the longest common subsequence of their values. The table is
  // quadratic; past a size the runs are only trimmed of their common ends.
  std::size_t prefix = 0;
  while (prefix < n && prefix < m && before[prefix] == after[prefix]) ++prefix;
  std::size_t suffix = 0;
  while (suffix < n - prefix && suffix < m - prefix && before[n - 1 - suffix] == after[m - 1 - suffix]) ++suffix;
  const std::size_t rows = n - prefix - suffix;
  const std::size_t columns = m - prefix - suffix;
  if (rows == 0 && columns == 0) return false;

  struct Gap {
    std::size_t at;       // in the old run
    std::size_t removed;
    std::size_t from;     // in the new run
    std::size_t added;
  };
  std::vector<Gap> gaps;
  if (rows == 0 || columns == 0 || rows * columns > (1u << 22)) {
    gaps.push_back({prefix, rows, prefix, columns});
  } else {
    std::vector<std::uint32_t> common((rows + 1) * (columns + 1), 0);
    auto at = [&](std::size_t i, std::size_t j) -> std::uint32_t& { return common[i * (columns + 1) + j]; };
    for (std::size_t i = rows; i-- > 0;) {
      for (std::size_t j = columns; j-- > 0;) {
        at(i, j) = before[prefix + i] == after[prefix + j] ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
      }
    }
    std::size_t i = 0;
    std::size_t j = 0;
    Gap gap{prefix, 0, prefix, 0};
    while (i < rows || j < columns) {
      if (i < rows && j < columns && before[prefix + i] == after[prefix + j]) {
        if (gap.removed || gap.added) gaps.push_back(gap);
        ++i;
        ++j;
        gap = {prefix + i, 0, prefix + j, 0};
      } else if (j == columns || (i < rows && at(i + 1, j) >= at(i, j + 1))) {
        ++gap.removed;
        ++i;
      } else {
        ++gap.added;
        ++j;
      }
    }
    if (gap.removed || gap.added) gaps.push_back(gap);
  }
  // From the back, so that the indices of the gaps before stay valid.
  for (auto it = gaps.rbegin(); it != gaps.rend(); ++it) {
    applyGap(doc, id, begin + it->at, it->removed, tags.subspan(it->from, it->added));
  }
  return true;
}

}  // namespace corvane::dxf
