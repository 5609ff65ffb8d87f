// The option page of the block count field: which blocks, where (the whole drawing or a window
// of the current space), filtered by layer and attribute, nested insertions or not, and the
// additional format of the count.
#pragma once

#include <string>

#include "host/acgepoint.h"
#include "plugin/fields/combolist.h"
#include "plugin/fields/showmodal.h"
#include "plugin/measure/additionalformat.h"
#include "plugin/measure/cadditionalformatdialog.h"
#include "plugin/measure/cblockfilterdialog.h"
#include "plugin/measure/cdefinewindowpointsdialog.h"
#include "plugin/measure/dialoghost.h"
#include "plugin/support/cregistry.h"

namespace corvane {

class AsdkBlockCntOptionDialog {
 public:
  enum Source : int { kEntireDrawing = 0, kWindow = 1 };

  static constexpr const wchar_t* kFirstCornerPrompt = L"\nSpecify first corner point:";
  static constexpr const wchar_t* kOtherCornerPrompt = L"\nSpecify other corner point:";
  static constexpr const wchar_t* kSelectWindow = L"Select window.";
  static constexpr const wchar_t* kDefineWindowPoints = L"Define window points.";

  AsdkBlockCntOptionDialog(DialogHost& host, CRegistry& registry) : host_(host), registry_(registry) {}

  // The blocks of the drawing, none checked; source, nesting and the picked window as last
  // kept in the settings.
  void onInitDialog();

  // The controls. After changing the source or the nesting box call its handler.
  ComboList source;  // "Entire Drawing", "Window"
  CheckList blocks;
  std::wstring wildcard;  // "*" and "?" as in the host's names; empty matches every block
  bool includeNested = false;
  CBlockFilterDialog::State filter;
  AdditionalFormat additional;

  void onSourceChanged();
  void onNestedChanged();
  // "Check All" / "Uncheck All": the blocks whose names match the wildcard.
  void onCheckAll();
  void onUncheckAll();
  // "<": the two corners picked in the drawing, then kept in the settings. A prompt result;
  // the window stays as it was unless both corners are given.
  int onPickWindow();
  // "...": the corners typed in the window-points dialog; they are written into the code as
  // typed.
  bool onDefineWindowPoints(const ShowModal<CDefineWindowPointsDialog>& show);
  bool onFilter(const ShowModal<CBlockFilterDialog>& show);
  // "Additional Format ...": the count, evaluated now, is the value shown in its preview.
  bool onAdditionalFormat(const ShowModal<CAdditionalFormatDialog>& show);

  // "Select window." for a window picked in the drawing, "Define window points." for one typed
  // in the window-points dialog; nothing for the entire drawing.
  std::wstring statusText() const;
  // The x and y of each corner, "(%s, %s)".
  std::wstring firstPointText() const;
  std::wstring secondPointText() const;

  std::wstring formatString() const;
  std::wstring fieldCode() const;

  const host::AcGePoint3d& firstCorner() const noexcept { return first_; }
  const host::AcGePoint3d& secondCorner() const noexcept { return second_; }
  bool windowTyped() const noexcept { return typed_; }
  const CDefineWindowPointsDialog::Texts& windowTexts() const noexcept { return texts_; }

  // Whether a block name matches a wildcard, ignoring case.
  static bool wildcardMatches(std::wstring_view pattern, std::wstring_view name) noexcept;

 private:
  bool isWindow() const noexcept { return source.selectedItem() == kWindow; }
  CDefineWindowPointsDialog::Texts pickedTexts() const;

  DialogHost& host_;
  CRegistry& registry_;
  host::AcGePoint3d first_{};
  host::AcGePoint3d second_{};
  bool typed_ = false;
  CDefineWindowPointsDialog::Texts texts_;
};

}  // namespace corvane
