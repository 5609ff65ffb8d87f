#include "headless/db/fieldcode.h"

#include <gtest/gtest.h>

namespace corvane::headless {
namespace {

struct FindCase {
  const wchar_t* text;
  std::size_t from;
  std::ptrdiff_t start;  // -1: none
  std::size_t end;
};

TEST(FindFieldCode, PairsMarkersLikeBrackets) {
  const FindCase cases[] = {
      {L"no field here", 0, -1, 0},
      {L"%<\\AcVar Date>%", 0, 0, 15},
      {L"ab %<\\A %<\\B>% c>% d", 0, 3, 18},                // the outer field, nested one included
      {L"%<\\A never closed %<\\B>% tail", 0, 18, 24},       // an unclosed marker is text
      {L"x %<\\A>% y %<\\B>%", 4, 11, 17},                  // search from a position
      {L">% stray closing %<\\A>%", 0, 17, 23},
      {L"%<", 0, -1, 0},
      {L"%<>%", 0, 0, 4},
  };
  for (const auto& c : cases) {
    const auto span = findFieldCode(c.text, c.from);
    if (c.start < 0) {
      EXPECT_FALSE(span.has_value()) << std::wstring(c.text).size();
    } else {
      ASSERT_TRUE(span.has_value());
      EXPECT_EQ(span->first, static_cast<std::size_t>(c.start));
      EXPECT_EQ(span->second, c.end);
    }
  }
}

TEST(ParseFieldCode, SplitsIdChildrenAndObjectReferences) {
  const auto single = parseFieldCode(L"%<\\AcVar Date \\f \"dd/MM/yyyy\">%");
  EXPECT_EQ(single.evaluatorId, L"AcVar");
  EXPECT_EQ(single.ownCode, L"\\AcVar Date \\f \"dd/MM/yyyy\"");
  EXPECT_TRUE(single.childCodes.empty());

  const auto nested = parseFieldCode(L"%<\\VxExpr (%<\\AcVar LUNITS>% + %<\\AcVar LUPREC>%)>%");
  EXPECT_EQ(nested.evaluatorId, L"VxExpr");
  EXPECT_EQ(nested.ownCode, L"\\VxExpr (%<\\_FldIdx 0>% + %<\\_FldIdx 1>%)");
  ASSERT_EQ(nested.childCodes.size(), 2u);
  EXPECT_EQ(nested.childCodes[1], L"%<\\AcVar LUPREC>%");

  const auto prop = parseFieldCode(L"%<\\AcObjProp Object(%<\\_ObjId 268435460>%).Area>%");
  EXPECT_EQ(prop.ownCode, L"\\AcObjProp Object(%<\\_ObjIdx 0>%).Area");
  ASSERT_EQ(prop.objectIds.size(), 1u);
  EXPECT_EQ(prop.objectIds[0], 268435460u);
  EXPECT_TRUE(prop.childCodes.empty());

  const auto text = parseFieldCode(L"Date: %<\\AcVar Date>% ok");
  EXPECT_EQ(text.evaluatorId, L"_text");
  EXPECT_EQ(text.ownCode, L"Date: %<\\_FldIdx 0>% ok");

  const auto plain = parseFieldCode(L"just text");
  EXPECT_EQ(plain.evaluatorId, L"_text");
  EXPECT_EQ(plain.ownCode, L"just text");
}

TEST(SplitFormatOption, TakesOnlyTheTrailingOption) {
  struct Case {
    const wchar_t* code;
    const wchar_t* rest;
    const wchar_t* format;
  } const cases[] = {
      {L"\\VxExpr (A1*2) \\f \"%lu2%pr3\"", L"\\VxExpr (A1*2)", L"%lu2%pr3"},
      {L"\\VxExpr (A1*2)", L"\\VxExpr (A1*2)", L""},
      {L"\\VxExpr (\"x\")", L"\\VxExpr (\"x\")", L""},
      {L"\\AcVar Date \\f \"\"", L"\\AcVar Date", L""},
      {L"\\A \\f \"%ps[\"m\",\"\"]\"", L"\\A", L"%ps[\"m\",\"\"]"},
  };
  for (const auto& c : cases) {
    const auto [rest, format] = splitFormatOption(c.code);
    EXPECT_EQ(rest, c.rest) << c.code;
    EXPECT_EQ(format, c.format) << c.code;
  }
}

TEST(FieldTextChecksum, MatchesValuesTheHostWrote) {
  // Sums the host stored beside these texts in real drawings.
  EXPECT_DOUBLE_EQ(fieldTextChecksum(L"####"), 350.0);
  EXPECT_DOUBLE_EQ(fieldTextChecksum(L"21/04/2020"), 2687.0);
  EXPECT_DOUBLE_EQ(fieldTextChecksum(L""), 0.0);
}

}  // namespace
}  // namespace corvane::headless
