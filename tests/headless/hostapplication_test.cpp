// The host's other drawings: what the reader and the writer handed to it do, what happens
// without them, and which databases can become the working one.
#include "headless/hostapplication.h"

#include <gtest/gtest.h>

#include <string>

#include "headless/db/database.h"

namespace corvane::headless {
namespace {

TEST(HostApplication, OtherDrawingsAreReadAndSavedByWhatWasHandedOver) {
  HostApplication host;
  Database db(host);
  std::wstring reason;
  host::AcDbHostApplicationServices::DatabaseHolder read;
  EXPECT_EQ(host.readDrawingFile(L"plan.dxf", read, reason), host::Acad::eNotImplementedYet);
  EXPECT_EQ(reason, L"This host reads no other drawings.");
  reason.clear();
  EXPECT_EQ(host.saveDrawingFile(db, L"plan.dxf", reason), host::Acad::eNotImplementedYet);
  EXPECT_EQ(reason, L"This host saves no other drawings.");

  std::wstring written;
  host.setDrawingWriter([&](host::AcDbDatabase& saved, std::wstring_view path, std::wstring& why) {
    if (&saved != &db) return host::Acad::eInvalidInput;
    written = path;
    why = L"kept";
    return host::Acad::eOk;
  });
  reason.clear();
  EXPECT_EQ(host.saveDrawingFile(db, L"plan.dxf", reason), host::Acad::eOk);
  EXPECT_EQ(written, L"plan.dxf");
  EXPECT_EQ(reason, L"kept");
}

TEST(HostApplication, TheWorkingDatabaseCanBeSwitchedThroughThePort) {
  HostApplication host;
  Database first(host);
  Database second(host);
  host::AcDbHostApplicationServices& services = host;
  const struct {
    host::AcDbDatabase* given;
    host::AcDbDatabase* working;
  } cases[] = {{&second, &second}, {&first, &first}, {nullptr, nullptr}};
  for (const auto& c : cases) {
    services.setWorkingDatabase(c.given);
    EXPECT_EQ(services.workingDatabase(), c.working);
  }
}

}  // namespace
}  // namespace corvane::headless
