#include "headless/editor/session.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/printf.h"
#include "headless/db/attribute.h"
#include "headless/db/blockreference.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/line.h"
#include "headless/hostapplication.h"
#include "headless/settings/registryfile.h"
#include "support/scratchfolder.h"

namespace corvane::headless {
namespace {

using namespace host;
using testing::ScratchFolder;

// A session over a new drawing whose command line is kept, with commands that ask each kind
// of prompt and print what they got.
struct Rig {
  ScratchFolder folder;
  HostApplication host;
  Database db{host};
  std::wstring out;
  std::vector<std::wstring> notices;
  RegistryFile registry{folder / "registry.reg", [this](std::wstring_view t) { notices.emplace_back(t); }};
  Session session;

  static Session::Options options(Rig& rig, std::wstring program) {
    Session::Options o;
    o.program = std::move(program);
    o.moduleFile = (rig.folder / "bin/corvane").wstring();
    o.registry = &rig.registry;
    o.progress = nullptr;
    o.notice = [&rig](std::wstring_view t) { rig.notices.emplace_back(t); };
    return o;
  }

  explicit Rig(std::wstring_view script = L"", std::wstring program = L"acad")
      : session(host, Script(script), options(*this, std::move(program))) {
    host.setOutput([this](std::wstring_view t) { out += t; });
    session.openDocument(&db);
    add(L"PTS", [this] {
      AcGePoint3d a, b;
      const int rc = prompts().getPoint(nullptr, L"\nFirst point: ", a);
      if (rc != RTNORM) return say(core::format(L"\nrc %d", rc));
      const int rc2 = prompts().getCorner(a, L"\nOther corner: ", b);
      say(core::format(L"\n= %g,%g,%g %g,%g,%g rc %d", a.x, a.y, a.z, b.x, b.y, b.z, rc2));
    });
    add(L"KW", [this] {
      std::wstring keyword;
      prompts().initGet(0, L"Yes No Maybe _Yes No Perhaps");
      const int rc = prompts().getKword(L"\nProceed? [Yes/No/Maybe]: ", keyword);
      say(core::format(L"\n%d %s", rc, keyword));
    });
    add(L"PK", [this] {
      AcGePoint3d p;
      std::wstring keyword;
      prompts().initGet(RSG_NONULL, L"Undo");
      const int rc = prompts().getPoint(nullptr, L"\nPoint or [Undo]: ", p);
      prompts().getInput(keyword);
      say(core::format(L"\n%d %s %g", rc, rc == RTKWORD ? keyword : std::wstring(L"-"), p.x));
    });
    add(L"INT", [this] {
      int value = -1;
      prompts().initGet(RSG_NONULL | RSG_NONEG, L"");
      const int rc = prompts().getInt(L"\nCount: ", value);
      say(core::format(L"\n%d %d", rc, value));
    });
    add(L"STR", [this] {
      std::wstring word, line;
      prompts().getString(false, L"\nName: ", word);
      prompts().getString(true, L"\nTitle: ", line);
      say(L"\n<" + word + L"|" + line + L">");
    });
    add(L"BOX", [this] {
      const int answer = session.ui().messageBox(L"Replace the link?\nIt points elsewhere.", L"Halvek Corvane",
                                                 MB_YESNOCANCEL | MB_ICONQUESTION | MB_DEFBUTTON2);
      say(core::format(L"\nanswer %d", answer));
    });
    add(L"PICK", [this] {
      AcDbObjectId id;
      AcGePoint3d at;
      const int rc = prompts().entSel(L"\nSelect object: ", id, at);
      say(core::format(L"\n%d %s", rc, id.isNull() ? std::wstring(L"-") : db.get<AcDbObject>(id)->handle().text()));
    });
    add(L"NPICK", [this] {
      AcDbObjectId id;
      AcGePoint3d at;
      const int rc = prompts().nEntSel(L"\nSelect object: ", id, at);
      say(core::format(L"\n%d %s", rc, id.isNull() ? std::wstring(L"-") : db.get<AcDbObject>(id)->handle().text()));
    });
    add(L"SEL", [this] {
      std::vector<AcDbObjectId> ids;
      const int rc = prompts().ssGet(L"", nullptr, ids);
      std::wstring handles;
      for (const auto id : ids) handles += L" " + db.get<AcDbObject>(id)->handle().text();
      say(core::format(L"\n%d%s", rc, handles));
    });
    add(L"FAIL", [] { throw std::runtime_error("boom"); });
  }

