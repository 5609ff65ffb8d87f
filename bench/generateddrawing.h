// The drawings the benchmarks load and save: 10^4 to 10^6 entities (lines, polylines,
// circles, texts, multiline texts and block references with attributes), written the way the
// host writes R2018 files.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "dxf/tags/bytesink.h"

namespace corvane::bench {

class DrawingGenerator {
 public:
  // Whole: with the tables, blocks and objects a drawing has; otherwise only the header and
  // the entities, as the tag layer reads any file.
  enum class Contents { EntitiesOnly, Whole };

  std::string drawing(std::size_t entities, Contents contents = Contents::Whole) {
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
    if (contents == Contents::EntitiesOnly) {
      section("ENTITIES");
      for (std::size_t i = 0; i < entities; ++i) entity(i);
      tag(0, "ENDSEC");
      tag(0, "EOF");
      return std::move(out_);
    }

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

// Takes the bytes and forgets them, as a disk that is never full would.
class CountingSink : public dxf::ByteSink {
 public:
  bool write(std::string_view bytes) override {
    written += bytes.size();
    benchmark::DoNotOptimize(bytes.data());
    return true;
  }
  std::size_t written = 0;
};

}  // namespace corvane::bench
