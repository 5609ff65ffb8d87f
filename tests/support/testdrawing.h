// A drawing in memory with a host around it, made in a line or two by the tests.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "core/printf.h"
#include "headless/db/arc.h"
#include "headless/db/attribute.h"
#include "headless/db/attributedefinition.h"
#include "headless/db/blockreference.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/circle.h"
#include "headless/db/database.h"
#include "headless/db/dictionary.h"
#include "headless/db/field.h"
#include "headless/db/hatch.h"
#include "headless/db/layertablerecord.h"
#include "headless/db/layout.h"
#include "headless/db/line.h"
#include "headless/db/mleader.h"
#include "headless/db/mtext.h"
#include "headless/db/polyline.h"
#include "headless/db/table.h"
#include "headless/db/text.h"
#include "headless/db/texthost.h"
#include "headless/db/viewport.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"

namespace corvane::host {
// Values in test failures: data type, then the value as the host shows it plainly.
inline void PrintTo(const AcValue& value, std::ostream* out) {
  std::wstring text;
  std::int32_t whole = 0;
  double real = 0;
  if (value.get(whole)) text = std::to_wstring(whole);
  else if (value.get(real)) text = core::format(L"%.17G", real);
  else value.get(text);
  *out << "AcValue(type " << value.dataType() << ", \"";
  for (const wchar_t c : text) *out << (c < 0x80 ? static_cast<char>(c) : '?');
  *out << "\", format \"";
  for (const wchar_t c : value.getFormat()) *out << (c < 0x80 ? static_cast<char>(c) : '?');
  *out << "\")";
}
}  // namespace corvane::host

namespace corvane::testing {

struct TestDrawing {
  headless::HostApplication host;
  headless::Database db{host};
  std::wstring printed;  // command-line output

  TestDrawing() {
    host.setWorkingDatabase(&db);
    host.setOutput([this](std::wstring_view text) { printed += text; });
  }

  host::AcDbObjectId addCircle(double radius, std::wstring layer = L"0") {
    auto circle = std::make_unique<headless::Circle>(headless::Circle::Point{0, 0, 0}, radius);
    circle->setLayer(std::move(layer));
    return db.appendEntity(std::move(circle));
  }
  host::AcDbObjectId addLine(headless::Line::Point a, headless::Line::Point b) {
    return db.appendEntity(std::make_unique<headless::Line>(a, b));
  }
  host::AcDbObjectId addText(std::wstring text = L"") {
    return db.appendEntity(std::make_unique<headless::Text>(headless::Text::Point{0, 0, 0}, 0.2, std::move(text)));
  }
  // A field made from the code that no text holds (as in a table cell).
  host::AcDbObjectId addField(const std::wstring& code) { return headless::Field::create(db, code); }
  // A text holding a field made from the code; returns the id of the text's field.
  host::AcDbObjectId addFieldText(const std::wstring& code) { return headless::attachField(db, addText(), code); }

  // A table in model space with the given cells, row by row: a text that is a number becomes a
  // number, one with field codes a field cell, "" an empty cell.
  host::AcDbObjectId addTable(const std::vector<std::vector<std::wstring>>& cells, host::AcGePoint3d position = {},
                              double rowHeight = headless::Table::kDefaultRowHeight,
                              double columnWidth = headless::Table::kDefaultColumnWidth) {
    std::size_t columns = 0;
    for (const auto& row : cells) columns = std::max(columns, row.size());
    auto made = std::make_unique<headless::Table>(static_cast<int>(cells.size()), static_cast<int>(columns), rowHeight,
                                                  columnWidth);
    made->setPosition(position);
    const host::AcDbObjectId id = db.appendEntity(std::move(made));
    host::AcDbObjectPointer<host::AcDbTable> open(host, id, host::AcDb::kForWrite);
    for (std::size_t r = 0; r < cells.size(); ++r) {
      for (std::size_t c = 0; c < cells[r].size(); ++c) {
        if (cells[r][c].empty()) continue;
        open->setValue(static_cast<int>(r), static_cast<int>(c), cells[r][c],
                       host::AcValueOptions::kConvertTextToValue | host::AcValueOptions::kParseTextForFieldCode);
      }
    }
    return id;
  }
  headless::Table& table(host::AcDbObjectId id) { return *db.get<headless::Table>(id); }

