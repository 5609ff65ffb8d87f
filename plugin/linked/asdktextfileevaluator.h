#pragma once

#include <string>
#include <string_view>

#include "plugin/fields/asdkfieldevaluator.h"

namespace corvane {

class LinkedSources;

// The evaluator of text file fields: the whole text of a file, read again only when the file
// has been written since.
class AsdkTextFileEvaluator : public AsdkFieldEvaluator<AsdkTextFileEvaluator> {
 public:
  static constexpr std::size_t kRow = kTextFileRow;
  explicit AsdkTextFileEvaluator(LinkedSources* sources = nullptr) : sources_(sources) {}
  int evaluateField(host::AcDbField* field, host::AcDbDatabase* db, host::AcFdFieldValue& value,
                    std::wstring& message);

 private:
  LinkedSources* sources_;
};

// A text file's bytes as text: UTF-16 after a byte-order mark (taken as little-endian either
// way, so a big-endian file reads as it stands), UTF-8 with or without its mark, and any other
// bytes one character each, as the C locale reads them. Text ends at the first zero.
std::wstring DecodeTextFile(std::string_view bytes);

}  // namespace corvane
