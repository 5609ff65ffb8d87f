// What the option pages of the area and length fields share: the object set (picked handles or
// a whole space, narrowed by layers and types), the units, precision and additional format, the
// preview, and the field code they make. Each field supplies its names, types and units pieces.
#pragma once

#include <string>
#include <vector>

#include "host/acdbfield.h"
#include "plugin/fields/combolist.h"
#include "plugin/fields/showmodal.h"
#include "plugin/measure/additionalformat.h"
#include "plugin/measure/cadditionalformatdialog.h"
#include "plugin/measure/cobjectfilterdialog.h"
#include "plugin/measure/dialoghost.h"
#include "plugin/measure/objectset.h"
#include "plugin/support/cregistry.h"

namespace corvane {

class ObjectSetOptionDialog {
 public:
  struct Kind {
    const wchar_t* evaluatorId;                  // "AcArea"
    const wchar_t* dataKey;                      // "AcArea Data"
    const wchar_t* settingsKey;                  // "Corvane\AreaField"
    int typeMask;                                // offered by the filter and set when a new field opens
    int pickableTypes;                           // the kinds a pick may add to the list
    std::vector<const wchar_t*> selectionTypes;  // entity names of the selection filter
    std::wstring (*unitsPiece)(int unitsItem);
  };

  virtual ~ObjectSetOptionDialog() = default;

  // A new field: the offered type mask, the units of the drawing's LUNITS, no precision, every
  // layer selected, no picked objects.
  void onInitDialog();
  // An existing field: its data record and format fill the page. Returns the evaluation status
  // of the reading: 2, 64 without the data record, 16 for data that is no text or does not
  // read (message() says why); the page keeps the new field's state then.
  int setFieldToEdit(const host::AcDbField& field);

  // The controls. After changing the selection of a list call its handler.
  ObjectSetChoice choice;            // the object set; choice.handles is the picked-objects list
  std::vector<int> selectedHandles;  // indexes of the list's selected entries
  ComboList units;
  ComboList precision;
  AdditionalFormat additional;

  void onUnitsChanged();
  void onPrecisionChanged();
  // "+": picks entities through the selection filter; those on a selected layer that pass the
  // type test are added unless listed already. A prompt result code.
  int onAddObjects();
  // "-": removes the selected entries.
  void onRemoveObjects();
  // "Object Filter...": on OK takes scope, mask and layers back and drops the listed objects
  // that no longer pass, last first.
  bool onObjectFilter(const ShowModal<CObjectFilterDialog>& show);
  // "Additional Format ...": on OK takes factor, prefix, suffix and zero flags back.
  bool onAdditionalFormat(const ShowModal<CAdditionalFormatDialog>& show);

  // The selection filter of "+": -4 "<or", per type "<and" 0 TYPE "and>", -4 "or>".
  host::ResBufList selectionFilter() const;
  // The page's own type test of a picked entity, narrower than the evaluator's.
  bool typePasses(int typeBit) const noexcept;
  std::wstring formatString() const;
  std::wstring fieldCode() const;

  double value() const noexcept { return value_; }
  const std::wstring& previewText() const noexcept { return previewText_; }
  const std::wstring& message() const noexcept { return message_; }
  const Kind& kind() const noexcept { return kind_; }

 protected:
  ObjectSetOptionDialog(DialogHost& host, CRegistry& registry, Kind kind);

 private:
  // Evaluates the field code in a temporary field and shows its text; a successful
  // evaluation's value becomes the page's value.
  void refreshPreview();
  // Units, precision and additional settings from an existing field's format.
  void selectFormat(const std::wstring& format);
  bool entryPasses(const std::wstring& entry);
  bool layerSelected(const std::wstring& layer) const;

  DialogHost& host_;
  CRegistry& registry_;
  Kind kind_;
  double value_ = 0.0;
  std::wstring previewText_;
  std::wstring message_;
};

}  // namespace corvane
