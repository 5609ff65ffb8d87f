// What the option dialogs of the measurement fields need of the host beyond what every option
// page does: the drawing's layers and blocks, entities named by handle and picks on the screen.
// The Windows view hides the field dialog around the picks; the headless host answers them
// from its script.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/acdbextents.h"
#include "host/acgepoint.h"
#include "host/resbuf.h"
#include "plugin/fields/optionpagehost.h"

namespace corvane::host {
class AcDbEntity;
}

namespace corvane {

// One entity as the dialogs judge it.
struct EntityFacts {
  std::wstring handle;  // upper-case hexadecimal, as the host writes it
  std::wstring layer;
  int typeBit = 0;  // its ObjectTypeMask bit, 0 for a kind no filter offers
};

class DialogHost : public virtual OptionPageHost {
 public:
  // Every layer of the working drawing, in table order.
  virtual std::vector<std::wstring> layerNames() = 0;
  // The block definitions a block count field can name: no layouts, no anonymous blocks, none
  // that is unloaded or overlaid, in table order.
  virtual std::vector<std::wstring> blockNames() = 0;
  // The handle text of the working drawing's current space; empty without a drawing.
  virtual std::wstring currentSpaceHandle() = 0;
  // The entity of a handle text; nullopt when the handle names nothing or no entity.
  virtual std::optional<EntityFacts> entity(std::wstring_view handle) = 0;

  // A selection set picked by the user through the filter (acedSSGet); a prompt result code.
  virtual int selectEntities(const host::ResBufList& filter, std::vector<EntityFacts>& picked) = 0;
  virtual int getPoint(std::wstring_view prompt, host::AcGePoint3d& point) = 0;
  virtual int getCorner(const host::AcGePoint3d& base, std::wstring_view prompt, host::AcGePoint3d& point) = 0;
  // One entity and the box around its geometry; eInvalidExtents-like failures give RTERROR.
  virtual int pickExtents(std::wstring_view prompt, EntityFacts& picked, host::AcDbExtents& extents) = 0;
};

// The ObjectTypeMask bit of an entity's class, by kind-of tests.
int entityTypeBit(const host::AcDbEntity& entity) noexcept;

}  // namespace corvane
