// The host's deep clone inside one drawing: entities copied into a block table record (the
// same space, another layout's space or a block), each copy with a new handle, together with
// everything the entity owns (its extension dictionary with the field dictionary and fields,
// child fields, the fields of table cells, the attributes of a block reference, extended
// data). The mapping gets a pair for every object cloned, owned ones included, in the order
// they were made.
//
// References between cloned objects are moved onto the clones (a field's object references,
// handles in extended data); references to objects that were not cloned keep pointing at the
// originals.
#pragma once

#include <vector>

#include "host/acdbidmapping.h"
#include "host/errorstatus.h"
#include "host/objectid.h"

namespace corvane::headless {

class Database;

// Checks everything first and clones nothing when an id is not an entity of the drawing that
// can be cloned (eNotAnEntity, eWrongDatabase, eWasErased, eNotApplicable) or the owner is not
// one of its block table records (eWrongObjectType).
host::Acad::ErrorStatus deepCloneObjects(Database& db, const std::vector<host::AcDbObjectId>& ids,
                                         host::AcDbObjectId owner, host::AcDbIdMapping& mapping);

}  // namespace corvane::headless
