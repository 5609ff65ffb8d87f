#include "headless/db/mtext.h"

#include <algorithm>
#include <cstdint>

#include "core/textutil.h"

namespace corvane::headless {

namespace {

// Commands whose argument runs up to the next ';' and is dropped with them.
bool takesArgument(wchar_t c) noexcept {
  switch (c) {
    case L'A':
    case L'C':
    case L'c':
    case L'f':
    case L'F':
    case L'H':
    case L'Q':
    case L'T':
    case L'W':
    case L'p':
      return true;
    default:
      return false;
  }
}

bool isToggle(wchar_t c) noexcept {
  switch (c) {
    case L'L':
    case L'l':
    case L'O':
    case L'o':
    case L'K':
    case L'k':
      return true;
    default:
      return false;
  }
}

std::wstring decodeSymbols(std::wstring_view text) {
  std::wstring out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == L'%' && i + 2 < text.size() && text[i + 1] == L'%') {
      const wchar_t code = core::toLowerChar(text[i + 2]);
      const wchar_t symbol = code == L'd' ? L'\u00B0' : code == L'p' ? L'\u00B1' : code == L'c' ? L'\u00D8' : 0;
      if (symbol != 0) {
        out += symbol;
        i += 2;
        continue;
      }
    }
    out += text[i];
  }
  return out;
}

bool isHexDigit(wchar_t c) noexcept {
  return (c >= L'0' && c <= L'9') || (c >= L'a' && c <= L'f') || (c >= L'A' && c <= L'F');
}

// A stacked fraction's text up to its ';': top and bottom split at the first '^', '/' or '#'.
std::wstring stacked(std::wstring_view body) {
  const std::size_t split = body.find_first_of(L"^/#");
  if (split == std::wstring_view::npos) return std::wstring(body);
  return std::wstring(body.substr(0, split)) + L'/' + std::wstring(body.substr(split + 1));
}

}  // namespace

std::wstring MText::plainText(std::wstring_view text) {
  std::wstring out;
  out.reserve(text.size());
  const std::size_t n = text.size();
  for (std::size_t i = 0; i < n; ++i) {
    const wchar_t c = text[i];
    if (c == L'{' || c == L'}' || c == L'\r') continue;  // a carriage return shows nothing
    if (c != L'\\' || i + 1 == n) {
      out += c;
      continue;
    }
    const wchar_t command = text[++i];
    if (command == L'P' || command == L'X' || command == L'N') {
      out += L'\n';
    } else if (command == L'~') {
      out += L'\u00A0';
    } else if (command == L'\\' || command == L'{' || command == L'}') {
      out += command;
    } else if (isToggle(command)) {
      // formatting only
    } else if (takesArgument(command) || command == L'S') {
      const std::size_t end = text.find(L';', i + 1);
      const std::size_t stop = end == std::wstring::npos ? n : end;
      if (command == L'S') out += stacked(std::wstring_view(text).substr(i + 1, stop - i - 1));
      i = stop;
    } else if (command == L'U' && i + 5 < n && text[i + 1] == L'+' &&
               std::all_of(text.begin() + static_cast<std::ptrdiff_t>(i) + 2,
                           text.begin() + static_cast<std::ptrdiff_t>(i) + 6, isHexDigit)) {
      out += static_cast<wchar_t>(std::stoul(std::wstring(text.substr(i + 2, 4)), nullptr, 16));
      i += 5;
    } else {
      // Not a code: the backslash was meant as written.
      out += L'\\';
      out += command;
    }
  }
  return decodeSymbols(out);
}

void MText::setContents(std::wstring contents) {
  CompactText compact(contents);
  if (compact != contents_) record_.modified = true;
  contents_ = std::move(compact);
}

void MText::setLocation(host::AcGePoint3d location) {
  if (!(location_ == location)) record_.modified = true;
  location_ = location;
}

void MText::setTextHeight(double height) {
  if (height_ != height) record_.modified = true;
  height_ = height;
}

void MText::setWidth(double width) {
  if (width_ != width) record_.modified = true;
  width_ = width;
}

void MText::setAttachment(int attachment) {
  if (attachment_ != attachment) record_.modified = true;
  attachment_ = attachment;
}

void MText::setRotation(double rotation) {
  if (rotation_ != rotation) record_.modified = true;
  rotation_ = rotation;
}

void MText::addExtents(host::AcDbExtents& extents, const geometry::Transform& transform) const {
  addTextBlockExtents(extents, transform, location_, rotation_, attachment_, height_, width_, text());
}

void addTextBlockExtents(host::AcDbExtents& extents, const geometry::Transform& transform,
                         const host::AcGePoint3d& location, double rotation, int attachment, double height,
                         double width, std::wstring_view plainText) {
  // Lines stand 5/3 of the text height apart, the default spacing of multiline texts.
  std::size_t lines = 1;
  double longest = 0.0;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = plainText.find(L'\n', start);
    const std::wstring_view line = plainText.substr(start, end == std::wstring_view::npos ? end : end - start);
    longest = std::max(longest, geometry::estimatedTextWidth(line, height));
    if (end == std::wstring_view::npos) break;
    ++lines;
    start = end + 1;
  }
  const double boxWidth = width > 0.0 ? width : longest;
  const double boxHeight = height * (1.0 + static_cast<double>(lines - 1) * 5.0 / 3.0);
  const int index = std::clamp(attachment, 1, 9) - 1;
  const double left = index % 3 == 0 ? 0.0 : index % 3 == 1 ? -boxWidth / 2 : -boxWidth;
  const double top = index / 3 == 0 ? 0.0 : index / 3 == 1 ? boxHeight / 2 : boxHeight;
  geometry::addRectangle(extents, transform, location, rotation, left, top - boxHeight, left + boxWidth, top);
}

std::optional<host::AcValue> MText::property(std::wstring_view name) const {
  if (core::equalsNoCase(name, L"TextString")) return host::AcValue(contents_.wide());
  if (core::equalsNoCase(name, L"Contents")) return host::AcValue(text());
  if (core::equalsNoCase(name, L"Height")) return host::AcValue(height_);
  if (core::equalsNoCase(name, L"Width")) return host::AcValue(width_);
  if (core::equalsNoCase(name, L"Rotation")) return host::AcValue(rotation_);
  if (core::equalsNoCase(name, L"AttachmentPoint")) return host::AcValue(static_cast<std::int32_t>(attachment_));
  if (core::equalsNoCase(name, L"InsertionPoint")) return host::AcValue(location_.asArray());
  return EntityImpl::property(name);
}

}  // namespace corvane::headless
