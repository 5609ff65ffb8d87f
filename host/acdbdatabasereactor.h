// Notifications about the objects of one drawing database.
#pragma once

namespace corvane::host {

class AcDbDatabase;
class AcDbObject;

class AcDbDatabaseReactor {
 public:
  virtual ~AcDbDatabaseReactor() = default;
  virtual void objectAppended(const AcDbDatabase* /*db*/, const AcDbObject* /*object*/) {}
  virtual void objectModified(const AcDbDatabase* /*db*/, const AcDbObject* /*object*/) {}
  virtual void objectErased(const AcDbDatabase* /*db*/, const AcDbObject* /*object*/, bool /*erased*/) {}
};

}  // namespace corvane::host
