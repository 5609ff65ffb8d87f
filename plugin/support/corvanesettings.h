// Every setting the plug-in keeps, with the section it lives in and its default.
#pragma once

namespace corvane::settings {

struct IntSetting {
  const wchar_t* section;
  const wchar_t* name;
  int fallback;
};
struct TextSetting {
  const wchar_t* section;
  const wchar_t* name;
  const wchar_t* fallback;
};

inline constexpr wchar_t kMaker[] = L"Halvek";

// Sections.
inline constexpr wchar_t kCorvane[] = L"Corvane";
inline constexpr wchar_t kAreaField[] = L"Corvane\\AreaField";
inline constexpr wchar_t kLengthField[] = L"Corvane\\LengthField";
inline constexpr wchar_t kDefinedObject[] = L"Corvane\\DefinedObject";          // "%s|%s|%s" per object
inline constexpr wchar_t kBlockAttFields[] = L"Corvane\\BlockAttFields";        // names "%s*%s"
inline constexpr wchar_t kInsertFieldsDrawings[] = L"Corvane\\InsertFieldsDrawings";
inline constexpr wchar_t kExcelCellRecentFiles[] = L"Corvane\\ExcelCell\\Recent File List";
inline constexpr wchar_t kTextFileRecentFiles[] = L"Corvane\\TextFile\\Recent File List";
inline constexpr wchar_t kRecentFileEntry[] = L"File%d";

// Combo indexes of the path-type choices.
inline constexpr int kFullPath = 0;
inline constexpr int kRelativePath = 1;

// Block count option dialog.
inline constexpr IntSetting kIncNestedBlock{kCorvane, L"IncNestedBlock", 0};
inline constexpr wchar_t kBlockSource[] = L"BlockSource";  // default: the dialog's current choice
inline constexpr TextSetting kBlockCountSelWnd1Pt{kCorvane, L"BlockCountSelWnd1Pt", L"0 0 0"};
inline constexpr TextSetting kBlockCountSelWnd2Pt{kCorvane, L"BlockCountSelWnd2Pt", L"0 0 0"};
// Window corners, one coordinate each; their defaults come from the caller.
inline constexpr wchar_t kFirstCornerX[] = L"FirstCornerX";
inline constexpr wchar_t kFirstCornerY[] = L"FirstCornerY";
inline constexpr wchar_t kFirstCornerZ[] = L"FirstCornerZ";
inline constexpr wchar_t kOppositeCornerX[] = L"OppositeCornerX";
inline constexpr wchar_t kOppositeCornerY[] = L"OppositeCornerY";
inline constexpr wchar_t kOppositeCornerZ[] = L"OppositeCornerZ";

// Path types of the dialogs that attach files.
inline constexpr IntSetting kExcelFieldPathType{kCorvane, L"EF_PathType", kFullPath};
inline constexpr IntSetting kWorkbooksManagerPathType{kCorvane, L"WbM_PathType", kFullPath};
inline constexpr IntSetting kMultiFieldsPathType{kCorvane, L"MF_PathType", kFullPath};
inline constexpr IntSetting kExportFieldPathType{kCorvane, L"ExportFieldPathType", kFullPath};
inline constexpr IntSetting kExportFieldMoveDirection{kCorvane, L"ExportFieldMoveDirection", 0};  // 0 down, 1 right

}  // namespace corvane::settings
