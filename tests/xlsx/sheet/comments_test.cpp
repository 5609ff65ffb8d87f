#include "xlsx/sheet/comments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "xlsx/sheet/coreproperties.h"

namespace corvane::xlsx {
namespace {

const std::string kComments =
    "<?xml version=\"1.0\"?><comments xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
    "<authors><author>Ann</author><author>Bob</author></authors><commentList>"
    "<comment ref=\"B2\" authorId=\"1\"><text><r><rPr><b/></rPr><t>Bob:</t></r><r><t xml:space=\"preserve\">"
    "\nsee _x000D_ here</t></r></text></comment>"
    "<comment ref=\"A5\" authorId=\"0\"><text><t>five</t></text></comment>"
    "<comment ref=\"C3\" authorId=\"0\"><text><t>three</t></text></comment></commentList></comments>";

const std::string kVml =
    "<xml xmlns:v=\"urn:schemas-microsoft-com:vml\" xmlns:o=\"urn:schemas-microsoft-com:office:office\" "
    "xmlns:x=\"urn:schemas-microsoft-com:office:excel\"><o:shapelayout v:ext=\"edit\"><o:idmap v:ext=\"edit\" "
    "data=\"3\"/></o:shapelayout><v:shapetype id=\"_x0000_t202\" o:spt=\"202\"/>"
    "<v:shape id=\"_x0000_s3073\" type=\"#_x0000_t202\" fillcolor=\"#abcdef\"><x:ClientData ObjectType=\"Note\">"
    "<x:Anchor>2, 15, 3, 10, 4, 15, 7, 4</x:Anchor><x:Row>4</x:Row><x:Column>0</x:Column></x:ClientData></v:shape>"
    "<v:shape id=\"_x0000_s3074\"><x:ClientData ObjectType=\"Checkbox\"><x:Row>0</x:Row></x:ClientData></v:shape>"
    "</xml>";

Comments parsed(const std::string& comments, const std::string& vml) {
  std::string error;
  auto notes = Comments::parse(comments, vml, error);
  EXPECT_TRUE(notes) << error;
  return notes ? std::move(*notes) : Comments();
}

std::vector<std::string> summary(const Comments& notes) {
  std::vector<std::string> out;
  for (const Note& note : notes.notes()) out.push_back(cellRefText(note.ref) + " " + note.author + ": " + note.text);
  return out;
}

TEST(Comments, ReadsNotesWithTheirAuthors) {
  const Comments notes = parsed(kComments, kVml);
  EXPECT_EQ(summary(notes), (std::vector<std::string>{"B2 Bob: Bob:\nsee \r here", "A5 Ann: five", "C3 Ann: three"}));
  ASSERT_TRUE(notes.find({3, 3}));
  EXPECT_EQ(notes.find({3, 3})->text, "three");
  EXPECT_FALSE(notes.find({3, 4}));
}

TEST(Comments, EditsSurviveWritingAndReadingBack) {
  const struct {
    const char* name;
    void (*edit)(Comments&);
    std::vector<std::string> expected;
  } cases[] = {
      {"add",
       [](Comments& n) {
         n.add({1, 4}, "new <&> note", "Cy");
       },
       {"B2 Bob: Bob:\nsee \r here", "A5 Ann: five", "C3 Ann: three", "D1 Cy: new <&> note"}},
      {"replace",
       [](Comments& n) {
         n.add({5, 1}, "changed", "Bob");
       },
       {"B2 Bob: Bob:\nsee \r here", "A5 Bob: changed", "C3 Ann: three"}},
      {"remove",
       [](Comments& n) {
         EXPECT_TRUE(n.remove({2, 2}));
         EXPECT_FALSE(n.remove({2, 2}));
       },
       {"A5 Ann: five", "C3 Ann: three"}},
      {"delete row", [](Comments& n) { n.deleteRow(3); }, {"B2 Bob: Bob:\nsee \r here", "A4 Ann: five"}},
      {"delete row below all",
       [](Comments& n) { n.deleteRow(9); },
       {"B2 Bob: Bob:\nsee \r here", "A5 Ann: five", "C3 Ann: three"}},
  };
  for (const auto& [name, edit, expected] : cases) {
    Comments notes = parsed(kComments, kVml);
    edit(notes);
    const std::string vml = notes.serializeVml();
    const Comments again = parsed(notes.serializeComments(), vml);
    EXPECT_EQ(summary(again), expected) << name;
    // One note shape per note, each naming its cell 0-based, all of one text-box type.
    std::size_t shapes = 0;
    for (std::size_t at = vml.find("ObjectType=\"Note\""); at != std::string::npos;
         at = vml.find("ObjectType=\"Note\"", at + 1)) {
      ++shapes;
    }
    EXPECT_EQ(shapes, expected.size()) << name << vml;
    for (const Note& note : again.notes()) {
      const std::string place = "<x:Row>" + std::to_string(note.ref.row - 1) + "</x:Row><x:Column>" +
                                std::to_string(note.ref.column - 1) + "</x:Column>";
      EXPECT_NE(vml.find(place), std::string::npos) << name << " " << place << vml;
    }
    EXPECT_EQ(vml.find("id=\"_x0000_t202\""), vml.rfind("id=\"_x0000_t202\"")) << name;
    EXPECT_NE(vml.find("ObjectType=\"Checkbox\""), std::string::npos) << name;
    EXPECT_NE(vml.find("fillcolor=\"#abcdef\""), std::string::npos) << name;
  }
}

TEST(Comments, MovedBoxesKeepTheirAnchorsOnTheirRows) {
  Comments notes = parsed(kComments, kVml);
  notes.deleteRow(1);
  const std::string vml = notes.serializeVml();
  EXPECT_NE(vml.find("<x:Anchor>2, 15, 2, 10, 4, 15, 6, 4</x:Anchor><x:Row>3</x:Row>"), std::string::npos) << vml;
}

TEST(Comments, ANewDrawingHasHiddenBoxesInItsOwnBlock) {
  Comments notes(2);
  notes.add({1, 1}, "a", "me");
  notes.add({4, 2}, "b", "me");
  EXPECT_FALSE(notes.add({0, 1}, "c", "me"));
  const std::string vml = notes.serializeVml();
  EXPECT_NE(vml.find("data=\"2\""), std::string::npos);
  EXPECT_NE(vml.find("id=\"_x0000_s2049\""), std::string::npos);
  EXPECT_NE(vml.find("id=\"_x0000_s2050\""), std::string::npos);
  std::size_t hidden = 0;
  for (std::size_t at = vml.find("visibility:hidden"); at != std::string::npos;
       at = vml.find("visibility:hidden", at + 1)) {
    ++hidden;
  }
  EXPECT_EQ(hidden, 2u);
  EXPECT_EQ(summary(parsed(notes.serializeComments(), vml)), (std::vector<std::string>{"A1 me: a", "B4 me: b"}));
}

TEST(Comments, RejectsPartsThatAreNotNotes) {
  const std::pair<std::string, std::string> cases[] = {
      {"<comments><commentList><comment ref=\"A1", ""},
      {"<workbook/>", ""},
      {"<comments><commentList><comment ref=\"1A\"/></commentList></comments>", ""},
      {"<comments><commentList><comment ref=\"A1\"/><comment ref=\"A1\"/></commentList></comments>", ""},
      {kComments, "<xml><v:shape>"},
      {kComments, "<html/>"},
  };
  for (const auto& [comments, vml] : cases) {
    std::string error;
    EXPECT_FALSE(Comments::parse(comments, vml, error)) << comments << vml;
    EXPECT_FALSE(error.empty());
  }
}

TEST(CoreProperties, ReadsAndSetsTheSaveTime) {
  const std::string xml =
      "<cp:coreProperties xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\" "
      "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><dc:creator>Ann</dc:creator></cp:coreProperties>";
  std::string error;
  auto properties = CoreProperties::parse(xml, error);
  ASSERT_TRUE(properties) << error;
  EXPECT_FALSE(properties->modifiedUnixSeconds());
  properties->setModified(1795234841, "Bob");
  const std::string written = properties->serialize();
  EXPECT_NE(written.find("<dcterms:modified xsi:type=\"dcterms:W3CDTF\">2026-11-21T04:20:41Z</dcterms:modified>"),
            std::string::npos)
      << written;
  EXPECT_NE(written.find("<cp:lastModifiedBy>Bob</cp:lastModifiedBy>"), std::string::npos) << written;
  EXPECT_NE(written.find("<dc:creator>Ann</dc:creator>"), std::string::npos) << written;
  const auto again = CoreProperties::parse(written, error);
  ASSERT_TRUE(again) << error;
  EXPECT_EQ(again->modifiedUnixSeconds(), 1795234841);
  EXPECT_FALSE(CoreProperties::parse("<coreProperties>", error));
}

TEST(CoreProperties, ReadsW3cTimes) {
  const std::pair<const char*, std::optional<std::int64_t>> cases[] = {
      {"1970-01-01T00:00:00Z", 0},
      {"2026-11-21T04:20:41Z", 1795234841},
      {"2026-11-21T06:20:41.25+02:00", 1795234841},
      {"2026-11-20T23:20:41-05:00", 1795234841},
      {"2000-02-29", 951782400},
      {"1969-12-31T23:59:59Z", -1},
      {"2026-13-01T00:00:00Z", std::nullopt},
      {"2026-11-21T04:20:41", 1795234841},
      {"2026-11-21 04:20:41Z", std::nullopt},
      {"yesterday", std::nullopt},
  };
  for (const auto& [text, seconds] : cases) {
    EXPECT_EQ(CoreProperties::parseTime(text), seconds) << text;
    if (seconds && std::string_view(text).ends_with("Z")) {
      EXPECT_EQ(CoreProperties::timeText(*seconds), text);
    }
  }
}

}  // namespace
}  // namespace corvane::xlsx
