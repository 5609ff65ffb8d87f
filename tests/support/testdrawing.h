// A drawing in memory with a host around it, made in a line or two by the tests.
#pragma once

#include <memory>
#include <string>

#include "core/printf.h"
#include "headless/circle.h"
#include "headless/database.h"
#include "headless/field.h"
#include "headless/fieldengine.h"
#include "headless/hostapplication.h"
#include "headless/line.h"
#include "headless/text.h"
#include "headless/texthost.h"

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
