#include "linkedfiles.h"

#include <filesystem>
#include <system_error>

#include "core/utf8.h"
#include "dxf/model/drawingfile.h"
#include "headless/db/database.h"
#include "headless/hostapplication.h"

namespace corvane::cli {

void readOtherDrawingsAsDxf(headless::HostApplication& host) {
  host.setDrawingReader(
      [&host](std::wstring_view path, host::AcDbHostApplicationServices::DatabaseHolder& db, std::wstring& reason) {
        const std::filesystem::path file(headless::OsServices::localPath(path));
        std::error_code error;
        // Only a plain file is read: a pipe or a device would hold the update.
        if (!std::filesystem::is_regular_file(file, error)) {
          reason = std::filesystem::is_directory(file, error) ? L"it is a folder" : L"it is not a plain file";
          return host::Acad::eFileAccessErr;
        }
        auto loaded = dxf::DrawingFile::load(file, host);
        if (!loaded.drawing) {
          reason = core::fromUtf8(loaded.error);
          return host::Acad::eBadDxfFile;
        }
        dxf::DrawingFile* drawing = loaded.drawing.release();
        db = host::AcDbHostApplicationServices::DatabaseHolder(&drawing->database(),
                                                               [drawing](host::AcDbDatabase*) { delete drawing; });
        return host::Acad::eOk;
      });
}

LinkedFiles::LinkedFiles(headless::HostApplication& host) : system(L"") { readOtherDrawingsAsDxf(host); }

}  // namespace corvane::cli
