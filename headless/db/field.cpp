#include "headless/db/field.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <variant>

#include "core/textutil.h"
#include "headless/db/database.h"
#include "headless/db/fieldcode.h"
#include "headless/db/fieldlist.h"
#include "headless/db/fieldvaluetext.h"

namespace corvane::headless {

using host::Acad;

host::AcDbObjectId Field::getChild(int index) const {
  if (index < 0 || index >= childCount()) return {};
  return children_[static_cast<std::size_t>(index)];
}

std::wstring Field::expandedCode(int flags) const {
  std::wstring own = ownCode_;
  if (flags & kStripOptions) own = splitFormatOption(own).first;
  const Database* db = record_.database;
  own = expandPlaceholders(own, L"_FldIdx", [&](std::size_t index) -> std::wstring {
    if (index >= children_.size()) return L"";
    const auto* child = db->get<Field>(children_[index]);
    if (!child) return L"";
    if (flags & kEvaluatedChildren) return child->getDisplayText();
    // A child keeps its own options whatever the parent strips.
    return child->getFieldCode((flags & ~(kStripOptions | kEvaluatedText)) | kAddMarkers);
  });
  own = expandPlaceholders(own, L"_ObjIdx", [&](std::size_t index) -> std::wstring {
    const std::uint64_t id = index < objectIds_.size() ? objectIds_[index].asOldId() : 0;
    return L"%<\\_ObjId " + std::to_wstring(id) + L">%";
  });
  return own;
}

std::wstring Field::getFieldCode(int flags) const {
  if (flags & kEvaluatedText) return displayText_;
  std::wstring code = expandedCode(flags);
  // A text field is its text; only a field of an evaluator has markers of its own.
  if ((flags & kAddMarkers) && evaluatorId_ != L"_text") code = L"%<" + code + L">%";
  return code;
}

void Field::assignCode(std::wstring_view code, bool asText) {
  Database& db = *record_.database;
  for (const auto child : children_) {
    if (auto* old = db.get<Field>(child)) old->assignCode(L"");  // drops grandchildren first
    db.get<FieldList>(db.fieldListId())->remove(child);
    db.destroyObject(child);
  }
  children_.clear();
  objectIds_.clear();

  ParsedFieldCode parsed = parseFieldCode(code, asText);
  evaluatorId_ = std::move(parsed.evaluatorId);
  ownCode_ = std::move(parsed.ownCode);
  format_ = splitFormatOption(ownCode_).second;
  for (const auto id : parsed.objectIds) objectIds_.emplace_back(id);
  for (const auto& childCode : parsed.childCodes) {
    children_.push_back(create(db, childCode, record_.id, false, listed_));
  }
  state_ = kInitialized | kModified;
  status_ = kNotYetEvaluated;
  record_.modified = true;
}

host::AcDbObjectId Field::create(Database& db, std::wstring_view code, host::AcDbObjectId owner, bool asText,
                                 bool listed) {
  auto field = std::make_unique<Field>();
  Field* raw = field.get();
  raw->listed_ = listed;
  const host::AcDbObjectId id = db.addObject(std::move(field), owner);
  if (listed) db.get<FieldList>(db.fieldListId())->add(id);
  raw->assignCode(code, asText);
  return id;
}

host::Acad::ErrorStatus Field::evaluate(int context, host::AcDbDatabase* db) {
  Database& own = *record_.database;
  auto* in = db ? dynamic_cast<Database*>(db) : &own;
  // Ids are shared only by the drawings of one host.
  if (!in || &in->host() != &own.host()) return Acad::eWrongDatabase;
  if (listed_ && in != &own) return Acad::eWrongDatabase;
  showIn(in != &own ? std::optional<DrawingUnits>(in->drawingUnits()) : std::nullopt);
  return own.host().evaluateField(*this, *in, context);
}

void Field::showIn(const std::optional<DrawingUnits>& units) {
  // The children's texts make up the parent's, so they show in the same units.
  otherUnits_ = units;
  for (const auto child : children_) {
    if (auto* field = record_.database->get<Field>(child)) field->showIn(units);
  }
}

Acad::ErrorStatus Field::setFieldCode(std::wstring_view code) {
  if (!record_.writeOpen) return Acad::eNotOpenForWrite;
  assignCode(code);
  // What the old code gave is no value of the new one: the field has none until evaluated.
  value_ = host::AcValue();
  return Acad::eOk;
}

void Field::restore(std::wstring evaluatorId, std::wstring ownCode, std::vector<host::AcDbObjectId> children,
                    std::vector<host::AcDbObjectId> objectIds) {
  evaluatorId_ = std::move(evaluatorId);
  ownCode_ = std::move(ownCode);
  format_ = splitFormatOption(ownCode_).second;
  children_ = std::move(children);
  objectIds_ = std::move(objectIds);
}

Acad::ErrorStatus Field::getData(std::wstring_view key, host::AcValue& value) const {
  const auto it = std::find_if(data_.begin(), data_.end(),
                               [key](const auto& entry) { return core::equalsNoCase(entry.first, key); });
  if (it == data_.end()) return Acad::eKeyNotFound;
  value = it->second;
  return Acad::eOk;
}

void Field::putData(std::wstring_view key, const host::AcValue& value) {
  const auto it = std::find_if(data_.begin(), data_.end(),
                               [key](const auto& entry) { return core::equalsNoCase(entry.first, key); });
  if (it != data_.end()) it->second = value;
  else data_.emplace_back(std::wstring(key), value);
  record_.modified = true;
}

Acad::ErrorStatus Field::setData(std::wstring_view key, const host::AcValue& value) {
  if (key.empty()) return Acad::eInvalidKey;
  putData(key, value);
  return Acad::eOk;
}

Acad::ErrorStatus Field::getValue(host::AcValue& value) const {
  value = value_;
  return Acad::eOk;
}

std::wstring Field::getFormat() const { return format_; }

Acad::ErrorStatus Field::setEvaluationOption(int option) {
  if (option < 0 || option > kAutomatic) return Acad::eInvalidInput;
  evaluationOption_ = option;
  record_.modified = true;
  return Acad::eOk;
}

host::AcDbField::EvalStatus Field::evaluationStatus(int* errorCode, std::wstring* message) const {
  if (errorCode) *errorCode = errorCode_;
  if (message) *message = message_;
  return static_cast<EvalStatus>(status_);
}

void Field::storeValue(const host::AcValue& value) {
  if (value == value_ && (state_ & kHasCache)) return;
  value_ = value;
  state_ |= kHasCache;
  record_.modified = true;
}

void Field::storeStatus(int status, int errorCode, std::wstring message) {
  if (status == status_ && errorCode == errorCode_ && message == message_) return;
  status_ = status;
  errorCode_ = errorCode;
  message_ = std::move(message);
  record_.modified = true;
}

}  // namespace corvane::headless

namespace corvane::headless {

host::Acad::ErrorStatus Field::formatValue(std::wstring& text) const {
  // Without a format a text shows as it is and a whole number as "%d" prints it: the values
  // of nearly every cell of a table, spared the formatter's general path.
  if (format_.empty()) {
    if (const auto* string = std::get_if<std::wstring>(&value_.data())) {
      text = *string;
      return host::Acad::eOk;
    }
    if (const auto* whole = std::get_if<std::int32_t>(&value_.data())) {
      wchar_t digits[12];
      wchar_t* const end = digits + std::size(digits);
      wchar_t* p = end;
      const std::int64_t wide = *whole;
      std::uint64_t rest = static_cast<std::uint64_t>(wide < 0 ? -wide : wide);
      do {
        *--p = static_cast<wchar_t>(L'0' + rest % 10);
        rest /= 10;
      } while (rest != 0);
      if (wide < 0) *--p = L'-';
      text.assign(p, end);
      return host::Acad::eOk;
    }
  }
  text = otherUnits_ ? headless::formatValue(value_, format_, *otherUnits_)
                     : displayFieldValue(value_, format_, *record_.database);
  return host::Acad::eOk;
}

}  // namespace corvane::headless
