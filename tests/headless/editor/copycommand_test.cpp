// COPY and COPYTOLAYOUT answered from a script: where the copies go, how the editor reactors
// hear of each deep clone, and what a cancelled or refused copy leaves behind.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/printf.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/circle.h"
#include "headless/db/line.h"
#include "headless/db/proxyobject.h"
#include "host/acdbidmapping.h"
#include "support/editorsession.h"

namespace corvane::headless {
namespace {

using host::AcDbObjectId;

class CloneLog : public host::AcEditorReactor {
 public:
  std::vector<std::wstring> log;
  void commandWillStart(const wchar_t* c) override { log.push_back(std::wstring(L"start ") + c); }
  void commandEnded(const wchar_t* c) override { log.push_back(std::wstring(L"ended ") + c); }
  void commandCancelled(const wchar_t* c) override { log.push_back(std::wstring(L"cancelled ") + c); }
  void beginDeepClone(host::AcDbDatabase* to, host::AcDbIdMapping& mapping) override {
    log.push_back(core::format(L"begin %d", static_cast<int>(mapping.size())));
    EXPECT_NE(to, nullptr);
  }
  void endDeepClone(host::AcDbIdMapping& mapping) override {
    log.push_back(core::format(L"end %d", static_cast<int>(mapping.size())));
  }
};

struct CopyRig : testing::EditorSession {
  CloneLog reactor;
  AcDbObjectId circle;
  AcDbObjectId line;
  explicit CopyRig(const std::wstring& script) {
    circle = db.appendEntity(std::make_unique<Circle>(Circle::Point{1, 1, 0}, 0.5));
    line = db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{2, 0, 0}));
    std::wstring answers = script;
    for (const auto& [mark, id] : {std::pair{L'C', circle}, std::pair{L'L', line}}) {
      const std::wstring pick = L"(handent \"" + host.handle(id).text() + L"\")";
      for (auto at = answers.find(std::wstring(L"<") + mark + L">"); at != std::wstring::npos;
           at = answers.find(std::wstring(L"<") + mark + L">", at)) {
        answers.replace(at, 3, pick);
      }
    }
    session.script() = Script(answers);
    session.addReactor(&reactor);
  }
  const std::vector<AcDbObjectId>& space(AcDbObjectId block) { return db.get<BlockTableRecord>(block)->entities(); }
  std::array<double, 3> centerOf(AcDbObjectId id) { return db.get<Circle>(id)->center().asArray(); }
};

TEST(CopyCommand, CopiesGoWhereTheirPointsSay) {
  struct Case {
    const char* name;
    std::wstring script;
    std::vector<std::array<double, 3>> centers;  // of the circle's copies, in order
    std::vector<std::wstring> log;
  } const cases[] = {
      {"two second points",
       L"COPY\n<C>\n<L>\n\n1,1\n4,1\n@0,3\n\n",
       {{4, 1, 0}, {1, 4, 0}},
       {L"start COPY", L"begin 0", L"end 2", L"begin 0", L"end 2", L"ended COPY"}},
      {"Enter takes the base point as the displacement",
       L"COPY\n<C>\n\n5,0,2\n\n",
       {{6, 1, 2}},
       {L"start COPY", L"begin 0", L"end 1", L"ended COPY"}},
      {"cancelled at the base point", L"COPY\n<C>\n\n^C\n", {}, {L"start COPY", L"cancelled COPY"}},
      {"nothing selected", L"COPY\n\n", {}, {L"start COPY", L"ended COPY"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    CopyRig rig(c.script);
    rig.session.runScript();
    EXPECT_EQ(rig.reactor.log, c.log) << rig.out;
    const auto& model = rig.space(rig.db.modelSpaceId());
    std::vector<std::array<double, 3>> centers;
    for (std::size_t i = 2; i < model.size(); ++i) {
      if (rig.db.get<Circle>(model[i])) centers.push_back(rig.centerOf(model[i]));
    }
    EXPECT_EQ(centers, c.centers);
    EXPECT_EQ(rig.centerOf(rig.circle), (std::array<double, 3>{1, 1, 0}));  // the source stays
  }
}

TEST(CopyCommand, CopyToLayoutPutsTheCopiesInThatLayoutsSpace) {
  CopyRig rig(L"COPYTOLAYOUT\n<C>\n<L>\n\nlayout1\nCOPYTOLAYOUT\n<C>\n\nSheet 9\n");
  rig.session.runScript();
  const auto& paper = rig.space(rig.db.paperSpaceId());
  ASSERT_EQ(paper.size(), 2u) << rig.out;
  EXPECT_EQ(rig.centerOf(paper[0]), (std::array<double, 3>{1, 1, 0}));
  EXPECT_NE(rig.out.find(L"2 object(s) copied to layout1."), std::wstring::npos) << rig.out;
  EXPECT_NE(rig.out.find(L"The drawing has no layout \"Sheet 9\"."), std::wstring::npos) << rig.out;
  EXPECT_EQ(rig.reactor.log,
            (std::vector<std::wstring>{L"start COPYTOLAYOUT", L"begin 0", L"end 2", L"ended COPYTOLAYOUT",
                                       L"start COPYTOLAYOUT", L"ended COPYTOLAYOUT"}));
}

TEST(CopyCommand, ObjectsThisHostCannotPlaceAreLeftOut) {
  CopyRig rig(L"COPY\n<C>\nL\n\n0,0\n1,0\n\n");
  const auto kind = std::make_shared<const ProxyKind>(ProxyKind{L"SOLID", L"AcDbTrace"});
  rig.db.appendEntity(std::make_unique<ProxyEntity>(kind));  // the last one drawn
  rig.session.runScript();
  EXPECT_NE(rig.out.find(L"1 object(s) of a kind this host cannot place were left out."), std::wstring::npos)
      << rig.out;
  EXPECT_EQ(rig.space(rig.db.modelSpaceId()).size(), 4u);  // circle, line, proxy and the circle's copy
}

}  // namespace
}  // namespace corvane::headless
