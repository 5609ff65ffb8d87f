// A field object of the headless database.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>
#include <vector>

#include "headless/db/objectimpl.h"
#include "headless/format/valueformatter.h"
#include "host/acdbfield.h"

namespace corvane::headless {

class Field final : public ObjectImpl<host::AcDbField> {
 public:
  // The object as a field, or null: a type check instead of a cast through the hierarchy, as
  // the engine asks this of every field and owner of a batch.
  static Field* of(host::AcDbObject* object) noexcept {
    return object && typeid(*object) == typeid(Field) ? static_cast<Field*>(object) : nullptr;
  }

  std::wstring dxfName() const override { return L"FIELD"; }
  std::wstring className() const override { return L"AcDbField"; }

  std::wstring evaluatorId() const override { return evaluatorId_; }
  std::wstring getFieldCode(int flags) const override;
  host::Acad::ErrorStatus setFieldCode(std::wstring_view code) override;
  int childCount() const override { return static_cast<int>(children_.size()); }
  host::AcDbObjectId getChild(int index) const override;

  host::Acad::ErrorStatus getData(std::wstring_view key, host::AcValue& value) const override;
  host::Acad::ErrorStatus setData(std::wstring_view key, const host::AcValue& value) override;
  host::Acad::ErrorStatus getValue(host::AcValue& value) const override;
  std::wstring getFormat() const override;
  std::wstring getDisplayText() const override { return displayText_; }
  host::Acad::ErrorStatus formatValue(std::wstring& text) const override;

  int evaluationOption() const override { return evaluationOption_; }
  host::Acad::ErrorStatus setEvaluationOption(int option) override;
  EvalStatus evaluationStatus(int* errorCode = nullptr, std::wstring* message = nullptr) const override;
  int state() const override { return state_; }

  // A new field made from the code, in the field list, owned by `owner` (none for a field
  // that is not placed yet).
  // `listed` false makes a field of no drawing's field list (a temporary one), children too.
  static host::AcDbObjectId create(Database& db, std::wstring_view code, host::AcDbObjectId owner = {},
                                   bool asText = false, bool listed = true);
  // A temporary field (of no field list, the host's field of no drawing) is evaluated against
  // the drawing given, its own when none is. A field kept in a drawing is evaluated in that
  // drawing only: its children, the objects its code names and the text or cell that shows it
  // are that drawing's, so another one is refused with eWrongDatabase and the field is left as
  // it was.
  host::Acad::ErrorStatus evaluate(int context, host::AcDbDatabase* db = nullptr) override;
  bool listed() const noexcept { return listed_; }

  // The headless host's own access, with no open needed (the engine and the file layer).
  // Sets the code, replacing the children by new field objects made from the code.
  void assignCode(std::wstring_view code, bool asText = false);
  const std::wstring& ownCode() const noexcept { return ownCode_; }
  // The evaluator id, format and display text without a copy, for the engine's every-field work.
  const std::wstring& ownEvaluatorId() const noexcept { return evaluatorId_; }
  const std::wstring& format() const noexcept { return format_; }
  const std::wstring& displayText() const noexcept { return displayText_; }
  const host::AcValue& value() const noexcept { return value_; }
  const std::vector<host::AcDbObjectId>& children() const noexcept { return children_; }
  const std::vector<host::AcDbObjectId>& objectIds() const noexcept { return objectIds_; }
  const std::vector<std::pair<std::wstring, host::AcValue>>& dataSet() const noexcept { return data_; }
  void putData(std::wstring_view key, const host::AcValue& value);
  void storeValue(const host::AcValue& value);
  void storeStatus(int status, int errorCode, std::wstring message);
  // An unchanged text is left as it is, without a copy: most evaluations show what they did.
  void storeDisplayText(std::wstring_view text) {
    if (text == displayText_) return;
    record_.modified = true;
    displayText_.assign(text);
  }
  void setState(int state) noexcept {
    if (state != state_) record_.modified = true;
    state_ = state;
  }
  // Restores a stored field as it was read from a file, children and object ids as given.
  void restore(std::wstring evaluatorId, std::wstring ownCode, std::vector<host::AcDbObjectId> children,
               std::vector<host::AcDbObjectId> objectIds);

 private:
  std::wstring expandedCode(int flags) const;
  void showIn(const std::optional<DrawingUnits>& units);

  std::wstring evaluatorId_;
  std::wstring ownCode_;
  std::wstring format_;  // the format option of ownCode_, split off whenever it is set
  std::vector<host::AcDbObjectId> children_;
  std::vector<host::AcDbObjectId> objectIds_;
  std::vector<std::pair<std::wstring, host::AcValue>> data_;
  host::AcValue value_;
  std::wstring displayText_;
  int evaluationOption_ = kAutomatic;
  int state_ = kInitialized;
  int status_ = kNotYetEvaluated;
  int errorCode_ = 0;
  std::wstring message_;
  bool listed_ = true;
  // A temporary field evaluated against another drawing shows its value in that drawing's
  // units; kept as a copy, as the other drawing may close before the field does.
  std::optional<DrawingUnits> otherUnits_;
};

}  // namespace corvane::headless
