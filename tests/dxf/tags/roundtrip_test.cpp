#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "dxf/tags/document.h"
#include "dxf/tags/groupcode.h"
#include "support/dxftext.h"

namespace corvane::dxf {
namespace {

using testing::TagText;

std::vector<std::filesystem::path> sampleFiles() {
  std::vector<std::filesystem::path> files;
  const std::filesystem::path folder = std::filesystem::path(CORVANE_SHARED_DIR) / "samples" / "dxf";
  if (!std::filesystem::is_directory(folder)) return files;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.path().extension() == ".dxf") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<TagText> tagsOf(const Document& doc) {
  std::vector<TagText> out;
  for (const RecordId id : doc.fileOrder())
    for (const Tag& tag : doc.tags(id)) out.emplace_back(tag.code, doc.valueText(tag));
  return out;
}

std::string written(const Document& doc, std::optional<FileFormat> format = std::nullopt) {
  StringSink sink;
  const Status status = doc.write(sink, format);
  EXPECT_TRUE(status.ok()) << status.message();
  return sink.data;
}

// Two tag lists agree when codes are equal and values are equal as the code's kind reads
// them: numbers by value (a binary copy spells them its own way), everything else by text.
void expectSameTags(const std::vector<TagText>& expected, const std::vector<TagText>& actual) {
  ASSERT_EQ(expected.size(), actual.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    ASSERT_EQ(expected[i].first, actual[i].first) << "tag " << i;
    const ValueKind kind = valueKind(expected[i].first);
    if (kind == ValueKind::Double) {
      const double a = std::stod(expected[i].second);
      const double b = std::stod(actual[i].second);
      ASSERT_TRUE(a == b || (std::isnan(a) && std::isnan(b))) << "tag " << i << ": " << expected[i].second;
    } else if (isNumeric(kind)) {
      ASSERT_EQ(std::stoll(expected[i].second), std::stoll(actual[i].second)) << "tag " << i;
    } else if (kind == ValueKind::Chunk) {
      ASSERT_EQ(expected[i].second, actual[i].second) << "tag " << i;
    } else {
      ASSERT_EQ(expected[i].second, actual[i].second) << "tag " << i;
    }
  }
}

TEST(RoundTrip, EverySampleDrawingSurvivesBinaryAndBack) {
  const auto files = sampleFiles();
  if (files.empty()) GTEST_SKIP() << "no sample drawings at " << CORVANE_SHARED_DIR;
  for (const auto& file : files) {
    SCOPED_TRACE(file.filename().string());
    const ReadResult ascii = Document::readFile(file);
    ASSERT_TRUE(ascii.document) << ascii.error;
    const std::string binaryBytes = written(*ascii.document, FileFormat::Binary);
    const ReadResult binary = Document::read(binaryBytes);
    ASSERT_TRUE(binary.document) << binary.error;
    EXPECT_EQ(binary.document->format(), FileFormat::Binary);
    EXPECT_EQ(binary.document->version(), ascii.document->version());
    expectSameTags(tagsOf(*ascii.document), tagsOf(*binary.document));
    // Binary saved as binary is a byte copy too.
    EXPECT_TRUE(written(*binary.document) == binaryBytes);
    // And back to ASCII: the same tags once more.
    const ReadResult again = Document::read(written(*binary.document, FileFormat::Ascii));
    ASSERT_TRUE(again.document) << again.error;
    expectSameTags(tagsOf(*ascii.document), tagsOf(*again.document));
  }
}

struct GeneratedCase {
  const char* name;
  std::string version;
  std::string codePage;
  std::string eol;
  bool byteOrderMark;
};

TEST(RoundTrip, GeneratedDrawingsKeepTheirSpellingLineEndsAndEncoding) {
  const std::vector<TagText> entities = {
      {0, "TEXT"},     {5, "2A"},         {8, "0"},           {10, "  0.0"},    {20, "1.50"}, {30, "0"},
      {40, "2.5E+01"}, {1, "Stra\xDF" "e \\U+4E2D"}, {999, "a comment"}, {70, "     3"},
      {1001, "APP"},   {1000, "  leading and trailing  "}, {1070, "-7"}, {1071, "-2147483648"},
      {310, "00FF10"}, {1004, "AB"}};
  const GeneratedCase cases[] = {
      {"R2000 cp1252 LF", "AC1015", "ANSI_1252", "\n", false},
      {"R2004 cp1252 CRLF", "AC1018", "ANSI_1252", "\r\n", false},
      {"R12 cp1251 CRLF", "AC1009", "ANSI_1251", "\r\n", false},
      {"R2018 UTF-8 with BOM", "AC1032", "ANSI_1252", "\r\n", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::string text = testing::asciiDxf(testing::drawing(c.version, entities, c.codePage), c.eol);
    if (c.byteOrderMark) text.insert(0, "\xEF\xBB\xBF");
    const ReadResult read = Document::read(text);
    ASSERT_TRUE(read.document) << read.error;
    EXPECT_EQ(read.document->lineEnding(), c.eol);
    EXPECT_TRUE(written(*read.document) == text);
    expectSameTags(testing::drawing(c.version, entities, c.codePage), tagsOf(*read.document));

    const std::string binaryBytes = written(*read.document, FileFormat::Binary);
    const ReadResult binary = Document::read(binaryBytes);
    ASSERT_TRUE(binary.document) << binary.error;
    expectSameTags(tagsOf(*read.document), tagsOf(*binary.document));
    EXPECT_TRUE(written(*binary.document) == binaryBytes);
  }
}

TEST(RoundTrip, CodeLinesKeepTheirPaddingUpToTheLongestAllowed) {
  // A drawing whose every code line is padded one way: each comes back as it was, and the tags
  // read are the same whatever the padding.
  struct Case {
    const char* name;
    std::string before;  // blanks before each code
    std::string after;   // blanks after it
    std::string eol;
  } const cases[] = {
      {"none", "", "", "\n"},
      {"tabs on both sides", "\t", "\t\t", "\r\n"},
      {"longest line with LF", std::string(1019, ' '), "", "\n"},  // 1019 + "999" + LF = 1023 bytes
      {"longest line with CRLF", std::string(500, ' '), std::string(518, ' '), "\r\n"},
  };
  const std::vector<TagText> entities = {{0, "LINE"}, {5, "2A"}, {8, "0"}, {10, "1.5"}, {999, "note"}};
  const auto plain = testing::drawing("AC1015", entities);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::string text;
    for (const auto& [code, value] : plain) text += c.before + std::to_string(code) + c.after + c.eol + value + c.eol;
    const ReadResult read = Document::read(text);
    ASSERT_TRUE(read.document) << read.error;
    EXPECT_TRUE(written(*read.document) == text);
    expectSameTags(plain, tagsOf(*read.document));
  }
}

TEST(RoundTrip, EditedTagsAreRewrittenAndTheRestStaysAsItWas) {
  const std::vector<TagText> entities = {{0, "LINE"}, {5, "2A"}, {8, "0"}, {10, "  1.0"}, {20, "2.0"},
                                         {0, "CIRCLE"}, {5, "2B"}, {8, "0"}, {40, "  3.0"}};
  const std::string text = testing::asciiDxf(testing::drawing("AC1015", entities), "\r\n");
  auto doc = std::move(Document::read(text).document);
  ASSERT_TRUE(doc);
  const RecordId line = *doc->findHandle(0x2A);
  doc->setDouble(line, 3, 0.1);
  const std::string out = written(*doc);
  // Only the value line of the edited tag differs; the untouched circle keeps its padding.
  std::string expected = text;
  const std::string before = " 10\r\n  1.0\r\n";
  expected.replace(expected.find(before), before.size(), " 10\r\n0.1\r\n");
  EXPECT_EQ(out, expected);
}

// Every tag of the document exactly as held: where its bytes are and how they are spelt.
std::vector<std::tuple<std::int16_t, std::uint32_t, std::uint32_t, std::uint16_t>> heldTags(const Document& doc) {
  std::vector<std::tuple<std::int16_t, std::uint32_t, std::uint32_t, std::uint16_t>> out;
  for (const RecordId id : doc.fileOrder())
    for (const Tag& tag : doc.tags(id)) out.emplace_back(tag.code, tag.value, tag.size, tag.packed);
  return out;
}

// Records long and short, enough of them that the reader's blocks of tags fill up mid-record
// and a record is larger than a block.
std::string manyRecords(std::string_view eol) {
  std::vector<TagText> entities;
  for (int i = 0; i < 4000; ++i) {
    char handle[16];
    std::snprintf(handle, sizeof handle, "%X", 0x200 + i);
    entities.insert(entities.end(), {{0, "LINE"}, {5, handle}, {8, "0"}, {10, std::to_string(i)},
                                     {20, "2.5"}, {999, i % 7 == 0 ? "" : "x"}});
    if (i == 1500) {
      entities.insert(entities.end(), {{0, "LWPOLYLINE"}, {5, "100"}, {8, "0"}, {90, "12000"}});
      for (int v = 0; v < 12000; ++v) entities.insert(entities.end(), {{10, std::to_string(v)}, {20, "-1"}});
    }
  }
  return testing::asciiDxf(testing::drawing("AC1027", entities), eol);
}

// Every sample drawing and a large one of our own read as a line split sees them, and are
// written back byte for byte, before and after their records were released and read again.
TEST(RoundTrip, ReleasedRecordsAreReadAgainAsTheyWereAndWrittenUnchanged) {
  struct Case {
    std::string name;
    std::string bytes;
  };
  std::vector<Case> cases = {{"many records, LF", manyRecords("\n")}, {"many records, CRLF", manyRecords("\r\n")}};
  for (const auto& file : sampleFiles()) cases.push_back({file.filename().string(), testing::readBytes(file)});
  const std::size_t asciiCases = cases.size();
  for (std::size_t i = 0; i < asciiCases; ++i) {
    const ReadResult read = Document::read(cases[i].bytes);
    ASSERT_TRUE(read.document) << read.error;
    cases.push_back({cases[i].name + ", binary", written(*read.document, FileFormat::Binary)});
  }

  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ReadResult read = Document::read(c.bytes);
    ASSERT_TRUE(read.document) << read.error;
    Document& doc = *read.document;
    const FileFormat other = doc.format() == FileFormat::Ascii ? FileFormat::Binary : FileFormat::Ascii;
    // Tags as a plain line split sees them, spelling (blanks, padding) included.
    if (doc.format() == FileFormat::Ascii) expectSameTags(testing::splitLines(c.bytes), tagsOf(doc));
    const auto tags = heldTags(doc);
    const std::string converted = written(doc, other);
    std::vector<std::string_view> types;
    for (RecordId id : doc.fileOrder()) types.push_back(doc.recordType(id));
    const auto handles = std::pair(doc.maxHandle(), doc.findHandle(doc.maxHandle()));

    // Half the records first: a block of tags goes only with its last record.
    const auto records = doc.fileOrder();
    for (std::size_t r = 0; r < records.size(); r += 2) doc.release(records[r]);
    for (RecordId id : records) doc.release(id);
    for (RecordId id : records) ASSERT_TRUE(doc.isReleased(id));

    EXPECT_TRUE(written(doc) == c.bytes);
    EXPECT_TRUE(written(doc, other) == converted);
    std::vector<std::string_view> typesAgain;
    for (RecordId id : records) typesAgain.push_back(doc.recordType(id));
    EXPECT_EQ(typesAgain, types);
    EXPECT_EQ(std::pair(doc.maxHandle(), doc.findHandle(doc.maxHandle())), handles);
    EXPECT_EQ(heldTags(doc), tags);
    // What was read again can go again, and comes back the same.
    for (RecordId id : records) doc.release(id);
    EXPECT_EQ(heldTags(doc), tags);
    EXPECT_TRUE(written(doc) == c.bytes);
  }
}

TEST(RoundTrip, EditsToReleasedRecordsAreWrittenAndStay) {
  const std::string text = manyRecords("\r\n");
  auto doc = std::move(Document::read(text).document);
  ASSERT_TRUE(doc);
  const RecordId polyline = *doc->findHandle(0x100);
  const RecordId line = *doc->findHandle(0x201);
  for (RecordId id : doc->fileOrder()) doc->release(id);

  // Tags handed out before a change stay as they were.
  const auto before = doc->tags(polyline);
  doc->setText(line, 2, L"Walls");
  doc->insertTag(polyline, 4, NewTag::integer(70, 1));
  ASSERT_EQ(before.size(), 4u + 2 * 12000);
  EXPECT_EQ(doc->valueText(before[4]), "0");
  EXPECT_EQ(doc->tags(polyline)[4].code, 70);
  // Releasing an edited record keeps the edit.
  doc->release(line);
  doc->release(polyline);
  EXPECT_FALSE(doc->isReleased(line));

  std::string expected = text;
  const std::string layer = "  5\r\n201\r\n  8\r\n0\r\n";
  expected.replace(expected.find(layer), layer.size(), "  5\r\n201\r\n  8\r\nWalls\r\n");
  const std::string count = " 90\r\n12000\r\n";
  expected.replace(expected.find(count), count.size(), count + " 70\r\n1\r\n");
  EXPECT_EQ(written(*doc), expected);
}

}  // namespace
}  // namespace corvane::dxf
