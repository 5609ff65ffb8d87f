#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "dxf/tags/document.h"
#include "dxf/tags/recordview.h"
#include "support/dxftext.h"

namespace corvane::dxf {
namespace {

std::unique_ptr<Document> load(const std::vector<testing::TagText>& tags) {
  auto read = Document::read(testing::asciiDxf(tags));
  EXPECT_TRUE(read.document) << read.error;
  return std::move(read.document);
}

std::unique_ptr<Document> reread(const Document& doc) {
  StringSink sink;
  const Status status = doc.write(sink);
  EXPECT_TRUE(status.ok()) << status.message();
  auto read = Document::read(sink.data);
  EXPECT_TRUE(read.document) << read.error;
  return std::move(read.document);
}

std::string headerValue(const Document& doc, std::string_view name) {
  const auto variable = doc.headerVariable(name);
  if (!variable || variable->last == variable->first) return "(none)";
  return doc.valueText(doc.tags(doc.headerRecord())[variable->first]);
}

const std::vector<testing::TagText> kEntities = {{0, "LINE"}, {5, "2A"}, {330, "1F"}, {8, "0"},
                                                 {10, "1.0"}, {20, "2.0"}, {0, "CIRCLE"}, {5, "FF"},
                                                 {8, "0"}, {40, "3.0"}};

TEST(Document, AllocatedHandlesComeFromTheSeedAndRaiseIt) {
  struct Case {
    const char* name;
    std::string seed;  // empty: no $HANDSEED
    std::uint64_t first;
    std::string seedAfterTwo;
  };
  const Case cases[] = {
      {"seed above every handle", "1000", 0x1000, "1002"},
      {"seed below a used handle", "20", 0x100, "102"},  // FF is taken: go past it
      {"lower-case seed", "abc", 0xABC, "ABE"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto tags = testing::drawing("AC1015", kEntities);
    tags[7].second = c.seed;
    auto doc = load(tags);
    EXPECT_EQ(doc->allocateHandle(), c.first);
    EXPECT_EQ(doc->allocateHandle(), c.first + 1);
    EXPECT_EQ(headerValue(*doc, "$HANDSEED"), c.seedAfterTwo);
    EXPECT_EQ(headerValue(*reread(*doc), "$HANDSEED"), c.seedAfterTwo);
  }

  // Without a header there is no seed to keep, but handles still never repeat.
  auto bare = load({{0, "SECTION"}, {2, "ENTITIES"}, {0, "LINE"}, {5, "7"}, {0, "ENDSEC"}, {0, "EOF"}});
  EXPECT_EQ(bare->allocateHandle(), 8u);
  EXPECT_EQ(bare->allocateHandle(), 9u);
}

TEST(Document, HeaderVariablesAreReadReplacedAndAdded) {
  auto doc = load(testing::drawing("AC1015", kEntities));
  EXPECT_EQ(headerValue(*doc, "$ACADVER"), "AC1015");
  EXPECT_EQ(headerValue(*doc, "$MISSING"), "(none)");

  const NewTag insbase[] = {NewTag::real(10, 1.5), NewTag::real(20, -2), NewTag::real(30, 0)};
  doc->setHeaderVariable("$INSBASE", insbase);
  const NewTag version[] = {{1, "AC1018"}};
  doc->setHeaderVariable("$ACADVER", version);

  auto again = reread(*doc);
  EXPECT_EQ(again->version(), "AC1018");
  const auto variable = again->headerVariable("$INSBASE");
  ASSERT_TRUE(variable.has_value());
  ASSERT_EQ(variable->last - variable->first, 3u);
  const auto tags = again->tags(again->headerRecord());
  EXPECT_EQ(again->valueText(tags[variable->first]), "1.5");
  EXPECT_EQ(again->valueText(tags[variable->first + 1]), "-2.0");
  EXPECT_EQ(again->toDouble(tags[variable->first + 2]), 0.0);
  // The variable after $ACADVER is still there: only the value was replaced.
  EXPECT_EQ(headerValue(*again, "$DWGCODEPAGE"), "ANSI_1252");
}

TEST(Document, RecordsAreInsertedRemovedAndFoundByHandle) {
  auto doc = load(testing::drawing("AC1015", kEntities));
  const std::size_t entities = *doc->findSection("ENTITIES");
  const RecordId circle = *doc->findHandle(0xFF);
  const std::uint64_t handle = doc->allocateHandle();
  const NewTag point[] = {{0, "POINT"}, NewTag::handle(5, handle), {8, "0"}, NewTag::real(10, 4)};
  const RecordId added = doc->insertRecord(entities, 1, point);
  EXPECT_EQ(doc->findHandle(handle), added);
  doc->removeRecord(circle);
  EXPECT_TRUE(doc->isErased(circle));
  EXPECT_EQ(doc->findHandle(0xFF), std::nullopt);

  auto again = reread(*doc);
  const auto& records = again->sections()[*again->findSection("ENTITIES")].records;
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(again->recordType(records[0]), "LINE");
  EXPECT_EQ(again->recordType(records[1]), "POINT");
  EXPECT_EQ(RecordView(*again, records[1]).handle(), handle);
  EXPECT_EQ(again->toDouble(again->tags(records[1])[3]), 4.0);
}

TEST(Document, TagsAreEditedInPlace) {
  auto doc = load(testing::drawing("AC1015", kEntities));
  const RecordId line = *doc->findHandle(0x2A);
  doc->setDouble(line, 4, 0.1 + 0.2);
  doc->setInteger(line, 3, 5);  // a layer named "5"
  doc->insertTag(line, 6, NewTag::real(30, 7.25));
  doc->removeTag(line, 2);      // the owner
  doc->setHandle(line, 1, 0xABC);
  EXPECT_EQ(doc->findHandle(0xABC), line);
  EXPECT_EQ(doc->findHandle(0x2A), std::nullopt);

  auto again = reread(*doc);
  const RecordId id = *again->findHandle(0xABC);
  std::vector<std::string> values;
  for (const Tag& tag : again->tags(id)) values.push_back(std::to_string(tag.code) + "=" + again->valueText(tag));
  EXPECT_EQ(values, (std::vector<std::string>{"0=LINE", "5=ABC", "8=5", "10=0.30000000000000004", "20=2.0",
                                              "30=7.25"}));
  EXPECT_EQ(again->toDouble(again->tags(id)[3]), 0.1 + 0.2);
}

TEST(Document, RejectsEditsThatWouldBreakTheFile) {
  struct Case {
    const char* name;
    std::function<void(Document&, RecordId)> edit;
  };
  const Case cases[] = {
      {"text in a real", [](Document& d, RecordId id) { d.setValue(id, 4, "abc"); }},
      {"line break in text", [](Document& d, RecordId id) { d.setValue(id, 3, "a\nb"); }},
      {"int16 overflow", [](Document& d, RecordId id) { d.insertTag(id, 4, NewTag::integer(62, 70000)); }},
      {"odd hex digits", [](Document& d, RecordId id) { d.insertTag(id, 4, {310, "ABC"}); }},
      {"second 0 tag", [](Document& d, RecordId id) { d.insertTag(id, 2, {0, "LINE"}); }},
      {"before the 0 tag", [](Document& d, RecordId id) { d.insertTag(id, 0, {8, "0"}); }},
      {"removing the 0 tag", [](Document& d, RecordId id) { d.removeTag(id, 0); }},
      {"record without 0 tag",
       [](Document& d, RecordId) {
         const NewTag tags[] = {{8, "0"}};
         d.insertRecord(1, 0, tags);
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto doc = load(testing::drawing("AC1015", kEntities));
    const RecordId line = *doc->findHandle(0x2A);
    EXPECT_THROW(c.edit(*doc, line), std::invalid_argument);
    // Nothing changed: the file still saves as it was read.
    StringSink sink;
    ASSERT_TRUE(doc->write(sink).ok());
    EXPECT_EQ(sink.data, testing::asciiDxf(testing::drawing("AC1015", kEntities)));
  }
  auto doc = load(testing::drawing("AC1015", kEntities));
  EXPECT_THROW(doc->setValue(*doc->findHandle(0x2A), 99, "x"), std::out_of_range);
}

TEST(Document, NewSectionsAndTagsFollowTheFilesSpelling) {
  auto read = Document::read(testing::asciiDxf(testing::drawing("AC1015", kEntities), "\r\n"));
  ASSERT_TRUE(read.document);
  Document& doc = *read.document;
  doc.insertSection(2, "OBJECTS");
  const NewTag dictionary[] = {{0, "DICTIONARY"}, {5, "C"}};
  doc.insertRecord(2, 0, dictionary);
  StringSink sink;
  ASSERT_TRUE(doc.write(sink).ok());
  const std::string expectedEnd =
      "  0\r\nSECTION\r\n  2\r\nOBJECTS\r\n  0\r\nDICTIONARY\r\n  5\r\nC\r\n  0\r\nENDSEC\r\n  0\r\nEOF\r\n";
  ASSERT_GE(sink.data.size(), expectedEnd.size());
  EXPECT_EQ(sink.data.substr(sink.data.size() - expectedEnd.size()), expectedEnd);
}

TEST(Document, NewDrawingsStartWithAHeaderOnly) {
  auto doc = Document::create("AC1032");
  ASSERT_TRUE(doc);
  EXPECT_TRUE(doc->isUnicodeVersion());
  EXPECT_EQ(doc->lineEnding(), "\r\n");
  ASSERT_EQ(doc->sections().size(), 1u);
  EXPECT_EQ(doc->allocateHandle(), 1u);
  const std::size_t entities = doc->insertSection(1, "ENTITIES");
  const NewTag text[] = {{0, "TEXT"}, NewTag::handle(5, doc->allocateHandle()), {1, doc->encodeText(L"\u00E4")}};
  doc->insertRecord(entities, 0, text);

  StringSink sink;
  ASSERT_TRUE(doc->write(sink).ok());
  EXPECT_EQ(testing::splitLines(sink.data),
            (std::vector<testing::TagText>{{0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, "AC1032"},
                                           {9, "$DWGCODEPAGE"}, {3, "ANSI_1252"}, {9, "$HANDSEED"}, {5, "3"},
                                           {0, "ENDSEC"}, {0, "SECTION"}, {2, "ENTITIES"}, {0, "TEXT"}, {5, "2"},
                                           {1, "\xC3\xA4"}, {0, "ENDSEC"}, {0, "EOF"}}));
  EXPECT_THROW(Document::create("R2018"), std::invalid_argument);
  EXPECT_THROW(Document::create("AC10\n5"), std::invalid_argument);
}

}  // namespace
}  // namespace corvane::dxf
