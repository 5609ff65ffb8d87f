// Objects of kinds the headless database does not model. They keep what every object has
// (handle, owner, extension dictionary, extended data) plus their DXF and class names, so that
// the drawing stays whole and a save writes their records back as they were read.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "headless/db/entity.h"
#include "headless/db/objectimpl.h"
#include "headless/db/texthost.h"
#include "host/acdbobject.h"

namespace corvane::headless {

// The names of one kind of record, shared by every proxy of that kind.
struct ProxyKind {
  std::wstring dxfName;    // "MLINESTYLE"
  std::wstring className;  // "AcDbMlineStyle"
};

class ProxyObject : public ObjectImpl<host::AcDbObject> {
 public:
  // `name` is the record's name in its symbol table ("Standard"), empty for other objects.
  explicit ProxyObject(std::shared_ptr<const ProxyKind> kind, std::wstring name = {})
      : kind_(std::move(kind)), name_(std::move(name)) {}
  std::wstring dxfName() const override { return kind_->dxfName; }
  std::wstring className() const override { return kind_->className; }
  const std::wstring& name() const noexcept { return name_; }

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  std::shared_ptr<const ProxyKind> kind_;
  std::wstring name_;
};

class ProxyEntity : public EntityImpl<host::AcDbEntity> {
 public:
  explicit ProxyEntity(std::shared_ptr<const ProxyKind> kind) : kind_(std::move(kind)) {}
  std::wstring dxfName() const override { return kind_->dxfName; }
  std::wstring className() const override { return kind_->className; }

 private:
  std::shared_ptr<const ProxyKind> kind_;
};

// An entity whose text may hold a field (a multiline text, an attribute or its definition)
// while it has no class of its own: the text is all of it that is modelled.
class ProxyTextEntity : public ProxyEntity, public TextHost {
 public:
  ProxyTextEntity(std::shared_ptr<const ProxyKind> kind, std::wstring text)
      : ProxyEntity(std::move(kind)), text_(std::move(text)) {}

  std::wstring hostText() const override { return text_; }
  void setHostText(std::wstring text) override {
    if (text != text_) record_.modified = true;
    text_ = std::move(text);
  }

  std::optional<host::AcValue> property(std::wstring_view name) const override;

 private:
  std::wstring text_;
};

}  // namespace corvane::headless
