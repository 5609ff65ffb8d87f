// The time stamp a linked field keeps in its extended data.
#include "plugin/linked/linkedtimestamp.h"

#include <gtest/gtest.h>

#include <string>

#include "core/datetimetext.h"
#include "core/oledate.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using host::ResBuf;
using host::ResBufList;
using testing::TestDrawing;

TEST(LinkedTimeStamp, SameTimeWithinHalfASecond) {
  const double t = *core::toOleDate({2026, 11, 24, 20, 46, 30});
  const struct {
    double apart;
    bool same;
  } cases[] = {{0.0, true}, {0.4, true}, {-0.4, true}, {0.6, false}, {-0.6, false}, {86400.0, false}};
  for (const auto& c : cases) {
    EXPECT_EQ(SameTime(t, t + c.apart / 86400), c.same) << c.apart;
    EXPECT_EQ(SameTime(t + c.apart / 86400, t), c.same) << c.apart;
  }
  EXPECT_FALSE(SameTime(0.0, kSameTimeTolerance));  // exactly half a second is apart
}

TEST(LinkedTimeStamp, WrittenAsTheFirstOuterTextOfItsApplication) {
  TestDrawing d;
  const double t = *core::toOleDate({2026, 11, 24, 20, 46, 30});
  const double later = t + 1.0;
  const std::wstring app(kTimeStampApp);
  const auto write = [&](host::AcDbObjectId id, double when) {
    host::AcDbObjectPointer<host::AcDbObject> open(d.host, id, host::AcDb::kForWrite);
    EXPECT_EQ(WriteTimeStamp(*open.object(), when), host::Acad::eOk);
  };

  // A field with no data: the application is registered and the stamp is its only text.
  const auto fresh = d.addField(L"%<\\TextField a.txt>%");
  EXPECT_EQ(ReadTimeStamp(d.field(fresh)), std::nullopt);
  EXPECT_FALSE(d.db.isRegApp(app));
  write(fresh, t);
  EXPECT_TRUE(d.db.isRegApp(app));
  EXPECT_EQ(d.field(fresh).xData(app), (ResBufList{{1001, app}, {1000, std::wstring(L"11/24/2026 8:46:30 PM")}}));
  EXPECT_EQ(ReadTimeStamp(d.field(fresh)), t);
  write(fresh, later);
  EXPECT_EQ(d.field(fresh).xData(app), (ResBufList{{1001, app}, {1000, core::dateTimeText(later)}}));

  // Texts inside braces belong to something else: they are neither read nor replaced, and
  // another application's data stays.
  const auto braced = d.addField(L"%<\\TextField b.txt>%");
  d.db.registerApp(app);
  d.db.registerApp(L"OTHER");
  const ResBufList other{{1001, std::wstring(L"OTHER")}, {1000, std::wstring(L"1/1/2001")}};
  const auto withOuter = [&](const std::wstring& outer) {
    return ResBufList{{1001, app},
                      {1002, std::wstring(L"{")},
                      {1000, std::wstring(L"1/1/2000")},
                      {1002, std::wstring(L"}")},
                      {1070, std::int32_t{7}},
                      {1000, outer},
                      {1000, std::wstring(L"kept")}};
  };
  {
    host::AcDbObjectPointer<host::AcDbObject> open(d.host, braced, host::AcDb::kForWrite);
    ASSERT_EQ(open->setXData(other), host::Acad::eOk);
    ASSERT_EQ(open->setXData(withOuter(L"2/2/2002 1:00:00 PM")), host::Acad::eOk);
  }
  EXPECT_EQ(ReadTimeStamp(d.field(braced)), *core::toOleDate({2002, 2, 2, 13, 0, 0}));
  write(braced, t);
  EXPECT_EQ(d.field(braced).xData(app), withOuter(L"11/24/2026 8:46:30 PM"));
  EXPECT_EQ(d.field(braced).xData(L"OTHER"), other);

  // Only braced texts: the stamp goes first, right after the application's name.
  const auto inner = d.addField(L"%<\\TextField c.txt>%");
  const ResBufList onlyBraced{
      {1001, app}, {1002, std::wstring(L"{")}, {1000, std::wstring(L"1/1/2000")}, {1002, std::wstring(L"}")}};
  {
    host::AcDbObjectPointer<host::AcDbObject> open(d.host, inner, host::AcDb::kForWrite);
    ASSERT_EQ(open->setXData(onlyBraced), host::Acad::eOk);
  }
  EXPECT_EQ(ReadTimeStamp(d.field(inner)), std::nullopt);
  write(inner, t);
  ResBufList expected = onlyBraced;
  expected.insert(expected.begin() + 1, ResBuf{1000, std::wstring(L"11/24/2026 8:46:30 PM")});
  EXPECT_EQ(d.field(inner).xData(app), expected);
  EXPECT_EQ(ReadTimeStamp(d.field(inner)), t);
}

}  // namespace
}  // namespace corvane
