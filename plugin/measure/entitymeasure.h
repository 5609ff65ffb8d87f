// What one entity adds to an area or a length field, by its kind and the type mask (0: every
// kind the field measures). Kinds are tried in a fixed order and the first that matches
// decides; other entities add nothing.
#pragma once

#include "host/acdbobject.h"

namespace corvane {

// Arcs (the segment their chord closes), circles, polylines (an open one closed by its chord)
// and hatches (islands left out), as the host measures them.
double entityArea(const host::AcDbEntity& entity, int typeMask);

// Arcs, circles, polylines and lines, worked out from their geometry with the field's own
// constants: a full turn is 6.28318530718, and an arc whose angles are equal is empty.
double entityLength(const host::AcDbEntity& entity, int typeMask);

}  // namespace corvane
