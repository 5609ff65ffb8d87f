#include "headless/db/fieldlist.h"

#include <algorithm>

namespace corvane::headless {

void FieldList::add(host::AcDbObjectId id) {
  if (!members_.insert(id.asOldId()).second) return;
  ids_.push_back(id);
  record_.modified = true;
}

void FieldList::remove(host::AcDbObjectId id) {
  if (members_.erase(id.asOldId()) == 0) return;
  std::erase(ids_, id);
  record_.modified = true;
}

}  // namespace corvane::headless
