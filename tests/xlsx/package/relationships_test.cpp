#include "xlsx/package/relationships.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace corvane::xlsx {
namespace {

constexpr const char* kWorksheet = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet";
constexpr const char* kChartsheet = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/chartsheet";
constexpr const char* kLink = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/hyperlink";

// A workbook's relationships as one writer spells them: a prefix of its own, an attribute and
// an element nobody here knows, indentation.
const std::string kPrefixed =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<p:Relationships xmlns:p=\"http://schemas.openxmlformats.org/package/2006/relationships\" xmlns:x=\"urn:x\">\n"
    "  <p:Relationship Id=\"rId2\" Type=\"" +
    std::string(kWorksheet) +
    "\" Target=\"worksheets/sheet1.xml\" x:keep=\"1\"/>\n"
    "  <p:Relationship Id=\"rId9\" Type=\"" +
    std::string(kChartsheet) +
    "\" Target=\"/xl/chartsheets/sheet1.xml\"/>\n"
    "  <p:Relationship Id=\"rId3\" Type=\"" +
    std::string(kLink) +
    "\" Target=\"https://example.com/a b\" TargetMode=\"External\"/>\n"
    "  <x:note>kept</x:note>\n"
    "</p:Relationships>";

TEST(Relationships, ResolvesTargetsAgainstTheirSource) {
  struct Case {
    const char* source;
    const char* target;
    std::optional<std::string> part;
  } const cases[] = {
      {"xl/workbook.xml", "worksheets/sheet1.xml", "xl/worksheets/sheet1.xml"},
      {"xl/worksheets/sheet1.xml", "../comments1.xml", "xl/comments1.xml"},
      {"xl/worksheets/sheet1.xml", "../drawings/./vmlDrawing1.vml", "xl/drawings/vmlDrawing1.vml"},
      {"xl/worksheets/sheet1.xml", "/xl/comments/comment1.xml", "xl/comments/comment1.xml"},  // absolute
      {"", "xl/workbook.xml", "xl/workbook.xml"},                                             // package root
      {"/xl/workbook.xml", "styles.xml", "xl/styles.xml"},
      {"book.xml", "part.xml", "part.xml"},
      {"xl/a/b/c.xml", "../../x.xml", "xl/x.xml"},
      {"xl/workbook.xml", "a//b.xml", "xl/a/b.xml"},
      {"xl/workbook.xml", "../../etc/passwd", std::nullopt},  // climbs above the root
      {"xl/worksheets/sheet1.xml", "/../x.xml", std::nullopt},
      {"", "../x.xml", std::nullopt},
      {"xl/workbook.xml", "..", std::nullopt},  // the root itself is no part
      {"xl/workbook.xml", "", std::nullopt},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Relationships::resolve(c.source, c.target), c.part) << c.source << " -> " << c.target;
  }
}

TEST(Relationships, NamesThePartThatHoldsAPartsRelationships) {
  const std::pair<const char*, const char*> cases[] = {
      {"xl/worksheets/sheet1.xml", "xl/worksheets/_rels/sheet1.xml.rels"},
      {"xl/workbook.xml", "xl/_rels/workbook.xml.rels"},
      {"/xl/workbook.xml", "xl/_rels/workbook.xml.rels"},
      {"book.xml", "_rels/book.xml.rels"},
      {"", "_rels/.rels"},
  };
  for (const auto& [source, part] : cases) EXPECT_EQ(Relationships::partFor(source), part) << source;
}

TEST(Relationships, RefusesPartsThatAreNotRelationships) {
  const std::string ns = "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"";
  const std::pair<std::string, const char*> cases[] = {
      {"", "not well-formed"},
      {"<Relationships " + ns + "><Relationship", "not well-formed"},
      {"<Types " + ns + "/>", "root element"},
      {"<Relationships xmlns=\"urn:other\"/>", "root element"},
      {"<Relationships " + ns + "><Relationship Type=\"t\" Target=\"a\"/></Relationships>", "has no Id"},
      {"<Relationships " + ns + "><Relationship Id=\"a\" Target=\"a\"/></Relationships>", "has no Type"},
      {"<Relationships " + ns + "><Relationship Id=\"a\" Type=\"t\"/></Relationships>", "has no Target"},
      {"<Relationships " + ns +
           "><Relationship Id=\"a\" Type=\"t\" Target=\"x\"/>"
           "<Relationship Id=\"a\" Type=\"t\" Target=\"y\"/></Relationships>",
       "two relationships have the Id a"},
  };
  for (const auto& [xml, message] : cases) {
    std::string error;
    EXPECT_FALSE(Relationships::parse(xml, error)) << xml;
    EXPECT_NE(error.find(message), std::string::npos) << xml << ": " << error;
  }
}

TEST(Relationships, AreFoundByIdAndTypeAndEditedLeavingTheRestAsRead) {
  std::string error;
  auto rels = Relationships::parse(kPrefixed, error);
  ASSERT_TRUE(rels) << error;
  ASSERT_EQ(rels->all().size(), 3u);
  ASSERT_NE(rels->byId("rId3"), nullptr);
  EXPECT_TRUE(rels->byId("rId3")->external);
  EXPECT_EQ(rels->byId("rId3")->target, "https://example.com/a b");
  EXPECT_FALSE(rels->byId("rId2")->external);
  EXPECT_EQ(rels->byId("rid2"), nullptr);  // ids are case-sensitive
  ASSERT_EQ(rels->byType("/worksheet").size(), 1u);
  EXPECT_EQ(rels->byType("/worksheet")[0]->id, "rId2");
  EXPECT_EQ(rels->byType("sheet").size(), 2u);
  EXPECT_TRUE(rels->byType("/sheet").empty());
  EXPECT_EQ(rels->serialize(), kPrefixed);  // untouched: byte for byte

  const std::string added = rels->add(kWorksheet, "worksheets/sheet2.xml");
  EXPECT_EQ(added, "rId10");  // past the highest number in use, not merely the count
  rels->remove("rId9");
  EXPECT_EQ(rels->add(kWorksheet, "worksheets/sheet3.xml"), "rId11");

  const auto again = Relationships::parse(rels->serialize(), error);
  ASSERT_TRUE(again) << error;
  ASSERT_EQ(again->all().size(), 4u);
  EXPECT_EQ(again->byId("rId9"), nullptr);
  EXPECT_EQ(again->byId("rId10")->target, "worksheets/sheet2.xml");
  EXPECT_EQ(again->byId("rId11")->type, kWorksheet);
  const std::string text = rels->serialize();
  for (const char* kept : {"x:keep=\"1\"", "<x:note>kept</x:note>", "xmlns:x=\"urn:x\"",
                           "<p:Relationship Id=\"rId10\" Type=\"", "standalone=\"yes\""}) {
    EXPECT_NE(text.find(kept), std::string::npos) << kept << " in " << text;
  }
}

TEST(Relationships, AFreshPartNumbersFromOneAndCopiesStandAlone) {
  Relationships rels;
  EXPECT_EQ(rels.add(kWorksheet, "a.xml"), "rId1");
  EXPECT_EQ(rels.add(kLink, "b.xml"), "rId2");
  std::string error;
  auto again = Relationships::parse(rels.serialize(), error);
  ASSERT_TRUE(again) << error;
  ASSERT_EQ(again->all().size(), 2u);
  EXPECT_EQ(again->byId("rId2")->type, kLink);
  Relationships copy = *again;
  copy.remove("rId1");
  EXPECT_EQ(copy.all().size(), 1u);
  EXPECT_EQ(again->all().size(), 2u);
}

}  // namespace
}  // namespace corvane::xlsx
