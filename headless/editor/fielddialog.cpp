#include "headless/editor/fielddialog.h"

#include <algorithm>

#include "core/printf.h"
#include "core/textutil.h"
#include "headless/db/database.h"
#include "headless/db/field.h"
#include "headless/db/table.h"
#include "headless/editor/editorprompts.h"
#include "headless/editor/fielddialogmanager.h"
#include "headless/fields/fieldengine.h"
#include "headless/hostapplication.h"
#include "host/acdbfield.h"
#include "host/acedprompts.h"
#include "host/acfd.h"
#include "host/hostui.h"

namespace corvane::headless {

namespace {

using host::AcDbField;

// The handle of an answer given as a handle or as "(handent "1F")".
std::wstring handleOf(std::wstring_view answer) {
  answer = core::trimmed(answer);
  if (answer.size() > 2 && answer.front() == L'(' && answer.back() == L')') {
    std::wstring_view inner = core::trimmed(answer.substr(1, answer.size() - 2));
    if (core::startsWithNoCase(inner, L"handent")) {
      inner = core::trimmed(inner.substr(7));
      if (inner.size() >= 2 && inner.front() == L'"' && inner.back() == L'"')
        return std::wstring(inner.substr(1, inner.size() - 2));
    }
  }
  return std::wstring(answer);
}

// The first word of a line and the rest, blanks between them taken off.
std::pair<std::wstring, std::wstring> splitWord(std::wstring_view line) {
  line = core::trimmed(line);
  std::size_t end = 0;
  while (end < line.size() && !core::isSpace(line[end])) ++end;
  return {std::wstring(line.substr(0, end)), std::wstring(core::trimmed(line.substr(end)))};
}

}  // namespace

FieldDialog::FieldDialog(HostApplication& host, FieldDialogManager& hooks, EditorPrompts& prompts, Print print)
    : host_(host), hooks_(hooks), prompts_(prompts), print_(std::move(print)) {}

FieldDialog::~FieldDialog() { close(host::IDCANCEL); }

host::AcDbDatabase* FieldDialog::GetDatabase() const { return db_; }

host::AcDbObjectId FieldDialog::run() {
  db_ = dynamic_cast<Database*>(host_.workingDatabase());
  if (!db_) {
    print_(L"\nNo drawing is open.");
    return {};
  }
  const std::optional<FieldPlace> place = pickPlace();
  if (!place) return {};
  open(*place);
  readControls();
  return placed_;
}

int FieldDialog::runForNewField(host::AcDbDatabase* db, host::CAcFdUiFieldDialogHook::FieldHolder& field) {
  field.reset();
  db_ = dynamic_cast<Database*>(db ? db : host_.workingDatabase());
  if (!db_) {
    print_(L"\nNo drawing is open.");
    return host::IDCANCEL;
  }
  newField_ = &field;
  openOver(nullptr);
  readControls();
  newField_ = nullptr;
  return field ? host::IDOK : host::IDCANCEL;
}

void FieldDialog::readControls() {
  while (open_) {
    std::wstring buttons;
    for (const Panel& panel : panels_) buttons += std::wstring(panel.panel->GetButtonText()) + L"/";
    std::wstring line;
    if (prompts_.getString(
            true, core::format(L"\nField [Category/Name/Options/Preview/%sOK/Cancel] or a page control: ", buttons),
            line) != host::RTNORM) {
      close(host::IDCANCEL);
      break;
    }
    if (!core::trimmed(line).empty()) handle(line);
  }
}

std::optional<FieldPlace> FieldDialog::pickPlace() {
  while (true) {
    std::wstring answer;
    if (prompts_.getString(false, L"\nSelect a text, multiline text, attribute or table for the field (handle): ",
                           answer) != host::RTNORM ||
        core::trimmed(answer).empty())
      return std::nullopt;
    std::wstring name = handleOf(answer);
    const auto handle = host::AcDbHandle::fromText(name);
    host::AcDbObjectId id;
    if (handle && db_->getAcDbObjectId(id, *handle) == host::Acad::eOk && db_->get<Table>(id)) {
      std::wstring cell;
      if (prompts_.getString(false, L"\nCell of the table (ROW,COLUMN, counted from 0): ", cell) != host::RTNORM)
        return std::nullopt;
      name += L":" + core::trim(cell);
    }
    FieldPlaceLookup found = findFieldPlace(*db_, name);
    if (found.place) return found.place;
    print_(L"\n" + found.error + L".");
  }
}

void FieldDialog::listEntries() {
  entries_.clear();
  for (host::CAcFdUiFieldDialogHook* hook : hooks_.hooks()) {
    std::vector<std::wstring> categories;
    std::vector<unsigned> categoryIds;
    if (!hook->GetCategories(categories, categoryIds)) continue;
    for (std::size_t c = 0; c < categories.size() && c < categoryIds.size(); ++c) {
      std::vector<std::wstring> names;
      std::vector<unsigned> ids;
      bool sort = false;
      hook->GetFieldNames(static_cast<int>(categoryIds[c]), names, ids, sort);
      for (std::size_t n = 0; n < names.size() && n < ids.size(); ++n)
        entries_.push_back({hook, categoryIds[c], categories[c], ids[n], names[n]});
    }
  }
}

void FieldDialog::open(const FieldPlace& place) {
  db_ = dynamic_cast<Database*>(host_.workingDatabase());
  if (db_) openOver(&place);
}

void FieldDialog::openOver(const FieldPlace* place) {
  if (place) {
    place_ = *place;
  } else {
    place_.reset();
  }
  placed_ = {};
  editedCode_.clear();
  const host::AcDbObjectId edited = place ? fieldAt(*db_, *place) : host::AcDbObjectId();
  listEntries();
  open_ = true;
  for (host::CAcFdUiFieldDialogHook* hook : hooks_.hooks()) hook->BeginFieldDialog(this, db_, 0);
  std::wstring names;
  for (const Entry& entry : entries_)
    names += core::format(L"%s%s: %s", names.empty() ? L"" : L"; ", entry.category, entry.name);
  print_(core::format(L"\nField dialog for %s. Fields: %s",
                      place ? core::format(L"%s %s", place->kind, placeName(*place)) : std::wstring(L"a new field"),
                      names.empty() ? std::wstring(L"none") : names));

  auto* field = db_->get<Field>(edited);
  if (!field) return;
  // A field read from a file that was never evaluated there has not been compiled either, and
  // a page fills itself from what compiling keeps in the field: the dialog compiles it first.
  host_.engine().compileField(*field, *db_);
  editedCode_ = field->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers);
  print_(core::format(L"\nEditing the field %s", editedCode_));
  for (host::CAcFdUiFieldDialogHook* hook : hooks_.hooks()) {
    std::vector<std::wstring> ids;
    hook->GetEvaluatorIds(ids);
    const std::wstring evaluator = field->evaluatorId();
    if (std::none_of(ids.begin(), ids.end(), [&](const std::wstring& id) { return core::equalsNoCase(id, evaluator); }))
      continue;
    if (hook->SetFieldToEdit(field)) break;
  }
}

