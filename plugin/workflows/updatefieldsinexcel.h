// Refreshes the cells of a worksheet that an export filled: each such cell carries a note
// "drawing|field code". The fields are grouped by drawing, each drawing is read once (the
// current document is used as it stands), every field is evaluated in its drawing, and the
// values go back into their cells; a field that fails shows "####" in its cells.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane {

namespace host {
class AcEdPrompts;
class ExcelWorkbook;
class ExcelWorksheet;
class HostUi;
}  // namespace host

class LinkedSources;

// A note split at its first "|".
struct ExcelFieldNote {
  std::wstring cell;     // absolute, "$B$3"
  std::wstring drawing;  // as written: full, or relative from the workbook's folder
  std::wstring code;     // object references by handle
};

// The note's drawing and code; false when it names no drawing or no code (no "|", or an empty
// part), which is not a note of an export.
bool SplitExcelFieldNote(std::wstring_view text, std::wstring& drawing, std::wstring& code);

class UpdateFieldsInExcel {
 public:
  enum class OtherDrawings { kAsk, kAll, kNone };
  enum class UnreadableDrawing { kLeaveCells, kMarkCells };
  struct Options {
    OtherDrawings otherDrawings = OtherDrawings::kAsk;
    // The command leaves the cells of a drawing it cannot read as they were; a batch run
    // marks them, so that the saved workbook shows what was not refreshed.
    UnreadableDrawing unreadable = UnreadableDrawing::kLeaveCells;
  };

  struct Summary {
    int notes = 0;                                 // notes that name a field
    int cellsWritten = 0;                          // values and "####" alike
    int fieldsFailed = 0;                          // fields whose cells got "####"
    std::vector<std::wstring> brokenNotes;         // cells whose note names no field
    std::vector<std::wstring> unreadableDrawings;  // "path: reason"
    int drawingsLeftOut = 0;                       // other drawings, not updated after No
  };

  // `prompts` asks the question for other drawings (none: they are left out); `ui` shows the
  // progress meters and the message boxes (none: messages go to the command line).
  UpdateFieldsInExcel(LinkedSources& sources, host::AcEdPrompts* prompts, host::HostUi* ui, Options options);

  // The command: the user's Excel, its active workbook and worksheet, then Update; the
  // connection is let go of at the end.
  void Run();
  // Steps 2 to 7 on the given worksheet. False when its notes cannot be read.
  bool Update(host::ExcelWorkbook& book, host::ExcelWorksheet& sheet);
  const Summary& summary() const noexcept { return summary_; }

 private:
  struct Work;
  bool ReadCommentAndText(host::ExcelWorksheet& sheet, std::vector<ExcelFieldNote>& notes);
  void message(std::wstring_view text);
  void progress(std::wstring_view label, int maximum);
  void progressAt(int position);
  void progressDone();

  LinkedSources& sources_;
  host::AcEdPrompts* prompts_;
  host::HostUi* ui_;
  Options options_;
  Summary summary_;
};

}  // namespace corvane
