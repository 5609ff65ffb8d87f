// corvane table: the cells of a table of a drawing, as lines or as JSON, and its errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "support/clirun.h"

namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::sampleDrawing;
using Folder = corvane::testing::RunFolder;

CommandRun run(const std::vector<std::string>& args, const fs::path& errors) {
  return corvane::testing::runCorvane(args, errors);
}

// A small drawing of the given version with one table of one row: the cells' tags as given,
// and a field object for cells that point at handle 50.
std::string drawing(const std::string& version, const std::vector<std::pair<int, std::string>>& cells) {
  std::vector<std::pair<int, std::string>> tags = {
      {0, "SECTION"}, {2, "HEADER"}, {9, "$ACADVER"}, {1, version}, {9, "$HANDSEED"}, {5, "60"}, {0, "ENDSEC"},
      {0, "SECTION"}, {2, "ENTITIES"},
      {0, "ACAD_TABLE"}, {5, "40"}, {100, "AcDbEntity"}, {8, "0"}, {100, "AcDbBlockReference"}, {2, "*T1"},
      {10, "0.0"}, {20, "0.0"}, {30, "0.0"}, {100, "AcDbTable"}, {11, "1.0"}, {21, "0.0"}, {31, "0.0"},
      {91, "1"}, {92, "2"}, {141, "5.0"}, {142, "20.0"}, {142, "20.0"}};
  tags.insert(tags.end(), cells.begin(), cells.end());
  const std::vector<std::pair<int, std::string>> rest = {
      {0, "ENDSEC"}, {0, "SECTION"}, {2, "OBJECTS"},
      {0, "DICTIONARY"}, {5, "C"}, {330, "0"}, {100, "AcDbDictionary"}, {281, "1"},
      {0, "FIELD"}, {5, "50"}, {330, "40"}, {100, "AcDbField"}, {1, "AcVar"}, {2, "\\AcVar LUPREC"}, {90, "0"},
      {97, "0"}, {91, "63"}, {92, "0"}, {94, "59"}, {95, "2"}, {96, "0"}, {300, ""}, {93, "0"},
      {7, "ACFD_FIELD_VALUE"}, {93, "2"}, {90, "1"}, {91, "4"}, {94, "0"}, {300, ""}, {302, "4"},
      {304, "ACVALUE_END"}, {301, "4"}, {98, "1"},
      {0, "ENDSEC"}, {0, "EOF"}};
  tags.insert(tags.end(), rest.begin(), rest.end());
  std::string out;
  for (const auto& [code, value] : tags) out += std::to_string(code) + "\n" + value + "\n";
  return out;
}

TEST(TableCommand, ListsTheCellsOfASample) {
  CORVANE_NEED_SAMPLE_DRAWINGS();
  const Folder folder;
  const auto errors = folder.path() / "stderr";
  const auto simple = sampleDrawing("ezdxf-acad_table_simple.dxf").string();
  const CommandRun lines = run({"table", simple, "9c"}, errors);
  EXPECT_EQ(lines.exitCode, 0) << lines.err;
  // The title spans the first row; the data cells take any type and hold texts.
  EXPECT_EQ(lines.out,
            "0\t0\t1\t4\tTitle\n0\t1\t0\t512\t\n0\t2\t0\t512\t\n"
            "1\t0\t1\t512\t1\n1\t1\t1\t512\t2\n1\t2\t1\t512\t3\n"
            "2\t0\t1\t512\t4\n2\t1\t1\t512\t5\n2\t2\t1\t512\t6\n");

  const auto rich = sampleDrawing("acadsharp-sample_AC1032_ascii.dxf").string();
  const CommandRun json = run({"table", "--json", rich, "A35"}, errors);
  EXPECT_EQ(json.exitCode, 0) << json.err;
  const std::string head = "{\"handle\": \"A35\", \"rows\": 4, \"columns\": 5, \"cells\": [\n";
  EXPECT_EQ(json.out.substr(0, head.size()), head);
  EXPECT_EQ(json.out.substr(json.out.size() - 4), "\n]}\n");
  for (const char* cell : {
           R"({"row": 1, "column": 3, "content": 4, "dataType": 4, "text": ""})",
           R"({"row": 2, "column": 1, "content": 1, "dataType": 2, "text": "60"})",
           R"({"row": 2, "column": 4, "content": 1, "dataType": 1, "text": "5"})",
           R"({"row": 3, "column": 1, "content": 1, "dataType": 2, "text": "$100.00"})",
       }) {
    EXPECT_NE(json.out.find(cell), std::string::npos) << cell << "\n" << json.out;
  }
  EXPECT_EQ(std::count(json.out.begin(), json.out.end(), '{'), 21);
}

