// The path-type list of every page and dialog that attaches a file: "Relative Path" in a drawing
// that was never saved is refused with a message, "Full Path" stays chosen and the settings keep
// what they had; in a saved drawing the choice is kept and the field code follows it.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/utf8.h"
#include "plugin/linked/asdkexcelrangeoptiondialog.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/shell/asdkcustomoptiondialoghook.h"
#include "plugin/shell/ccorvaneapp.h"
#include "plugin/shell/optionpages.h"
#include "plugin/support/corvanesettings.h"
#include "plugin/workflows/cexportfiledtoexceldialog.h"
#include "plugin/workflows/cmultiexcelcellfieldsdialog.h"
#include "plugin/workflows/excelcellfieldsworkbookdialog.h"
#include "support/editorsession.h"

namespace corvane {
namespace {

struct Rig : testing::EditorSession {
  CCorvaneApp app{host, session};

  explicit Rig(bool saved) {
    if (saved) db.setFilename(core::fromUtf8((folder / "site.dxf").string()));
    EXPECT_EQ(session.loadApplication(app), host::AcRx::kRetOK);
  }
  ~Rig() { session.unloadApplication(app); }
  std::vector<std::wstring> boxTexts() {
    std::vector<std::wstring> texts;
    for (const auto& box : session.terminalUi().boxes()) texts.push_back(box.text);
    return texts;
  }
};

// A dialog's answer to the choice: whether it stood, and the index the list shows after it.
using Choose = std::function<std::pair<bool, int>(Rig&, int type)>;

template <typename Dialog>
Choose dialogOf() {
  return [](Rig& rig, int type) {
    Dialog dialog(rig.app.linkedSources(), rig.app.registry());
    const bool stood = dialog.OnPathTypeChanged(type);
    return std::pair{stood, dialog.pathType()};
  };
}

TEST(PathTypeChoice, RelativeInAnUnsavedDrawingIsRefusedAndKeepsTheSettings) {
  // A value no dialog writes, so that any write shows.
  constexpr int kUntouched = 7;
  struct Case {
    const char* what;
    settings::IntSetting setting;
    Choose choose;
  } const cases[] = {
      {"Excel cell page", settings::kExcelFieldPathType, dialogOf<AsdkExcelRangeOptionDialog>()},
      {"workbooks manager", settings::kWorkbooksManagerPathType, dialogOf<CExcelCellFieldsWorkbookDialog>()},
      {"multi cell fields", settings::kMultiFieldsPathType, dialogOf<CMultiExcelCellFieldsDialog>()},
      {"export fields", settings::kExportFieldPathType,
       [](Rig& rig, int type) {
         CExportFiledToExcelDialog dialog(rig.app.linkedSources(), rig.app.registry());
         const bool stood = dialog.OnPathTypeChanged(type);
         return std::pair{stood, dialog.pathType};
       }},
  };
  for (const auto& c : cases) {
    for (const bool saved : {false, true}) {
      Rig rig(saved);
      ASSERT_TRUE(rig.app.registry().write(c.setting, kUntouched));
      const auto [stood, shown] = c.choose(rig, kRelativePathType);
      const std::string what = std::string(c.what) + (saved ? ", saved drawing" : ", unsaved drawing");
      if (saved) {
        EXPECT_TRUE(stood) << what;
        EXPECT_EQ(shown, kRelativePathType) << what;
        EXPECT_EQ(rig.app.registry().get(c.setting), kRelativePathType) << what;
        EXPECT_TRUE(rig.boxTexts().empty()) << what;
      } else {
        EXPECT_FALSE(stood) << what;
        EXPECT_EQ(shown, kFullPathType) << what;
        EXPECT_EQ(rig.app.registry().get(c.setting), kUntouched) << what << ": nothing written";
        EXPECT_EQ(rig.boxTexts(), std::vector<std::wstring>{kSaveDrawingFirst}) << what;
      }
    }
  }
}

TEST(PathTypeChoice, OnAPageTheCodeFollowsOnlyAChoiceThatStood) {
  using Hook = AsdkCustomOptionDialogHook;
  for (const unsigned fieldId : {Hook::kExcelCellId, Hook::kTextFileId}) {
    for (const bool saved : {false, true}) {
      Rig rig(saved);
      const OptionPageSources sources{rig.host,
                                      rig.session,
                                      rig.app.registry(),
                                      rig.app.linkedSources(),
                                      [] { return host::AcDbObjectId(); },
                                      [](host::AcDbObjectId) {}};
      OptionPages pages(sources);
      int refreshes = 0;
      auto page = pages.make(fieldId, [&] { ++refreshes; });
      ASSERT_NE(page, nullptr);
      std::wstring error;
      EXPECT_EQ(page->SetControl(L"PATHTYPE", L"Relative Path", error), saved) << fieldId;
      EXPECT_EQ(refreshes, saved ? 1 : 0) << fieldId << (saved ? " saved" : " unsaved");
      EXPECT_EQ(error.empty(), saved) << fieldId;
    }
  }
}

}  // namespace
}  // namespace corvane
