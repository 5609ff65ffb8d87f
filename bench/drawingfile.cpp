// Drawings loaded into the headless database and saved back through it, on generated drawings
// of 10^4 to 10^6 entities (lines, polylines, circles, texts, multiline texts and block
// references with attributes) with the tables, blocks and objects a drawing has: throughput
// of both ways and the memory a loaded drawing takes, against the tag layer alone.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "countingallocator.h"
#include "dxf/document.h"
#include "dxf/drawingfile.h"
#include "headless/database.h"
#include "headless/hostapplication.h"
#include "headless/mtext.h"
#include "headless/text.h"

namespace {

using corvane::dxf::ByteSink;
using corvane::dxf::Document;
using corvane::dxf::DrawingFile;

// --- the generated drawings

class Generator {
 public:
  std::string drawing(std::size_t entities) {
    out_.clear();
    handle_ = 0x100;
    section("HEADER");
    tag(9, "$ACADVER");
    tag(1, "AC1032");
    tag(9, "$DWGCODEPAGE");
    tag(3, "ANSI_1252");
    tag(9, "$HANDSEED");
    tag(5, hex(0x100 + entities * 4));
    tag(9, "$LUNITS");
    integer(70, 2);
    tag(0, "ENDSEC");

    section("TABLES");
    table("BLOCK_RECORD", "1");
    blockRecord("1F", "*Model_Space");
    blockRecord("1E", "*Paper_Space");
    blockRecord("20", "DOOR");
    tag(0, "ENDTAB");
    table("LAYER", "2");
    for (const char* layer : {"0", "Layer-7"}) {
      tag(0, "LAYER");
      tag(5, hex(handle_++));
      tag(330, "2");
      tag(100, "AcDbSymbolTableRecord");
      tag(100, "AcDbLayerTableRecord");
      tag(2, layer);
      integer(70, 0);
      integer(62, 7);
      tag(6, "Continuous");
    }
    tag(0, "ENDTAB");
    table("APPID", "9");
    tag(0, "APPID");
    tag(5, "12");
    tag(330, "9");
    tag(100, "AcDbSymbolTableRecord");
    tag(100, "AcDbRegAppTableRecord");
    tag(2, "ACAD");
    integer(70, 0);
    tag(0, "ENDTAB");
    tag(0, "ENDSEC");

    section("BLOCKS");
    block("1F", "*Model_Space", false);
    block("1E", "*Paper_Space", false);
    block("20", "DOOR", true);
    tag(0, "ENDSEC");

    section("ENTITIES");
    for (std::size_t i = 0; i < entities; ++i) entity(i);
    tag(0, "ENDSEC");

    section("OBJECTS");
    tag(0, "DICTIONARY");
    tag(5, "C");
    tag(330, "0");
    tag(100, "AcDbDictionary");
    integer(281, 1);
    tag(3, "ACAD_GROUP");
    tag(350, "D");
    tag(0, "DICTIONARY");
    tag(5, "D");
    tag(102, "{ACAD_REACTORS");
    tag(330, "C");
    tag(102, "}");
    tag(330, "C");
    tag(100, "AcDbDictionary");
    integer(281, 1);
    tag(0, "ENDSEC");
    tag(0, "EOF");
    return std::move(out_);
  }

