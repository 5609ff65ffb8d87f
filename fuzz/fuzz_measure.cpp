// Object-set texts and block-count codes, read and then measured or counted over a small
// drawing with layouts, blocks, nesting and a dynamic variant. Every input must end with a
// sum or a count (never negative, never NaN) or a message.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "core/utf8.h"
#include "headless/db/arc.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/hatch.h"
#include "headless/db/layout.h"
#include "headless/db/line.h"
#include "headless/db/polyline.h"
#include "headless/hostapplication.h"
#include "plugin/measure/blockcount.h"
#include "plugin/measure/entitymeasure.h"
#include "plugin/measure/objectset.h"

namespace {

using namespace corvane;
using headless::geometry::Vertex;

struct Drawing {
  headless::HostApplication host;
  headless::Database db{host};
  host::AcDbObjectId text;

  Drawing() {
    host.setWorkingDatabase(&db);
    const auto sheet = db.addRecord(std::make_unique<headless::BlockTableRecord>(L"*Paper_Space0"));
    auto* layouts = db.get<headless::Dictionary>(db.layoutDictionaryId());
    const auto layout = db.addObject(std::make_unique<headless::Layout>(L"A", sheet, 1), db.layoutDictionaryId());
    layouts->put(L"A", layout);
    db.get<headless::BlockTableRecord>(sheet)->setLayoutId(layout);

    db.appendEntity(std::make_unique<headless::Circle>(headless::Circle::Point{}, 1.0));
    db.appendEntity(std::make_unique<headless::Arc>(host::AcGePoint3d{}, 2.0, 1.0, 1.0), sheet);
    db.appendEntity(std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{3, 4, 0}));
    db.appendEntity(std::make_unique<headless::Polyline>(std::vector<Vertex>{{{0, 0}, -2.5}, {{1, 0}}, {{1, 1}, 0.3}},
                                                         true));
    db.appendEntity(std::make_unique<headless::Hatch>(
        L"SOLID", true,
        std::vector<headless::HatchLoop>{headless::HatchLoop::polyline({{{0, 0}}, {{4, 0}}, {{4, 4}}, {{0, 4}}}),
                                         headless::HatchLoop::polyline({{{1, 1}}, {{2, 1}}, {{2, 2}}}, 0)}));
    const auto door = db.addRecord(std::make_unique<headless::BlockTableRecord>(L"Door"));
    db.get<headless::BlockTableRecord>(door)->setDynamicBlock(true);
    db.appendEntity(std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{1, 1, 0}),
                    door);
    const auto unit = db.addRecord(std::make_unique<headless::BlockTableRecord>(L"Unit"));
    db.appendEntity(std::make_unique<headless::BlockReference>(door, host::AcGePoint3d{}), unit);
    db.appendEntity(std::make_unique<headless::BlockReference>(unit, host::AcGePoint3d{}), unit);  // holds itself
    db.appendEntity(std::make_unique<headless::BlockReference>(unit, host::AcGePoint3d{5, 5, 0}));
    const auto placed = db.appendEntity(std::make_unique<headless::BlockReference>(door, host::AcGePoint3d{1, 1, 0}));
    db.get<headless::BlockReference>(placed)->setDynamicProperties({{L"Width", host::AcValue(0.9)}});
    text = db.appendEntity(std::make_unique<headless::Line>(), sheet);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Drawing drawing;
  if (size == 0) return 0;
  const std::wstring text = core::fromUtf8(std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  if (data[0] % 2 == 0) {
    const ObjectSet set = parseObjectSet(text);
    if (!set.error.empty()) return 0;
    const double area = sumObjectSet(drawing.db, drawing.text, set, entityArea);
    const double length = sumObjectSet(drawing.db, drawing.text, set, entityLength);
    if (!(area >= 0.0) || !(length >= 0.0) || !std::isfinite(area) || !std::isfinite(length)) std::abort();
  } else {
    const BlockCountQuery query = parseBlockCount(text);
    if (!query.error.empty()) return 0;
    if (countBlocks(drawing.db, query) < 0) std::abort();
  }
  return 0;
}