  AcEdPrompts& prompts() { return session.prompts(); }
  void say(const std::wstring& text) { host.print(text); }
  void add(const wchar_t* name, std::function<void()> function) {
    session.commandStack().addCommand(L"TEST", std::wstring(L"_") + name, name, 0, std::move(function));
  }
  std::wstring handleOf(AcDbObjectId id) { return db.get<AcDbObject>(id)->handle().text(); }
};

TEST(Session, PromptsTakeTheirAnswersFromTheScript) {
  struct Case {
    const wchar_t* command;
    const wchar_t* script;
    const wchar_t* expected;
  } const cases[] = {
      {L"PTS", L"1,2\nx\n@3,4.5",
       L"\nCommand: PTS\nFirst point: 1,2\nOther corner: x\nInvalid point.\nOther corner: @3,4.5\n= 1,2,0 4,6.5,0 rc 5100"},
      {L"PTS", L"1,2,3\n3<0", L"\nCommand: PTS\nFirst point: 1,2,3\nOther corner: 3<0\n= 1,2,3 3,0,0 rc 5100"},
      {L"PTS", L"\n", L"\nCommand: PTS\nFirst point: \nrc 5000"},  // Enter
      {L"PTS", L"^C", L"\nCommand: PTS\nFirst point: \n*Cancel*\nrc -5002"},
      {L"PTS", L"", L"\nCommand: PTS\nFirst point: \n*Cancel*\nrc -5002"},  // the script ended
      {L"KW", L"maybe", L"\nCommand: KW\nProceed? [Yes/No/Maybe]: maybe\n5100 Perhaps"},  // the global name
      {L"KW", L"n", L"\nCommand: KW\nProceed? [Yes/No/Maybe]: n\n5100 No"},
      {L"KW", L"_yes", L"\nCommand: KW\nProceed? [Yes/No/Maybe]: _yes\n5100 Yes"},
      {L"KW", L"Nope\nY", L"\nCommand: KW\nProceed? [Yes/No/Maybe]: Nope\nInvalid option keyword."
                          L"\nProceed? [Yes/No/Maybe]: Y\n5100 Yes"},
      {L"KW", L"", L"\nCommand: KW\nProceed? [Yes/No/Maybe]: \n*Cancel*\n-5002 "},
      {L"KW", L"\n", L"\nCommand: KW\nProceed? [Yes/No/Maybe]: \n5000 "},
      {L"PK", L"\nu", L"\nCommand: PK\nPoint or [Undo]: \nPoint or option keyword required.\nPoint or [Undo]: u"
                      L"\n-5005 Undo 0"},
      {L"PK", L"5,5", L"\nCommand: PK\nPoint or [Undo]: 5,5\n5100 - 5"},
      {L"INT", L"\n-3\n99999\n1.5\n7",
       L"\nCommand: INT\nCount: \nRequires an integer value.\nCount: -3\nValue must be positive.\nCount: 99999"
       L"\nRequires an integer between -32768 and 32767.\nCount: 1.5\nRequires an integer value.\nCount: 7\n5100 7"},
      {L"STR", L"two words\ntwo words", L"\nCommand: STR\nName: two words\nTitle: two words\n<two|two words>"},
      {L"BOX", L"[cancel]",
       L"\nCommand: BOX\n** Halvek Corvane (Question) **\nReplace the link?\nIt points elsewhere."
       L"\n[Yes] [No] [Cancel] -> Cancel\nanswer 2"},
      {L"BOX", L"",
       L"\nCommand: BOX\n** Halvek Corvane (Question) **\nReplace the link?\nIt points elsewhere."
       L"\n[Yes] [No] [Cancel] -> No (default)\nanswer 7"},
      {L"BOX", L"[Retry]",
       L"\nCommand: BOX\n** Halvek Corvane (Question) **\nReplace the link?\nIt points elsewhere."
       L"\n[Yes] [No] [Cancel] -> No (default; the box has no button \"Retry\")\nanswer 7"},
      {L"FAIL", L"", L"\nCommand: FAIL\n; error: boom"},
      {L"nothing", L"", L"\nCommand: nothing\nUnknown command \"NOTHING\"."},
  };
  for (const auto& c : cases) {
    Rig rig(c.script);
    rig.session.runCommand(c.command);
    EXPECT_EQ(rig.out, c.expected) << ::testing::PrintToString(std::wstring(c.script));
  }
}

TEST(Session, AScriptRunsCommandsAndTheirAnswersAndLeavesBoxLinesForBoxes) {
  // A box takes only a bracketed line; the next command's answers stay where they are.
  Rig rig(L"BOX\nSTR\nab cd\n\nbogus\nFAIL\n^C\nKW\n[Yes]\ny");
  EXPECT_EQ(rig.session.runScript(), 2);  // the unknown command and the failed one
  EXPECT_EQ(rig.session.failures(), 1);
  EXPECT_EQ(rig.out,
            L"\nCommand: BOX\n** Halvek Corvane (Question) **\nReplace the link?\nIt points elsewhere."
            L"\n[Yes] [No] [Cancel] -> No (default)\nanswer 7"
            L"\nCommand: STR\nName: ab cd\nTitle: \n<ab|>"
            L"\nCommand: bogus\nUnknown command \"BOGUS\"."
            L"\nCommand: FAIL\n; error: boom"
            L"\nCommand: KW\nProceed? [Yes/No/Maybe]: [Yes]\nInvalid option keyword.\nProceed? [Yes/No/Maybe]: y"
            L"\n5100 Yes");
}

class ReactorLog : public AcEditorReactor {
 public:
  std::vector<std::wstring> log;
  void commandWillStart(const wchar_t* c) override { log.push_back(std::wstring(L"start ") + c); }
  void commandEnded(const wchar_t* c) override { log.push_back(std::wstring(L"ended ") + c); }
  void commandCancelled(const wchar_t* c) override { log.push_back(std::wstring(L"cancelled ") + c); }
  void commandFailed(const wchar_t* c) override { log.push_back(std::wstring(L"failed ") + c); }
};

TEST(Session, EditorReactorsHearHowEachCommandWent) {
  Rig rig(L"1,1\n2,2\n^C\n\n");
  ReactorLog reactor;
  ASSERT_NE(rig.session.editor(), nullptr);
  rig.session.editor()->addReactor(&reactor);
  rig.session.editor()->addReactor(&reactor);  // once only
  rig.session.runCommand(L"pts");       // ends
  rig.session.runCommand(L"_PTS");      // cancelled at its first prompt
  rig.session.runCommand(L"FAIL");      // throws
  rig.session.runCommand(L"nothing");   // unknown: no notification
  rig.session.runCommand(L"Pts");       // Enter: ends without a point, which is no cancel
  rig.session.editor()->removeReactor(&reactor);
  rig.session.runCommand(L"PTS");
  EXPECT_EQ(reactor.log, (std::vector<std::wstring>{L"start PTS", L"ended PTS", L"start PTS", L"cancelled PTS",
                                                     L"start FAIL", L"failed FAIL", L"start PTS", L"ended PTS"}));

  Session::Options noEditor;
  noEditor.editor = false;
  noEditor.registry = &rig.registry;
  noEditor.progress = nullptr;
  Session bare(rig.host, Script(), noEditor);
  EXPECT_EQ(bare.editor(), nullptr);
}

TEST(Session, CommandNamesFindTheirCommands) {
  CommandStack stack;
  int which = 0;
  ASSERT_EQ(stack.addCommand(L"G1", L"_Foo_Bar", L"Foo_Bar", 0, [&] { which = 1; }), Acad::eOk);
  ASSERT_EQ(stack.addCommand(L"G1", L"_Other", L"Autre", 0, [&] { which = 2; }), Acad::eOk);
  EXPECT_EQ(stack.addCommand(L"g1", L"_FOO_BAR", L"x", 0, [] {}), Acad::eDuplicateKey);
  EXPECT_EQ(stack.addCommand(L"G1", L"_x", L"AUTRE", 0, [] {}), Acad::eDuplicateKey);
  EXPECT_EQ(stack.addCommand(L"G1", L"_y", L"y", 0, nullptr), Acad::eInvalidInput);
  struct Case {
    const wchar_t* typed;
    int which;  // 0: none
  } const cases[] = {
      {L"Foo_Bar", 1}, {L"FOO_BAR", 1}, {L"_foo_bar", 1}, {L"_.Foo_Bar", 1}, {L"._FOO_BAR", 1},
      {L"Autre", 2},   {L"_Other", 2},  {L"Other", 2},    {L"_Autre", 0},   {L"Foo", 0},
      {L"_", 0},       {L"", 0},
  };
  for (const auto& c : cases) {
    which = 0;
    const auto* found = stack.lookup(c.typed);
    if (found) found->function();
    EXPECT_EQ(which, c.which) << ::testing::PrintToString(std::wstring(c.typed));
  }
  // The same names in a later group answer first, until that group goes.
  ASSERT_EQ(stack.addCommand(L"G2", L"_Foo_Bar", L"Foo_Bar", 0, [&] { which = 3; }), Acad::eOk);
  stack.lookup(L"foo_bar")->function();
  EXPECT_EQ(which, 3);
  EXPECT_EQ(stack.groups(), (std::vector<std::wstring>{L"G1", L"G2"}));
  EXPECT_EQ(stack.removeGroup(L"g2"), Acad::eOk);
  EXPECT_EQ(stack.removeGroup(L"G2"), Acad::eKeyNotFound);
  stack.lookup(L"foo_bar")->function();
  EXPECT_EQ(which, 1);
  EXPECT_TRUE(stack.hasCommand(L"_other"));
  EXPECT_FALSE(stack.hasCommand(L"nothing"));
}

TEST(Session, SelectionOverTheWorkingDrawing) {
  Rig rig;
  auto circle = std::make_unique<Circle>(Circle::Point{0, 0, 0}, 1.0);
  circle->setLayer(L"Walls");
  const auto c1 = rig.db.appendEntity(std::move(circle));
  const auto l1 = rig.db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 0, 0}));
  auto other = std::make_unique<Circle>(Circle::Point{5, 0, 0}, 2.0);
  other->setLayer(L"Doors");
  const auto c2 = rig.db.appendEntity(std::move(other));
  const auto erased = rig.db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{0, 1, 0}));
  {
    AcDbObjectPointer<AcDbObject> line(rig.host, erased, AcDb::kForWrite);
    ASSERT_EQ(line->erase(), Acad::eOk);
  }

  struct Case {
    ResBufList filter;
    std::vector<AcDbObjectId> expected;
  } const cases[] = {
      {{}, {c1, l1, c2}},
      {{ResBuf{0, std::wstring(L"CIRCLE")}}, {c1, c2}},
      {{ResBuf{0, std::wstring(L"circle")}, ResBuf{8, std::wstring(L"W*")}}, {c1}},
      {{ResBuf{0, std::wstring(L"LINE,ARC")}}, {l1}},
      {{ResBuf{0, std::wstring(L"ACAD_TABLE")}}, {}},
      {{ResBuf{8, std::wstring(L"~Walls")}}, {l1, c2}},
  };
  for (const auto& c : cases) {
    std::vector<AcDbObjectId> ids;
    const int rc = rig.prompts().ssGet(L"X", &c.filter, ids);
    EXPECT_EQ(rc, c.expected.empty() ? RTERROR : RTNORM);
    EXPECT_EQ(ids, c.expected);
  }
  std::vector<AcDbObjectId> ids;
  const ResBufList unsupported{ResBuf{62, std::int32_t{1}}};
  EXPECT_EQ(rig.prompts().ssGet(L"X", &unsupported, ids), RTERROR);
  EXPECT_EQ(rig.prompts().ssGet(L"W", nullptr, ids), RTERROR);
  EXPECT_NE(rig.out.find(L"group code 62"), std::wstring::npos);
  EXPECT_NE(rig.out.find(L"Selection mode \"W\""), std::wstring::npos);
}

