// What every option page of the field dialog asks of the host: number formats, message boxes,
// a preview evaluation of its field code and the picks in the drawing that fill it. The Windows
// view hides the field dialog around the picks; the headless host answers them from its script.
#pragma once

#include <string>
#include <string_view>

#include "host/errorstatus.h"
#include "host/objectid.h"
#include "plugin/fields/formathost.h"

namespace corvane {

// A field code evaluated once in the preview context.
struct PreviewResult {
  int status = 1;         // the field's evaluation status; 2 success
  double value = 0.0;     // the value as a real, when it is a number
  bool isString = false;  // the value is a text
  std::wstring text;      // what the field shows
};

// The cell of a table that a picked point lies in.
struct TableCellPick {
  host::AcDbObjectId table;  // null when no table of the current space was hit
  std::wstring tableHandle;  // upper-case hexadecimal
  int row = -1;              // 0-based
  int column = -1;
};

class OptionPageHost : public FormatHost {
 public:
  virtual int messageBox(std::wstring_view text, std::wstring_view caption, unsigned flags) = 0;
  // A temporary field (the host's new AcDbField) with the code, evaluated in the working
  // drawing in the preview context.
  virtual PreviewResult preview(const std::wstring& code) = 0;
  // A point asked for with the prompt, then the first table of the current space whose cells
  // the point hits, seen along the current view. A prompt result code; the pick keeps no table
  // when none was hit.
  virtual int pickTableCell(std::wstring_view prompt, TableCellPick& pick) = 0;
  // One object picked with the prompt. A prompt result code; `opened` says whether the object
  // opens as a table (eOk) or why not.
  virtual int pickTable(std::wstring_view prompt, host::AcDbObjectId& table, host::Acad::ErrorStatus& opened) = 0;
};

// Sets a short system variable for the lifetime of the object and puts the old value back on
// every path; a variable the host does not have is left alone.
class ShortVarOverride {
 public:
  ShortVarOverride(FormatHost& host, std::wstring_view name, int value) : host_(host), name_(name) {
    saved_ = host_.getShortVar(name_, old_);
    if (saved_) host_.setShortVar(name_, value);
  }
  ~ShortVarOverride() {
    if (saved_) host_.setShortVar(name_, old_);
  }
  ShortVarOverride(const ShortVarOverride&) = delete;
  ShortVarOverride& operator=(const ShortVarOverride&) = delete;

 private:
  FormatHost& host_;
  std::wstring name_;
  int old_ = 0;
  bool saved_ = false;
};

}  // namespace corvane
