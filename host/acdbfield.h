// A field object: a field code, its child fields, the data records of its evaluator and its
// last evaluated value. The enumerations carry the host's numbers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/acdbobject.h"
#include "host/acvalue.h"

namespace corvane::host {

class AcDbField : public AcDbObject {
 public:
  enum EvalOption : int {
    kDisable = 0,
    kOnOpen = 1,
    kOnSave = 2,
    kOnPlot = 4,
    kOnEtransmit = 8,
    kOnRegen = 16,
    kOnDemand = 32,
    kAutomatic = 63,
  };
  enum EvalContext : int {
    kOpen = 1,
    kSave = 2,
    kPlot = 4,
    kEtransmit = 8,
    kRegen = 16,
    kDemand = 32,
    kPreview = 64,
  };
  enum EvalStatus : int {
    kNotYetEvaluated = 1,
    kSuccess = 2,
    kEvaluatorNotFound = 4,
    kSyntaxError = 8,
    kInvalidCode = 16,
    kInvalidContext = 32,
    kOtherError = 64,
  };
  enum FieldCodeFlag : int {
    kFieldCode = 0x1,          // the code as set, child codes in place
    kEvaluatedText = 0x2,      // the evaluated text of the whole field
    kEvaluatedChildren = 0x4,  // child fields replaced by their values
    kObjectReference = 0x8,    // object references as "%<\_ObjId N>%" (the default form here too)
    kAddMarkers = 0x10,        // enclose the code in "%<" and ">%"
    kEscapeBackslash = 0x20,
    kStripOptions = 0x40,      // leave out the format option
    kPreserveFields = 0x80,
    kTextField = 0x100,
  };
  enum State : int {
    kInitialized = 0x1,
    kCompiled = 0x2,
    kModified = 0x4,
    kEvaluated = 0x8,
    kHasCache = 0x10,
    kHasFormattedString = 0x20,
  };

  virtual std::wstring evaluatorId() const = 0;
  virtual std::wstring getFieldCode(int flags) const = 0;
  virtual Acad::ErrorStatus setFieldCode(std::wstring_view code) = 0;
  virtual int childCount() const = 0;
  virtual AcDbObjectId getChild(int index) const = 0;

  virtual Acad::ErrorStatus getData(std::wstring_view key, AcValue& value) const = 0;
  virtual Acad::ErrorStatus setData(std::wstring_view key, const AcValue& value) = 0;

  virtual Acad::ErrorStatus getValue(AcValue& value) const = 0;
  virtual std::wstring getFormat() const = 0;
  // The value as displayed: formatted with the field's format, "####" after a failure.
  virtual std::wstring getDisplayText() const = 0;
  // The current value formatted with the field's format, as the host shows values.
  virtual Acad::ErrorStatus formatValue(std::wstring& text) const = 0;

  virtual int evaluationOption() const = 0;
  virtual Acad::ErrorStatus setEvaluationOption(int option) = 0;
  virtual EvalStatus evaluationStatus(int* errorCode = nullptr, std::wstring* message = nullptr) const = 0;
  virtual int state() const = 0;

  // Evaluates this field and its children now, in the given context and database (null: the
  // field's own), without the batch brackets of the field reactors.
  virtual Acad::ErrorStatus evaluate(int context, AcDbDatabase* db = nullptr) = 0;
};

}  // namespace corvane::host
