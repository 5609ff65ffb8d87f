#include "plugin/fields/fieldreferences.h"

#include <gtest/gtest.h>

#include "core/printf.h"
#include "support/testdrawing.h"

namespace corvane {
namespace {

using corvane::testing::TestDrawing;

std::wstring idText(host::AcDbObjectId id) { return core::format(L"%llu", id.asOldId()); }

TEST(ObjIdToHandle, ConvertsTheFirstIdOfAnObjectPropertyCode) {
  TestDrawing d;
  const auto a = d.addCircle(1);
  const auto b = d.addCircle(2);
  const std::wstring ha = d.host.handle(a).text(), ia = idText(a), ib = idText(b);
  struct Case {
    std::wstring code, expected;
  } const cases[] = {
      {L"%<\\AcObjProp Object(%<\\_ObjId " + ia + L">%).Area>%",
       L"%<\\AcObjProp Object(%<\\_ObjHandle " + ha + L">%).Area>%"},
      // Every occurrence of that reference, but only the first id's.
      {L"%<\\AcObjProp Object(%<\\_ObjId " + ia + L">%).Area %<\\_ObjId " + ib + L">% %<\\_ObjId " + ia + L">%>%",
       L"%<\\AcObjProp Object(%<\\_ObjHandle " + ha + L">%).Area %<\\_ObjId " + ib + L">% %<\\_ObjHandle " + ha +
           L">%>%"},
      {L" %<\\AcObjProp Object(%<\\_ObjId " + ia + L">%).Area>%", L" %<\\AcObjProp Object(%<\\_ObjId " + ia + L">%).Area>%"},
      {L"%<\\AcVar Object(%<\\_ObjId " + ia + L">%)>%", L"%<\\AcVar Object(%<\\_ObjId " + ia + L">%)>%"},
      {L"%<\\AcObjProp Object(%<\\_ObjId 12345>%).Area>%", L"%<\\AcObjProp Object(%<\\_ObjId 12345>%).Area>%"},
      {L"%<\\AcObjProp Object(%<\\_objid " + ia + L">%).Area>%", L"%<\\AcObjProp Object(%<\\_objid " + ia + L">%).Area>%"},
  };
  for (const auto& c : cases) EXPECT_EQ(ObjIdToHandle(d.host, c.code), c.expected);
}

TEST(ObjHandleToId, ConvertsBackThroughTheGivenOrWorkingDatabase) {
  TestDrawing d;
  TestDrawing other;
  const auto a = d.addCircle(1);
  const std::wstring ha = d.host.handle(a).text();
  const std::wstring code = L"%<\\AcObjProp Object(%<\\_ObjHandle " + ha + L">%).Area>%";
  EXPECT_EQ(ObjHandleToId(d.host, code), L"%<\\AcObjProp Object(%<\\_ObjId " + idText(a) + L">%).Area>%");
  EXPECT_EQ(ObjHandleToId(d.host, code, &d.db), ObjHandleToId(d.host, code));
  // Round trip with the other direction.
  EXPECT_EQ(ObjIdToHandle(d.host, ObjHandleToId(d.host, code)), code);
  const std::wstring unknown = L"%<\\AcObjProp Object(%<\\_ObjHandle FFFFF>%).Area>%";
  EXPECT_EQ(ObjHandleToId(d.host, unknown), unknown);
  EXPECT_EQ(ObjHandleToId(d.host, L" " + code), L" " + code);
  const std::wstring lower = L"%<\\AcObjProp Object(%<\\_objhandle " + ha + L">%).Area>%";
  EXPECT_EQ(ObjHandleToId(d.host, lower), lower);
}

TEST(AllObjIdsToHandles, ReplacesEveryIdAfterTheStart) {
  TestDrawing d;
  const auto a = d.addCircle(1);
  const auto b = d.addCircle(2);
  const std::wstring ha = d.host.handle(a).text(), hb = d.host.handle(b).text();
  const std::wstring ia = idText(a), ib = idText(b);
  struct Case {
    std::wstring text, expected;
  } const cases[] = {
      {L"x %<\\_ObjId " + ia + L">% y %<\\_ObjId " + ib + L">%", L"x %<\\_ObjId " + ha + L">% y %<\\_ObjId " + hb + L">%"},
      // A reference at the very start stops the scan, later ones included.
      {L"%<\\_ObjId " + ia + L">% %<\\_ObjId " + ib + L">%", L"%<\\_ObjId " + ia + L">% %<\\_ObjId " + ib + L">%"},
      // The digits are replaced wherever they stand.
      {L"id " + ia + L": %<\\_ObjId " + ia + L">%", L"id " + ha + L": %<\\_ObjId " + ha + L">%"},
      {L"x %<\\_ObjId 99>%", L"x %<\\_ObjId 99>%"},
      {L"x %<\\_ObjId " + ia, L"x %<\\_ObjId " + ia},
  };
  for (const auto& c : cases) EXPECT_EQ(AllObjIdsToHandles(d.host, c.text), c.expected);
}

TEST(AllHandlesToObjIds, ConvertsBackAndReportsWhatItCannot) {
  TestDrawing d;
  const auto a = d.addCircle(1);
  const std::wstring ha = d.host.handle(a).text();
  const std::wstring stored = L"x %<\\_ObjId " + ha + L">%";
  EXPECT_EQ(AllHandlesToObjIds(d.host, stored), L"x %<\\_ObjId " + idText(a) + L">%");
  EXPECT_TRUE(d.printed.empty());
  EXPECT_EQ(AllHandlesToObjIds(d.host, L"x %<\\_ObjId FFFFF>%"), L"x %<\\_ObjId FFFFF>%");
  EXPECT_EQ(d.printed, L"\nERROR: Could not translate handle to objectId (eUnknownHandle)");
  // The inverse pair round-trips.
  const std::wstring ids = L"a %<\\_ObjId " + idText(a) + L">%";
  EXPECT_EQ(AllHandlesToObjIds(d.host, AllObjIdsToHandles(d.host, ids)), ids);
}

TEST(FieldToFormulaArgument, SeparatesEveryCharacterOfTheFirstField) {
  TestDrawing d;
  const auto a = d.addCircle(1);
  const std::wstring field = L"%<\\AcVar LUNITS>%";
  const std::wstring result = FieldToFormulaArgument(d.host, L"before " + field + L" after %<\\AcVar X>%");
  ASSERT_EQ(result.size(), 12 + field.size() * 2 - 1 + 2);
  EXPECT_EQ(result.substr(0, 12), L"ACAD_FIELD('");
  EXPECT_EQ(result.substr(result.size() - 2), L"')");
  std::wstring joined;
  for (std::size_t i = 12; i < result.size() - 2; ++i) {
    if ((i - 12) % 2 == 1) EXPECT_EQ(result[i], L'\x1F');
    else joined.push_back(result[i]);
  }
  EXPECT_EQ(joined, field);

  // An object-property field travels with a handle, not an id.
  const std::wstring prop = FieldToFormulaArgument(d.host, L"%<\\AcObjProp Object(" + TestDrawing::idReference(a) + L").Area>%");
  std::wstring plain;
  for (const wchar_t c : prop) if (c != L'\x1F') plain.push_back(c);
  EXPECT_EQ(plain, L"ACAD_FIELD('%<\\AcObjProp Object(%<\\_ObjHandle " + d.host.handle(a).text() + L">%).Area>%')");
}

TEST(FormulaFieldHandlesToIds, TurnsHandlesOfTheFirstFieldIntoLongIds) {
  TestDrawing d;
  const auto a = d.addCircle(1);
  const std::wstring ha = d.host.handle(a).text();
  EXPECT_EQ(FormulaFieldHandlesToIds(d.host, L"x %<\\AcObjProp Object(%<\\_ObjHandle " + ha + L">%).Area>% y"),
            L"%<\\AcObjProp Object(%<\\_ObjId " + idText(a) + L">%).Area>%");
  EXPECT_EQ(FormulaFieldHandlesToIds(d.host, L"%"), L"%");
  EXPECT_EQ(FormulaFieldHandlesToIds(d.host, L"no fields"), L"no fields");
  EXPECT_EQ(FormulaFieldHandlesToIds(d.host, L"%<\\AcVar LUNITS>%"), L"%<\\AcVar LUNITS>%");
  const std::wstring unknown = L"%<\\AcObjProp Object(%<\\_ObjHandle FFFFF>%).Area>%";
  EXPECT_EQ(FormulaFieldHandlesToIds(d.host, unknown), unknown);
}

}  // namespace
}  // namespace corvane
