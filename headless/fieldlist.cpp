#include "headless/fieldlist.h"

#include <algorithm>

namespace corvane::headless {

void FieldList::add(host::AcDbObjectId id) {
  if (std::find(ids_.begin(), ids_.end(), id) != ids_.end()) return;
  ids_.push_back(id);
  record_.modified = true;
}

void FieldList::remove(host::AcDbObjectId id) {
  if (std::erase(ids_, id) > 0) record_.modified = true;
}

}  // namespace corvane::headless