TEST(Session, ObjectsArePickedByHandle) {
  struct Case {
    const wchar_t* command;
    std::wstring script;
    std::wstring expected;  // after the command's echo; H1/H2 stand for the handles
  };
  Rig probe;
  const auto first = probe.db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 0, 0}));
  const auto second = probe.db.appendEntity(std::make_unique<Circle>(Circle::Point{0, 0, 0}, 1.0));
  const std::wstring h1 = probe.handleOf(first), h2 = probe.handleOf(second);
  const Case cases[] = {
      {L"PICK", L"(handent \"" + h1 + L"\")", L"\nSelect object: (handent \"" + h1 + L"\")\n5100 " + h1},
      {L"PICK", L"L", L"\nSelect object: L\n5100 " + h2},
      {L"PICK", L"(handent \"FFFF\")\nL",
       L"\nSelect object: (handent \"FFFF\")\n*Invalid selection*\nSelect object: L\n5100 " + h2},
      {L"PICK", L"3,4\n^C",
       L"\nSelect object: 3,4\nThis host picks objects by handle: answer (handent \"handle\") or L."
       L"\nSelect object: \n*Cancel*\n-5002 -"},
      {L"PICK", L"\n", L"\nSelect object: \n-5001 -"},
      {L"SEL", L"L\n(handent \"" + h1 + L"\")\nL\n\n",
       L"\nSelect objects: L\n1 found\nSelect objects: (handent \"" + h1 + L"\")\n1 found\nSelect objects: L\n0 found"
       L"\nSelect objects: \n5100 " + h2 + L" " + h1},
      {L"SEL", L"all\n\n", L"\nSelect objects: all\n2 found\nSelect objects: \n5100 " + h1 + L" " + h2},
      {L"SEL", L"\n", L"\nSelect objects: \n-5001"},
      {L"SEL", L"junk\n^C", L"\nSelect objects: junk\n*Invalid selection*\nSelect objects: \n*Cancel*\n-5002"},
  };
  for (const auto& c : cases) {
    Rig rig(c.script);
    rig.db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 0, 0}));
    rig.db.appendEntity(std::make_unique<Circle>(Circle::Point{0, 0, 0}, 1.0));
    rig.session.runCommand(c.command);
    EXPECT_EQ(rig.out, std::wstring(L"\nCommand: ") + c.command + c.expected) << ::testing::PrintToString(c.script);
  }
}

