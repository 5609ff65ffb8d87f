#pragma once

#include <string>
#include <string_view>

#include "host/objectid.h"

namespace corvane::headless {

// An entity whose text can hold a field (text, multiline text, attribute): the host keeps
// the evaluated text of the field in the entity's own text.
class TextHost {
 public:
  virtual ~TextHost() = default;
  virtual std::wstring hostText() const = 0;
  virtual void setHostText(std::wstring text) = 0;
};

// The field linked to an object through its extension dictionary ("ACAD_FIELD", then the
// key, "TEXT" for the object's text); null when there is none.
class Database;
host::AcDbObjectId fieldOf(const Database& db, host::AcDbObjectId object, std::wstring_view key = L"TEXT");
// Makes a field from the code and links it to the object under the key, replacing an
// earlier one; the object's text becomes the code until the field is evaluated.
host::AcDbObjectId attachField(Database& db, host::AcDbObjectId object, std::wstring_view code,
                               std::wstring_view key = L"TEXT");

}  // namespace corvane::headless
