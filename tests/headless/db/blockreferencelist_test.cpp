#include <gtest/gtest.h>

#include <vector>

#include "headless/db/blocktablerecord.h"

namespace corvane::headless {
namespace {

using host::AcDbObjectId;

// A block lists each of its references once, in the order they came, however often and in
// whatever order of ids they are announced or taken away.
TEST(BlockReferenceList, EachReferenceOnceInTheOrderItCame) {
  struct Step {
    bool add;
    std::uint64_t id;
  };
  struct Case {
    std::vector<Step> steps;
    std::vector<std::uint64_t> listed;
  } const cases[] = {
      {{{true, 10}, {true, 11}, {true, 12}}, {10, 11, 12}},
      {{{true, 10}, {true, 10}}, {10}},
      {{{true, 12}, {true, 10}, {true, 12}, {true, 10}}, {12, 10}},  // older ids after newer ones
      {{{true, 10}, {true, 12}, {false, 12}, {true, 11}, {true, 11}}, {10, 11}},
      {{{true, 10}, {true, 12}, {false, 12}, {true, 12}, {true, 12}}, {10, 12}},  // back after removal
      {{{true, 10}, {false, 10}, {false, 10}}, {}},
  };
  for (std::size_t n = 0; n < std::size(cases); ++n) {
    BlockTableRecord block(L"DOOR");
    for (const Step& step : cases[n].steps) {
      if (step.add) block.addReference(AcDbObjectId(step.id));
      else block.removeReference(AcDbObjectId(step.id));
    }
    std::vector<AcDbObjectId> expected;
    for (const auto id : cases[n].listed) expected.push_back(AcDbObjectId(id));
    EXPECT_EQ(block.referenceIds(), expected) << "case " << n;
  }
}

}  // namespace
}  // namespace corvane::headless
