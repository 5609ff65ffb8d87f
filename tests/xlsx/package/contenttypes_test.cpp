#include "xlsx/package/contenttypes.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane::xlsx {
namespace {

constexpr const char* kSheet = "application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml";
constexpr const char* kVml = "application/vnd.openxmlformats-officedocument.vmlDrawing";

const std::string kTypes =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\" xmlns:x=\"urn:x\">"
    "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
    "<Default Extension=\"XML\" ContentType=\"application/xml\" x:keep=\"1\"/>"
    "<Override PartName=\"/xl/worksheets/sheet1.xml\" ContentType=\"" +
    std::string(kSheet) +
    "\"/>"
    "<Override PartName=\"/xl/Media/Image1.PNG\" ContentType=\"image/x-own\"/>"
    "</Types>";

size_t count(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

TEST(ContentTypes, OverridesComeBeforeDefaults) {
  std::string error;
  const auto types = ContentTypes::parse(kTypes, error);
  ASSERT_TRUE(types) << error;
  const std::pair<const char*, const char*> cases[] = {
      {"xl/worksheets/sheet1.xml", kSheet},
      {"/xl/worksheets/sheet1.xml", kSheet},
      {"XL/Worksheets/Sheet1.xml", kSheet},  // part names compare without case
      {"xl/worksheets/sheet2.xml", "application/xml"},
      {"xl/media/image1.png", "image/x-own"},
      {"xl/_rels/workbook.xml.rels", "application/vnd.openxmlformats-package.relationships+xml"},
      {"_rels/.rels", "application/vnd.openxmlformats-package.relationships+xml"},
      {"xl/data.xml.bin", ""},
      {"xl/noextension", ""},
      {"xl.d/file", ""},  // a dot in a folder name is no extension
      {"", ""},
  };
  for (const auto& [part, type] : cases) EXPECT_EQ(types->typeOf(part), type) << part;
}

TEST(ContentTypes, RefusesPartsThatAreNotContentTypes) {
  const std::string ns = "xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\"";
  const std::pair<std::string, const char*> cases[] = {
      {"", "not well-formed"},
      {"<Types " + ns + "><Default", "not well-formed"},
      {"<Relationships " + ns + "/>", "root element"},
      {"<Types/>", "root element"},
      {"<Types " + ns + "><Default ContentType=\"a/b\"/></Types>", "a Default without Extension"},
      {"<Types " + ns + "><Override PartName=\"/a.xml\"/></Types>", "an Override without ContentType"},
  };
  for (const auto& [xml, message] : cases) {
    std::string error;
    EXPECT_FALSE(ContentTypes::parse(xml, error)) << xml;
    EXPECT_NE(error.find(message), std::string::npos) << xml << ": " << error;
  }
}

TEST(ContentTypes, EditsKeepOneEntryPerPartAndExtension) {
  std::string error;
  auto types = ContentTypes::parse(kTypes, error);
  ASSERT_TRUE(types) << error;
  EXPECT_EQ(types->serialize(), kTypes);

  types->ensureDefault("vml", kVml);
  types->ensureDefault("VML", "text/other");  // one Default per extension, whatever its case
  types->ensureDefault(".xml", "text/other");
  types->setOverride("xl/comments1.xml", "application/x-comments");
  types->setOverride("/XL/worksheets/sheet1.xml", "application/x-changed");
  types->removeOverride("xl/media/image1.png");
  types->removeOverride("xl/absent.xml");

  const std::string text = types->serialize();
  EXPECT_EQ(count(text, "Extension=\"vml\""), 1u) << text;
  EXPECT_EQ(count(text, "Extension=\"VML\""), 0u) << text;
  EXPECT_EQ(count(text, "sheet1.xml"), 1u) << text;
  EXPECT_LT(text.find("Extension=\"vml\""), text.find("<Override")) << text;
  EXPECT_NE(text.find("x:keep=\"1\""), std::string::npos) << text;

  const auto again = ContentTypes::parse(text, error);
  ASSERT_TRUE(again) << error;
  EXPECT_EQ(again->typeOf("xl/drawings/vmlDrawing1.vml"), kVml);
  EXPECT_EQ(again->typeOf("xl/a.xml"), "application/xml");
  EXPECT_EQ(again->typeOf("xl/comments1.xml"), "application/x-comments");
  EXPECT_EQ(again->typeOf("xl/worksheets/sheet1.xml"), "application/x-changed");
  EXPECT_EQ(again->typeOf("xl/media/image1.png"), "");
}

TEST(ContentTypes, PrefixedOrFreshPartsReadBack) {
  const std::string prefixed =
      "<t:Types xmlns:t=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
      "<t:Default Extension=\"xml\" ContentType=\"application/xml\"/>"
      "<Default xmlns=\"urn:elsewhere\" Extension=\"png\" ContentType=\"image/png\"/></t:Types>";
  std::string error;
  for (auto types : {ContentTypes::parse(prefixed, error).value(), ContentTypes()}) {
    EXPECT_EQ(types.typeOf("a.png"), "");  // the prefixed part's Default is in another namespace
    types.ensureDefault("png", "image/png");
    types.setOverride("a.bin", "application/x-bin");
    const auto again = ContentTypes::parse(types.serialize(), error);
    ASSERT_TRUE(again) << error;
    EXPECT_EQ(again->typeOf("a.png"), "image/png");
    EXPECT_EQ(again->typeOf("/a.bin"), "application/x-bin");
  }
}

}  // namespace
}  // namespace corvane::xlsx
