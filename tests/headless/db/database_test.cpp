// Objects destroyed in any order: the rest stay found by id and by handle, in creation order.
#include "headless/db/database.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

TEST(Database, DestroyedObjectsLeaveTheOthersFoundInCreationOrder) {
  struct Case {
    const char* name;
    std::vector<int> destroyed;  // indexes of the circles made, in the order destroyed
  } const cases[] = {
      {"newest first", {9, 8, 7}},
      {"oldest first", {0, 1, 2, 3, 4, 5}},
      {"every other, then the rest", {1, 3, 5, 7, 9, 0, 2, 4, 6, 8}},
      {"one twice", {4, 4}},
      {"middle, then newest", {5, 9}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    corvane::testing::TestDrawing d;
    const std::vector<host::AcDbObjectId> standard = d.db.objectIds();
    std::vector<host::AcDbObjectId> circles;
    std::vector<host::AcDbHandle> handles;
    for (int i = 0; i < 10; ++i) {
      circles.push_back(d.addCircle(1 + i));
      handles.push_back(d.host.handle(circles.back()));
    }
    std::vector<host::AcDbObjectId> kept = circles;
    for (const int index : c.destroyed) {
      d.db.destroyObject(circles[index]);
      std::erase(kept, circles[index]);
    }
    std::vector<host::AcDbObjectId> expected = standard;
    expected.insert(expected.end(), kept.begin(), kept.end());
    EXPECT_EQ(d.db.objectIds(), expected);
    for (std::size_t i = 0; i < circles.size(); ++i) {
      const bool alive = std::find(kept.begin(), kept.end(), circles[i]) != kept.end();
      EXPECT_EQ(d.host.isValid(circles[i]), alive);
      host::AcDbObjectId found;
      EXPECT_EQ(d.db.getAcDbObjectId(found, handles[i]) == host::Acad::eOk, alive);
      if (alive) {
        EXPECT_EQ(found, circles[i]);
      }
    }
    // What comes after is found as well, and goes again.
    const host::AcDbObjectId later = d.addCircle(20);
    expected.push_back(later);
    EXPECT_EQ(d.db.objectIds(), expected);
    d.db.destroyObject(later);
    expected.pop_back();
    EXPECT_EQ(d.db.objectIds(), expected);
  }
}

}  // namespace
}  // namespace corvane::headless
