// What a database needs of the application that holds it, which sits above every database:
// the id table they all share, the evaluation of their fields, and the host's services that a
// database hands to the plug-in.
#pragma once

#include "host/errorstatus.h"
#include "host/hostservices.h"

namespace corvane::headless {

class Database;
class Field;
class ObjectTable;

class DatabaseHost {
 public:
  virtual ObjectTable& objects() noexcept = 0;
  virtual host::AcDbHostApplicationServices& services() noexcept = 0;
  // Evaluates one field of `db` through the field engine, in the given evaluation context.
  virtual host::Acad::ErrorStatus evaluateField(Field& field, Database& db, int context) = 0;
  // The database is going: the host lets go of it (as its working database, say).
  virtual void databaseClosing(const Database& db) noexcept = 0;

 protected:
  ~DatabaseHost() = default;
};

}  // namespace corvane::headless
