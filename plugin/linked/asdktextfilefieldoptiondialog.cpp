#include "plugin/linked/asdktextfilefieldoptiondialog.h"

#include "core/filepath.h"
#include "core/printf.h"
#include "host/acdbfield.h"
#include "plugin/fields/asdkfieldevaluator.h"
#include "plugin/linked/linkedpath.h"
#include "plugin/linked/linkedsources.h"
#include "plugin/support/corvanesettings.h"

namespace corvane {

AsdkTextFileFieldOptionDialog::AsdkTextFileFieldOptionDialog(LinkedSources& sources, CRegistry& registry)
    : sources_(sources), recent_(registry, settings::kTextFileRecentFiles) {
  recent_.ReadList();
}

int AsdkTextFileFieldOptionDialog::Load(const host::AcDbField& field) {
  host::AcValue record;
  if (field.getData(kEvaluatorTable[kTextFileRow].dataKey, record) != host::Acad::eOk) return host::AcDbField::kSuccess;
  std::wstring code;
  if (!record.get(code)) return host::AcDbField::kInvalidCode;
  path = fieldArguments(code);
  pathType_ = core::isRelativePath(path) ? kRelativePathType : kFullPathType;
  return host::AcDbField::kSuccess;
}

bool AsdkTextFileFieldOptionDialog::OnPathTypeChanged(int type) {
  pathType_ = type == kRelativePathType ? kRelativePathType : kFullPathType;
  if (pathType_ == kRelativePathType && !RelativePathAllowed(sources_)) {
    pathType_ = kFullPathType;
    return false;
  }
  return true;
}

void AsdkTextFileFieldOptionDialog::OnBrowsed(std::wstring_view chosen) {
  path = chosen;
  recent_.Add(chosen);
  recent_.WriteList();
}

std::wstring AsdkTextFileFieldOptionDialog::FieldCode() {
  const std::wstring written = PathForCode(sources_, path, pathType_);
  return core::format(L"%%<\\%s %s>%%", L"TextField", written);
}

}  // namespace corvane