TEST(Session, OnlyANestedPickReachesTheAttributesOfABlockReference) {
  for (const wchar_t* command : {L"PICK", L"NPICK"}) {
    Rig rig;
    const auto insert = rig.db.appendEntity(std::make_unique<BlockReference>(AcDbObjectId{}, AcGePoint3d{}));
    const auto attribute = rig.db.addObject(std::make_unique<Attribute>(L"TAG", L"x"), insert);
    const std::wstring a = rig.handleOf(attribute), b = rig.handleOf(insert);
    rig.session.script().append(L"(handent \"" + a + L"\")\n(handent \"" + b + L"\")\n");
    rig.session.runCommand(command);
    const bool nested = command == std::wstring_view(L"NPICK");
    const std::wstring asked = L"\nSelect object: (handent \"" + a + L"\")";
    EXPECT_EQ(rig.out, std::wstring(L"\nCommand: ") + command + asked +
                           (nested ? L"\n5100 " + a
                                   : L"\n*Invalid selection*\nSelect object: (handent \"" + b + L"\")\n5100 " + b));
  }
}

TEST(Session, IdleTimeRunsQueuedExpressionsTimersAndSentText) {
  Rig rig;
  std::vector<std::wstring> fired;
  auto& os = rig.session.os();
  const auto t1 = os.setTimer(500, [&](std::uintptr_t id) { fired.push_back(core::format(L"t%u", unsigned(id))); });
  std::uintptr_t t2 = 0;
  t2 = os.setTimer(100, [&](std::uintptr_t id) {
    fired.push_back(core::format(L"t%u", unsigned(id)));
    os.killTimer(t2);  // a timer that ends itself
    rig.session.sendStringToExecute(L"PTS\n7,8\n9,9\n", false, true, true);
  });
  EXPECT_EQ(os.timerPeriod(t1), 500u);
  EXPECT_EQ(rig.session.queueExpr(L"(command \"KW\" \"maybe\")"), RTNORM);
  EXPECT_EQ(rig.session.queueExpr(L"(princ \"hi\")"), RTNORM);

  rig.session.idle();
  EXPECT_EQ(fired, (std::vector<std::wstring>{core::format(L"t%u", unsigned(t1)), core::format(L"t%u", unsigned(t2))}));
  EXPECT_EQ(rig.out,
            L"\nCommand: KW\nProceed? [Yes/No/Maybe]: maybe\n5100 Perhaps"
            L"\n; error: this host evaluates (command ...) expressions only: (princ \"hi\")"
            L"\nCommand: PTS\nFirst point: 7,8\nOther corner: 9,9\n= 7,8,0 9,9,0 rc 5100");
  EXPECT_EQ(os.timerCount(), 1u);

  // Between two commands each running timer fires once.
  rig.out.clear();
  rig.session.runCommand(L"nothing");
  rig.session.runCommand(L"nothing");
  EXPECT_EQ(fired.size(), 4u);
  EXPECT_TRUE(os.killTimer(t1));
  EXPECT_FALSE(os.killTimer(t1));

  // The light edition evaluates no expressions.
  Rig light(L"", L"acadlt");
  EXPECT_EQ(light.session.program(), L"acadlt");
  EXPECT_EQ(light.session.queueExpr(L"(command \"KW\")"), RTERROR);
}