 private:
  void tag(int code, std::string_view value) {
    char line[16];
    const int n = std::snprintf(line, sizeof line, "%3d\r\n", code);
    out_.append(line, static_cast<std::size_t>(n));
    out_.append(value);
    out_.append("\r\n");
  }
  void real(int code, double value) {
    char text[32];
    const int n = std::snprintf(text, sizeof text, "%.10g", value);
    tag(code, std::string_view(text, static_cast<std::size_t>(n)));
  }
  void integer(int code, long value) {
    char text[16];
    const int n = std::snprintf(text, sizeof text, "%6ld", value);
    tag(code, std::string_view(text, static_cast<std::size_t>(n)));
  }
  static std::string hex(std::size_t value) {
    char text[20];
    std::snprintf(text, sizeof text, "%zX", value);
    return text;
  }
  void section(const char* name) {
    tag(0, "SECTION");
    tag(2, name);
  }
  void table(const char* name, const char* handle) {
    tag(0, "TABLE");
    tag(2, name);
    tag(5, handle);
    tag(330, "0");
    tag(100, "AcDbSymbolTable");
    integer(70, 3);
  }
  void blockRecord(const char* handle, const char* name) {
    tag(0, "BLOCK_RECORD");
    tag(5, handle);
    tag(330, "1");
    tag(100, "AcDbSymbolTableRecord");
    tag(100, "AcDbBlockTableRecord");
    tag(2, name);
    tag(340, "0");
  }
  void point(int code, double x, double y, double z) {
    real(code, x);
    real(code + 10, y);
    real(code + 20, z);
  }
  void common(std::string_view type, std::string_view subclass, const char* owner = "1F") {
    tag(0, type);
    tag(5, hex(handle_++));
    tag(330, owner);
    tag(100, "AcDbEntity");
    tag(8, "Layer-7");
    tag(100, subclass);
  }
  void block(const char* record, const char* name, bool attributes) {
    tag(0, "BLOCK");
    tag(5, hex(handle_++));
    tag(330, record);
    tag(100, "AcDbEntity");
    tag(8, "0");
    tag(100, "AcDbBlockBegin");
    tag(2, name);
    integer(70, attributes ? 2 : 0);
    point(10, 0, 0, 0);
    tag(3, name);
    tag(1, "");
    if (attributes) {
      for (const char* attribute : {"TAG", "WIDTH"}) {
        common("ATTDEF", "AcDbText", record);
        point(10, 0, 0, 0);
        real(40, 1.5);
        tag(1, "");
        tag(100, "AcDbAttributeDefinition");
        tag(3, attribute);
        tag(2, attribute);
        integer(70, 0);
      }
    }
    tag(0, "ENDBLK");
    tag(5, hex(handle_++));
    tag(330, record);
    tag(100, "AcDbEntity");
    tag(8, "0");
    tag(100, "AcDbBlockEnd");
  }

  void entity(std::size_t i) {
    const double x = static_cast<double>(i % 1000) * 12.5 + 0.123456789;
    const double y = static_cast<double>(i / 1000) * 7.25 + 3.14159265;
    switch (i % 6) {
      case 0:
        common("LINE", "AcDbLine");
        point(10, x, y, 0);
        point(11, x + 10.5, y + 3.75, 0);
        break;
      case 1:
        common("LWPOLYLINE", "AcDbPolyline");
        integer(90, 5);
        integer(70, 1);
        real(43, 0);
        for (int v = 0; v < 5; ++v) {
          real(10, x + v * 2.5);
          real(20, y + (v % 2) * 1.25);
        }
        break;
      case 2:
        common("CIRCLE", "AcDbCircle");
        point(10, x, y, 0);
        real(40, 2.75 + static_cast<double>(i % 7));
        break;
      case 3:
        common("TEXT", "AcDbText");
        point(10, x, y, 0);
        real(40, 2.5);
        tag(1, "Room " + std::to_string(i));
        tag(100, "AcDbText");
        break;
      case 4:
        common("MTEXT", "AcDbMText");
        point(10, x, y, 0);
        real(40, 2.5);
        real(41, 60);
        integer(71, 1);
        tag(1, "{\\fArial|b0|i0;Area\\P" + std::to_string(i) + " m\\U+00B2}");
        tag(7, "Standard");
        break;
      default: {
        common("INSERT", "AcDbBlockReference");
        integer(66, 1);
        tag(2, "DOOR");
        point(10, x, y, 0);
        const std::string owner = hex(handle_ - 1);
        for (const char* name : {"TAG", "WIDTH"}) {
          common("ATTRIB", "AcDbText", owner.c_str());
          point(10, x, y, 0);
          real(40, 1.5);
          tag(1, std::string(name) + "-" + std::to_string(i));
          tag(100, "AcDbAttribute");
          tag(2, name);
          integer(70, 0);
        }
        common("SEQEND", "AcDbSequenceEnd", owner.c_str());
        break;
      }
    }
  }

