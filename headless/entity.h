// The part every headless entity shares: layer, visibility and the properties that every
// entity answers.
#pragma once

#include <optional>
#include <string>

#include "core/textutil.h"
#include "headless/objectimpl.h"

namespace corvane::headless {

template <typename Interface>
class EntityImpl : public ObjectImpl<Interface> {
 public:
  std::wstring layer() const override { return layer_; }
  void setLayer(std::wstring layer) { layer_ = std::move(layer); }
  bool visible() const override { return visible_; }
  void setVisible(bool visible) { visible_ = visible; }
  host::AcDbObjectId blockId() const override { return this->record_.owner; }

  std::optional<host::AcValue> property(std::wstring_view name) const override {
    if (core::equalsNoCase(name, L"Layer")) return host::AcValue(layer_);
    return ObjectImpl<Interface>::property(name);
  }

 private:
  std::wstring layer_ = L"0";
  bool visible_ = true;
};

}  // namespace corvane::headless
