#include "dxf/model/values/valueblock.h"

#include <cmath>
#include <cstdint>

#include "dxf/tags/numbertext.h"
#include "dxf/tags/recordedit.h"
#include "dxf/tags/textpieces.h"
#include "headless/db/database.h"

namespace corvane::dxf {

namespace {

constexpr int kNoData = 1;

bool isDataCode(int code) noexcept {
  switch (code) {
    case 1: case 2: case 11: case 21: case 31: case 91: case 92: case 140: case 310: case 330: return true;
    default: return false;
  }
}

bool isTrailerCode(int code) noexcept { return code == 94 || code == 300 || code == 302 || code == 304; }

// Days from 1970-01-01 of a date of the proleptic Gregorian calendar, and back.
std::int64_t daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void civilFromDays(std::int64_t z, std::int64_t& y, unsigned& m, unsigned& d) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = doy - (153 * mp + 2) / 5 + 1;
  m = mp < 10 ? mp + 3 : mp - 9;
  y = static_cast<std::int64_t>(yoe) + era * 400 + (m <= 2);
}

const std::int64_t kOleEpoch = daysFromCivil(1899, 12, 30);

std::uint16_t word(std::string_view bytes, std::size_t index) {
  return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[2 * index]) |
                                    (static_cast<unsigned char>(bytes[2 * index + 1]) << 8));
}

}  // namespace

std::string systemTimeBytes(double oleDate) {
  if (!std::isfinite(oleDate)) oleDate = 0;
  double whole = oleDate >= 0 ? std::floor(oleDate) : std::ceil(oleDate);
  auto ms = static_cast<std::int64_t>(std::llround(std::fabs(oleDate - whole) * 86400000.0));
  if (ms >= 86400000) {
    ms -= 86400000;
    whole += oleDate >= 0 ? 1 : -1;
  }
  const std::int64_t days = static_cast<std::int64_t>(whole) + kOleEpoch;
  std::int64_t year = 0;
  unsigned month = 0;
  unsigned day = 0;
  civilFromDays(days, year, month, day);
  // 1970-01-01 was a Thursday (4); Sunday is 0.
  const std::int64_t weekday = ((days % 7) + 7 + 4) % 7;
  const std::uint16_t fields[8] = {
      static_cast<std::uint16_t>(year),           static_cast<std::uint16_t>(month),
      static_cast<std::uint16_t>(weekday),        static_cast<std::uint16_t>(day),
      static_cast<std::uint16_t>(ms / 3600000),   static_cast<std::uint16_t>(ms / 60000 % 60),
      static_cast<std::uint16_t>(ms / 1000 % 60), static_cast<std::uint16_t>(ms % 1000)};
  std::string bytes;
  for (const std::uint16_t field : fields) {
    bytes.push_back(static_cast<char>(field & 0xFF));
    bytes.push_back(static_cast<char>(field >> 8));
  }
  return bytes;
}

std::optional<double> oleDateFromSystemTime(std::string_view bytes) {
  if (bytes.size() < 16) return std::nullopt;
  const unsigned year = word(bytes, 0);
  const unsigned month = word(bytes, 1);
  const unsigned day = word(bytes, 3);
  const unsigned hour = word(bytes, 4);
  const unsigned minute = word(bytes, 5);
  const unsigned second = word(bytes, 6);
  const unsigned millisecond = word(bytes, 7);
  if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second > 59 || millisecond > 999)
    return std::nullopt;
  const double days = static_cast<double>(daysFromCivil(year, month, day) - kOleEpoch);
  const double fraction = ((hour * 60.0 + minute) * 60.0 + second + millisecond / 1000.0) / 86400.0;
  return days >= 0 ? days + fraction : days - fraction;
}

