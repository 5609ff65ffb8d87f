// What the linked fields reach outside the drawing when no editor runs: this system's files, the
// workbook backend in place of Excel, and other drawings read from their DXF files.
#pragma once

#include "headless/editor/osservices.h"
#include "xlsx/bookautomation.h"

namespace corvane::headless {
class HostApplication;
}

namespace corvane::cli {

// Lets the host read other drawings as DXF files, each into a database of its own.
void readOtherDrawingsAsDxf(headless::HostApplication& host);

struct LinkedFiles {
  explicit LinkedFiles(headless::HostApplication& host);
  headless::OsServices system;
  xlsx::BookAutomation excel;
};

}  // namespace corvane::cli
