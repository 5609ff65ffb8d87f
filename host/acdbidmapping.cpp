#include "host/acdbidmapping.h"

namespace corvane::host {

Acad::ErrorStatus AcDbIdMapping::assign(const AcDbIdPair& pair) {
  if (pair.key().isNull()) return Acad::eNullObjectId;
  const auto [it, added] = byKey_.try_emplace(pair.key().asOldId(), pairs_.size());
  if (added) {
    pairs_.push_back(pair);
  } else {
    pairs_[it->second] = pair;
  }
  return Acad::eOk;
}

bool AcDbIdMapping::compute(AcDbIdPair& pair) const {
  const auto it = byKey_.find(pair.key().asOldId());
  if (it == byKey_.end()) return false;
  pair = pairs_[it->second];
  return true;
}

Acad::ErrorStatus AcDbIdMapping::origDb(AcDbDatabase*& db) const {
  db = origDb_;
  return db ? Acad::eOk : Acad::eNoDatabase;
}

Acad::ErrorStatus AcDbIdMapping::destDb(AcDbDatabase*& db) const {
  db = destDb_;
  return db ? Acad::eOk : Acad::eNoDatabase;
}

bool AcDbIdMappingIter::getMap(AcDbIdPair& pair) const {
  if (done()) return false;
  pair = mapping_.pairAt(index_);
  return true;
}

}  // namespace corvane::host
