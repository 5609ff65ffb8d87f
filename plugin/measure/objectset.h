// The set of drawing entities an area or length field measures: the entities of a whole space
// ("*AllObjects*", "*MSPObjects*", "*OSPObjects*") or an explicit list of handles, narrowed by
// a layer list and a mask of entity types. Its text, kept as the field's data, is
//
//   Object(<*MSPObjects*>) \objtype "82" \layer "Walls;Doors"
//   Object(<2F1;30A>)
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/acdbobject.h"

namespace corvane::host {
class AcDbDatabase;
}

namespace corvane {

// The entity types of the object filter, one bit each, as its check boxes have them.
enum ObjectTypeMask : int {
  kLineType = 1,
  kPolylineType = 2,
  kMTextType = 4,
  kTextType = 8,
  kCircleType = 16,
  kArcType = 32,
  kHatchType = 64,
  kBlockRefType = 128,
};

// The types each measurement field offers, and the mask both dialogs treat as "every type".
constexpr int kAreaTypes = kPolylineType | kCircleType | kHatchType;                 // 82
constexpr int kLengthTypes = kLineType | kPolylineType | kCircleType | kArcType;     // 51
constexpr int kEveryTypeMask = 18;

// Which spaces a named set takes; also the index of the filter dialog's radio buttons.
enum class SpaceScope : int { kAllSpaces = 0, kModelSpace = 1, kOwnerSpace = 2 };

struct ObjectSet {
  std::wstring objects;  // what stands between "Object(<" and ">)": a set name or handles
  std::wstring options;  // from the blank before the first option, or empty
  int typeMask = 0;      // 0: every type the field measures
  std::vector<std::wstring> layers;  // empty: every layer
  std::wstring error;    // an option text that does not read, or an unknown option

  bool isNamedSet() const noexcept { return objects.find(L'*') != std::wstring::npos; }
  SpaceScope scope() const noexcept;
  // The handles of an explicit list, in order, repeats kept, empty entries left out.
  std::vector<std::wstring> handles() const;
};

// True when the text begins with "Object(" in any case.
bool hasObjectSetPrefix(std::wstring_view text) noexcept;

// Splits the text into its object list and options and reads the options. The object list is
// cleaned character by character: the letters of "Object" at its start, then "(" and "<", and
// ">" and ")" at its end, so "Object(<2F1" reads as "2F1".
ObjectSet parseObjectSet(std::wstring_view text);

// What the option dialogs hold about the set.
struct ObjectSetChoice {
  bool explicitObjects = false;
  SpaceScope scope = SpaceScope::kAllSpaces;
  int typeMask = 0;
  std::vector<std::wstring> allLayers;
  std::vector<std::wstring> selectedLayers;
  std::vector<std::wstring> handles;  // the picked objects, in list order
};

// "Object(<SPEC>)" and the options. An explicit list carries no options; a set on every
// layer carries none either, not even its type mask; masks 0 and 18 are not written.
std::wstring buildObjectSetText(const ObjectSetChoice& choice);

// The space name a scope writes.
const wchar_t* spaceSetName(SpaceScope scope) noexcept;

// An exact, case-sensitive match against the list; an empty list lets every layer pass.
bool layerPasses(const std::vector<std::wstring>& layers, std::wstring_view layer) noexcept;

// What one entity adds to the sum with the type mask.
using EntityMeasure = double (*)(const host::AcDbEntity& entity, int typeMask);

// The sum of the measure over the set in the database. `ownerId` is the id the owner-space walk
// starts from (the field's owner). Handles that name nothing and entities that do not open
// add nothing.
double sumObjectSet(host::AcDbDatabase& db, host::AcDbObjectId ownerId, const ObjectSet& set, EntityMeasure measure);

}  // namespace corvane
