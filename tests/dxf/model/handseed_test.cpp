// Where new handles start after a drawing is read: past its $HANDSEED and past every handle
// its records hold, wherever they hold it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/hostapplication.h"
#include "support/dxftext.h"

namespace corvane::dxf {
namespace {

using testing::TagText;

TEST(HandleSeed, NewHandlesStartPastTheSeedAndEveryHandleRead) {
  const std::vector<TagText> line = {{100, "AcDbEntity"}, {8, "0"}, {100, "AcDbLine"}, {10, "0"}, {20, "0"},
                                     {30, "0"},           {11, "1"}, {21, "1"},         {31, "0"}};
  auto withLine = [&](std::vector<TagText> head) {
    head.insert(head.end(), line.begin(), line.end());
    return head;
  };
  struct Case {
    const char* name;
    std::vector<TagText> entities;  // inside ENTITIES of a drawing whose $HANDSEED is 100
    // The seed after reading, at least and below. The drawings lack the standard objects,
    // which take the seven handles after the highest object's when it lies past $HANDSEED.
    std::uint64_t atLeast;
    std::uint64_t below;
  } const cases[] = {
      {"handles below the seed", withLine({{0, "LINE"}, {5, "2A"}}), 0x100, 0x101},
      {"a handle past the seed", withLine({{0, "LINE"}, {5, "1FF"}}), 0x200, 0x208},
      {"a record without subclass markers",
       {{0, "LINE"}, {8, "0"}, {5, "3FF"}, {10, "0"}, {20, "0"}, {11, "1"}, {21, "1"}},
       0x400, 0x408},
      {"a handle in a section no object is made of",
       {{0, "ENDSEC"}, {0, "SECTION"}, {2, "OTHERSTUFF"}, {0, "THING"}, {5, "7FF"}, {0, "ENDSEC"},
        {0, "SECTION"}, {2, "ENTITIES"}, {0, "LINE"}, {5, "2A"}, {100, "AcDbEntity"}, {8, "0"}},
       0x800, 0x801},
      {"a group's 5 is no handle of the record", withLine({{0, "LINE"}, {5, "2B"}, {102, "{APP"}, {5, "FFF"}, {102, "}"}}),
       0x100, 0x101},
  };
  for (const Case& c : cases) {
    headless::HostApplication host;
    auto loaded = DrawingFile::read(testing::asciiDxf(testing::drawing("AC1015", c.entities)), host);
    ASSERT_TRUE(loaded.drawing) << c.name << ": " << loaded.error;
    const std::uint64_t seed = loaded.drawing->database().handseed().value();
    EXPECT_GE(seed, c.atLeast) << c.name;
    EXPECT_LT(seed, c.below) << c.name;
  }
}

}  // namespace
}  // namespace corvane::dxf