std::optional<ValueBlock> readValueBlock(const Document& doc, std::span<const Tag> tags, std::size_t begin,
                                         const headless::Database& db) {
  if (begin >= tags.size()) return std::nullopt;
  ValueBlock block;
  block.begin = begin;
  std::size_t i = begin;
  if (tags[i].code == 93) {
    block.flags = static_cast<int>(doc.toInteger(tags[i]).value_or(0));
    ++i;
  } else if (tags[i].code == 90) {
    block.longForm = false;
  } else {
    return std::nullopt;
  }
  if (i >= tags.size() || tags[i].code != 90) return std::nullopt;
  block.dataType = static_cast<int>(doc.toInteger(tags[i]).value_or(0));
  ++i;

  const std::size_t dataBegin = i;
  if (block.longForm) {
    while (i < tags.size() && isDataCode(tags[i].code)) ++i;
  } else {
    // The short form has nothing after the data, so only the type's own codes belong to it.
    auto take = [&](int code) {
      if (i < tags.size() && tags[i].code == code) ++i;
    };
    switch (block.dataType) {
      case host::AcValue::kLong: take(91); break;
      case host::AcValue::kDouble: take(140); break;
      case host::AcValue::kString:
        while (i < tags.size() && tags[i].code == 2) ++i;
        take(1);
        break;
      case host::AcValue::kDate:
      case host::AcValue::kBuffer:
        take(92);
        while (i < tags.size() && tags[i].code == 310) ++i;
        break;
      case host::AcValue::kPoint: take(11); take(21); break;
      case host::AcValue::k3dPoint: take(11); take(21); take(31); break;
      case host::AcValue::kObjectId: take(330); break;
      default: break;
    }
  }
  const auto data = tags.subspan(dataBegin, i - dataBegin);
  auto first = [&](int code) -> const Tag* {
    for (const Tag& tag : data)
      if (tag.code == code) return &tag;
    return nullptr;
  };

  if (block.longForm) {
    while (i < tags.size() && isTrailerCode(tags[i].code)) {
      const Tag& tag = tags[i++];
      if (tag.code == 94) block.unitType = static_cast<int>(doc.toInteger(tag).value_or(0));
      else if (tag.code == 300) block.value.setFormat(doc.text(tag));
      else if (tag.code == 302) block.formatted = doc.hostText(tag);
      else break;  // 304, the end marker
    }
  }
  block.end = i;

  if (block.longForm && (block.flags & kNoData) != 0) return block;
  std::wstring format = block.value.getFormat();
  auto set = [&](host::AcValue value) {
    value.setFormat(std::move(format));
    block.value = std::move(value);
  };
  switch (block.dataType) {
    case host::AcValue::kUnknown:
      if (!data.empty()) block.opaque = true;
      break;
    case host::AcValue::kLong:
      if (const Tag* tag = first(91)) set(host::AcValue(static_cast<std::int32_t>(doc.toInteger(*tag).value_or(0))));
      else block.opaque = true;
      break;
    case host::AcValue::kDouble:
      if (const Tag* tag = first(140)) set(host::AcValue(doc.toDouble(*tag).value_or(0.0)));
      else block.opaque = true;
      break;
    case host::AcValue::kString: {
      std::string bytes;
      for (const Tag& tag : data)
        if (tag.code == 2) doc.appendValueText(tag, bytes);
      if (const Tag* last = first(1)) doc.appendValueText(*last, bytes);
      set(host::AcValue(decodeCarets(doc.codec().decode(bytes))));
      break;
    }
    case host::AcValue::kDate: {
      std::string bytes;
      for (const Tag& tag : data)
        if (tag.code == 310) parseHexBytes(doc.valueText(tag), bytes);
      if (const auto date = oleDateFromSystemTime(bytes)) set(host::AcValue(host::AcValue::Date{*date}));
      else block.opaque = true;
      break;
    }
    case host::AcValue::kPoint:
    case host::AcValue::k3dPoint: {
      const Tag* x = first(11);
      const Tag* y = first(21);
      const Tag* z = first(31);
      if (!x || !y) {
        block.opaque = true;
      } else if (block.dataType == host::AcValue::kPoint) {
        set(host::AcValue(host::AcValue::Point2d{doc.toDouble(*x).value_or(0), doc.toDouble(*y).value_or(0)}));
      } else {
        set(host::AcValue(host::AcValue::Point3d{doc.toDouble(*x).value_or(0), doc.toDouble(*y).value_or(0),
                                                 z ? doc.toDouble(*z).value_or(0) : 0.0}));
      }
      break;
    }
    case host::AcValue::kObjectId: {
      host::AcDbObjectId id;
      const Tag* tag = first(330);
      const auto handle = tag ? doc.toHandle(*tag) : std::nullopt;
      if (handle && db.getAcDbObjectId(id, host::AcDbHandle(*handle)) == host::Acad::eOk) set(host::AcValue(id));
      else block.opaque = true;
      break;
    }
    default: block.opaque = true; break;
  }
  return block;
}

void appendValueBlock(std::vector<NewTag>& out, const Document& doc, const host::AcValue& value,
                      const ValueStyle& style, bool longForm, const headless::Database& db) {
  const bool empty = value.isEmpty();
  if (longForm) out.push_back(NewTag::integer(93, empty ? (style.flags | kNoData) : (style.flags & ~kNoData)));
  out.push_back(NewTag::integer(90, value.dataType()));
  std::int32_t integer = 0;
  double real = 0;
  std::wstring text;
  host::AcValue::Date date;
  host::AcValue::Point2d point2{};
  host::AcValue::Point3d point3{};
  host::AcDbObjectId id;
  if (value.get(integer)) {
    out.push_back(NewTag::integer(91, integer));
  } else if (value.get(real)) {
    out.push_back(NewTag::real(140, real));
  } else if (value.get(text)) {
    appendPieces(out, doc, text, 2, 1);
  } else if (value.get(date)) {
    const std::string bytes = systemTimeBytes(date.oleDate);
    out.push_back(NewTag::integer(92, static_cast<std::int64_t>(bytes.size())));
    std::string hex;
    appendHexBytes(hex, bytes);
    out.push_back({310, hex});
  } else if (value.get(point2)) {
    out.push_back(NewTag::real(11, point2[0]));
    out.push_back(NewTag::real(21, point2[1]));
  } else if (value.get(point3)) {
    out.push_back(NewTag::real(11, point3[0]));
    out.push_back(NewTag::real(21, point3[1]));
    out.push_back(NewTag::real(31, point3[2]));
  } else if (value.get(id)) {
    out.push_back(NewTag::handle(330, db.objects().handle(id).value()));
  }
  if (!longForm) return;
  out.push_back(NewTag::integer(94, style.unitType));
  out.push_back(textTag(doc, 300, value.getFormat()));
  out.push_back(escapedTextTag(doc, 302, style.formatted));
  out.push_back({304, "ACVALUE_END"});
}

}  // namespace corvane::dxf
