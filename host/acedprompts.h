// The editor's prompts on the command line: points, window corners, entity picks, selection
// sets, ranges of table cells, keywords, strings and integers. Each returns one of the host's
// result codes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/acgepoint.h"
#include "host/objectid.h"
#include "host/resbuf.h"

namespace corvane::host {

struct AcCellRange;

enum PromptResult : int {
  RTNONE = 5000,   // Enter on an empty input
  RTNORM = 5100,   // an answer
  RTERROR = -5001,
  RTCAN = -5002,   // cancelled
  RTREJ = -5003,   // the request was refused
  RTKWORD = -5005,  // a keyword was given; getInput() tells which
};

// Input control bits of initGet.
enum InitGetFlags : int {
  RSG_NONULL = 1,  // Enter is not an answer
  RSG_NOZERO = 2,
  RSG_NONEG = 4,
};

class AcEdPrompts {
 public:
  virtual ~AcEdPrompts() = default;

  // Sets the input control and keywords of the next prompt only. Keywords are separated by
  // blanks; a part after " _" gives their global names in the same order ("Yes No _Yes No").
  virtual int initGet(int flags, std::wstring_view keywords) = 0;
  // The global name of the keyword given at the last prompt that returned RTKWORD.
  virtual int getInput(std::wstring& keyword) = 0;

  // A point; `base` draws a rubber band and lets "@dx,dy" answers be relative to it.
  virtual int getPoint(const AcGePoint3d* base, std::wstring_view prompt, AcGePoint3d& point) = 0;
  // The other corner of a window that starts at `base`.
  virtual int getCorner(const AcGePoint3d& base, std::wstring_view prompt, AcGePoint3d& point) = 0;
  // One entity, with the point at which it was picked.
  virtual int entSel(std::wstring_view prompt, AcDbObjectId& entity, AcGePoint3d& picked) = 0;
  // The same, reaching into block references: an attribute of an insert is picked itself.
  virtual int nEntSel(std::wstring_view prompt, AcDbObjectId& entity, AcGePoint3d& picked) = 0;
  // A selection set. Mode "X" takes every entity of the working drawing's layouts that passes
  // the filter; an empty mode asks the user. The filter lists group codes (0 the entity type,
  // 8 the layer) with wildcard values, combined by the logical operators of group code -4
  // ("<or" ... "or>", "<and", "<not", "<xor"); null or empty passes everything.
  virtual int ssGet(std::wstring_view mode, const ResBufList* filter, std::vector<AcDbObjectId>& selection) = 0;
  // A range of cells of one table, picked as the user selects cells in the editor: the table,
  // then the cells from one corner to the other. The range comes back as the table's
  // sub-selection holds it, smallest row and column first. An object that the filter (as for
  // ssGet) does not pass, or that is no table, is refused and the pick asked for again.
  virtual int getTableCellRange(std::wstring_view prompt, const ResBufList* filter, AcDbObjectId& table,
                                AcCellRange& range) = 0;
  virtual int getKword(std::wstring_view prompt, std::wstring& keyword) = 0;
  // A text; without `allowSpaces` it ends at the first blank as the host's does.
  virtual int getString(bool allowSpaces, std::wstring_view prompt, std::wstring& text) = 0;
  virtual int getInt(std::wstring_view prompt, int& value) = 0;
};

}  // namespace corvane::host
