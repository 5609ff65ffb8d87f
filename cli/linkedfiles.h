// What the linked fields reach outside the drawing when no editor runs: this system's files, the
// workbook backend in place of Excel, and other drawings read from their DXF files.
#pragma once

#include "headless/editor/osservices.h"
#include "xlsx/bookautomation.h"

namespace corvane::headless {
class Database;
class HostApplication;
}  // namespace corvane::headless

namespace corvane::cli {

// Lets the host read other drawings as DXF files, each into a database of its own. With `idle`,
// a drawing read is the working drawing while it is held, and `idle` is again afterwards: what
// its fields read of "the drawing" (its spaces, its name, files beside it) is then its own.
void readOtherDrawingsAsDxf(headless::HostApplication& host, headless::Database* idle = nullptr);

struct LinkedFiles {
  explicit LinkedFiles(headless::HostApplication& host);
  headless::OsServices system;
  xlsx::BookAutomation excel;
};

}  // namespace corvane::cli
