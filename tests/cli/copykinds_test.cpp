// COPY of a polyline with its area field, an arc, a hatch and a block reference with its
// attribute, in a scripted session, saved: our reader and an independent one find every copy
// where the displacement put it, with its source's look, and the copied area field measures the
// copied polyline.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <numbers>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "core/printf.h"
#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/arc.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/field.h"
#include "headless/db/mtext.h"
#include "headless/db/polyline.h"
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

// The example drawing's hatch and one of its door references (with a WIDTH attribute).
constexpr const char* kHatch = "122";
constexpr const char* kDoor = "125";

struct Plan {
  std::string text, polyline, arc;  // handles
};

headless::EntityProperties redContinuous() {
  headless::EntityProperties look;
  look.color = 1;
  look.linetype = L"Continuous";
  look.lineweight = 50;
  return look;
}

// A room outline of 12 by 5 with a half disc of diameter 5 on its left side, an arc, and a text
// measuring the room's area.
Plan makePlan(const fs::path& to) {
  headless::HostApplication host;
  auto loaded = dxf::DrawingFile::load(fs::path(CORVANE_SOURCE_DIR) / "examples" / "quantities.dxf", host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  headless::Database& db = loaded.drawing->database();
  auto room = std::make_unique<headless::Polyline>(
      std::vector<headless::geometry::Vertex>{{{0, 0}}, {{12, 0}}, {{12, 5}}, {{0, 5}, 1.0}}, true);
  room->setProperties(redContinuous());
  const auto polyline = db.appendEntity(std::move(room));
  auto bend = std::make_unique<headless::Arc>(host::AcGePoint3d{20, 0, 0}, 3, 0, std::numbers::pi / 2);
  bend->setProperties(redContinuous());
  const auto arc = db.appendEntity(std::move(bend));
  const auto text = db.appendEntity(std::make_unique<headless::MText>(host::AcGePoint3d{0, -5, 0}, 1.0, L""));
  const auto handle = [&](host::AcDbObjectId id) { return core::toUtf8(host.handle(id).text()); };
  const Plan plan{handle(text), handle(polyline), handle(arc)};
  headless::attachField(db, text, L"%<\\AcArea Object(<" + core::fromUtf8(plan.polyline) + L">) \\f \"%lu2%pr2\">%");
  const dxf::Status saved = loaded.drawing->saveAs(to);
  EXPECT_TRUE(saved) << saved.message();
  return plan;
}

// The values the drawing's area fields show that measure the polyline, as `corvane fields` lists them.
std::vector<std::string> areaValues(const RunFolder& folder, const fs::path& drawing, const std::string& polyline) {
  const CommandRun listed = run(folder, {"fields", drawing.string()});
  EXPECT_EQ(listed.exitCode, 0) << listed.err;
  std::vector<std::string> values;
  std::istringstream lines(listed.out);
  for (std::string line; std::getline(lines, line);) {
    std::vector<std::string> columns;
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, '\t');) columns.push_back(cell);
    if (columns.size() >= 6 && columns[2] == "AcArea" && columns[4].find("<" + polyline + ">") != std::string::npos) {
      values.push_back(columns[5]);
    }
  }
  return values;
}

// The copies in the saved drawing: for each source handle, the new entity of its kind.
std::map<std::string, std::string> copiesOf(const fs::path& plan, const fs::path& copied,
                                            const std::vector<std::string>& sources) {
  std::set<std::string> before;
  std::map<std::string, std::string> byKind;
  std::map<std::string, std::string> copies;
  headless::HostApplication host;
  {
    auto loaded = dxf::DrawingFile::load(plan, host);
    EXPECT_TRUE(loaded.drawing) << loaded.error;
    if (!loaded.drawing) return copies;
    for (const auto id : loaded.drawing->database().objectIds()) before.insert(core::toUtf8(host.handle(id).text()));
    for (const auto& source : sources) {
      host::AcDbObjectId id;
      loaded.drawing->database().getAcDbObjectId(id, *host::AcDbHandle::fromText(core::fromUtf8(source)));
      byKind[core::toUtf8(loaded.drawing->database().lookup(id)->dxfName())] = source;
    }
  }
  auto loaded = dxf::DrawingFile::load(copied, host);
  EXPECT_TRUE(loaded.drawing) << loaded.error;
  if (!loaded.drawing) return copies;
  headless::Database& db = loaded.drawing->database();
  for (const auto id : db.get<headless::BlockTableRecord>(db.modelSpaceId())->entities()) {
    const std::string handle = core::toUtf8(host.handle(id).text());
    const auto kind = byKind.find(core::toUtf8(db.lookup(id)->dxfName()));
    if (before.count(handle) == 0 && kind != byKind.end()) copies[kind->second] = handle;
  }
  return copies;
}

