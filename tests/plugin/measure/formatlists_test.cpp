#include "plugin/fields/formatlists.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "headless/db/database.h"
#include "headless/hostapplication.h"
#include "plugin/fields/formatpieces.h"
#include "plugin/fields/portformathost.h"
#include "plugin/measure/parsedformat.h"

namespace corvane {
namespace {

struct Drawing {
  headless::HostApplication app;
  headless::Database db{app};
  PortFormatHost host = (app.setWorkingDatabase(&db), PortFormatHost{app});
};

std::vector<ListEntry> samples(std::vector<std::wstring> texts) {
  std::vector<ListEntry> entries{{L"Current precision", -1}};
  for (std::size_t p = 0; p < texts.size(); ++p) entries.push_back({texts[p], static_cast<int>(p)});
  return entries;
}

const std::vector<std::wstring> kDecimalSamples = {
    L"0", L"0.0", L"0.00", L"0.000", L"0.0000", L"0.00000", L"0.000000", L"0.0000000", L"0.00000000"};

TEST(FormatLists, EntriesAndItemValuesInTheirOrder) {
  EXPECT_EQ(unitsList().entries(), (std::vector<ListEntry>{{L"(none)", 0},
                                                           {L"Current units", -1},
                                                           {L"Decimal", 2},
                                                           {L"Architectural", 4},
                                                           {L"Engineering", 3},
                                                           {L"Fractional", 5},
                                                           {L"Scientific", 1}}));
  EXPECT_EQ(decimalSeparatorList().entries(),
            (std::vector<ListEntry>{{L"'.' (Period)", 0}, {L"',' (Comma)", 44}, {L"' ' (Space)", 32}}));
  EXPECT_EQ(thousandsSeparatorList().entries(),
            (std::vector<ListEntry>{
                {L"(None)", 0}, {L"',' (Comma)", 44}, {L"'.' (Period)", 46}, {L"''' (Single quote)", 39}}));
}

TEST(FormatLists, PrecisionSamplesForEachUnits) {
  struct Case {
    int units;
    bool enabled;
    std::vector<ListEntry> entries;
  };
  const Case cases[] = {
      {kUnitsNone, false, {}},
      {kUnitsCurrent, false, {}},
      {2, true, samples(kDecimalSamples)},
      {4, true, samples(kDecimalSamples)},  // sampled in decimal, not in feet and inches
      {5, true, samples(kDecimalSamples)},
      {1, true,
       samples({L"0E+00", L"0.0E+00", L"0.00E+00", L"0.000E+00", L"0.0000E+00", L"0.00000E+00",
                L"0.000000E+00", L"0.0000000E+00", L"0.00000000E+00"})},
      {3, true,
       samples({L"0'-0\"", L"0'-0.0\"", L"0'-0.00\"", L"0'-0.000\"", L"0'-0.0000\"", L"0'-0.00000\"",
                L"0'-0.000000\"", L"0'-0.0000000\"", L"0'-0.00000000\""})},
      {6, false, {}},
  };
  // DIMZIN 12 would write every sample as "0"; the list is made with DIMZIN 1 and the
  // drawing's value comes back afterwards.
  for (const int dimzin : {0, 12}) {
    for (const auto& c : cases) {
      Drawing d;
      ASSERT_TRUE(d.host.setShortVar(L"DIMZIN", dimzin));
      ComboList precision({{L"stale", 7}});
      precision.select(0);
      fillPrecisionList(d.host, c.units, precision);
      EXPECT_EQ(precision.enabled, c.enabled) << c.units;
      EXPECT_EQ(precision.entries(), c.entries) << c.units;
      EXPECT_EQ(precision.selection(), c.enabled ? 0 : -1) << c.units;
      int restored = -1;
      ASSERT_TRUE(d.host.getShortVar(L"DIMZIN", restored));
      EXPECT_EQ(restored, dimzin) << c.units;
    }
  }
}

TEST(FormatLists, SelectsWhatAFormatNames) {
  struct Case {
    const wchar_t* format;
    int unitsBefore;  // item value selected when the dialog opened
    std::optional<int> units;
    std::optional<int> precision;
    int precisionEntries;
  };
  const Case cases[] = {
      {L"%lu5%pr3", 2, 5, 3, 10},
      {L"%lu2%pr0", 4, 2, 0, 10},
      {L"%lu1", 2, 1, -1, 10},               // refilled: "Current precision" selected
      {L"%lu6%qf1", 4, 4, -1, 10},           // no entry has 6: the selection stays, its list is refilled
      {L"%lu2%pr9", 2, 2, -1, 10},           // no precision 9: the first entry stays selected
      {L"%lu0%pr2", 2, 0, std::nullopt, 0},  // "(none)" empties the precision list
      {L"%pr2", 0, 0, std::nullopt, 0},
      {L"", 3, 3, std::nullopt, 0},  // nothing read: lists as they were
  };
  for (const auto& c : cases) {
    Drawing d;
    ComboList units = unitsList();
    units.selectItem(c.unitsBefore);
    ComboList precision;
    selectFromFormat(d.host, parseFormat(c.format), units, precision);
    EXPECT_EQ(units.selectedItem(), c.units) << c.format;
    EXPECT_EQ(precision.selectedItem(), c.precision) << c.format;
    EXPECT_EQ(precision.size(), c.precisionEntries) << c.format;
  }
}

TEST(FormatPieces, UnitsAndPrecisionPieces) {
  struct Case {
    int item;
    const wchar_t* area;
    const wchar_t* length;
  };
  const Case cases[] = {
      {kUnitsNone, L"", L""},
      {kUnitsCurrent, L"%lu6%qf1", L"%lu6"},
      {2, L"%lu2", L"%lu2"},
      {4, L"%lu2%ct4%qf1 SQ. FT.", L"%lu4"},
      {3, L"%lu2%ct4%qf1 SQ. FT.", L"%lu3"},
      {5, L"%lu5", L"%lu5"},
      {1, L"%lu1", L"%lu1"},
      {6, L"", L""},
      {-2, L"", L""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(areaUnitsPiece(c.item), c.area) << c.item;
    EXPECT_EQ(lengthUnitsPiece(c.item), c.length) << c.item;
  }

  struct PrecisionCase {
    bool enabled;
    int selectItem;
    const wchar_t* piece;
  };
  const PrecisionCase precisionCases[] = {
      {true, -1, L""}, {true, 0, L"%pr0"}, {true, 8, L"%pr8"}, {false, 3, L""}, {true, 42, L""},
  };
  for (const auto& c : precisionCases) {
    Drawing d;
    ComboList precision;
    fillPrecisionList(d.host, 2, precision);
    precision.enabled = c.enabled;
    precision.select(-1);
    precision.selectItem(c.selectItem);
    EXPECT_EQ(precisionPiece(precision), c.piece) << c.selectItem;
  }
}

// The measurement fields' formats, written by the lists and shown by the host.
TEST(FormatPieces, AssembledFormatsAsTheHostShowsThem) {
  struct Case {
    std::wstring format;
    double value;
    const wchar_t* shown;
  };
  Drawing d;
  ComboList precision;
  fillPrecisionList(d.host, 2, precision);
  precision.selectItem(2);
  const std::wstring pr2 = precisionPiece(precision);
  const AdditionalFormat factor{1e-6, L"", L" m\u00b2", 0, 44, {}};
  const Case cases[] = {
      {areaUnitsPiece(4) + pr2, 17280.0, L"120.00 SQ. FT."},
      {areaUnitsPiece(2) + pr2 + factor.build(23), 2.5e9, L"2,500.00 m\u00b2"},
      {lengthUnitsPiece(4) + L"%pr4", 6.6875, L"0'-6 11/16\""},
      {lengthUnitsPiece(kUnitsCurrent), 6.6875, L"6.6875"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(d.host.formatValue(host::AcValue(c.value), c.format), c.shown) << c.format;
  }
}

}  // namespace
}  // namespace corvane
