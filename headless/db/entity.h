// The part every headless entity shares: layer, visibility and the properties that every
// entity answers.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/textutil.h"
#include "headless/db/objectimpl.h"

namespace corvane::headless {

template <typename Interface>
class EntityImpl : public ObjectImpl<Interface> {
 public:
  std::wstring layer() const override { return std::wstring(layerName()); }
  std::wstring_view layerName() const override { return layer_ ? std::wstring_view(*layer_) : std::wstring_view(L"0"); }
  void setLayer(std::wstring layer) { layer_ = std::make_shared<const std::wstring>(std::move(layer)); }
  // Entities read from a file share one copy of each layer's name.
  void setLayer(std::shared_ptr<const std::wstring> layer) { layer_ = std::move(layer); }
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
