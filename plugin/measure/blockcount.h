// What a block count field counts: insertions of named blocks (a dynamic block's variants
// under its own name), narrowed to layers, to a window of one space and to insertions whose
// attribute or dynamic property meets a comparison, with or without the insertions nested in
// other blocks. Its text, kept as the field's data, is
//
//   "Door;Window" \layer "A-DOOR" \op ">=" \tag "WIDTH" \value "900" \nested \Space(1F) \Window(0,0,0:10,10,0)
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/acdbextents.h"

namespace corvane::host {
class AcDbDatabase;
}

namespace corvane {

// One comparison of an attribute (or dynamic property) with a value. Numbers compare within the
// host's point tolerance; "=" and "!=" compare texts, ignoring case.
struct BlockCondition {
  std::wstring tag;
  std::wstring op;
  std::wstring value;
  bool operator==(const BlockCondition&) const = default;
};

// True when the attribute text `a` meets the condition's operator and value.
bool conditionHolds(const BlockCondition& condition, std::wstring_view a);
// The same with the condition's value already read as a number.
bool conditionHolds(const BlockCondition& condition, std::wstring_view a, double filter);

struct BlockCountQuery {
  std::vector<std::wstring> blocks;  // exact names
  std::vector<std::wstring> layers;  // empty: every layer
  // Several conditions, from entries separated by a broken bar in tag, operator and value,
  // must all hold.
  std::vector<BlockCondition> conditions;
  bool nested = false;
  std::wstring space;                     // handle text of the space the window lies in
  std::optional<host::AcDbExtents> window;  // only with a space
  std::wstring error;                     // an option text that does not read, or an unknown option
};

// Reads the field's data. Leading blanks and double quotes and trailing white space go first;
// the block names are what comes before the next double quote (or the first option when the
// names are not quoted).
BlockCountQuery parseBlockCount(std::wstring_view text);

// The number of insertions in the database that the query counts.
long countBlocks(host::AcDbDatabase& db, const BlockCountQuery& query);

}  // namespace corvane
