#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "headless/database.h"
#include "headless/hostapplication.h"
#include "headless/line.h"
#include "headless/mtext.h"
#include "headless/objectimpl.h"
#include "headless/text.h"

namespace corvane::headless {
namespace {

using host::AcDbObjectId;

// Whatever changed an object, marking the database unmodified leaves no object with changes to
// write, and a change made afterwards is noticed again.
TEST(MarkUnmodified, LeavesNoChangesAndLaterChangesCountAgain) {
  struct Ids {
    AcDbObjectId line;
    AcDbObjectId text;
    AcDbObjectId mtext;
  };
  struct Case {
    const char* name;
    std::function<void(Database&, const Ids&)> change;  // before marking
    std::function<void(Database&, const Ids&)> later;   // after marking
    std::function<AcDbObjectId(const Ids&)> changedLater;
  } const cases[] = {
      {"new objects only", [](Database&, const Ids&) {},
       [](Database& db, const Ids& ids) { db.get<Text>(ids.text)->setTextString(L"Hall"); },
       [](const Ids& ids) { return ids.text; }},
      {"a text edited", [](Database& db, const Ids& ids) { db.get<Text>(ids.text)->setTextString(L"Kitchen"); },
       [](Database& db, const Ids& ids) { db.get<MText>(ids.mtext)->setContents(L"{\\C1;Area}"); },
       [](const Ids& ids) { return ids.mtext; }},
      {"an object opened for write",
       [](Database& db, const Ids& ids) {
         host::AcDbObject* object = nullptr;
         ASSERT_EQ(db.host().openObject(object, ids.line, host::AcDb::kForWrite), host::Acad::eOk);
         object->close();
       },
       [](Database& db, const Ids& ids) {
         host::AcDbObject* object = nullptr;
         ASSERT_EQ(db.host().openObject(object, ids.line, host::AcDb::kForWrite), host::Acad::eOk);
         object->close();
       },
       [](const Ids& ids) { return ids.line; }},
  };
  for (const Case& c : cases) {
    HostApplication host;
    Database db(host);
    Ids ids;
    ids.line = db.appendEntity(std::make_unique<Line>(Line::Point{0, 0, 0}, Line::Point{1, 0, 0}));
    ids.text = db.appendEntity(std::make_unique<Text>(Text::Point{0, 0, 0}, 2.5, L"Room"));
    ids.mtext = db.appendEntity(std::make_unique<MText>(host::AcGePoint3d{}, 2.5, L"Area"));
    c.change(db, ids);
    db.markUnmodified();
    for (const AcDbObjectId id : db.objectIds()) {
      EXPECT_FALSE(host.lookupHeadless(id)->record().modified) << c.name << " " << id.asOldId();
    }
    c.later(db, ids);
    for (const AcDbObjectId id : db.objectIds()) {
      EXPECT_EQ(host.lookupHeadless(id)->record().modified, id == c.changedLater(ids)) << c.name << " " << id.asOldId();
    }
  }
}

}  // namespace
}  // namespace corvane::headless
