#include "plugin/measure/cadditionalformatdialog.h"

#include <gtest/gtest.h>

#include <string>

#include "headless/db/database.h"
#include "headless/hostapplication.h"
#include "plugin/fields/portformathost.h"

namespace corvane {
namespace {

using Dialog = CAdditionalFormatDialog;

struct Drawing {
  headless::HostApplication app;
  headless::Database db{app};
  PortFormatHost host = (app.setWorkingDatabase(&db), PortFormatHost{app});
};

Dialog::Input realInput(double value, AdditionalFormat settings = {}) {
  return {L"%lu2", L"%pr2", 2, Dialog::kReal, host::AcValue(value), std::move(settings)};
}

TEST(CAdditionalFormatDialog, EnablesControlsByValueKindAndUnits) {
  struct Case {
    int kind;
    int unitsItem;
    int lunits;  // the drawing's, used when the item is below 1
    int units;   // what the dialog works with
    bool thousands;
    bool factor;
    bool feetInches;
    bool decimals;
  };
  const Case cases[] = {
      {Dialog::kReal, 2, 2, 2, false, true, false, true},
      {Dialog::kDistance, 2, 2, 2, true, true, false, true},
      {Dialog::kInteger, 2, 2, 2, true, true, false, true},
      {Dialog::kPoint, 2, 2, 2, true, false, false, true},
      {Dialog::k3dPoint, 2, 2, 2, true, false, false, true},
      {Dialog::kText, 2, 2, 2, true, false, false, false},
      {Dialog::kReal, 3, 2, 3, false, true, true, true},
      {Dialog::kReal, 4, 2, 4, false, true, true, false},
      {Dialog::kDistance, 5, 2, 5, true, true, false, true},
      {Dialog::kText, 4, 2, 4, true, false, false, false},
      {Dialog::kReal, -1, 4, 4, false, true, true, false},  // "Current units" in an architectural drawing
      {Dialog::kReal, 0, 3, 3, false, true, true, true},
      {Dialog::kInteger, -1, 1, 1, true, true, false, true},
  };
  for (const auto& c : cases) {
    Drawing d;
    ASSERT_TRUE(d.host.setShortVar(L"LUNITS", c.lunits));
    Dialog dialog(d.host, {L"", L"", c.unitsItem, c.kind, host::AcValue(1.0), {}});
    dialog.onInitDialog();
    const std::string where = "kind " + std::to_string(c.kind) + " units " + std::to_string(c.unitsItem);
    EXPECT_EQ(dialog.units(), c.units) << where;
    EXPECT_EQ(dialog.thousandsSeparator.enabled, c.thousands) << where;
    EXPECT_EQ(dialog.conversionFactorEnabled, c.factor) << where;
    EXPECT_EQ(dialog.zeroFeet.enabled, c.feetInches) << where;
    EXPECT_EQ(dialog.zeroInches.enabled, c.feetInches) << where;
    EXPECT_EQ(dialog.leading.enabled, c.decimals) << where;
    EXPECT_EQ(dialog.trailing.enabled, c.decimals) << where;
  }
}

TEST(CAdditionalFormatDialog, OpensWithTheSettingsAndFirstSeparators) {
  Drawing d;
  const AdditionalFormat settings{2.5, L"L=", L" mm", 44, 46, ZeroSuppression::fromMask(8 | 1)};
  Dialog dialog(d.host, realInput(6.6875, settings));
  dialog.onInitDialog();
  EXPECT_EQ(dialog.conversionFactor, L"2.5");
  EXPECT_EQ(dialog.prefix, L"L=");
  EXPECT_EQ(dialog.suffix, L" mm");
  EXPECT_TRUE(dialog.trailing.checked);
  EXPECT_TRUE(dialog.zeroFeet.checked);
  EXPECT_FALSE(dialog.leading.checked);
  EXPECT_FALSE(dialog.zeroInches.checked);
  EXPECT_EQ(dialog.decimalSeparator.selectedItem(), 0);
  EXPECT_FALSE(dialog.decimalSeparator.visible);
  EXPECT_EQ(dialog.thousandsSeparator.selectedItem(), 0);
  EXPECT_TRUE(dialog.thousandsSeparator.visible);
  // 6.6875 * 2.5 = 16.71875, two places, trailing zeros dropped.
  EXPECT_EQ(dialog.preview(), L"L=16.72 mm");
  EXPECT_STREQ(Dialog::kCaption, L"Additional Format");
}

TEST(CAdditionalFormatDialog, PreviewFollowsTheControls) {
  struct Step {
    const wchar_t* factor;
    const wchar_t* prefix;
    bool trailing;
    int thousands;
    const wchar_t* preview;
  };
  const Step steps[] = {
      {L"1", L"", false, 0, L"1234.50"},
      {L"2", L"", false, 0, L"2469.00"},
      {L"2", L"", true, 0, L"2469"},
      {L"2", L"x,", true, 0, L"x,2469"},
      {L"2", L"x,", true, 1, L"x,2,469"},
      {L"two", L"x,", true, 1, L"x,2,469"},  // not a number: the last good factor stays
      {L" 0.5 ", L"", false, 0, L"617.25"},
  };
  Drawing d;
  Dialog dialog(d.host, {L"%lu2", L"%pr2", 2, Dialog::kDistance, host::AcValue(1234.5), {}});
  dialog.onInitDialog();
  for (const auto& s : steps) {
    dialog.conversionFactor = s.factor;
    dialog.prefix = s.prefix;
    dialog.trailing.checked = s.trailing;
    dialog.thousandsSeparator.select(s.thousands);
    dialog.updatePreview();
    EXPECT_EQ(dialog.preview(), s.preview) << s.factor << " " << s.prefix;
  }
}

TEST(CAdditionalFormatDialog, OkBuildsThePieceOrRefusesABadFactor) {
  struct Case {
    const wchar_t* factor;
    const wchar_t* prefix;
    int version;
    bool accepted;
    const wchar_t* piece;
  };
  const Case cases[] = {
      {L"1", L"", 23, true, L"%zs12"},
      {L"1", L"A,B", 23, true, L"%ps[A\\,B,]%zs12"},
      {L"1", L"A,B", 16, true, L"%ps[A,B,]%zs12"},
      {L"0.5", L"", 23, true, L"%ct8[0.5]%zs12"},
      {L"1e-7", L"", 23, true, L"%ct8[1e-07]%zs12"},
      {L"", L"", 23, false, L""},
      {L"1.5x", L"", 23, false, L""},
      {L"abc", L"", 23, false, L""},
      {L"inf", L"", 23, false, L""},
      {L"nan", L"", 23, false, L""},
  };
  for (const auto& c : cases) {
    Drawing d;
    d.app.setVersionMajor(c.version);
    PortFormatHost host(d.app);
    Dialog dialog(host, realInput(2.0));
    dialog.onInitDialog();
    dialog.conversionFactor = c.factor;
    dialog.prefix = c.prefix;
    dialog.leading.checked = true;
    dialog.trailing.checked = true;
    EXPECT_EQ(dialog.onOK(), c.accepted) << c.factor;
    EXPECT_EQ(dialog.message(), c.accepted ? L"" : Dialog::kNotANumber) << c.factor;
    EXPECT_EQ(dialog.additionalPiece(), c.piece) << c.factor;
    if (c.accepted) {
      EXPECT_EQ(dialog.result().prefix, c.prefix);
      EXPECT_EQ(dialog.result().zeros, ZeroSuppression::fromMask(12));
    } else {
      EXPECT_EQ(dialog.result(), AdditionalFormat{});  // still what it was given
    }
  }
}

TEST(CAdditionalFormatDialog, ABadFactorCanBeCorrectedBeforeOk) {
  Drawing d;
  Dialog dialog(d.host, realInput(3.0));
  dialog.onInitDialog();
  dialog.conversionFactor = L"1..2";
  EXPECT_FALSE(dialog.onOK());
  dialog.conversionFactor = L"1.2";
  dialog.suffix = L"]";
  dialog.thousandsSeparator.selectItem(39);
  ASSERT_TRUE(dialog.onOK());
  EXPECT_EQ(dialog.message(), L"");
  EXPECT_EQ(dialog.additionalPiece(), L"%ps[,\\]]%ct8[1.2]%th39");
  EXPECT_EQ(dialog.result(), (AdditionalFormat{1.2, L"", L"]", 0, 39, {}}));
}

}  // namespace
}  // namespace corvane
