// The plug-in's reactor on the working drawing: while a table-editing command runs, it notes
// which table the command changes.
#pragma once

#include "host/acdbdatabasereactor.h"
#include "plugin/shell/reactorstate.h"

namespace corvane {

class AsdkDataBaseReactor : public host::AcDbDatabaseReactor {
 public:
  explicit AsdkDataBaseReactor(ReactorState& state) : state_(state) {}

  void objectModified(const host::AcDbDatabase* db, const host::AcDbObject* object) override;

  int tableModified() const noexcept { return tableModified_; }

 private:
  ReactorState& state_;
  int tableModified_ = 0;
};

}  // namespace corvane
