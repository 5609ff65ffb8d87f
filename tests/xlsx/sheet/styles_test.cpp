#include "xlsx/sheet/styles.h"

#include <gtest/gtest.h>

#include <string>

#include "xlsx/sheet/workbookpart.h"

namespace corvane::xlsx {
namespace {

TEST(Styles, MapCellStylesToFormatCodes) {
  const std::string xml =
      "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
      "<numFmts count=\"2\"><numFmt numFmtId=\"164\" formatCode=\"0.000&quot;kg&quot;\"/>"
      "<numFmt numFmtId=\"14\" formatCode=\"dd.mm.yyyy\"/></numFmts>"
      "<cellXfs count=\"6\"><xf numFmtId=\"0\"/><xf numFmtId=\"164\"/><xf numFmtId=\"14\"/><xf numFmtId=\"22\"/>"
      "<xf numFmtId=\"30\"/><xf/></cellXfs></styleSheet>";
  std::string error;
  const auto styles = Styles::parse(xml, error);
  ASSERT_TRUE(styles) << error;
  const struct {
    std::uint32_t style;
    int id;
    const char* code;
  } cases[] = {
      {0, 0, "General"},  {1, 164, "0.000\"kg\""}, {2, 14, "dd.mm.yyyy"}, {3, 22, "m/d/yyyy h:mm"},
      {4, 30, "General"}, {5, 0, "General"},       {99, 0, "General"},
  };
  for (const auto& [style, id, code] : cases) {
    EXPECT_EQ(styles->numFmtId(style), id) << style;
    EXPECT_EQ(styles->formatCode(style), code) << style;
  }
  EXPECT_EQ(Styles::defaults().formatCode(0), "General");
}

TEST(Styles, BuiltInCodesFollowEnUs) {
  const std::pair<int, const char*> cases[] = {
      {0, "General"},
      {1, "0"},
      {9, "0%"},
      {13, "# ?\?/?\?"},
      {14, "m/d/yyyy"},
      {22, "m/d/yyyy h:mm"},
      {37, "#,##0_);(#,##0)"},
      {47, "mm:ss.0"},
      {49, "@"},
      {23, ""},
      {50, ""},
      {-1, ""},
      {65535, ""},
  };
  for (const auto& [id, code] : cases) EXPECT_EQ(builtinFormatCode(id), code) << id;
}

TEST(WorkbookPart, ReadsSheetsNamesAndDateSystem) {
  const std::string xml =
      "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
      "xmlns:rel=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
      "<workbookPr date1904=\"true\"/><bookViews><workbookView activeTab=\"1\"/></bookViews><sheets>"
      "<sheet name=\"Data\" sheetId=\"4\" rel:id=\"rId2\"/><sheet name=\"Hidden &amp; more\" sheetId=\"1\" "
      "state=\"hidden\" rel:id=\"rId1\"/></sheets><definedNames>"
      "<definedName name=\"_xlnm._FilterDatabase\" localSheetId=\"0\" hidden=\"1\">Data!$A$1:$B$9</definedName>"
      "<definedName name=\"Rate\">Data!$C$1</definedName>"
      "<definedName name=\"Local\" localSheetId=\"1\">'Hidden &amp; more'!$A$1</definedName>"
      "</definedNames></workbook>";
  std::string error;
  const auto part = WorkbookPart::parse(xml, error);
  ASSERT_TRUE(part) << error;
  ASSERT_EQ(part->sheets().size(), 2u);
  EXPECT_EQ(part->sheets()[0].name, "Data");
  EXPECT_EQ(part->sheets()[0].relationshipId, "rId2");
  EXPECT_EQ(part->sheets()[0].sheetId, 4u);
  EXPECT_EQ(part->sheets()[0].state, "visible");
  EXPECT_EQ(part->sheets()[1].name, "Hidden & more");
  EXPECT_EQ(part->sheets()[1].state, "hidden");
  EXPECT_TRUE(part->date1904());
  EXPECT_EQ(part->activeTab(), 1);
  const struct {
    const char* name;
    const char* formula;
    std::optional<int> local;
    bool hidden;
  } names[] = {
      {"_xlnm._FilterDatabase", "Data!$A$1:$B$9", 0, true},
      {"Rate", "Data!$C$1", std::nullopt, false},
      {"Local", "'Hidden & more'!$A$1", 1, false},
  };
  ASSERT_EQ(part->names().size(), std::size(names));
  for (std::size_t i = 0; i < std::size(names); ++i) {
    EXPECT_EQ(part->names()[i].name, names[i].name);
    EXPECT_EQ(part->names()[i].formula, names[i].formula);
    EXPECT_EQ(part->names()[i].localSheet, names[i].local);
    EXPECT_EQ(part->names()[i].hidden, names[i].hidden);
  }
}

TEST(WorkbookPart, RejectsPartsThatAreNotWorkbooks) {
  const std::pair<const char*, const char*> cases[] = {
      {"<workbook><sheets><sheet name=\"A\"", "workbook:"},
      {"<styleSheet/>", "not <workbook>"},
      {"<workbook><sheets><sheet name=\"A\" sheetId=\"1\"/></sheets></workbook>", "no relationship"},
      {"<workbook xmlns:r=\"x\"><sheets><sheet name=\"A\" r:id=\"rId1\"/></sheets><definedNames>"
       "<definedName name=\"N\" localSheetId=\"3\">A!$A$1</definedName></definedNames></workbook>",
       "does not exist"},
      {"", "workbook:"},
  };
  for (const auto& [xml, message] : cases) {
    std::string error;
    EXPECT_FALSE(WorkbookPart::parse(xml, error)) << xml;
    EXPECT_NE(error.find(message), std::string::npos) << error;
  }
  std::string error;
  EXPECT_FALSE(Styles::parse("<workbook/>", error));
  EXPECT_NE(error.find("styles"), std::string::npos);
}

}  // namespace
}  // namespace corvane::xlsx
