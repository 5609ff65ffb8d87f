// Value blocks: dates as SYSTEMTIME bytes, and every kind of value written and read back in
// the long form of R2007 drawings and the short form of older ones.
#include "dxf/model/values/valueblock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "dxf/tags/numbertext.h"
#include "headless/db/database.h"
#include "headless/db/line.h"
#include "headless/hostapplication.h"
#include "support/dxftext.h"

namespace corvane::dxf {
namespace {

std::string hexOf(std::string_view bytes) {
  std::string hex;
  appendHexBytes(hex, bytes);
  return hex;
}

TEST(ValueBlock, ConvertsDatesToAndFromSystemTime) {
  // year, month, weekday (0 Sunday), day, hour, minute, second, millisecond; 16 bits each,
  // low byte first. 1899-12-30 is day 0 and a Saturday; 2000-01-01 is day 36526.
  struct Case {
    const char* hex;
    double oleDate;
  };
  const Case cases[] = {
      {"E40704000200150010002D0027000000", 43942 + (16 * 3600 + 45 * 60 + 39) / 86400.0},  // Tue 2020-04-21
      {"6B070C0006001E000000000000000000", 0.0},                                          // Sat 1899-12-30
      {"6B070C0005001D000600000000000000", -1.25},                    // Fri 1899-12-29 06:00
      {"D007020002001D000C0000000000F401", 36585.5 + 0.5 / 86400.0},  // Tue 2000-02-29 12:00:00.500
      {"D0070100060001000000000000000000", 36526.0},                  // Sat 2000-01-01
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.hex);
    std::string bytes;
    ASSERT_TRUE(parseHexBytes(c.hex, bytes));
    const auto date = oleDateFromSystemTime(bytes);
    ASSERT_TRUE(date);
    EXPECT_NEAR(*date, c.oleDate, 1e-9);
    EXPECT_EQ(hexOf(systemTimeBytes(c.oleDate)), c.hex);
  }
  // Not a date: month 13, or too few bytes.
  std::string bad;
  ASSERT_TRUE(parseHexBytes("E4070D00020015001000000000000000", bad));
  EXPECT_FALSE(oleDateFromSystemTime(bad));
  EXPECT_FALSE(oleDateFromSystemTime(bad.substr(0, 15)));
}

// A drawing with one record made of the value block's tags, read back.
struct RoundTrip {
  std::optional<ValueBlock> block;
  std::vector<std::pair<int, std::string>> tags;
};

RoundTrip roundTrip(const std::string& version, const host::AcValue& value, const ValueStyle& style,
                    headless::Database& db) {
  auto doc = Document::create(version);
  std::vector<NewTag> tags = {{0, "XRECORD"}, {5, "1F"}};
  appendValueBlock(tags, *doc, value, style, doc->isUnicodeVersion(), db);
  tags.push_back({98, "0"});  // what follows a block in a field record
  const std::size_t section = doc->insertSection(1, "OBJECTS");
  const RecordId id = doc->insertRecord(section, 0, tags);
  RoundTrip result;
  result.block = readValueBlock(*doc, doc->tags(id), 2, db);
  for (const Tag& tag : doc->tags(id)) result.tags.emplace_back(tag.code, doc->valueText(tag));
  return result;
}

TEST(ValueBlock, WritesAndReadsEveryKindOfValue) {
  headless::HostApplication host;
  headless::Database db(host);
  const host::AcDbObjectId line = db.appendEntity(std::make_unique<headless::Line>());
  host::AcValue formatted(2.5);
  formatted.setFormat(L"%lu2%pr3");
  // Texts are kept as stored, with their caret escapes.
  const std::wstring longText = std::wstring(300, L'x') + L"^Iy";
  struct Case {
    const char* name;
    host::AcValue value;
    std::vector<int> dataCodes;  // the data tags between the type and the unit
  };
  const Case cases[] = {
      {"empty", host::AcValue(), {}},
      {"long", host::AcValue(std::int32_t{-42}), {91}},
      {"double with format", formatted, {140}},
      {"short string", host::AcValue(L"Date"), {1}},
      {"long string", host::AcValue(longText), {2, 1}},
      {"date", host::AcValue(host::AcValue::Date{43942.5}), {92, 310}},
      {"2d point", host::AcValue(host::AcValue::Point2d{1.5, -2}), {11, 21}},
      {"3d point", host::AcValue(host::AcValue::Point3d{1, 2, 3}), {11, 21, 31}},
      {"object", host::AcValue(line), {330}},
  };
  for (const char* version : {"AC1032", "AC1018"}) {
    const bool longForm = std::string(version) >= "AC1021";
    for (const auto& c : cases) {
      SCOPED_TRACE(std::string(version) + " " + c.name);
      ValueStyle style;
      style.flags = 6;
      style.unitType = 4;
      style.formatted = L"shown";
      const RoundTrip trip = roundTrip(version, c.value, style, db);
      ASSERT_TRUE(trip.block);
      EXPECT_EQ(trip.block->value.data(), c.value.data());
      EXPECT_FALSE(trip.block->opaque);
      EXPECT_EQ(trip.block->dataType, c.value.dataType());
      EXPECT_EQ(trip.block->end, trip.tags.size() - 1) << "the block ends before the tag after it";
      // The data: from after the type up to the unit (long form) or the next tag (short form).
      std::vector<int> codes;
      for (std::size_t i = longForm ? 4 : 3; i < trip.tags.size(); ++i) {
        const int code = trip.tags[i].first;
        if (code == 94 || code == 98) break;
        if (codes.empty() || codes.back() != code) codes.push_back(code);
      }
      EXPECT_EQ(codes, c.dataCodes);
      if (longForm) {
        EXPECT_EQ(trip.block->value.getFormat(), c.value.getFormat());
        EXPECT_EQ(trip.block->unitType, 4);
        EXPECT_EQ(trip.block->formatted, L"shown");
        // Bit 1 says whether data follows; the other bits are kept.
        EXPECT_EQ(trip.block->flags, c.value.isEmpty() ? 7 : 6);
        EXPECT_EQ(trip.tags[trip.tags.size() - 2], (std::pair<int, std::string>{304, "ACVALUE_END"}));
      }
    }
  }
}

TEST(ValueBlock, WritesControlCharactersAndCaretsAsEscapes) {
  headless::HostApplication host;
  headless::Database db(host);
  const RoundTrip trip = roundTrip("AC1032", host::AcValue(L"a\tb\nc^d"), ValueStyle{}, db);
  ASSERT_TRUE(trip.block);
  EXPECT_EQ(trip.block->value, host::AcValue(L"a\tb\nc^d"));
  EXPECT_NE(std::find(trip.tags.begin(), trip.tags.end(), std::pair<int, std::string>{1, "a^Ib^Jc^ d"}), trip.tags.end());
}

TEST(ValueBlock, KeepsValuesItCannotHoldOpaque) {
  headless::HostApplication host;
  headless::Database db(host);
  struct Case {
    const char* name;
    std::vector<testing::TagText> tags;
    bool opaque;
    std::size_t end;
  };
  const Case cases[] = {
      // A result buffer (256) and a general value (512): their data is kept, not understood.
      {"resbuf", {{93, "2"}, {90, "256"}, {92, "2"}, {310, "0102"}, {94, "0"}, {300, ""}, {302, ""}, {304, "ACVALUE_END"}},
       true, 8},
      {"general", {{93, "2"}, {90, "512"}, {1, "x"}, {94, "0"}, {304, "ACVALUE_END"}}, true, 5},
      // An object that is not in the drawing.
      {"dangling object", {{93, "2"}, {90, "64"}, {330, "ABC"}, {304, "ACVALUE_END"}}, true, 4},
      // "No data" in the flags: nothing to understand.
      {"no data", {{93, "3"}, {90, "0"}, {94, "0"}, {300, ""}, {302, ""}, {304, "ACVALUE_END"}}, false, 6},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<testing::TagText> tags = {{0, "SECTION"}, {2, "OBJECTS"}, {0, "XRECORD"}, {5, "20"}};
    tags.insert(tags.end(), c.tags.begin(), c.tags.end());
    tags.push_back({0, "ENDSEC"});
    tags.push_back({0, "EOF"});
    auto read = Document::read(testing::asciiDxf(tags));
    ASSERT_TRUE(read.document) << read.error;
    const RecordId id = read.document->sections()[0].records[0];
    const auto block = readValueBlock(*read.document, read.document->tags(id), 2, db);
    ASSERT_TRUE(block);
    EXPECT_EQ(block->opaque, c.opaque);
    EXPECT_TRUE(block->value.isEmpty());
    EXPECT_EQ(block->end, 2 + c.end);
  }
}

}  // namespace
}  // namespace corvane::dxf
