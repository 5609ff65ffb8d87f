// Extended data between a record's tags (1001 application name, then its groups) and the
// host's typed list. Points (1010 to 1013) are one item of three tags; binary chunks and
// handles stay text, as the host keeps them.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "dxf/tags/document.h"
#include "host/resbuf.h"

namespace corvane::dxf {

// The extended data that starts at `begin` (the first 1001 tag) and runs to the record's end.
host::ResBufList readExtendedData(const Document& doc, std::span<const Tag> tags, std::size_t begin);
std::vector<NewTag> extendedDataTags(const Document& doc, const host::ResBufList& data);

}  // namespace corvane::dxf
