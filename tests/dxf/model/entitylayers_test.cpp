// The layers of entities read from a file: each entity reports the name its own record holds,
// spelt in the file's encoding, whichever entities share it and whatever one of them does.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/db/line.h"
#include "headless/hostapplication.h"
#include "host/acdbobject.h"
#include "support/dxftext.h"

namespace corvane::dxf {
namespace {

using testing::TagText;

std::vector<TagText> line(const std::string& handle, const std::string* layer) {
  std::vector<TagText> tags = {{0, "LINE"}, {5, handle}, {100, "AcDbEntity"}};
  if (layer) tags.push_back({8, *layer});
  for (const TagText& tag : std::vector<TagText>{{100, "AcDbLine"}, {10, "0"}, {20, "0"}, {30, "0"},
                                                 {11, "1"}, {21, "1"}, {31, "0"}})
    tags.push_back(tag);
  return tags;
}

std::wstring layerOf(headless::Database& db, std::uint64_t handle) {
  host::AcDbObjectId id;
  if (db.getAcDbObjectId(id, host::AcDbHandle(handle)) != host::Acad::eOk) return L"<no object>";
  const auto* entity = dynamic_cast<const host::AcDbEntity*>(db.lookup(id));
  return entity ? entity->layer() : L"<no entity>";
}

TEST(EntityLayers, EachEntityKeepsTheLayerItsRecordNames) {
  struct Case {
    const char* version;
    const char* codePage;
    std::vector<const char*> layers;  // one line each, handles 10, 11, ...; null: no layer tag
    std::vector<std::wstring> expected;
  } const cases[] = {
      {"AC1032", "ANSI_1252", {"Walls", "Doors", "Walls", "Walls"}, {L"Walls", L"Doors", L"Walls", L"Walls"}},
      {"AC1032", "ANSI_1252", {"Walls", nullptr, "Walls"}, {L"Walls", L"0", L"Walls"}},
      // Blanks belong to the name; so does case.
      {"AC1032", "ANSI_1252", {"Walls", " Walls", "WALLS", "Walls "}, {L"Walls", L" Walls", L"WALLS", L"Walls "}},
      {"AC1032", "ANSI_1252", {"\\U+00C4rea", "\xC3\x84rea", "Area"}, {L"\u00C4rea", L"\u00C4rea", L"Area"}},
      {"AC1018", "ANSI_1252", {"\xC4rea", "Area", "\xC4rea"}, {L"\u00C4rea", L"Area", L"\u00C4rea"}},
      {"AC1018", "ANSI_1251", {"\xC4rea", "Area"}, {L"\u0414rea", L"Area"}},
  };
  for (const Case& c : cases) {
    std::vector<TagText> entities;
    std::vector<std::string> names;
    names.reserve(c.layers.size());
    for (std::size_t i = 0; i < c.layers.size(); ++i) {
      if (c.layers[i]) names.emplace_back(c.layers[i]);
      const auto tags = line(std::to_string(10 + i), c.layers[i] ? &names.back() : nullptr);
      entities.insert(entities.end(), tags.begin(), tags.end());
    }
    headless::HostApplication host;
    auto loaded = DrawingFile::read(testing::asciiDxf(testing::drawing(c.version, entities, c.codePage)), host);
    ASSERT_TRUE(loaded.drawing) << loaded.error;
    headless::Database& db = loaded.drawing->database();
    for (std::size_t i = 0; i < c.expected.size(); ++i) {
      EXPECT_EQ(layerOf(db, 0x10 + i), c.expected[i]) << c.version << " " << c.codePage << " line " << i;
    }
  }
}

TEST(EntityLayers, MovingOneEntityLeavesTheOthersOnTheirLayer) {
  std::vector<TagText> entities;
  const std::string walls = "Walls";
  for (const char* handle : {"10", "11", "12"}) {
    const auto tags = line(handle, &walls);
    entities.insert(entities.end(), tags.begin(), tags.end());
  }
  headless::HostApplication host;
  auto loaded = DrawingFile::read(testing::asciiDxf(testing::drawing("AC1032", entities)), host);
  ASSERT_TRUE(loaded.drawing) << loaded.error;
  headless::Database& db = loaded.drawing->database();
  host::AcDbObjectId id;
  ASSERT_EQ(db.getAcDbObjectId(id, host::AcDbHandle(0x11)), host::Acad::eOk);
  db.get<headless::Line>(id)->setLayer(L"Doors");
  EXPECT_EQ(layerOf(db, 0x10), L"Walls");
  EXPECT_EQ(layerOf(db, 0x11), L"Doors");
  EXPECT_EQ(layerOf(db, 0x12), L"Walls");
}

}  // namespace
}  // namespace corvane::dxf
