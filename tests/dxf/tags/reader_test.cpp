#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dxf/tags/document.h"
#include "dxf/tags/recordview.h"
#include "support/dxftext.h"

namespace corvane::dxf {
namespace {

using namespace std::string_literals;

struct ErrorCase {
  const char* name;
  std::string bytes;
  std::string message;
};

const std::string kSentinel("AutoCAD Binary DXF\r\n\x1a\0", 22);

TEST(Reader, MalformedFilesGiveTheLineOrByteAndWhatWasExpected) {
  const ErrorCase cases[] = {
      {"empty", "", "empty file: no DXF tags"},
      {"blank lines only", "\r\n\n  \n", "empty file: no DXF tags"},
      {"text where a code belongs", "  0\nSECTION\n  2\nENTITIES\nabc\nLINE\n",
       "line 5: expected a group code, found 'abc'"},
      {"code out of range", "99999\nx\n", "line 1: expected a group code, found '99999'"},
      {"ends after a code line", "  0\nSECTION\n  2\n", "line 3: truncated file: group code 2 has no value"},
      {"ends inside a code line", "  0\nSECTION\n  2", "line 3: truncated file: group code 2 has no value"},
      {"no EOF", "  0\nSECTION\n  2\nENTITIES\n  0\nENDSEC\n", "truncated file: no EOF after the last section"},
      {"no ENDSEC", "  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n",
       "truncated file: section ENTITIES begun on line 1 has no ENDSEC"},
      {"section inside a section", "  0\nSECTION\n  2\nHEADER\n  0\nSECTION\n  2\nENTITIES\n",
       "line 5: section HEADER begun on line 1 has no ENDSEC before this SECTION"},
      {"EOF inside a section", "  0\nSECTION\n  2\nBLOCKS\n 0\nBLOCK\n  0\nEOF\n",
       "line 7: section BLOCKS begun on line 1 has no ENDSEC before this EOF"},
      {"not a number", "  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n 10\nx1\n",
       "line 8: expected a real number for group code 10, found 'x1'"},
      {"fraction in an integer", "  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n 70\n1.5\n",
       "line 8: expected an integer for group code 70, found '1.5'"},
      {"16-bit overflow", "  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n 62\n70000\n",
       "line 8: expected an integer for group code 62, found '70000'"},
      {"entity outside a section", "  0\nLINE\n  0\nEOF\n", "line 1: expected SECTION or EOF, found 'LINE'"},
      {"nameless section", "  0\nSECTION\n  5\n1F\n  0\nENDSEC\n  0\nEOF\n",
       "line 1: expected the section name (group code 2) after SECTION"},
      {"tag before the first record", "  5\n1F\n  0\nEOF\n",
       "line 1: expected group code 0 or a 999 comment, found group code 5"},
      {"code line padded past its limit", std::string(1022, ' ') + "0\nSECTION\n",
       "line 1: the line of group code 0 is longer than 1023 bytes"},
      {"unprintable bytes shown safely", "\x01\xFF\n", "line 1: expected a group code, found '?" "?'"},
      {"binary sentinel damaged", "AutoCAD Binary DXF\n\x1a\0"s,
       "byte 18: damaged binary DXF sentinel: expected CR LF SUB NUL after 'AutoCAD Binary DXF'"},
      {"binary without tags", kSentinel, "byte 22: truncated file: no DXF tags after the sentinel"},
      {"binary text without its zero", kSentinel + "\0\0SECTION\0\x02\0ENTITIES"s,
       "byte 32: truncated file: the text of group code 2 has no terminating zero byte"},
      {"binary double cut short", kSentinel + "\0\0SECTION\0\x02\0ENTITIES\0\0\0LINE\0\x0a\0\x01\x02\x03"s,
       "byte 50: truncated file: group code 10 needs 8 value bytes, 3 left"},
      {"binary half a code", kSentinel + "\0\0SECTION\0\x02"s, "byte 32: truncated file: half a group code"},
      {"binary without EOF", kSentinel + "\0\0SECTION\0\x02\0ENTITIES\0\0\0ENDSEC\0"s,
       "truncated file: no EOF after the last section"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const ReadResult result = Document::read(c.bytes);
    EXPECT_EQ(result.document, nullptr);
    EXPECT_EQ(result.error, c.message);
  }
}

TEST(Reader, FileErrorsNameTheFile) {
  const testing::ScratchFolder folder;
  const auto missing = Document::readFile(folder.path() / "missing.dxf");
  EXPECT_EQ(missing.document, nullptr);
  EXPECT_NE(missing.error.find("missing.dxf': No such file or directory"), std::string::npos) << missing.error;

  testing::writeBytes(folder.path() / "broken.dxf", "  0\nSECTION\n  2\nHEADER\n");
  const auto broken = Document::readFile(folder.path() / "broken.dxf");
  EXPECT_EQ(broken.error, "broken.dxf: truncated file: section HEADER begun on line 1 has no ENDSEC");
}

// Binary tags spelt out byte by byte, so the reader is checked against the layout itself.
TEST(Reader, BinaryValuesAreDecodedByTheirGroupCodes) {
  struct Case {
    const char* name;
    std::string tagBytes;  // one tag inside an ENTITIES LINE record
    int code;
    std::string text;
  };
  const std::string twoByteHead = kSentinel + "\0\0SECTION\0\x02\0ENTITIES\0\0\0LINE\0"s;
  const std::string twoByteTail = "\0\0ENDSEC\0\0\0EOF\0"s;
  const Case cases[] = {
      {"double", "\x0a\0\0\0\0\0\0\0\xf8\x3f"s, 10, "1.5"},
      {"negative int16", "\x3e\0\xfe\xff"s, 62, "-2"},
      {"int32", "\x5a\0\x78\x56\x34\x12"s, 90, "305419896"},
      {"int64", "\xa0\0\x01\0\0\0\0\0\0\x80"s, 160, "-9223372036854775807"},
      {"bool is one byte", "\x22\x01\x01"s, 290, "1"},
      {"chunk", "\x36\x01\x03\x00\xAB\xFF"s, 310, "00ABFF"},
      {"xdata chunk", "\xEC\x03\x01\x7F"s, 1004, "7F"},
      {"text", "\x08\0Layer 1\0"s, 8, "Layer 1"},
      {"colour name is text", "\xAE\x01" "DIC 7\0"s, 430, "DIC 7"},
      {"xdata integer", "\x2F\x04\x10\x27\0\0"s, 1071, "10000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto read = Document::read(twoByteHead + c.tagBytes + twoByteTail);
    ASSERT_TRUE(read.document) << read.error;
    const Document& doc = *read.document;
    const RecordId line = doc.sections().at(0).records.at(0);
    ASSERT_EQ(doc.tagCount(line), 2u);
    EXPECT_EQ(doc.tags(line)[1].code, c.code);
    EXPECT_EQ(doc.valueText(doc.tags(line)[1]), c.text);
  }
}

TEST(Reader, OldBinaryFilesHaveOneByteCodesWith255Escaping) {
  const std::string bytes = kSentinel + "\0SECTION\0\x02" "ENTITIES\0\0LINE\0\x0a\0\0\0\0\0\0\x00\x40"s +
                            "\xff\xe9\x03MYAPP\0\xff\x2e\x04\x05\0\0ENDSEC\0\0EOF\0"s;
  const auto read = Document::read(bytes);
  ASSERT_TRUE(read.document) << read.error;
  const Document& doc = *read.document;
  EXPECT_EQ(doc.version(), "AC1009");
  const RecordId line = doc.sections().at(0).records.at(0);
  const auto tags = doc.tags(line);
  ASSERT_EQ(tags.size(), 4u);
  EXPECT_EQ(tags[1].code, 10);
  EXPECT_EQ(doc.toDouble(tags[1]), 2.0);
  EXPECT_EQ(tags[2].code, 1001);
  EXPECT_EQ(doc.valueText(tags[2]), "MYAPP");
  EXPECT_EQ(tags[3].code, 1070);
  EXPECT_EQ(doc.toInteger(tags[3]), 5);
  StringSink sink;
  ASSERT_TRUE(doc.write(sink).ok());
  EXPECT_TRUE(sink.data == bytes);
}

TEST(Reader, KeepsCommentsBeforeTheFirstSectionAndBytesAfterEof) {
  const std::string text = "999\ndxf written by hand\n  0\nSECTION\n  2\nENTITIES\n  0\nENDSEC\n  0\nEOF\ntrailing\n\n";
  const auto read = Document::read(text);
  ASSERT_TRUE(read.document) << read.error;
  ASSERT_NE(read.document->prologue(), kNoRecord);
  EXPECT_EQ(read.document->valueText(read.document->tags(read.document->prologue())[0]), "dxf written by hand");
  StringSink sink;
  ASSERT_TRUE(read.document->write(sink).ok());
  EXPECT_EQ(sink.data, text);
}

TEST(Reader, RecordsKnowTheirHandleOwnerGroupsAndExtendedData) {
  const std::string text = testing::asciiDxf({
      {0, "SECTION"}, {2, "TABLES"},
      {0, "DIMSTYLE"}, {105, "1A"}, {330, "A"}, {100, "AcDbSymbolTableRecord"}, {5, "NOT_A_HANDLE"},
      {0, "ENDSEC"}, {0, "SECTION"}, {2, "ENTITIES"},
      {0, "TEXT"}, {5, "2F"}, {102, "{ACAD_REACTORS"}, {330, "30"}, {330, "31"}, {102, "}"},
      {102, "{ACAD_XDICTIONARY"}, {360, "32"}, {102, "}"}, {330, "1F"}, {100, "AcDbEntity"}, {8, "0"},
      {100, "AcDbText"}, {330, "99"}, {1001, "ACAD"}, {1000, "a"}, {1001, "OTHER"}, {1070, "1"}, {1071, "2"},
      {0, "LINE"}, {8, "0"}, {5, "3A"},
      {0, "ENDSEC"}, {0, "EOF"}});
  const auto read = Document::read(text);
  ASSERT_TRUE(read.document) << read.error;
  const Document& doc = *read.document;
  ASSERT_EQ(doc.sections().size(), 2u);
  EXPECT_EQ(doc.sectionName(0), "TABLES");
  EXPECT_EQ(doc.findSection("ENTITIES"), 1u);
  EXPECT_EQ(doc.findSection("OBJECTS"), std::nullopt);

  const RecordView dimstyle(doc, doc.sections()[0].records.at(0));
  EXPECT_EQ(dimstyle.type(), "DIMSTYLE");
  EXPECT_EQ(dimstyle.handle(), 0x1Au);

  const RecordView text1(doc, doc.sections()[1].records.at(0));
  EXPECT_EQ(text1.handle(), 0x2Fu);
  EXPECT_EQ(text1.owner(), 0x1Fu);  // not a reactor, not the 330 after the subclass marker
  EXPECT_EQ(text1.reactors(), (std::vector<std::uint64_t>{0x30, 0x31}));
  EXPECT_EQ(text1.extensionDictionary(), 0x32u);
  const auto groups = text1.appDataGroups();
  ASSERT_EQ(groups.size(), 2u);
  EXPECT_EQ(groups[1].name, "ACAD_XDICTIONARY");
  EXPECT_EQ(groups[1].begin, 6u);
  EXPECT_EQ(groups[1].end, 8u);
  EXPECT_EQ(text1.xdataBegin(), 14u);
  const auto other = text1.xdata("OTHER");
  ASSERT_TRUE(other.has_value());
  EXPECT_EQ(other->begin, 16u);
  EXPECT_EQ(other->end, 19u);
  EXPECT_FALSE(text1.xdata("MISSING").has_value());

  // R12 files put the handle after the layer.
  EXPECT_EQ(RecordView(doc, doc.sections()[1].records.at(1)).handle(), 0x3Au);
  EXPECT_EQ(doc.findHandle(0x3A), doc.sections()[1].records.at(1));
  EXPECT_EQ(doc.findHandle(0x1A), doc.sections()[0].records.at(0));
  EXPECT_EQ(doc.findHandle(0x99), std::nullopt);
  EXPECT_EQ(doc.maxHandle(), 0x3Au);
}

}  // namespace
}  // namespace corvane::dxf
