// The look of an entity as the groups of its record's AcDbEntity subclass give it: one table
// of groups drives reading them, spelling them for a new record and writing changes back.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "dxf/tags/document.h"
#include "headless/db/entity.h"

namespace corvane::dxf {

// The first tag of each group counts; one that cannot be read counts as missing.
headless::EntityProperties readEntityProperties(const Document& doc, std::span<const Tag> tags);

// The groups that say something (a value other than what a missing group means), in the order
// the host writes them.
void appendEntityProperties(std::vector<NewTag>& out, const Document& doc,
                            const headless::EntityProperties& properties);

// Brings the groups of the record's tags [begin, end) to the properties: a group that changed
// takes the new value in its first tag, a new one goes at the end, one back at its default goes.
// Groups whose value did not change stay as they are spelt. Returns whether the record changed.
bool writeEntityProperties(Document& doc, RecordId id, std::size_t begin, std::size_t end,
                           const headless::EntityProperties& properties);

}  // namespace corvane::dxf
