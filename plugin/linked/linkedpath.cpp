#include "plugin/linked/linkedpath.h"

#include <algorithm>

#include "core/filepath.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "host/hostservices.h"
#include "host/hostui.h"
#include "plugin/fields/showmodal.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/support/corvanesettings.h"
#include "plugin/support/cregistry.h"

namespace corvane {

int LinkedMessage(LinkedSources& sources, std::wstring_view text, std::wstring_view caption, unsigned flags) {
  if (host::HostUi* ui = sources.ui()) return ui->messageBox(text, caption, flags);
  sources.services().print(L"\n" + std::wstring(text));
  // Without a box to ask, a question is answered with its default, the first button.
  const unsigned type = flags & host::MB_TYPEMASK;
  return type == host::MB_YESNO || type == host::MB_YESNOCANCEL ? host::IDYES : host::IDOK;
}

bool RelativePathAllowed(LinkedSources& sources) {
  if (!sources.currentDocumentPath().empty()) return true;
  LinkedMessage(sources, kSaveDrawingFirst, kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
  return false;
}

bool ChoosePathType(LinkedSources& sources, CRegistry& registry, const settings::IntSetting& setting, int type,
                    int lastIndex, int& chosen) {
  const int wanted = std::clamp(type, 0, lastIndex);
  if (wanted == kRelativePathType && !RelativePathAllowed(sources)) {
    chosen = kFullPathType;
    return false;
  }
  chosen = wanted;
  registry.write(setting, chosen);
  return true;
}

std::wstring PathForCode(LinkedSources& sources, std::wstring_view file, int& pathType) {
  if (pathType == kFileNameOnlyType) return std::wstring(core::fileNameOf(file));
  if (pathType != kRelativePathType || core::isRelativePath(file)) return std::wstring(file);
  const std::wstring drawing = sources.currentDocumentPath();
  if (const auto relative = core::relativePathTo(drawing, file)) return *relative;
  LinkedMessage(sources, core::format(L"Failed to create a relative path from %s to %s.", drawing, file),
                kMessageCaption, host::MB_OK | host::MB_ICONINFORMATION);
  pathType = kFullPathType;
  return std::wstring(file);
}

}  // namespace corvane
