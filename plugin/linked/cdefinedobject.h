// An object of another drawing that fields may show: where it lives, what it is, the text it
// had when last read and when its drawing was written then. The session keeps an array of
// them, read once per drawing file and time; the define dialog keeps its own.
#pragma once

#include <string>
#include <vector>

namespace corvane {

// A date-time that may be unset (null) or set to something that is no date (invalid).
struct CDefinedObjectTime {
  enum Status { kValid, kInvalid, kNull };
  Status status = kNull;
  double date = 0.0;  // an OLE date, when valid
};

struct CDefinedObject {
  std::wstring description;
  std::wstring handle;   // upper-case hexadecimal, as handles print
  std::wstring drawing;  // the full path of the drawing that holds the object
  std::wstring type;     // "Text", "M Text", "Attribute", ...
  std::wstring value;
  CDefinedObjectTime timeStamp;
};

using CDefinedObjectArray = std::vector<CDefinedObject>;

}  // namespace corvane
