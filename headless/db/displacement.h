// Moving an entity by a displacement in world coordinates, for the entity kinds whose geometry
// the headless database models. Points kept in an entity's object coordinate system move by
// the displacement seen in that system; a block reference takes its attributes along.
#pragma once

#include "host/acgepoint.h"
#include "host/objectid.h"

namespace corvane::headless {

class Database;

// Whether the entity is of a kind displace() can move.
bool isDisplaceable(const Database& db, host::AcDbObjectId entity);
// False, with nothing moved, for an entity of another kind.
bool displace(Database& db, host::AcDbObjectId entity, const host::AcGeVector3d& offset);

}  // namespace corvane::headless