TEST(Session, CommandCallsPassTheirAnswersAndDropTheRest) {
  Rig rig(L"from the script");
  EXPECT_EQ(rig.session.command({L"KW", L"y", L"left over"}), RTNORM);
  EXPECT_EQ(rig.session.command({L"PTS", L"^C"}), RTCAN);
  EXPECT_EQ(rig.session.command({L"nothing"}), RTERROR);
  EXPECT_EQ(rig.session.command({}), RTERROR);
  // The script's own line is still there for whoever asks next.
  ASSERT_NE(rig.session.script().peek(), nullptr);
  EXPECT_EQ(*rig.session.script().peek(), L"from the script");
}

TEST(Session, MenusLoadFromMenuFilesAndStandOnTheBar) {
  Rig rig;
  MenuBar& bar = rig.session.menuBar();
  EXPECT_TRUE(bar.isMenuGroupLoaded(L"acad"));
  EXPECT_EQ(bar.bar().size(), 12u);

  const auto menu = rig.folder / "bin/Corvane.jp.cuix";
  ScratchFolder::write(menu, "menu");
  const std::wstring windowsPath = (rig.folder / "bin").wstring() + L"\\Corvane.jp.cuix";
  EXPECT_EQ(rig.session.command({L"_.menuload", (rig.folder / "bin/none.cuix").wstring()}), RTNORM);
  EXPECT_FALSE(bar.isMenuGroupLoaded(L"none"));
  EXPECT_EQ(rig.session.command({L"_.menuload", windowsPath}), RTNORM);
  EXPECT_TRUE(bar.isMenuGroupLoaded(L"CORVANE"));
  EXPECT_NE(rig.out.find(L"Cannot find the customization file"), std::wstring::npos);
  EXPECT_NE(rig.out.find(L"Customization group: Corvane"), std::wstring::npos);

  struct Case {
    const wchar_t* command;
    int result;
    std::size_t count;  // pull-downs afterwards
  } const cases[] = {
      {L"P12.1=?", RTKWORD, 12}, {L"p1.1=?", RTKWORD, 12},    {L"P13.1=?", RTERROR, 12},
      {L"P0.1=?", RTERROR, 12},  {L"P1.0=?", RTERROR, 12},    {L"P1.1=x", RTERROR, 12},
      {L"X1.1=?", RTERROR, 12},  {L"P=+Corvane.pop1", RTERROR, 12},
      {L"P11=+Other.pop1", RTERROR, 12},  // not loaded
      {L"P11=+Corvane.pop2", RTERROR, 12},
      {L"P11=+corvane.POP1", RTNORM, 13},
      {L"P11=+Corvane.pop1", RTERROR, 13},  // it stands there already
      {L"P13.1=?", RTKWORD, 13},  {L"P14.1=?", RTERROR, 13},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(bar.menuCmd(c.command), c.result) << ::testing::PrintToString(std::wstring(c.command));
    EXPECT_EQ(bar.bar().size(), c.count) << ::testing::PrintToString(std::wstring(c.command));
  }
  // Before the host's last two.
  EXPECT_EQ(bar.bar()[10].label, L"Corvane");
  EXPECT_EQ(bar.bar()[11].label, L"Window");
  EXPECT_EQ(bar.menuCmd(L"P11=-"), RTNORM);
  EXPECT_EQ(bar.bar()[10].label, L"Window");
  EXPECT_EQ(rig.session.command({L"MENUUNLOAD", L"Corvane"}), RTNORM);
  EXPECT_FALSE(bar.isMenuGroupLoaded(L"Corvane"));
}

