#include "dxf/model/extendeddata.h"

#include "dxf/tags/recordedit.h"

namespace corvane::dxf {

namespace {

bool isPointCode(int code) noexcept { return code >= 1010 && code <= 1013; }
bool isRealCode(int code) noexcept { return code >= 1040 && code <= 1042; }
bool isIntegerCode(int code) noexcept { return code == 1070 || code == 1071; }
// Plain strings are texts like any other; names, layers and handles are not escaped.
constexpr int kStringCode = 1000;

}  // namespace

host::ResBufList readExtendedData(const Document& doc, std::span<const Tag> tags, std::size_t begin) {
  host::ResBufList data;
  for (std::size_t i = begin; i < tags.size(); ++i) {
    const Tag& tag = tags[i];
    host::ResBuf item;
    item.restype = tag.code;
    if (isPointCode(tag.code)) {
      std::array<double, 3> point{doc.toDouble(tag).value_or(0.0), 0.0, 0.0};
      for (int axis = 1; axis < 3 && i + 1 < tags.size() && tags[i + 1].code == tag.code + 10 * axis; ++axis) {
        point[static_cast<std::size_t>(axis)] = doc.toDouble(tags[++i]).value_or(0.0);
      }
      item.value = point;
    } else if (isRealCode(tag.code)) {
      item.value = doc.toDouble(tag).value_or(0.0);
    } else if (isIntegerCode(tag.code)) {
      item.value = static_cast<std::int32_t>(doc.toInteger(tag).value_or(0));
    } else {
      item.value = tag.code == kStringCode ? doc.hostText(tag) : doc.text(tag);
    }
    data.push_back(std::move(item));
  }
  return data;
}

std::vector<NewTag> extendedDataTags(const Document& doc, const host::ResBufList& data) {
  std::vector<NewTag> out;
  for (const auto& item : data) {
    const auto code = static_cast<std::int16_t>(item.restype);
    if (const auto* point = std::get_if<std::array<double, 3>>(&item.value)) {
      out.push_back(NewTag::real(code, (*point)[0]));
      out.push_back(NewTag::real(static_cast<std::int16_t>(code + 10), (*point)[1]));
      out.push_back(NewTag::real(static_cast<std::int16_t>(code + 20), (*point)[2]));
    } else if (const auto* real = std::get_if<double>(&item.value)) {
      out.push_back(NewTag::real(code, *real));
    } else if (const auto* integer = std::get_if<std::int32_t>(&item.value)) {
      out.push_back(NewTag::integer(code, *integer));
    } else {
      const auto& text = std::get<std::wstring>(item.value);
      out.push_back(code == kStringCode ? escapedTextTag(doc, code, text) : textTag(doc, code, text));
    }
  }
  return out;
}

}  // namespace corvane::dxf
