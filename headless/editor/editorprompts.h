// The editor's prompts in the headless host, answered from the script.
//
// Each prompt is written to the command line and the answer read is echoed after it. Points
// are "x,y" or "x,y,z", "@dx,dy" relative to the base point (or the last point), and "d<a" or
// "@d<a" with the angle in degrees. Objects are picked by handle, "(handent "1F")", or "L" for
// the last one drawn. A selection prompt takes such answers, or "ALL", one per line, until an
// empty line. A range of table cells is the table, picked so, then its first and last cell as
// "row,column", counted from 1 as the table is read (Enter for the last takes the first cell
// alone). "^C" or the end of the script cancels the prompt.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "headless/editor/script.h"
#include "headless/editor/selectionfilter.h"
#include "host/acdbobject.h"
#include "host/acdbtable.h"
#include "host/acedprompts.h"

namespace corvane::headless {

class HostApplication;

class EditorPrompts : public host::AcEdPrompts {
 public:
  using Print = std::function<void(std::wstring_view)>;

  EditorPrompts(Script& script, HostApplication& host, Print print);

  int initGet(int flags, std::wstring_view keywords) override;
  int getInput(std::wstring& keyword) override;
  int getPoint(const host::AcGePoint3d* base, std::wstring_view prompt, host::AcGePoint3d& point) override;
  int getCorner(const host::AcGePoint3d& base, std::wstring_view prompt, host::AcGePoint3d& point) override;
  int entSel(std::wstring_view prompt, host::AcDbObjectId& entity, host::AcGePoint3d& picked) override;
  int nEntSel(std::wstring_view prompt, host::AcDbObjectId& entity, host::AcGePoint3d& picked) override;
  int ssGet(std::wstring_view mode, const host::ResBufList* filter, std::vector<host::AcDbObjectId>& selection) override;
  int getTableCellRange(std::wstring_view prompt, const host::ResBufList* filter, host::AcDbObjectId& table,
                        host::AcCellRange& range) override;
  int getKword(std::wstring_view prompt, std::wstring& keyword) override;
  int getString(bool allowSpaces, std::wstring_view prompt, std::wstring& text) override;
  int getInt(std::wstring_view prompt, int& value) override;

  // Whether a prompt was cancelled since the flag was last cleared.
  bool cancelled() const noexcept { return cancelled_; }
  void setCancelled(bool cancelled) noexcept { cancelled_ = cancelled; }

  // The entities of the working drawing's layouts, in drawing order, erased ones left out.
  std::vector<host::AcDbObjectId> layoutEntities() const;

  static std::optional<host::AcGePoint3d> parsePoint(std::wstring_view text, const host::AcGePoint3d& reference);

 private:
  struct Control {
    int flags = 0;
    std::vector<std::pair<std::wstring, std::wstring>> keywords;  // local, global
  };
  Control take();
  bool ask(std::wstring_view prompt, std::wstring& answer);
  // One trimmed answer: RTNORM with it, RTCAN when the input ended or was cancelled, RTNONE
  // for an empty answer the control allows. An empty answer it refuses shows `required` and
  // the prompt comes again.
  int askTrimmed(std::wstring_view prompt, const Control& control, std::wstring_view required, std::wstring& trimmed);
  bool matchKeyword(const Control& control, std::wstring_view answer);
  int pointPrompt(const host::AcGePoint3d* base, std::wstring_view prompt, host::AcGePoint3d& point);
  // An entity named by an answer: "(handent "H")" or "L"; null id when the answer names none.
  std::optional<host::AcDbObjectId> pickedEntity(std::wstring_view answer, bool nested = false) const;
  int pickEntity(std::wstring_view prompt, bool nested, host::AcDbObjectId& entity, host::AcGePoint3d& picked);
  bool passes(host::AcDbObjectId id, const SelectionFilter* filter) const;
  // The filter of a selection read into `parsed` (left empty without one); false, with the reason
  // printed, when it does not read.
  bool parseFilter(const host::ResBufList* filter, std::optional<SelectionFilter>& parsed) const;
  // A cell of the table as "row,column" (1-based), asked until it names one; false when cancelled.
  // With `optional`, Enter is an answer and leaves the cell as it was.
  bool askCell(std::wstring_view prompt, const host::AcDbTable& table, bool optional, int& row, int& column);

  Script& script_;
  HostApplication& host_;
  Print print_;
  Control next_;
  std::wstring keyword_;
  host::AcGePoint3d lastPoint_{};
  bool cancelled_ = false;
};

}  // namespace corvane::headless
