#include "plugin/shell/optionpages.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/acdbfield.h"
#include "plugin/formula/asdkformulaoptiondialog.h"
#include "plugin/linked/asdkdefinedobjectoptiondialog.h"
#include "plugin/linked/asdkexcelrangeoptiondialog.h"
#include "plugin/linked/asdktextfilefieldoptiondialog.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/measure/asdkareaoptiondialog.h"
#include "plugin/measure/asdkblockcntoptiondialog.h"
#include "plugin/measure/asdklengthoptiondialog.h"
#include "plugin/measure/asdktablecellfieldoptiondialog.h"
#include "plugin/shell/asdkcustomoptiondialoghook.h"

namespace corvane {

namespace {

using Control = host::CAcFdUiFieldOptionDialog::Control;
using Hook = AsdkCustomOptionDialogHook;

// The texts of a list typed as "a;b;c", blanks around each taken off, empty ones left out.
std::vector<std::wstring> listOf(std::wstring_view text) {
  std::vector<std::wstring> items;
  for (const std::wstring& item : core::split(text, L';')) {
    std::wstring trimmed = core::trim(item);
    if (!trimmed.empty()) items.push_back(std::move(trimmed));
  }
  return items;
}

std::optional<bool> yesNo(std::wstring_view text) {
  if (core::equalsNoCase(text, L"Yes") || core::equalsNoCase(text, L"Y")) return true;
  if (core::equalsNoCase(text, L"No") || core::equalsNoCase(text, L"N")) return false;
  return std::nullopt;
}

// Selects the entry shown as `text`; false when the list has none.
bool selectByText(ComboList& list, std::wstring_view text) {
  for (int i = 0; i < list.size(); ++i) {
    if (core::equalsNoCase(list.entries()[static_cast<std::size_t>(i)].text, text)) {
      list.select(i);
      return true;
    }
  }
  return false;
}

std::wstring entriesOf(const ComboList& list) {
  std::wstring texts;
  for (const ListEntry& entry : list.entries()) texts += (texts.empty() ? L"" : L", ") + entry.text;
  return texts;
}

// A units or precision list set from a script; `error` says what the list offers when the text
// is none of its entries, or that the units chosen take no precision.
bool chooseFormatEntry(ComboList& list, std::wstring_view text, bool isPrecision, std::wstring& error) {
  if (isPrecision && !list.enabled) {
    error = L"The units chosen take no precision.";
    return false;
  }
  if (selectByText(list, text)) return true;
  error = core::format(L"Choose one of: %s.", entriesOf(list));
  return false;
}

// "Full Path" or "Relative Path", by name or by index.
std::optional<int> pathTypeOf(std::wstring_view text) {
  if (core::equalsNoCase(text, L"Full Path") || core::equalsNoCase(text, L"Full") || text == L"0") return kFullPathType;
  if (core::equalsNoCase(text, L"Relative Path") || core::equalsNoCase(text, L"Relative") || text == L"1")
    return kRelativePathType;
  return std::nullopt;
}

const Control kPathTypeControl{L"PATHTYPE", L"Full Path or Relative Path (to the drawing's folder)"};

// The path-type choice of a page that attaches a file, set from a script.
template <typename Page>
bool choosePathType(Page& page, std::wstring_view text, std::wstring& error) {
  const auto type = pathTypeOf(text);
  if (!type) {
    error = L"Choose Full Path or Relative Path.";
    return false;
  }
  // A refused choice has already said why; the code stays as it was.
  if (!page.OnPathTypeChanged(*type)) {
    error = L"The path stays a full path.";
    return false;
  }
  return true;
}

// What every adapter shares: the typed code, the check of keywords and the notice that the code
// changed.
class OptionPage : public host::CAcFdUiFieldOptionDialog {
 public:
  explicit OptionPage(std::function<void()> codeChanged) : codeChanged_(std::move(codeChanged)) {}

  std::wstring GetFieldCode() final { return typed_ ? *typed_ : pageCode(); }
  bool HasUsableSelection() final { return typed_ || pageUsable(); }
  bool LoadFromField(const host::AcDbField& field) final {
    typed_.reset();
    return load(field);
  }
  std::vector<Control> GetControls() const final {
    std::vector<Control> all = controls();
    all.push_back({L"CODE", L"a whole field code, in place of what the other controls make"});
    return all;
  }
  bool SetControl(std::wstring_view keyword, std::wstring_view text, std::wstring& error) final {
    text = core::trimmed(text);
    if (core::equalsNoCase(keyword, L"CODE")) {
      typed_ = std::wstring(text);
    } else {
      const auto own = controls();
      const auto known = std::find_if(own.begin(), own.end(),
                                      [keyword](const Control& c) { return core::equalsNoCase(c.keyword, keyword); });
      if (known == own.end()) {
        error = core::format(L"The page has no control %s.", core::toUpper(keyword));
        return false;
      }
      if (!set(known->keyword, text, error)) return false;
      typed_.reset();
    }
    if (codeChanged_) codeChanged_();
    return true;
  }

