#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "core/printf.h"
#include "core/utf8.h"
#include "headless/circle.h"
#include "headless/database.h"
#include "headless/field.h"
#include "headless/fieldengine.h"
#include "headless/fieldlist.h"
#include "headless/hostapplication.h"
#include "headless/text.h"
#include "headless/texthost.h"
#include "plugin/shell/ccorvaneapp.h"

namespace corvane::cli {

namespace {

void printLine(const std::wstring& line) {
  const std::string utf8 = core::toUtf8(line);
  std::fwrite(utf8.data(), 1, utf8.size(), stdout);
  std::fputc('\n', stdout);
}

// A small drawing made in memory: a circle and texts whose fields read a system variable,
// properties of the circle, and nest fields inside a text.
int runDemo() {
  headless::HostApplication host;
  headless::Database db(host);
  host.setWorkingDatabase(&db);
  CCorvaneApp app(host);
  app.onInitialize();

  auto circle = std::make_unique<headless::Circle>(headless::Circle::Point{10, 5, 0}, 2.5);
  circle->setLayer(L"Walls");
  const host::AcDbObjectId circleId = db.appendEntity(std::move(circle));
  const std::wstring circleRef = core::format(L"%%<\\_ObjId %llu>%%", circleId.asOldId());

  const std::wstring codes[] = {
      L"%<\\AcVar LUNITS>%",
      L"Circle area: %<\\AcObjProp Object(" + circleRef + L").Area>%",
      L"Radius %<\\AcObjProp Object(" + circleRef + L").Radius>% on layer %<\\AcObjProp Object(" + circleRef +
          L").Layer>%",
      L"%<\\VxExpr (2*3)>%",
  };
  std::vector<host::AcDbObjectId> texts;
  double y = 0;
  for (const auto& code : codes) {
    const host::AcDbObjectId text =
        db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, y, 0}, 0.25, L""));
    headless::attachField(db, text, code);
    texts.push_back(text);
    y -= 1;
  }

  host::AcFdFieldEngine::BatchResult batch;
  host.engine().evaluateFields(&db, {}, host::AcDbField::kDemand, &batch);
  printLine(core::format(L"Evaluated %d of %d fields on demand.", batch.evaluated, batch.found));
  printLine(L"");

  for (const auto id : db.get<headless::FieldList>(db.fieldListId())->ids()) {
    const auto* field = db.get<headless::Field>(id);
    int errorCode = 0;
    const int status = field->evaluationStatus(&errorCode);
    printLine(core::format(L"field %s  evaluator %s  status %d", field->handle().text(), field->evaluatorId(), status));
    printLine(L"  code:  " + field->getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers));
    printLine(L"  value: " + field->getDisplayText());
  }
  printLine(L"");
  for (const auto id : texts) {
    const auto* text = db.get<headless::Text>(id);
    printLine(core::format(L"text %s: %s", text->handle().text(), text->hostText()));
  }
  app.onUnload();
  return 0;
}

}  // namespace

void addDemoCommand(CLI::App& app, Action& action) {
  auto* demo = app.add_subcommand("demo", "Run the main job on the embedded example and print every field");
  demo->callback([&action] { action = runDemo; });
}

}  // namespace corvane::cli