  std::string out_;
  std::size_t handle_ = 0x100;
};

const std::string& generated(std::size_t entities) {
  static std::map<std::size_t, std::string> cache;
  auto& text = cache[entities];
  if (text.empty()) text = Generator().drawing(entities);
  return text;
}

// Takes the bytes and forgets them, as a disk that is never full would.
class CountingSink : public ByteSink {
 public:
  bool write(std::string_view bytes) override {
    written += bytes.size();
    benchmark::DoNotOptimize(bytes.data());
    return true;
  }
  std::size_t written = 0;
};

// Loading: the tag layer's read plus the objects made of the records. The counters say how
// much memory the loaded drawing holds at its peak, for the whole and for the tag layer alone.
void BM_Load(benchmark::State& state) {
  const std::string& file = generated(static_cast<std::size_t>(state.range(0)));
  double peakRatio = 0;
  double documentRatio = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const std::size_t base = heldBytes.load();
    {
      // The tag layer alone, for comparison; not timed.
      std::string copy = file;
      peakBytes = heldBytes.load();
      auto read = Document::read(std::move(copy));
      documentRatio = std::max(documentRatio, static_cast<double>(peakBytes.load() - base) / static_cast<double>(file.size()));
    }
    auto host = std::make_unique<corvane::headless::HostApplication>();
    std::string copy = file;  // the bytes as read from disk; the document keeps them
    peakBytes = heldBytes.load();
    const std::size_t start = heldBytes.load();
    state.ResumeTiming();
    auto loaded = DrawingFile::read(std::move(copy), *host);
    benchmark::DoNotOptimize(loaded.drawing.get());
    state.PauseTiming();
    if (!loaded.drawing) state.SkipWithError(loaded.error.c_str());
    peakRatio = std::max(peakRatio, static_cast<double>(peakBytes.load() - start + file.size()) /
                                        static_cast<double>(file.size()));
    loaded.drawing.reset();
    host.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * file.size()));
  state.counters["file_MB"] = static_cast<double>(file.size()) / 1e6;
  state.counters["peak_x_file"] = peakRatio;
  state.counters["tags_x_file"] = documentRatio;
}

// Saving: the database's changes written into the records, then the bytes. Unchanged, or
// with one text in a hundred changed before each save.
void save(benchmark::State& state, bool edit) {
  const std::string& file = generated(static_cast<std::size_t>(state.range(0)));
  corvane::headless::HostApplication host;
  auto loaded = DrawingFile::read(file, host);
  if (!loaded.drawing) {
    state.SkipWithError(loaded.error.c_str());
    return;
  }
  corvane::headless::Database& db = loaded.drawing->database();
  std::vector<corvane::headless::TextHost*> texts;
  if (edit) {
    const auto ids = db.objectIds();
    for (std::size_t i = 0; i < ids.size(); ++i) {
      auto* text = dynamic_cast<corvane::headless::TextHost*>(db.lookup(ids[i]));
      if (text && i % 100 == 0) texts.push_back(text);
    }
  }
  std::size_t written = 0;
  int round = 0;
  for (auto _ : state) {
    ++round;
    for (auto* text : texts) text->setHostText(L"Edited " + std::to_wstring(round));
    CountingSink sink;
    const auto status = loaded.drawing->write(sink);
    if (!status.ok()) state.SkipWithError(status.message().c_str());
    written = sink.written;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * written));
  state.counters["file_MB"] = static_cast<double>(written) / 1e6;
  state.counters["edited"] = static_cast<double>(texts.size());
}

void BM_SaveUnchanged(benchmark::State& state) { save(state, false); }
void BM_SaveEdited(benchmark::State& state) { save(state, true); }

void sizes(benchmark::internal::Benchmark* b) {
  b->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
}

}  // namespace

BENCHMARK(BM_Load)->Apply(sizes);
BENCHMARK(BM_SaveUnchanged)->Apply(sizes);
BENCHMARK(BM_SaveEdited)->Apply(sizes);

BENCHMARK_MAIN();
