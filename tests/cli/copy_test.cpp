// COPY in a scripted session, saved: the copied area field reloads from the file, lists the
// copied circle in place of its source, and evaluates to the same area; an independent reader
// finds the copy where the displacement put it.
#include <gtest/gtest.h>

#include <filesystem>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/circle.h"
#include "headless/db/field.h"
#include "headless/db/mtext.h"
#include "headless/db/texthost.h"
#include "headless/hostapplication.h"
#include "support/clirun.h"
#include "support/ezdxf.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using corvane::testing::CommandRun;
using corvane::testing::RunFolder;

CommandRun run(const RunFolder& folder, const std::vector<std::string>& args) {
  return corvane::testing::runCorvaneWithOwnSettings(folder.path(), args);
}

struct Plan {
  std::wstring text, small, large;  // handles
};

// The example drawing with two circles and a text measuring their area.
Plan makePlan(const fs::path& to) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf", host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  headless::Database& db = loaded.drawing->database();
  const auto small = db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{0, 0, 0}, 1.0));
  const auto large = db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{10, 0, 0}, 2.0));
  const auto text = db.appendEntity(std::make_unique<headless::MText>(host::AcGePoint3d{0, -5, 0}, 1.0, L""));
  const Plan plan{host.handle(text).text(), host.handle(small).text(), host.handle(large).text()};
  headless::attachField(db, text, L"%<\\AcArea Object(<" + plan.small + L";" + plan.large + L">) \\f \"%lu2%pr2\">%");
  const dxf::Status saved = loaded.drawing->saveAs(to);
  EXPECT_TRUE(saved) << saved.message();
  return plan;
}

// The "AcArea Data" records of the drawing's area fields.
std::vector<std::wstring> areaRecords(const fs::path& drawing) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(drawing, host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  std::vector<std::wstring> records;
  if (!loaded.drawing) return records;
  headless::Database& db = loaded.drawing->database();
  for (const auto id : db.objectIds()) {
    const auto* field = db.get<headless::Field>(id);
    host::AcValue record;
    std::wstring text;
    if (field && field->evaluatorId() == L"AcArea" && field->getData(L"AcArea Data", record) == host::Acad::eOk &&
        record.get(text)) {
      records.push_back(text);
    }
  }
  return records;
}

TEST(CopyRun, ACopiedAreaFieldMeasuresTheCopiesInTheSavedDrawing) {
  const RunFolder folder;
  const Plan plan = makePlan(folder / "plan.dxf");
  // Evaluated once, as every field in a drawing is: the field keeps the record it reads.
  const CommandRun evaluated = run(folder, {"update", (folder / "plan.dxf").string()});
  ASSERT_EQ(evaluated.exitCode, 0) << evaluated.out << evaluated.err;
  const auto pick = [](const std::wstring& handle) { return "(handent \"" + core::toUtf8(handle) + "\")\n"; };
  RunFolder::write(folder / "copy.scr", "COPY\n" + pick(plan.text) + pick(plan.small) + "\n0,0\n0,50\n\n");
  const CommandRun copied = run(folder, {"run", (folder / "plan.dxf").string(), "--script",
                                         (folder / "copy.scr").string(), "-o", (folder / "copied.dxf").string()});
  ASSERT_EQ(copied.exitCode, 0) << copied.out << copied.err;
  EXPECT_EQ(copied.out.find("Cannot"), std::string::npos) << copied.out;

  const CommandRun updated = run(folder, {"update", (folder / "copied.dxf").string()});
  ASSERT_EQ(updated.exitCode, 0) << updated.out << updated.err;
  const CommandRun listed = run(folder, {"fields", (folder / "copied.dxf").string()});
  ASSERT_EQ(listed.exitCode, 0) << listed.err;
  // Both area fields evaluate, to the area of both circles: the copy measures the copied small
  // circle and the large one that stayed.
  const std::string area = core::toUtf8(core::format(L"%.2f", 5.0 * std::numbers::pi));
  int areas = 0;
  std::istringstream lines(listed.out);
  for (std::string line; std::getline(lines, line);) {
    std::vector<std::string> columns;
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, '\t');) columns.push_back(cell);
    // The code is not rewritten by a copy: both fields show the circles' list in it.
    if (columns.size() < 6 || columns[2] != "AcArea" ||
        columns[4].find(core::toUtf8(plan.large)) == std::string::npos) {
      continue;
    }
    ++areas;
    EXPECT_EQ(columns[3], "2") << line;
    EXPECT_EQ(columns[5], area) << line;
  }
  EXPECT_EQ(areas, 2) << listed.out;

  // The copy's record names the copied circle, which the independent reader finds moved.
  std::wstring copyHandle;
  int records = 0;
  for (const auto& record : areaRecords(folder / "copied.dxf")) {
    if (record.find(L"*MSPObjects*") != std::wstring::npos) continue;  // the example's own
    ++records;
    const std::wstring suffix = L";" + plan.large + L">)";
    const std::wstring prefix = L"\\AcArea Object(<";
    ASSERT_TRUE(record.starts_with(prefix) && record.ends_with(suffix)) << core::toUtf8(record);
    const std::wstring first = record.substr(prefix.size(), record.size() - prefix.size() - suffix.size());
    if (first != plan.small) copyHandle = first;
  }
  EXPECT_EQ(records, 2);
  ASSERT_FALSE(copyHandle.empty());
  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  const std::string found = corvane::testing::runEzdxfScript(
      "import sys, ezdxf\n"
      "doc = ezdxf.readfile(sys.argv[1])\n"
      "c = doc.entitydb[sys.argv[2]]\n"
      "print(c.dxftype(), round(c.dxf.center.x, 9), round(c.dxf.center.y, 9), c.dxf.radius)\n",
      {(folder / "copied.dxf").string(), core::toUtf8(copyHandle)});
  EXPECT_EQ(found, "CIRCLE 0.0 50.0 1.0\n");
}

}  // namespace
}  // namespace corvane
