// Area and length fields over a million entities (bulged polylines, circles, arcs, hatches
// with an island, lines), and a block count over a hundred thousand insertions with
// attributes, nested in other blocks: one field evaluated as the host evaluates it.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "headless/db/arc.h"
#include "headless/db/attribute.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/hatch.h"
#include "headless/db/line.h"
#include "headless/db/polyline.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "host/acdbfield.h"
#include "plugin/shell/ccorvaneapp.h"

namespace {

using namespace corvane;
using headless::geometry::Vertex;

struct Drawing {
  headless::HostApplication host;
  headless::Database db{host};
  CCorvaneApp app{host};
  Drawing() {
    host.setWorkingDatabase(&db);
    app.onInitialize();
  }
  ~Drawing() { app.onUnload(); }

  // Evaluates one field on demand; its value.
  double evaluate(host::AcDbObjectId field) {
    host.engine().evaluateFields(&db, {field}, host::AcDbField::kDemand);
    host::AcValue value;
    db.get<headless::Field>(field)->getValue(value);
    double real = 0.0;
    std::int32_t whole = 0;
    if (value.get(whole)) return whole;
    value.get(real);
    return real;
  }
};

// A million entities on two layers, a fifth of each kind.
void fillPlan(Drawing& d, int count) {
  const auto layer = std::make_shared<const std::wstring>(L"Rooms");
  const auto other = std::make_shared<const std::wstring>(L"Walls");
  for (int i = 0; i < count; ++i) {
    const double x = (i % 1000) * 10.0, y = (i / 1000) * 10.0;
    std::unique_ptr<host::AcDbObject> made;
    switch (i % 5) {
      case 0: {
        auto polyline = std::make_unique<headless::Polyline>(
            std::vector<Vertex>{{{x, y}, 0.4}, {{x + 4, y}}, {{x + 4, y + 3}, -0.25}, {{x, y + 3}}}, true);
        polyline->setLayer(layer);
        made = std::move(polyline);
        break;
      }
      case 1: {
        auto circle = std::make_unique<headless::Circle>(headless::Circle::Point{x, y, 0}, 1.5);
        circle->setLayer(layer);
        made = std::move(circle);
        break;
      }
      case 2: {
        auto arc = std::make_unique<headless::Arc>(host::AcGePoint3d{x, y, 0}, 2.0, 0.5, 2.5);
        arc->setLayer(other);
        made = std::move(arc);
        break;
      }
      case 3: {
        auto hatch = std::make_unique<headless::Hatch>(
            L"SOLID", true,
            std::vector<headless::HatchLoop>{
                headless::HatchLoop::polyline({{{x, y}}, {{x + 5, y}}, {{x + 5, y + 5}}, {{x, y + 5}}}),
                headless::HatchLoop::polyline({{{x + 1, y + 1}}, {{x + 2, y + 1}}, {{x + 2, y + 2}}, {{x + 1, y + 2}}},
                                              0)});
        hatch->setLayer(layer);
        made = std::move(hatch);
        break;
      }
      default: {
        auto line = std::make_unique<headless::Line>(headless::Line::Point{x, y, 0}, headless::Line::Point{x + 3, y + 4, 0});
        line->setLayer(other);
        made = std::move(line);
      }
    }
    d.db.appendEntity(std::move(made));
  }
}

void measureField(benchmark::State& state, const wchar_t* code) {
  Drawing d;
  const int count = static_cast<int>(state.range(0));
  fillPlan(d, count);
  const host::AcDbObjectId field = headless::Field::create(d.db, code);
  double value = 0.0;
  for (auto _ : state) {
    value = d.evaluate(field);
    benchmark::DoNotOptimize(value);
  }
  state.counters["entities"] = count;
  state.counters["value"] = value;
}

void AreaField(benchmark::State& state) { measureField(state, LR"(%<\AcArea Object(<*AllObjects*>)>%)"); }
void AreaFieldByLayer(benchmark::State& state) {
  measureField(state, LR"(%<\AcArea Object(<*MSPObjects*>) \objtype "82" \layer "Rooms">%)");
}
void LengthField(benchmark::State& state) { measureField(state, LR"(%<\AcLength Object(<*AllObjects*>)>%)"); }
BENCHMARK(AreaField)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(AreaFieldByLayer)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(LengthField)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);
// The first length of a drawing, before any polyline has kept its arcs: every iteration makes
// the polylines forget what they worked out (outside the timing).
void LengthFieldFirstTime(benchmark::State& state) {
  Drawing d;
  const int count = static_cast<int>(state.range(0));
  fillPlan(d, count);
  std::vector<headless::Polyline*> polylines;
  for (const host::AcDbObjectId id : d.db.get<headless::BlockTableRecord>(d.db.modelSpaceId())->entities()) {
    if (auto* polyline = d.db.get<headless::Polyline>(id)) polylines.push_back(polyline);
  }
  const host::AcDbObjectId field = headless::Field::create(d.db, LR"(%<\AcLength Object(<*AllObjects*>)>%)");
  double value = 0.0;
  for (auto _ : state) {
    state.PauseTiming();
    for (headless::Polyline* polyline : polylines) {
      polyline->setClosed(false);
      polyline->setClosed(true);
    }
    state.ResumeTiming();
    value = d.evaluate(field);
    benchmark::DoNotOptimize(value);
  }
  state.counters["value"] = value;
}
BENCHMARK(LengthFieldFirstTime)->Arg(1000000)->Unit(benchmark::kMillisecond);
// The walk alone: every entity opened, its layer compared and nothing measured. What a field
// over a million entities costs before it adds anything.
void WalkOnly(benchmark::State& state) {
  measureField(state, LR"(%<\AcLength Object(<*AllObjects*>) \objtype "82" \layer "Doors">%)");
}
BENCHMARK(WalkOnly)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// Doors with a WIDTH attribute: most in model space, the rest in units that are placed in
// model space and in floors.
void BlockCountField(benchmark::State& state) {
  Drawing d;
  const int count = static_cast<int>(state.range(0));
  const auto door = d.db.addRecord(std::make_unique<headless::BlockTableRecord>(L"Door"));
  d.db.appendEntity(std::make_unique<headless::Line>(headless::Line::Point{0, 0, 0}, headless::Line::Point{1, 1, 0}),
                    door);
  const auto unit = d.db.addRecord(std::make_unique<headless::BlockTableRecord>(L"Unit"));
  const auto floor = d.db.addRecord(std::make_unique<headless::BlockTableRecord>(L"Floor"));
  const auto place = [&](host::AcDbObjectId block, host::AcDbObjectId space, double x, const wchar_t* width) {
    const auto id = d.db.appendEntity(std::make_unique<headless::BlockReference>(block, host::AcGePoint3d{x, 0, 0}),
                                      space);
    if (width) {
      d.db.addObject(std::make_unique<headless::Attribute>(L"WIDTH", width, host::AcGePoint3d{}, 0.2, 0), id);
    }
  };
  place(door, unit, 0, L"900");
  place(door, unit, 1, L"800");
  place(unit, floor, 0, nullptr);
  for (int i = 0; i < count; ++i) {
    if (i % 10 == 0) place(i % 20 == 0 ? unit : floor, {}, i, nullptr);
    else place(door, {}, i, i % 3 == 0 ? L"800" : L"1000");
  }
  const host::AcDbObjectId field =
      headless::Field::create(d.db, LR"(%<\AcBlockCount "Door" \op ">=" \tag "WIDTH" \value "900" \nested>%)");
  double value = 0.0;
  for (auto _ : state) {
    value = d.evaluate(field);
    benchmark::DoNotOptimize(value);
  }
  state.counters["insertions"] = count;
  state.counters["value"] = value;
}
BENCHMARK(BlockCountField)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