 protected:
  virtual std::wstring pageCode() = 0;
  virtual bool pageUsable() { return true; }
  // A page that cannot read a field back shows the field's code as typed, so that confirming
  // the dialog gives the same field again.
  virtual bool load(const host::AcDbField& field) {
    typed_ = field.getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers);
    return true;
  }
  virtual std::vector<Control> controls() const = 0;
  // `keyword` is one of controls(), spelled as there.
  virtual bool set(std::wstring_view keyword, std::wstring_view text, std::wstring& error) = 0;

  static bool refuse(std::wstring& error, std::wstring text) {
    error = std::move(text);
    return false;
  }

 private:
  std::function<void()> codeChanged_;
  std::optional<std::wstring> typed_;
};

// The area and length pages.
template <typename Page>
class ObjectSetPage final : public OptionPage {
 public:
  ObjectSetPage(DialogHost& host, CRegistry& registry, std::function<void()> codeChanged)
      : OptionPage(std::move(codeChanged)), page_(host, registry) {
    page_.onInitDialog();
  }

 protected:
  std::wstring pageCode() override { return page_.fieldCode(); }
  bool load(const host::AcDbField& field) override { return page_.setFieldToEdit(field) == host::AcDbField::kSuccess; }
  std::vector<Control> controls() const override {
    return {{L"ADD", L"adds objects to the list, picked at the editor's selection prompt"},
            {L"SPACE", L"measures a whole space instead of a list: All, Model or Owner"},
            {L"LAYERS", L"the layers measured, separated by ';'"},
            {L"UNITS", L"one of: " + entriesOf(page_.units)},
            {L"PRECISION", L"an entry of the precision list for the units chosen"}};
  }
  bool set(std::wstring_view keyword, std::wstring_view text, std::wstring& error) override {
    if (keyword == L"ADD") {
      if (page_.onAddObjects() == host::RTCAN) return refuse(error, L"The pick was cancelled.");
      return true;
    }
    if (keyword == L"SPACE") {
      static constexpr std::pair<const wchar_t*, SpaceScope> kScopes[] = {
          {L"All", SpaceScope::kAllSpaces}, {L"Model", SpaceScope::kModelSpace}, {L"Owner", SpaceScope::kOwnerSpace}};
      for (const auto& [name, scope] : kScopes) {
        if (!core::equalsNoCase(text, name)) continue;
        page_.choice.explicitObjects = false;
        page_.choice.handles.clear();
        page_.selectedHandles.clear();
        page_.choice.scope = scope;
        return true;
      }
      return refuse(error, L"Choose All, Model or Owner.");
    }
    if (keyword == L"LAYERS") {
      std::vector<std::wstring> layers = listOf(text);
      for (const std::wstring& layer : layers) {
        if (std::find(page_.choice.allLayers.begin(), page_.choice.allLayers.end(), layer) ==
            page_.choice.allLayers.end())
          return refuse(error, core::format(L"The drawing has no layer %s.", layer));
      }
      if (layers.empty()) return refuse(error, L"Name at least one layer.");
      page_.choice.selectedLayers = std::move(layers);
      return true;
    }
    if (keyword == L"UNITS") {
      if (!chooseFormatEntry(page_.units, text, false, error)) return false;
      page_.onUnitsChanged();
      return true;
    }
    if (!chooseFormatEntry(page_.precision, text, true, error)) return false;
    page_.onPrecisionChanged();
    return true;
  }

 private:
  Page page_;
};

class BlockCountPage final : public OptionPage {
 public:
  BlockCountPage(DialogHost& host, CRegistry& registry, std::function<void()> codeChanged)
      : OptionPage(std::move(codeChanged)), page_(host, registry) {
    page_.onInitDialog();
  }

