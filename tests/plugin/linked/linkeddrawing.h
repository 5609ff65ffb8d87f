// A drawing saved in a scratch folder with the plug-in loaded as the command-line program loads
// it: files reached through the host's operating system, workbooks through the workbook backend.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "core/utf8.h"
#include "headless/editor/osservices.h"
#include "plugin/shell/ccorvaneapp.h"
#include "support/scratchfolder.h"
#include "support/testdrawing.h"
#include "xlsx/bookautomation.h"

namespace corvane::testing {

// What a field shows after an evaluation.
struct Shown {
  int status = 0;
  std::wstring value;    // the value's text
  std::wstring message;  // the status message
  bool operator==(const Shown&) const = default;
};

inline void PrintTo(const Shown& shown, std::ostream* out) {
  *out << "{status " << shown.status << ", value \"" << core::toUtf8(shown.value) << "\", message \""
       << core::toUtf8(shown.message) << "\"}";
}

struct LinkedDrawing : TestDrawing {
  ScratchFolder folder;
  headless::OsServices system{L"corvane.so", [](std::wstring_view) {}};
  xlsx::BookAutomation excel;
  CCorvaneApp app{host, system, &excel};
  // How many workbooks the evaluations' Excel held open as the last batch ended, before the
  // plug-in let go of it: its reactor is added after this one and hears of the end after it.
  struct BatchWatch : host::AcFdFieldReactor {
    LinkedDrawing* drawing = nullptr;
    std::int32_t workbooks = 0;
    host::Acad::ErrorStatus endEvaluateFields(int, host::AcDbDatabase*) override {
      const auto& instance = drawing->sources().evaluationExcel().privateExcel();
      workbooks = instance ? instance->workbookCount() : 0;
      return host::Acad::eOk;
    }
  } watch;

  LinkedDrawing() {
    db.setFilename(path("site.dxf"));
    watch.drawing = this;
    host.engine().addFieldReactor(&watch);
    app.onInitialize();
  }
  ~LinkedDrawing() {
    app.onUnload();
    host.engine().removeFieldReactor(&watch);
  }

  std::wstring path(const std::string& name) const { return core::fromUtf8((folder / name).string()); }
  LinkedSources& sources() { return app.linkedSources(); }

  Shown shown(host::AcDbObjectId id) {
    Shown out;
    host::AcValue value;
    field(id).getValue(value);
    value.get(out.value);
    out.status = field(id).evaluationStatus(nullptr, &out.message);
    return out;
  }
  // A field with the code, evaluated with every other field of the drawing.
  Shown evaluate(const std::wstring& code) {
    const host::AcDbObjectId id = addField(code);
    evaluateAll();
    return shown(id);
  }
};

// Sets a file's time of last change to `ms` milliseconds after a fixed moment, so that two
// writes can be told apart, or not, whatever the clock does.
inline void setModified(const std::filesystem::path& file, int ms) {
  using namespace std::chrono;
  const auto base = file_clock::from_sys(sys_seconds(sys_days(year{2026} / 3 / 1)));
  std::filesystem::last_write_time(file, base + milliseconds(ms));
}

}  // namespace corvane::testing
