#include "headless/editor/copycommand.h"

#include <algorithm>
#include <vector>

#include "core/printf.h"
#include "core/textutil.h"
#include "headless/db/database.h"
#include "headless/db/deepclone.h"
#include "headless/db/dictionary.h"
#include "headless/db/displacement.h"
#include "headless/db/layout.h"
#include "headless/editor/session.h"
#include "headless/hostapplication.h"
#include "host/acdbidmapping.h"

namespace corvane::headless {

using host::AcDbObjectId;
using host::AcGePoint3d;
using host::AcGeVector3d;

namespace {

struct Selection {
  Database* db = nullptr;
  std::vector<AcDbObjectId> ids;
};

// The objects to copy, in the order picked; empty when the prompt was cancelled or nothing
// that can be copied was picked.
Selection selectObjects(Session& session) {
  Selection selection;
  selection.db = dynamic_cast<Database*>(session.host().workingDatabase());
  if (!selection.db) return selection;
  std::vector<AcDbObjectId> picked;
  if (session.editorPrompts().ssGet(L"", nullptr, picked) != host::RTNORM) return selection;
  const auto placeable = [&](AcDbObjectId id) { return isDisplaceable(*selection.db, id); };
  const auto left = std::count_if(picked.begin(), picked.end(), [&](AcDbObjectId id) { return !placeable(id); });
  if (left > 0) {
    session.host().print(
        core::format(L"\n%d object(s) of a kind this host cannot place were left out.", static_cast<int>(left)));
  }
  std::copy_if(picked.begin(), picked.end(), std::back_inserter(selection.ids), placeable);
  return selection;
}

// One deep clone of the objects into the space, told to the editor reactors; the ids of the
// copies in the order of their sources, or none when the clone was refused.
std::vector<AcDbObjectId> cloneInto(Session& session, const Selection& selection, AcDbObjectId space) {
  host::AcDbIdMapping mapping;
  const auto reactors = session.editorReactors();
  for (auto* reactor : reactors) reactor->beginDeepClone(selection.db, mapping);
  if (const auto es = deepCloneObjects(*selection.db, selection.ids, space, mapping); es != host::Acad::eOk) {
    session.host().print(core::format(L"\nThe objects cannot be copied: %s.", host::acadErrorStatusText(es)));
    return {};
  }
  for (auto* reactor : reactors) reactor->endDeepClone(mapping);
  std::vector<AcDbObjectId> copies;
  for (const AcDbObjectId id : selection.ids) {
    host::AcDbIdPair pair(id, {}, false);
    if (mapping.compute(pair)) copies.push_back(pair.value());
  }
  return copies;
}

// Each group of the selection that shares a space is copied into that space.
void copyBy(Session& session, const Selection& selection, const AcGeVector3d& offset) {
  std::vector<AcDbObjectId> spaces;
  for (const AcDbObjectId id : selection.ids) {
    const AcDbObjectId space = selection.db->lookup(id)->ownerId();
    if (std::find(spaces.begin(), spaces.end(), space) == spaces.end()) spaces.push_back(space);
  }
  for (const AcDbObjectId space : spaces) {
    Selection group{selection.db, {}};
    std::copy_if(selection.ids.begin(), selection.ids.end(), std::back_inserter(group.ids),
                 [&](AcDbObjectId id) { return selection.db->lookup(id)->ownerId() == space; });
    for (const AcDbObjectId copy : cloneInto(session, group, space)) displace(*selection.db, copy, offset);
  }
}

AcGeVector3d between(const AcGePoint3d& from, const AcGePoint3d& to) {
  return {to.x - from.x, to.y - from.y, to.z - from.z};
}

// The space of the layout with the name (without regard to case); null when there is none.
AcDbObjectId layoutSpace(const Database& db, std::wstring_view name) {
  const auto* layouts = db.get<Dictionary>(db.layoutDictionaryId());
  if (!layouts) return {};
  for (const auto& [entry, id] : layouts->entries()) {
    const auto* layout = db.get<Layout>(id);
    if (layout && core::equalsNoCase(layout->name(), name)) return layout->getBlockTableRecordId();
  }
  return {};
}

}  // namespace

void copyObjects(Session& session) {
  const Selection selection = selectObjects(session);
  if (selection.ids.empty()) return;
  EditorPrompts& prompts = session.editorPrompts();
  AcGePoint3d base;
  prompts.initGet(host::RSG_NONULL, L"");
  if (prompts.getPoint(nullptr, L"\nSpecify base point: ", base) != host::RTNORM) return;
  AcGePoint3d second;
  const int first = prompts.getPoint(&base, L"\nSpecify second point or <use first point as displacement>: ", second);
  if (first == host::RTNONE) {
    copyBy(session, selection, between({}, base));
    return;
  }
  if (first != host::RTNORM) return;
  copyBy(session, selection, between(base, second));
  while (prompts.getPoint(&base, L"\nSpecify second point or <exit>: ", second) == host::RTNORM) {
    copyBy(session, selection, between(base, second));
  }
}

void copyToLayout(Session& session) {
  const Selection selection = selectObjects(session);
  if (selection.ids.empty()) return;
  std::wstring name;
  if (session.editorPrompts().getString(true, L"\nEnter name of layout to copy to: ", name) != host::RTNORM) return;
  const AcDbObjectId space = layoutSpace(*selection.db, core::trimmed(name));
  if (space.isNull()) {
    session.host().print(core::format(L"\nThe drawing has no layout \"%s\".", core::trimmed(name)));
    return;
  }
  const auto copies = cloneInto(session, selection, space);
  session.host().print(
      core::format(L"\n%d object(s) copied to %s.", static_cast<int>(copies.size()), core::trimmed(name)));
}

}  // namespace corvane::headless