 protected:
  std::wstring pageCode() override { return page_.fieldCode(); }
  std::vector<Control> controls() const override {
    return {{L"BLOCKS", L"the blocks counted, separated by ';'"},
            {L"NESTED", L"Yes to count insertions nested in other blocks too, No for the top level only"},
            {L"SOURCE", L"Entire Drawing, or Window"},
            {L"WINDOW", L"picks the window's two corners at the editor's point prompts"}};
  }
  bool set(std::wstring_view keyword, std::wstring_view text, std::wstring& error) override {
    if (keyword == L"BLOCKS") {
      const std::vector<std::wstring> names = listOf(text);
      for (const std::wstring& name : names) {
        if (std::none_of(page_.blocks.begin(), page_.blocks.end(),
                         [&name](const CheckItem& item) { return core::equalsNoCase(item.name, name); }))
          return refuse(error, core::format(L"The drawing has no block %s to count.", name));
      }
      for (CheckItem& item : page_.blocks) {
        item.checked = std::any_of(names.begin(), names.end(),
                                   [&item](const std::wstring& name) { return core::equalsNoCase(item.name, name); });
      }
      return true;
    }
    if (keyword == L"NESTED") {
      const auto nested = yesNo(text);
      if (!nested) return refuse(error, L"Answer Yes or No.");
      page_.includeNested = *nested;
      page_.onNestedChanged();
      return true;
    }
    if (keyword == L"SOURCE") {
      if (!selectByText(page_.source, text))
        return refuse(error, core::format(L"Choose one of: %s.", entriesOf(page_.source)));
      page_.onSourceChanged();
      return true;
    }
    if (page_.onPickWindow() != host::RTNORM) return refuse(error, L"The window was not picked.");
    return true;
  }

 private:
  AsdkBlockCntOptionDialog page_;
};

class TextFilePage final : public OptionPage {
 public:
  TextFilePage(LinkedSources& linked, CRegistry& registry, std::function<void()> codeChanged)
      : OptionPage(std::move(codeChanged)), page_(linked, registry) {}

 protected:
  std::wstring pageCode() override { return page_.path.empty() ? std::wstring() : page_.FieldCode(); }
  bool load(const host::AcDbField& field) override { return page_.Load(field) == host::AcDbField::kSuccess; }
  std::vector<Control> controls() const override {
    return {{L"FILE", L"the text file, its path as typed"}, kPathTypeControl};
  }
  bool set(std::wstring_view keyword, std::wstring_view text, std::wstring& error) override {
    if (keyword == L"FILE") {
      page_.path = text;
      return true;
    }
    return choosePathType(page_, text, error);
  }

 private:
  AsdkTextFileFieldOptionDialog page_;
};

// The Excel cell page builds its code when it is confirmed, after checking its controls.
class ExcelCellPage final : public OptionPage {
 public:
  ExcelCellPage(LinkedSources& linked, CRegistry& registry, std::function<void()> codeChanged)
      : OptionPage(std::move(codeChanged)), page_(linked, registry) {}

 protected:
  std::wstring pageCode() override { return page_.code(); }
  bool pageUsable() override { return page_.OnOK(); }
  bool load(const host::AcDbField& field) override {
    return page_.SetFieldCode(field.getFieldCode(host::AcDbField::kFieldCode | host::AcDbField::kAddMarkers));
  }
  std::vector<Control> controls() const override {
    return {{L"WORKBOOK", L"the workbook, its path as typed"},
            {L"SHEET", L"the worksheet's name"},
            {L"CELL", L"the cell by address, as C3"},
            {L"NAME", L"the cell by a defined name of the workbook"},
            {L"MID", L"the part of the cell's text shown: START,LENGTH (0,0 for all of it)"},
            kPathTypeControl};
  }
  bool set(std::wstring_view keyword, std::wstring_view text, std::wstring& error) override {
    if (keyword == L"WORKBOOK") {
      page_.workbook = text;
    } else if (keyword == L"SHEET") {
      page_.worksheet = text;
    } else if (keyword == L"CELL") {
      std::wstring address = core::replaceAll(text, L"$", L"");
      const auto digit = std::find_if(address.begin(), address.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
      if (digit == address.begin() || digit == address.end())
        return refuse(error, L"Give the cell as its column letters and row number, as C3.");
      page_.byName = false;
      page_.column.assign(address.begin(), digit);
      page_.row.assign(digit, address.end());
    } else if (keyword == L"NAME") {
      page_.byName = true;
      page_.cellName = text;
    } else if (keyword == L"MID") {
      const std::size_t comma = text.find(L',');
      if (comma == std::wstring_view::npos) return refuse(error, L"Give START,LENGTH.");
      page_.midStart = std::max(0, core::leadingInteger(text.substr(0, comma)));
      page_.midLength = std::max(0, core::leadingInteger(text.substr(comma + 1)));
    } else {
      return choosePathType(page_, text, error);
    }
    return true;
  }

 private:
  AsdkExcelRangeOptionDialog page_;
};

// The defined-object page, too, checks its choices and builds its code when confirmed.
class DefinedObjectPage final : public OptionPage {
 public:
  DefinedObjectPage(LinkedSources& linked, CRegistry& registry, std::function<void()> codeChanged)
      : OptionPage(std::move(codeChanged)), page_(linked, registry) {
    page_.property = AsdkDefinedObjectOptionDialog::kProperties[0];
  }

