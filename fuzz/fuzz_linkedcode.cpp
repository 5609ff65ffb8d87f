// The codes of the linked fields from arbitrary text: the Excel cell reference and its "\MID"
// cut, the defined-object reference, time stamps read back and text files decoded must neither
// crash nor hang, and must keep to what they promise.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/datetimetext.h"
#include "core/utf8.h"
#include "plugin/linked/asdkdefinedobjectevaluator.h"
#include "plugin/linked/asdktextfileevaluator.h"
#include "plugin/linked/excelcellcode.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::wstring text = core::fromUtf8(bytes);

  // The three parts of a reference put back together are the reference.
  const ExcelCellReference split = SplitExcelCellReference(text);
  std::wstring joined = split.cell;
  if (!split.worksheet.empty() || !split.workbook.empty() || text.find(L':') != std::wstring::npos) {
    joined = split.worksheet + L":" + joined;
    if (!split.workbook.empty() || text.find(L':') != text.rfind(L':')) joined = split.workbook + L":" + joined;
  }
  if (joined != text) std::abort();
  if (split.cell.find(L':') != std::wstring::npos || split.worksheet.find(L':') != std::wstring::npos) std::abort();

  // A cut never gives more than the cell's text, and never nothing.
  const std::wstring cut = ApplyMidOption(L"ABCDEF", text);
  if (cut.empty() || (cut != L"\u00A0" && std::wstring(L"ABCDEF").find(cut) == std::wstring::npos)) std::abort();

  const DefinedObjectReference parts = SplitDefinedObjectReference(text);
  if (parts.handle.find(L'.') != std::wstring::npos) std::abort();
  if (parts.drawing.find(L'|') != std::wstring::npos) std::abort();

  // A time stamp that reads writes back to itself.
  if (const auto date = core::parseDateTimeText(text)) {
    const auto again = core::parseDateTimeText(core::dateTimeText(*date));
    if (!again || *again != *date) std::abort();
  }

  const std::wstring decoded = DecodeTextFile(bytes);
  if (decoded.size() > bytes.size()) std::abort();
  return 0;
}
