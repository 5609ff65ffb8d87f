// A FIELD record: what it stores of a field (evaluator id, own code, children, referenced
// objects, options, status, data set, cached value, display text) read from its tags, and the
// field's tags written anew in the order the host writes them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dxf/model/values/valueblock.h"
#include "dxf/tags/document.h"

namespace corvane::headless {
class Database;
class Field;
}

namespace corvane::dxf {

struct FieldRecord {
  struct Entry {
    std::wstring key;
    ValueBlock block;
  };

  std::wstring evaluatorId;
  std::wstring code;                  // the pieces joined
  std::vector<std::uint64_t> children;
  std::vector<std::uint64_t> objects;
  std::wstring format;                // drawings before R2007 keep the format apart
  int evaluationOption = 63;
  int filingOption = 0;
  int state = 1;
  int status = 1;
  int errorCode = 0;
  std::wstring errorMessage;
  std::vector<Entry> data;
  std::optional<ValueBlock> value;    // "ACFD_FIELD_VALUE"
  std::wstring displayText;
  // The field's own tags: from after its subclass marker up to the extended data.
  std::size_t bodyBegin = 0;
  std::size_t bodyEnd = 0;
};

// Object ids in value blocks are looked up in `db`, which must hold every object of the file.
FieldRecord readFieldRecord(const Document& doc, RecordId id, const headless::Database& db);

// The tags after "100 AcDbField" for the field as it is now. `original` is the field's record
// as read: data entries and the cached value whose values did not change keep their tags as
// they were, so flags and units the host value does not hold survive.
std::vector<NewTag> fieldBodyTags(const headless::Field& field, const Document& doc, const headless::Database& db,
                                  RecordId original = kNoRecord);

}  // namespace corvane::dxf
