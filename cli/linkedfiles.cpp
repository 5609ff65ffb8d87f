#include "linkedfiles.h"

#include <filesystem>
#include <system_error>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/hostapplication.h"

namespace corvane::cli {

void readOtherDrawingsAsDxf(headless::HostApplication& host, headless::Database* idle) {
  host.setDrawingReader([&host, idle](std::wstring_view path, host::AcDbHostApplicationServices::DatabaseHolder& db,
                                      std::wstring& reason) {
    const std::filesystem::path file(headless::OsServices::localPath(path));
    std::error_code error;
    // Only a plain file is read: a pipe or a device would hold the command up.
    if (!std::filesystem::is_regular_file(file, error)) {
      reason = std::filesystem::is_directory(file, error) ? L"it is a folder"
               : std::filesystem::exists(file, error)     ? L"it is not a plain file"
                                                          : L"there is no such file";
      return host::Acad::eFileAccessErr;
    }
    auto loaded = dxf::DrawingFile::load(file, host);
    if (!loaded.drawing) {
      reason = core::fromUtf8(loaded.error);
      return host::Acad::eBadDxfFile;
    }
    dxf::DrawingFile* drawing = loaded.drawing.release();
    if (idle) host.setWorkingDatabase(&drawing->database());
    db = host::AcDbHostApplicationServices::DatabaseHolder(&drawing->database(),
                                                           [&host, idle, drawing](host::AcDbDatabase*) {
                                                             if (idle) host.setWorkingDatabase(idle);
                                                             delete drawing;
                                                           });
    return host::Acad::eOk;
  });
}

LinkedFiles::LinkedFiles(headless::HostApplication& host) : system(L"") { readOtherDrawingsAsDxf(host); }

}  // namespace corvane::cli