TEST(CopyKinds, CopiesOfEveryKindAreSavedWithTheirLookAndTheAreaFieldMeasuresTheCopy) {
  const RunFolder folder;
  const Plan plan = makePlan(folder / "plan.dxf");
  const CommandRun evaluated = run(folder, {"update", (folder / "plan.dxf").string()});
  ASSERT_EQ(evaluated.exitCode, 0) << evaluated.out << evaluated.err;
  // 12 by 5, and half a disc of radius 2.5.
  const std::string area = core::toUtf8(core::format(L"%.2f", 60.0 + std::numbers::pi * 2.5 * 2.5 / 2.0));
  ASSERT_EQ(areaValues(folder, folder / "plan.dxf", plan.polyline), std::vector<std::string>{area});

  const std::vector<std::string> sources = {plan.text, plan.polyline, plan.arc, kHatch, kDoor};
  std::string script = "COPY\n";
  for (const auto& handle : sources) script += "(handent \"" + handle + "\")\n";
  RunFolder::write(folder / "copy.scr", script + "\n0,0\n0,50\n\n");
  const CommandRun copied = run(folder, {"run", (folder / "plan.dxf").string(), "--script",
                                         (folder / "copy.scr").string(), "-o", (folder / "copied.dxf").string()});
  ASSERT_EQ(copied.exitCode, 0) << copied.out << copied.err;
  ASSERT_TRUE(fs::exists(folder / "copied.dxf")) << copied.out << copied.err;

  const CommandRun updated = run(folder, {"update", (folder / "copied.dxf").string()});
  ASSERT_EQ(updated.exitCode, 0) << updated.out << updated.err;
  EXPECT_EQ(areaValues(folder, folder / "copied.dxf", plan.polyline), (std::vector<std::string>{area, area}));

  const auto copies = copiesOf(folder / "plan.dxf", folder / "copied.dxf", sources);
  ASSERT_EQ(copies.size(), sources.size()) << "one copy of each";

  // Our reader: the copies keep the look of their sources.
  {
    headless::HostApplication host;
    auto loaded = dxf::DrawingFile::load(folder / "copied.dxf", host);
    ASSERT_TRUE(loaded.drawing) << loaded.error;
    headless::Database& db = loaded.drawing->database();
    const auto entity = [&](const std::string& handle) {
      host::AcDbObjectId id;
      db.getAcDbObjectId(id, *host::AcDbHandle::fromText(core::fromUtf8(handle)));
      return dynamic_cast<const headless::EntityLook*>(db.lookup(id));
    };
    for (const auto& [source, copy] : copies) {
      ASSERT_NE(entity(copy), nullptr) << copy;
      EXPECT_TRUE(entity(source)->properties() == entity(copy)->properties()) << source << " and " << copy;
    }
    EXPECT_TRUE(entity(copies.at(plan.polyline))->properties() == redContinuous());
    EXPECT_TRUE(entity(copies.at(plan.arc))->properties() == redContinuous());
  }

  if (corvane::testing::pythonWithEzdxf().empty()) GTEST_SKIP() << "python3 with ezdxf is not installed";
  std::vector<std::string> args = {(folder / "copied.dxf").string()};
  for (const auto& source : {plan.polyline, plan.arc, std::string(kHatch), std::string(kDoor)}) {
    args.push_back(source + ":" + copies.at(source));
  }
  const std::string found = corvane::testing::runEzdxfScript(
      "import sys, math, ezdxf\n"
      "doc = ezdxf.readfile(sys.argv[1])\n"
      "print('errors', len(doc.audit().errors))\n"
      "def up(p, q): return math.isclose(q[0], p[0]) and math.isclose(q[1], p[1] + 50)\n"
      "for pair in sys.argv[2:]:\n"
      "    s, c = (doc.entitydb[h] for h in pair.split(':'))\n"
      "    look = all(s.dxf.get(k) == c.dxf.get(k) for k in ('color', 'linetype', 'lineweight', 'layer'))\n"
      "    t = c.dxftype()\n"
      "    if t == 'LWPOLYLINE':\n"
      "        moved = c.closed == s.closed and all(up(p, q) and p[2:] == q[2:]\n"
      "                                            for p, q in zip(s.get_points(), c.get_points()))\n"
      "    elif t == 'ARC':\n"
      "        moved = up(s.dxf.center, c.dxf.center) and (s.dxf.radius, s.dxf.start_angle, s.dxf.end_angle) == \\\n"
      "            (c.dxf.radius, c.dxf.start_angle, c.dxf.end_angle)\n"
      "    elif t == 'HATCH':\n"
      "        moved = c.dxf.pattern_name == s.dxf.pattern_name and c.dxf.solid_fill == s.dxf.solid_fill and \\\n"
      "            [p.type for p in s.paths] == [p.type for p in c.paths] and \\\n"
      "            all(up(p, q) for a, b in zip(s.paths, c.paths) for p, q in zip(a.vertices, b.vertices))\n"
      "    else:\n"
      "        moved = up(s.dxf.insert, c.dxf.insert) and c.dxf.name == s.dxf.name and c.seqend is not None and \\\n"
      "            [(a.dxf.tag, a.dxf.text) for a in s.attribs] == [(a.dxf.tag, a.dxf.text) for a in c.attribs] \\\n"
      "            and all(up(a.dxf.insert, b.dxf.insert) for a, b in zip(s.attribs, c.attribs))\n"
      "    print(t, s.dxf.get('color'), s.dxf.get('linetype'), look, moved)\n",
      args);
  EXPECT_EQ(found,
            "errors 0\n"
            "LWPOLYLINE 1 Continuous True True\n"
            "ARC 1 Continuous True True\n"
            "HATCH None None True True\n"
            "INSERT None None True True\n");
}

}  // namespace
}  // namespace corvane