void FieldDialog::close(int result) {
  if (!open_) return;
  open_ = false;
  for (host::CAcFdUiFieldDialogHook* hook : hooks_.hooks()) hook->EndFieldDialog(result);
  // The panels are children of the dialog and go with it.
  panels_.clear();
  current_ = nullptr;
  page_ = nullptr;
}

bool FieldDialog::AddPanel(host::CAcFdUiFieldDialogPanel& panel, int left, int aboveBottom) {
  if (!open_ || panelWithButton(panel.GetButtonText()) ||
      std::any_of(panels_.begin(), panels_.end(), [&](const Panel& p) { return p.panel == &panel; }))
    return false;
  panels_.push_back({&panel, left, aboveBottom});
  print_(core::format(L"\nPanel %s with the button %s.", panel.GetTemplateName(), panel.GetButtonText()));
  return true;
}

void FieldDialog::RemovePanel(host::CAcFdUiFieldDialogPanel& panel) {
  std::erase_if(panels_, [&](const Panel& p) { return p.panel == &panel; });
}

host::CAcFdUiFieldDialogPanel* FieldDialog::panelWithButton(std::wstring_view caption) const {
  for (const Panel& p : panels_) {
    if (core::equalsNoCase(p.panel->GetButtonText(), caption)) return p.panel;
  }
  return nullptr;
}

void FieldDialog::press(host::CAcFdUiFieldDialogPanel& panel) {
  if (!current_) {
    print_(L"\nChoose a field first: NAME field name.");
    return;
  }
  // As for the preview: the box shows the code the page makes now.
  if (page_ && !page_->HasUsableSelection()) return;
  current_->hook->UpdateFieldCode();
  panel.OnButtonPressed(codeBox_);
}

bool FieldDialog::SelectField(unsigned fieldId, unsigned categoryId) {
  const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
    return entry.fieldId == fieldId && entry.categoryId == categoryId;
  });
  if (found == entries_.end()) return false;
  current_ = &*found;
  page_ = nullptr;
  current_->hook->GetOptionDialog(fieldId, page_);
  current_->hook->OnFieldSelected(fieldId);
  print_(core::format(L"\nField: %s%s", current_->name, page_ ? L"" : L" (no option page)"));
  return true;
}