TEST(TableCommand, FieldCellsAndOlderDrawings) {
  const Folder folder;
  const auto errors = folder.path() / "stderr";
  const std::string longText(300, 'x');
  struct Case {
    const char* name;
    std::string file;
    std::string out;
  } const cases[] = {
      {"a field and a multiline text",
       drawing("AC1032", {{171, "1"}, {173, "0"}, {175, "1"}, {176, "1"}, {92, "0"}, {301, "CELL_VALUE"},
                          {93, "2"}, {90, "4"}, {1, "{\\fArial;a}\\Pb"}, {94, "0"}, {300, ""},
                          {302, "{\\fArial;a}\\Pb"}, {304, "ACVALUE_END"},
                          {171, "1"}, {173, "0"}, {175, "1"}, {176, "1"}, {344, "50"}, {92, "0"},
                          {301, "CELL_VALUE"}, {93, "2"}, {90, "1"}, {91, "4"}, {94, "0"}, {300, ""}, {302, "4"},
                          {304, "ACVALUE_END"}}),
       "0\t0\t1\t4\ta\\u000Ab\n0\t1\t2\t1\t4\n"},
      {"texts before R2007, one of them in pieces",
       drawing("AC1018", {{171, "1"}, {173, "0"}, {175, "1"}, {176, "1"}, {1, "short"},
                          {171, "1"}, {173, "0"}, {175, "1"}, {176, "1"}, {2, longText.substr(0, 250)},
                          {1, longText.substr(250)}}),
       // Such drawings keep no data type: the cells take any.
       "0\t0\t1\t512\tshort\n0\t1\t1\t512\t" + longText + "\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto path = folder.path() / "table.dxf";
    std::ofstream(path, std::ios::binary) << c.file;
    const CommandRun result = run({"table", path.string(), "40"}, errors);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, c.out);
  }
}

TEST(TableCommand, ReportsWhatItCannotShow) {
  const Folder folder;
  const auto errors = folder.path() / "stderr";
  const auto path = folder.path() / "table.dxf";
  std::ofstream(path, std::ios::binary) << drawing("AC1032", {{171, "1"}, {173, "0"}});
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    std::string message;
  } const cases[] = {
      {{"table", path.string(), "C"}, 1, "corvane table: object C is not a table\n"},
      {{"table", path.string(), "77"}, 1, "corvane table: the drawing has no object 77\n"},
      {{"table", path.string(), "40"}, 1, "corvane table: the table record's cells do not fill its 1 by 2 grid\n"},
      {{"table", (folder.path() / "missing.dxf").string(), "40"}, 1, "corvane table: cannot open"},
      {{"table", path.string(), "4G"}, 2, "HANDLE: not a handle: 4G"},
      {{"table", path.string()}, 2, "HANDLE is required"},
  };
  for (const auto& c : cases) {
    std::string line;
    for (const auto& arg : c.args) line += arg + " ";
    SCOPED_TRACE(line);
    const CommandRun result = run(c.args, errors);
    EXPECT_EQ(result.exitCode, c.exitCode);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find(c.message), std::string::npos) << result.err;
  }
}

}  // namespace
