#include "plugin/shell/asdkdatabasereactor.h"

#include <gtest/gtest.h>

#include <memory>

#include "headless/db/database.h"
#include "headless/db/entity.h"
#include "headless/db/line.h"
#include "headless/hostapplication.h"

namespace corvane {
namespace {

// A table as far as the reactor looks at one: an entity whose record is "ACAD_TABLE".
class TableStandIn : public headless::EntityImpl<host::AcDbEntity> {
 public:
  std::wstring dxfName() const override { return L"ACAD_TABLE"; }
  std::wstring className() const override { return L"AcDbTable"; }
};

TEST(AsdkDataBaseReactor, RemembersTheFirstTableChangedWhileATableIsEdited) {
  headless::HostApplication host;
  headless::Database db(host);
  const auto table1 = db.appendEntity(std::make_unique<TableStandIn>());
  const auto table2 = db.appendEntity(std::make_unique<TableStandIn>());
  const auto line = db.appendEntity(
      std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{1, 1, 0}));

  struct Step {
    bool editing;
    host::AcDbObjectId modified;
    host::AcDbObjectId remembered;  // afterwards
    int mark;
  } const steps[] = {
      {false, table1, {}, 0},     // no table edit running
      {true, line, {}, 0},        // not a table
      {true, table2, table2, 1},
      {true, table1, table2, 1},  // the first one stays
  };
  ReactorState state;
  AsdkDataBaseReactor reactor(state);
  for (const auto& step : steps) {
    state.tableEditInProgress = step.editing;
    reactor.objectModified(&db, db.get<host::AcDbObject>(step.modified));
    EXPECT_EQ(state.editedTableId, step.remembered);
    EXPECT_EQ(reactor.tableModified(), step.mark);
  }
  reactor.objectModified(&db, nullptr);
  EXPECT_EQ(state.editedTableId, table2);
}

}  // namespace
}  // namespace corvane