 protected:
  std::wstring pageCode() override { return page_.code(); }
  bool pageUsable() override { return page_.OnOK(); }
  std::vector<Control> controls() const override {
    return {{L"DRAWING", L"the drawing whose defined objects are offered"},
            {L"OBJECT", L"the handle of one of the objects defined in that drawing"},
            {L"PROPERTY", L"the property shown: Contents"},
            kPathTypeControl};
  }
  bool set(std::wstring_view keyword, std::wstring_view text, std::wstring& error) override {
    if (keyword == L"DRAWING") {
      page_.drawing = text;
      page_.object = -1;
    } else if (keyword == L"OBJECT") {
      const std::vector<std::wstring> entries = page_.objectEntries();
      const auto found = std::find_if(entries.begin(), entries.end(), [text](const std::wstring& entry) {
        return core::equalsNoCase(std::wstring_view(entry).substr(0, entry.find(L' ')), text);
      });
      if (found == entries.end())
        return refuse(error, core::format(L"No object with handle %s is defined in %s.", text, page_.drawing));
      page_.object = static_cast<int>(found - entries.begin());
    } else if (keyword == L"PROPERTY") {
      const auto& properties = AsdkDefinedObjectOptionDialog::kProperties;
      const auto found = std::find_if(std::begin(properties), std::end(properties),
                                      [text](const wchar_t* p) { return core::equalsNoCase(p, text); });
      if (found == std::end(properties)) return refuse(error, L"The only property is Contents.");
      page_.property = *found;
    } else {
      return choosePathType(page_, text, error);
    }
    return true;
  }

 private:
  AsdkDefinedObjectOptionDialog page_;
};

// The table cell page: a cell picked in the drawing, or its reference typed.
class TableCellPage final : public OptionPage {
 public:
  TableCellPage(OptionPageHost& host, std::function<void()> codeChanged)
      : OptionPage(std::move(codeChanged)), page_(host) {
    page_.onInitDialog();
  }

 protected:
  std::wstring pageCode() override { return page_.reference.empty() ? std::wstring() : page_.fieldCode(); }
  bool load(const host::AcDbField& field) override { return page_.setFieldToEdit(field) == host::AcDbField::kSuccess; }
  std::vector<Control> controls() const override {
    return {{L"PICK", L"picks the cell at a point of the drawing"},
            {L"REFERENCE", L"the cell as Table(<handle>).$B$3"}};
  }
  bool set(std::wstring_view keyword, std::wstring_view text, std::wstring& error) override {
    if (keyword == L"PICK") {
      if (page_.onPickCell() != host::RTNORM) return refuse(error, L"The pick was cancelled.");
    } else {
      page_.reference = text;
    }
    page_.refreshPreview();
    return true;
  }

 private:
  AsdkTableCellFieldOptionDialog page_;
};

// The formula page: the expression typed or added to, its units and precision, and the field
// codes it embeds.
class FormulaPage final : public OptionPage {
 public:
  FormulaPage(FormulaPageHost& host, host::AcDbObjectId ownerTable,
              std::function<void(host::AcDbObjectId)> chooseOwnerTable, std::function<void()> codeChanged)
      : OptionPage(std::move(codeChanged)), page_(host, ownerTable, std::move(chooseOwnerTable)) {
    page_.onInitDialog();
  }