TEST(Session, ShellRequestsAreRecorded) {
  Rig rig;
  ScratchFolder::write(rig.folder / "bin/Corvane.chm", "help");
  auto& os = rig.session.os();
  EXPECT_GT(os.shellExecute(L"open", (rig.folder / "bin").wstring() + L"\\Corvane.chm", SW_SHOWNORMAL), 32);
  EXPECT_LE(os.shellExecute(L"open", (rig.folder / "bin/missing.chm").wstring(), SW_SHOWNORMAL), 32);
  EXPECT_GT(os.shellExecute(L"open", L"https://halvek.example/", SW_SHOWNORMAL), 32);
  ASSERT_EQ(os.shellRequests().size(), 3u);
  EXPECT_TRUE(os.shellRequests()[0].found);
  EXPECT_FALSE(os.shellRequests()[1].found);
  ASSERT_EQ(rig.notices.size(), 3u);
  EXPECT_NE(rig.notices[1].find(L"no such file"), std::wstring::npos);
  EXPECT_EQ(os.moduleFileName(), (rig.folder / "bin/corvane").wstring());
}

TEST(Session, ProgressMeterIsDrawnOnlyOnATerminal) {
  for (const bool terminal : {true, false}) {
    Script script;
    std::FILE* stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    TerminalUi ui(script, [](std::wstring_view) {}, stream, &terminal);
    EXPECT_EQ(ui.setStatusBarProgressMeter(L"Updating", 0, 0), -1);  // an empty range
    EXPECT_EQ(ui.setStatusBarProgressMeterPos(1), -1);                 // no meter
    EXPECT_EQ(ui.setStatusBarProgressMeter(L"Updating", 0, 4), 0);
    for (int i = 1; i <= 5; ++i) EXPECT_EQ(ui.setStatusBarProgressMeterPos(i), 0);
    ui.restoreStatusBar();
    EXPECT_FALSE(ui.progressShown());
    std::rewind(stream);
    std::string drawn;
    for (int c; (c = std::fgetc(stream)) != EOF;) drawn += static_cast<char>(c);
    std::fclose(stream);
    if (!terminal) {
      EXPECT_EQ(drawn, "");
      continue;
    }
    // 0, 25, 50, 75 and 100 percent; the fifth position is held at the top.
    const std::string bar0 = "\rUpdating [..............................] 0%";
    const std::string bar25 = "\rUpdating [#######.......................] 25%";
    const std::string bar100 = "\rUpdating [##############################] 100%";
    EXPECT_EQ(drawn.find(bar0), 0u);
    EXPECT_NE(drawn.find(bar25), std::string::npos);
    EXPECT_NE(drawn.find(bar100), std::string::npos);
    EXPECT_EQ(drawn.find(bar100), drawn.rfind(bar100));  // drawn once
    const std::string clear = "\r" + std::string(bar100.size() - 1, ' ') + "\r";
    EXPECT_EQ(drawn.substr(drawn.size() - clear.size()), clear);
  }
}

}  // namespace
}  // namespace corvane::headless
