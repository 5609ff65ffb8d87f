#pragma once

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

class LinkedSources;

// The evaluator of defined-object fields: the text of an object of another drawing, addressed
// by the drawing's path and the object's handle. What goes wrong shows as the field's text.
class AsdkDefinedObjectEvaluator : public AsdkFieldEvaluator<AsdkDefinedObjectEvaluator> {
 public:
  explicit AsdkDefinedObjectEvaluator(LinkedSources* sources = nullptr) : sources_(sources) {}
  ~AsdkDefinedObjectEvaluator() override = default;
  static constexpr std::size_t kRow = kDefinedObjectRow;
  // The only worker that may be replaced: a "not yet evaluated" answer is not a failure.
  virtual int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value);
  static constexpr bool kNotYetEvaluatedIsOk = true;

 private:
  LinkedSources* sources_;
};

// The parts of a defined-object code ("path|handle.property"): blanks and quotes trimmed from
// the left and white space from the right, split at the first "|" and then at the first ".".
struct DefinedObjectReference {
  std::wstring drawing;
  std::wstring handle;
  std::wstring property;
  bool operator==(const DefinedObjectReference&) const = default;
};
DefinedObjectReference SplitDefinedObjectReference(std::wstring_view record);
// "%<\AcDefinedObj path|handle.property>%", or the empty code when a part is missing.
std::wstring DefinedObjectCode(std::wstring_view drawing, std::wstring_view handle, std::wstring_view property);

}  // namespace corvane