void FieldDialog::SetFieldCode(std::wstring_view code) {
  if (code == codeBox_) return;
  codeBox_ = code;
  print_(core::format(L"\nField code: %s", codeBox_));
}

bool FieldDialog::choose(std::wstring_view name) {
  for (const Entry& entry : entries_) {
    if ((category_.empty() || core::equalsNoCase(entry.category, category_)) && core::equalsNoCase(entry.name, name)) {
      codeBox_.clear();
      SelectField(entry.fieldId, entry.categoryId);
      entry.hook->UpdateFieldCode();
      return true;
    }
  }
  print_(core::format(L"\nThere is no field \"%s\"%s.", name,
                      category_.empty() ? std::wstring() : core::format(L" in the category %s", category_)));
  return false;
}

bool FieldDialog::handle(const std::wstring& line) {
  const auto [word, rest] = splitWord(line);
  if (core::equalsNoCase(word, L"CANCEL")) {
    close(host::IDCANCEL);
    print_(L"\n*Cancel*");
    prompts_.setCancelled(true);
    return false;
  }
  if (core::equalsNoCase(word, L"OK")) return !confirm();
  if (core::equalsNoCase(word, L"CATEGORY")) {
    const bool all = core::equalsNoCase(rest, L"All");
    if (!all && std::none_of(entries_.begin(), entries_.end(),
                             [&](const Entry& entry) { return core::equalsNoCase(entry.category, rest); })) {
      print_(core::format(L"\nThere is no category \"%s\".", rest));
      return true;
    }
    category_ = all ? std::wstring() : rest;
    return true;
  }
  if (core::equalsNoCase(word, L"NAME")) {
    choose(rest);
    return true;
  }
  if (core::equalsNoCase(word, L"PREVIEW")) {
    preview();
    return true;
  }
  if (auto* panel = rest.empty() ? panelWithButton(word) : nullptr) {
    press(*panel);
    return true;
  }
  if (!page_) {
    print_(current_ ? L"\nThis field has no option page." : L"\nChoose a field first: NAME field name.");
    return true;
  }
  if (core::equalsNoCase(word, L"OPTIONS")) {
    for (const auto& control : page_->GetControls())
      print_(core::format(L"\n  %-10s %s", control.keyword, control.help));
    return true;
  }
  std::wstring error;
  if (!page_->SetControl(word, rest, error)) print_(L"\n" + error);
  return true;
}

void FieldDialog::preview() {
  if (!current_) {
    print_(L"\nChoose a field first: NAME field name.");
    return;
  }
  // A page that builds its code only from checked controls builds it now.
  if (page_ && !page_->HasUsableSelection()) return;
  current_->hook->UpdateFieldCode();
  auto field = host_.newField();
  // A field for a table cell is previewed where it will stand, so that it sees the table.
  if (field && place_ && place_->isCell) static_cast<Field*>(field.get())->record().owner = place_->owner;
  std::wstring text;
  if (field && field->setFieldCode(codeBox_) == host::Acad::eOk) {
    current_->hook->GetPreview(field.get(), text);
  }
  print_(core::format(L"\nPreview: %s", text));
}

bool FieldDialog::confirm() {
  if (!current_) {
    print_(L"\nChoose a field first: NAME field name.");
    return false;
  }
  host::CAcFdUiFieldDialogHook::FieldHolder made;
  if (!current_->hook->CreateField(current_->fieldId, made) || !made) return false;
  const std::wstring code = made->getFieldCode(AcDbField::kFieldCode | AcDbField::kAddMarkers);
  if (!place_) {
    if (newField_) *newField_ = std::move(made);
    close(host::IDOK);
    print_(L"\nField made.");
    return true;
  }
  const int option = made->evaluationOption();
  made.reset();
  close(host::IDOK);

  const host::AcDbObjectId holder = placeField(*db_, *place_, code, option, editedCode_);
  if (holder.isNull()) {
    print_(core::format(L"\nThe %s %s cannot take the field.", place_->kind, placeName(*place_)));
    return true;
  }
  if (auto* engine = host_.fieldEngine()) engine->evaluateFields(db_, {holder}, AcDbField::kDemand);
  const auto* placed = db_->get<Field>(holder);
  print_(core::format(L"\nField placed in %s %s: %s", place_->kind, placeName(*place_),
                      placed ? placed->getDisplayText() : std::wstring()));
  placed_ = place_->owner;
  return true;
}

}  // namespace corvane::headless