  // Entities of the other kinds, in model space unless a block is given. Angles in radians.
  host::AcDbObjectId addArc(host::AcGePoint3d center, double radius, double startAngle, double endAngle,
                            host::AcDbObjectId block = {}) {
    return db.appendEntity(std::make_unique<headless::Arc>(center, radius, startAngle, endAngle), block);
  }
  host::AcDbObjectId addPolyline(std::vector<headless::geometry::Vertex> vertices, bool closed,
                                 host::AcDbObjectId block = {}) {
    return db.appendEntity(std::make_unique<headless::Polyline>(std::move(vertices), closed), block);
  }
  host::AcDbObjectId addHatch(std::vector<headless::HatchLoop> loops,
                              headless::Hatch::Style style = headless::Hatch::Style::kNormal,
                              host::AcDbObjectId block = {}) {
    return db.appendEntity(std::make_unique<headless::Hatch>(L"SOLID", true, std::move(loops), style), block);
  }
  host::AcDbObjectId addMText(std::wstring contents, host::AcGePoint3d location = {}, double height = 0.2,
                              host::AcDbObjectId block = {}) {
    return db.appendEntity(std::make_unique<headless::MText>(location, height, std::move(contents)), block);
  }
  host::AcDbObjectId addMLeader(std::wstring contents, host::AcGePoint3d location = {}, double height = 0.2) {
    return db.appendEntity(std::make_unique<headless::MLeader>(std::move(contents), location, height));
  }
  host::AcDbObjectId addLayer(std::wstring name) {
    return db.addRecord(std::make_unique<headless::LayerTableRecord>(std::move(name)));
  }
  // A block definition with its base point; flags as BlockTableRecord::Flags.
  host::AcDbObjectId addBlock(std::wstring name, int flags = 0, host::AcGePoint3d origin = {}) {
    auto block = std::make_unique<headless::BlockTableRecord>(std::move(name), flags);
    block->setOrigin(origin);
    return db.addRecord(std::move(block));
  }
  // A paper-space layout: its space "*Paper_SpaceN" and its layout object, linked both ways.
  host::AcDbObjectId addLayout(std::wstring name) {
    const auto* blocks = db.get<host::AcDbBlockTable>(db.blockTableId());
    int n = 0;
    while (blocks->has(core::format(L"*Paper_Space%d", n))) ++n;
    const host::AcDbObjectId space = addBlock(core::format(L"*Paper_Space%d", n));
    auto* layouts = db.get<headless::Dictionary>(db.layoutDictionaryId());
    const host::AcDbObjectId layout =
        db.addObject(std::make_unique<headless::Layout>(name, space, static_cast<int>(layouts->entries().size())),
                     db.layoutDictionaryId());
    layouts->put(std::move(name), layout);
    db.get<headless::BlockTableRecord>(space)->setLayoutId(layout);
    return space;
  }
  host::AcDbObjectId addBlockReference(host::AcDbObjectId block, host::AcGePoint3d position = {},
                                       host::AcGeScale3d scale = {}, double rotation = 0.0,
                                       host::AcDbObjectId space = {}) {
    return db.appendEntity(std::make_unique<headless::BlockReference>(block, position, scale, rotation), space);
  }
  host::AcDbObjectId addAttribute(host::AcDbObjectId reference, std::wstring tag, std::wstring text, int flags = 0) {
    return db.addObject(std::make_unique<headless::Attribute>(std::move(tag), std::move(text),
                                                              host::AcGePoint3d{}, 0.2, flags),
                        reference);
  }
  host::AcDbObjectId addAttributeDefinition(host::AcDbObjectId block, std::wstring tag, std::wstring defaultText,
                                            int flags = 0) {
    return db.appendEntity(std::make_unique<headless::AttributeDefinition>(tag, tag + L"?", std::move(defaultText),
                                                                           host::AcGePoint3d{}, 0.2, flags),
                           block);
  }
  // The anonymous copy of a dynamic block that a reference with changed properties inserts,
  // tagged with its definition's handle as the host tags it.
  host::AcDbObjectId addDynamicVariant(host::AcDbObjectId definition, std::wstring name) {
    db.registerApp(L"AcDbBlockRepBTag");
    const host::AcDbObjectId variant = addBlock(std::move(name), headless::BlockTableRecord::kAnonymous);
    auto& record = db.get<headless::BlockTableRecord>(variant)->record();
    record.xdata = {{1001, std::wstring(L"AcDbBlockRepBTag")},
                    {1070, std::int32_t{1}},
                    {1005, db.get<headless::BlockTableRecord>(definition)->handle().text()}};
    return variant;
  }

  headless::Field& field(host::AcDbObjectId id) { return *db.get<headless::Field>(id); }
  static std::wstring idReference(host::AcDbObjectId id) {
    return core::format(L"%%<\\_ObjId %llu>%%", id.asOldId());
  }
  host::AcFdFieldEngine::BatchResult evaluateAll(int context = host::AcDbField::kDemand) {
    host::AcFdFieldEngine::BatchResult result;
    host.engine().evaluateFields(&db, {}, context, &result);
    return result;
  }
};

}  // namespace corvane::testing
