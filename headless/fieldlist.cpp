#include "headless/fieldlist.h"

#include <algorithm>

namespace corvane::headless {

void FieldList::add(host::AcDbObjectId id) {
  if (std::find(ids_.begin(), ids_.end(), id) == ids_.end()) ids_.push_back(id);
}

void FieldList::remove(host::AcDbObjectId id) { std::erase(ids_, id); }

}  // namespace corvane::headless
