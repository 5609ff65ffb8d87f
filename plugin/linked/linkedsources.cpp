#include "plugin/linked/linkedsources.h"

#include "core/filepath.h"
#include "host/acdbdatabase.h"
#include "host/hostservices.h"
#include "host/hostsession.h"

namespace corvane {

LinkedSources::LinkedSources(host::AcDbHostApplicationServices& services, host::HostSession& session)
    : services_(services), session_(&session), system_(&session.system()), evaluationExcel_(session, services) {}

LinkedSources::LinkedSources(host::AcDbHostApplicationServices& services, host::HostSystem* system,
                             host::ExcelAutomation* excel)
    : services_(services), system_(system), excel_(excel), evaluationExcel_(excel, nullptr, services) {}

LinkedSources::~LinkedSources() = default;

void LinkedSources::releaseExcelInstance() { evaluationExcel_.ReleasePrivateExcel(); }

// The backend's instances end when they are let go of: none is ever left over to end.
void LinkedSources::endLeftOverExcel() {}

void LinkedSources::freeDefinedObjects() { lastDrawing_ = {}; }

host::ExcelAutomation* LinkedSources::excel() { return session_ ? session_->excel() : excel_; }

host::HostUi* LinkedSources::ui() { return session_ ? &session_->ui() : nullptr; }

std::wstring LinkedSources::currentDocumentPath() const {
  const host::AcDbDatabase* working = services_.workingDatabase();
  return working ? working->getFilename() : std::wstring();
}

std::optional<std::wstring> LinkedSources::resolveAgainstWorkingDrawing(std::wstring_view path) const {
  if (!core::isRelativePath(path)) return core::absolutePath({}, path);
  const std::wstring folder = core::folderOf(currentDocumentPath());
  if (folder.empty() || fileStatus(folder).kind != host::HostSystem::FileKind::kFolder) return std::nullopt;
  return core::absolutePath(folder, path);
}

host::HostSystem::FileStatus LinkedSources::fileStatus(std::wstring_view path) const {
  return system_ ? system_->fileStatus(path) : host::HostSystem::FileStatus{};
}

}  // namespace corvane
