#include "xlsx/sheet/newworkbook.h"

#include "xlsx/sheet/coreproperties.h"

namespace corvane::xlsx {
namespace {

constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";

}  // namespace

std::vector<std::pair<std::string, std::string>> newWorkbookParts(std::int64_t nowUnixSeconds) {
  const std::string now = CoreProperties::timeText(nowUnixSeconds);
  const std::string declaration = kDeclaration;
  std::vector<std::pair<std::string, std::string>> parts;
  parts.emplace_back(
      "[Content_Types].xml",
      declaration +
          "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
          "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
          "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
          "<Override PartName=\"/xl/workbook.xml\" "
          "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
          "<Override PartName=\"/xl/worksheets/sheet1.xml\" "
          "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>"
          "<Override PartName=\"/xl/styles.xml\" "
          "ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/>"
          "<Override PartName=\"/docProps/core.xml\" "
          "ContentType=\"application/vnd.openxmlformats-package.core-properties+xml\"/>"
          "<Override PartName=\"/docProps/app.xml\" "
          "ContentType=\"application/vnd.openxmlformats-officedocument.extended-properties+xml\"/>"
          "</Types>");
  parts.emplace_back(
      "_rels/.rels",
      declaration +
          "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
          "<Relationship Id=\"rId1\" "
          "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" "
          "Target=\"xl/workbook.xml\"/>"
          "<Relationship Id=\"rId2\" "
          "Type=\"http://schemas.openxmlformats.org/package/2006/relationships/metadata/core-properties\" "
          "Target=\"docProps/core.xml\"/>"
          "<Relationship Id=\"rId3\" "
          "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/extended-properties\" "
          "Target=\"docProps/app.xml\"/>"
          "</Relationships>");
  parts.emplace_back(
      "docProps/app.xml",
      declaration +
          "<Properties xmlns=\"http://schemas.openxmlformats.org/officeDocument/2006/extended-properties\" "
          "xmlns:vt=\"http://schemas.openxmlformats.org/officeDocument/2006/docPropsVTypes\">"
          "<Application>Corvane</Application><DocSecurity>0</DocSecurity><ScaleCrop>false</ScaleCrop>"
          "<HeadingPairs><vt:vector size=\"2\" baseType=\"variant\"><vt:variant><vt:lpstr>Worksheets</vt:lpstr>"
          "</vt:variant><vt:variant><vt:i4>1</vt:i4></vt:variant></vt:vector></HeadingPairs>"
          "<TitlesOfParts><vt:vector size=\"1\" baseType=\"lpstr\"><vt:lpstr>Sheet1</vt:lpstr></vt:vector>"
          "</TitlesOfParts><LinksUpToDate>false</LinksUpToDate><SharedDoc>false</SharedDoc>"
          "<HyperlinksChanged>false</HyperlinksChanged><AppVersion>16.0300</AppVersion></Properties>");
  parts.emplace_back("docProps/core.xml",
                     declaration +
                         "<cp:coreProperties "
                         "xmlns:cp=\"http://schemas.openxmlformats.org/package/2006/metadata/core-properties\" "
                         "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:dcterms=\"http://purl.org/dc/terms/\" "
                         "xmlns:dcmitype=\"http://purl.org/dc/dcmitype/\" "
                         "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">"
                         "<dcterms:created xsi:type=\"dcterms:W3CDTF\">" +
                         now + "</dcterms:created><dcterms:modified xsi:type=\"dcterms:W3CDTF\">" + now +
                         "</dcterms:modified></cp:coreProperties>");
  parts.emplace_back("xl/workbook.xml",
                     declaration +
                         "<workbook xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
                         "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
                         "<workbookPr/><bookViews><workbookView activeTab=\"0\"/></bookViews>"
                         "<sheets><sheet name=\"Sheet1\" sheetId=\"1\" r:id=\"rId1\"/></sheets>"
                         "<calcPr calcId=\"191029\" fullCalcOnLoad=\"1\"/></workbook>");
  parts.emplace_back("xl/_rels/workbook.xml.rels",
                     declaration +
                         "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
                         "<Relationship Id=\"rId1\" "
                         "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet\" "
                         "Target=\"worksheets/sheet1.xml\"/>"
                         "<Relationship Id=\"rId2\" "
                         "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles\" "
                         "Target=\"styles.xml\"/>"
                         "</Relationships>");
  parts.emplace_back(
      "xl/worksheets/sheet1.xml",
      declaration +
          "<worksheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
          "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
          "<dimension ref=\"A1\"/><sheetViews><sheetView tabSelected=\"1\" workbookViewId=\"0\"/></sheetViews>"
          "<sheetFormatPr defaultRowHeight=\"15\"/><sheetData/>"
          "<pageMargins left=\"0.7\" right=\"0.7\" top=\"0.75\" bottom=\"0.75\" header=\"0.3\" footer=\"0.3\"/>"
          "</worksheet>");
  // One font, the two fills every reader expects first, one border, the Normal style and the
  // General cell format.
  parts.emplace_back(
      "xl/styles.xml",
      declaration +
          "<styleSheet xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">"
          "<fonts count=\"1\"><font><sz val=\"11\"/><name val=\"Calibri\"/><family val=\"2\"/>"
          "<scheme val=\"minor\"/></font></fonts>"
          "<fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill>"
          "<fill><patternFill patternType=\"gray125\"/></fill></fills>"
          "<borders count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border></borders>"
          "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/></cellStyleXfs>"
          "<cellXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\"/></cellXfs>"
          "<cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles>"
          "<dxfs count=\"0\"/><tableStyles count=\"0\"/></styleSheet>");
  return parts;
}

}  // namespace corvane::xlsx
