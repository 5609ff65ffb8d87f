#include "headless/db/mtext.h"

#include <gtest/gtest.h>

#include <string>

#include "host/acdbmtext.h"
#include "support/testdrawing.h"

namespace corvane::headless {
namespace {

using corvane::testing::TestDrawing;

std::string narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

TEST(MText, PlainText) {
  struct Case {
    std::wstring contents;
    std::wstring plain;
  } const cases[] = {
      {L"Plain", L"Plain"},
      {L"Line one\\PLine two", L"Line one\nLine two"},
      {L"{\\fArial|b1|i0|c0|p34;Bold} text", L"Bold text"},
      {L"\\H2.5x;Big\\H1;small", L"Bigsmall"},
      {L"\\A1;\\C3;\\c12345;\\T1.2;\\W0.8;\\Q15;\\pxi-3,l3,t4;\\FRomans|c0;Para", L"Para"},
      {L"{\\C1;red} {\\C5;{blue}}", L"red blue"},
      {L"\\LUnder\\l and \\OOver\\o \\Kstruck\\k", L"Under and Over struck"},
      {L"x\\S1/2;y", L"x1/2y"},
      {L"\\S3^4;", L"3/4"},
      {L"\\S5#8;", L"5/8"},
      {L"\\S2;", L"2"},  // nothing stacked
      {L"a\\~b", L"a\u00A0b"},
      {L"\\\\ \\{x\\}", L"\\ {x}"},
      // tabs and line feeds as they are, carriage returns dropped
      {L"a\tb\nc\r\nd^e", L"a\tb\nc\nd^e"},
      {L"\\X and \\N", L"\n and \n"},
      {L"45%%d %%p0.5 %%c10 %%D", L"45\u00B0 \u00B10.5 \u00D810 \u00B0"},
      {L"100%%%", L"100%%%"},
      {L"\\U+00E9t\\U+00E9", L"\u00E9t\u00E9"},
      // what is no code stays as written
      {L"\\z and \\U+00 and end\\", L"\\z and \\U+00 and end\\"},
      // a command without its ';' takes the rest of the text
      {L"keep\\H2", L"keep"},
      {L"", L""},
  };
  for (const auto& c : cases) EXPECT_EQ(MText::plainText(c.contents), c.plain) << narrow(c.contents);
}

TEST(MText, ContentsAndTextThroughThePort) {
  TestDrawing d;
  const auto id = d.addMText(L"{\\fArial;Total}\\P%%c 12");
  host::AcDbObjectPointer<host::AcDbMText> mtext(d.host, id, host::AcDb::kForRead);
  EXPECT_EQ(mtext->contents(), L"{\\fArial;Total}\\P%%c 12");
  EXPECT_EQ(mtext->text(), L"Total\n\u00D8 12");
  mtext.close();

  // The contents are what a field writes into; the plain text follows.
  auto* raw = d.db.get<MText>(id);
  raw->record().modified = false;
  raw->setHostText(L"\\fArial;New");
  EXPECT_TRUE(raw->record().modified);
  EXPECT_EQ(raw->text(), L"New");
  EXPECT_EQ(raw->property(L"TextString")->data(), host::AcValue(L"\\fArial;New").data());
  EXPECT_EQ(raw->property(L"Contents")->data(), host::AcValue(L"New").data());
}

TEST(MText, FieldInAMultilineText) {
  TestDrawing d;
  const auto id = d.addMText(L"old");
  const auto field = attachField(d.db, id, L"Units %<\\AcVar LUNITS>%");
  d.evaluateAll();
  EXPECT_EQ(d.field(field).getDisplayText(), L"Units 2");
  EXPECT_EQ(d.db.get<MText>(id)->contents(), L"Units 2");
}

TEST(MText, LeaderTextIsPlainToo) {
  TestDrawing d;
  const auto id = d.addMLeader(L"{\\H0.7x;Room}\\P12 m^2");
  const auto* leader = d.db.get<MLeader>(id);
  EXPECT_EQ(leader->text(), L"Room\n12 m^2");
  EXPECT_EQ(leader->property(L"Contents")->data(), host::AcValue(L"Room\n12 m^2").data());
}

}  // namespace
}  // namespace corvane::headless