 protected:
  std::wstring pageCode() override { return page_.expression.empty() ? std::wstring() : page_.fieldCode(); }
  bool load(const host::AcDbField& field) override { return page_.setFieldToEdit(field) == host::AcDbField::kSuccess; }
  std::vector<Control> controls() const override {
    return {{L"EXPRESSION", L"the whole expression, e.g. (A1+B1)*2"},
            {L"CELL", L"adds the address of a table cell picked in the drawing"},
            {L"INSERTFIELD", L"adds a field code to the expression, e.g. %<\\AcVar Date>%"},
            {L"FUNCTION", L"adds a function of the language, e.g. ROUND, its arguments to follow"},
            {L"VARIABLE", L"adds a formula variable of the drawing by its name"},
            {L"UNITS", L"one of: " + entriesOf(page_.units)},
            {L"PRECISION", L"an entry of the precision list for the units chosen"},
            {L"EVALUATE", L"evaluates the expression and shows the result"}};
  }
  bool set(std::wstring_view keyword, std::wstring_view text, std::wstring& error) override {
    if (keyword == L"EXPRESSION") {
      page_.expression = text;
      page_.caret = std::wstring::npos;
      return true;
    }
    if (keyword == L"CELL") {
      if (page_.onPickCell() != host::RTNORM) return refuse(error, L"The pick was cancelled.");
      return true;
    }
    if (keyword == L"INSERTFIELD") {
      // The field-code dialog, its box filled from the script and confirmed; its own message
      // says why a code is refused.
      const std::wstring code(text);
      if (!page_.onInsertField([&code](CInsertFieldCodeDialog& dialog) {
            dialog.text = code;
            return dialog.onOK();
          }))
        return refuse(error, L"The field code was not inserted.");
      return true;
    }
    if (keyword == L"FUNCTION") {
      const auto& names = page_.functions;
      const auto found = std::find_if(names.begin(), names.end(),
                                      [text](const std::wstring& name) { return core::equalsNoCase(name, text); });
      if (found == names.end() || !page_.onInsertFunction(static_cast<std::size_t>(found - names.begin())))
        return refuse(error, core::format(L"The formula language has no function %s.", text));
      return true;
    }
    if (keyword == L"VARIABLE") {
      if (!page_.onInsertVariable(text)) return refuse(error, core::format(L"The drawing has no variable %s.", text));
      return true;
    }
    if (keyword == L"UNITS") {
      if (!chooseFormatEntry(page_.units, text, false, error)) return false;
      page_.onUnitsChanged();
      return true;
    }
    if (keyword == L"PRECISION") return chooseFormatEntry(page_.precision, text, true, error);
    if (!page_.onPreview()) return refuse(error, L"The formula was not evaluated.");
    return true;
  }

 private:
  AsdkFormulaOptionDialog page_;
};

}  // namespace

OptionPages::OptionPages(const OptionPageSources& sources) : sources_(sources) {}

std::unique_ptr<host::CAcFdUiFieldOptionDialog> OptionPages::make(unsigned fieldId, std::function<void()> codeChanged) {
  CRegistry& registry = sources_.registry;
  LinkedSources& linked = sources_.linked;
  if (!dialogHost_) dialogHost_.emplace(sources_.services, sources_.session.prompts(), sources_.session.ui());
  DialogHost& dialogHost = *dialogHost_;
  switch (fieldId) {
    case Hook::kLengthId:
      return std::make_unique<ObjectSetPage<AsdkLengthOptionDialog>>(dialogHost, registry, std::move(codeChanged));
    case Hook::kAreaId:
      return std::make_unique<ObjectSetPage<AsdkAreaOptionDialog>>(dialogHost, registry, std::move(codeChanged));
    case Hook::kBlockCountId:
      return std::make_unique<BlockCountPage>(dialogHost, registry, std::move(codeChanged));
    case Hook::kTextFileId:
      return std::make_unique<TextFilePage>(linked, registry, std::move(codeChanged));
    case Hook::kExcelCellId:
      return std::make_unique<ExcelCellPage>(linked, registry, std::move(codeChanged));
    case Hook::kDefinedObjectId:
      return std::make_unique<DefinedObjectPage>(linked, registry, std::move(codeChanged));
    case Hook::kTableCellId:
      return std::make_unique<TableCellPage>(dialogHost, std::move(codeChanged));
    case Hook::kFormulaId: {
      if (!formulaHost_) formulaHost_.emplace(sources_.services, sources_.session.prompts(), sources_.session.ui());
      const host::AcDbObjectId owner = sources_.ownerTable ? sources_.ownerTable() : host::AcDbObjectId();
      return std::make_unique<FormulaPage>(*formulaHost_, owner, sources_.chooseOwnerTable, std::move(codeChanged));
    }
    default:
      return nullptr;
  }
}

}  // namespace corvane
