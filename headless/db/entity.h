// The part every headless entity shares: layer, visibility and the properties that every
// entity answers.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "core/textutil.h"
#include "headless/db/objectimpl.h"

namespace corvane::headless {

// What an entity's record may say of its look besides the layer, as the file spells it. The
// defaults are those of a record that says nothing: everything by layer.
struct EntityProperties {
  std::int64_t color = 256;                  // 62: 256 by layer, 0 by block
  std::optional<std::int64_t> trueColor;     // 420: 0x00RRGGBB
  std::wstring colorName;                    // 430
  std::wstring linetype;                     // 6; empty: by layer
  double linetypeScale = 1.0;                // 48
  std::int64_t lineweight = -1;              // 370: hundredths of a millimetre; -1 by layer
  std::optional<std::int64_t> transparency;  // 440
  std::uint64_t plotStyle = 0;               // 390: the handle of the plot style's name object
  std::uint64_t material = 0;                // 347: the handle of the material
  bool operator==(const EntityProperties&) const = default;
};

// Most entities say nothing of their look and keep no copy; those read from a file that do
// share one copy of each combination. Reachable from any entity by dynamic_cast.
class EntityLook {
 public:
  const EntityProperties& properties() const noexcept {
    static const EntityProperties byLayer;
    return properties_ ? *properties_ : byLayer;
  }
  void setProperties(std::shared_ptr<const EntityProperties> properties) { properties_ = std::move(properties); }

 protected:
  void keepProperties(const EntityProperties& properties) {
    properties_ = properties == EntityProperties{} ? nullptr : std::make_shared<const EntityProperties>(properties);
  }

 private:
  std::shared_ptr<const EntityProperties> properties_;  // none: all by layer
};

template <typename Interface>
class EntityImpl : public ObjectImpl<Interface>, public EntityLook {
 public:
  std::wstring layer() const override { return std::wstring(layerName()); }
  std::wstring_view layerName() const override { return layer_ ? std::wstring_view(*layer_) : std::wstring_view(L"0"); }
  void setLayer(std::wstring layer) { layer_ = std::make_shared<const std::wstring>(std::move(layer)); }
  // Entities read from a file share one copy of each layer's name.
  void setLayer(std::shared_ptr<const std::wstring> layer) { layer_ = std::move(layer); }
  using EntityLook::setProperties;
  void setProperties(const EntityProperties& properties) {
    if (properties == this->properties()) return;
    keepProperties(properties);
    this->record_.modified = true;
  }
  bool visible() const override { return this->record_.visible; }
  void setVisible(bool visible) { this->record_.visible = visible; }
  host::AcDbObjectId blockId() const override { return this->record_.owner; }

  std::optional<host::AcValue> property(std::wstring_view name) const override {
    if (core::equalsNoCase(name, L"Layer")) return host::AcValue(layer());
    return ObjectImpl<Interface>::property(name);
  }

 private:
  std::shared_ptr<const std::wstring> layer_;  // none: layer "0"
};

}  // namespace corvane::headless
