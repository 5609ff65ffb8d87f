// Objects of a drawing database as the plug-in sees them.
//
// Objects are owned by their database. Access goes through an open: a read open may be shared,
// a write open is exclusive, and every open is matched by a close. AcDbObjectPointer does that
// on every path. Changing an object needs it open for write; a read open can be upgraded.
#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "host/acdbextents.h"
#include "host/acrxclass.h"
#include "host/errorstatus.h"
#include "host/objectid.h"
#include "host/resbuf.h"

namespace corvane::host {

class AcDbDatabase;
class AcDbHostApplicationServices;

namespace AcDb {
enum OpenMode : int { kForRead = 0, kForWrite = 1, kForNotify = 2 };
enum Visibility : int { kVisible = 0, kInvisible = 1 };
}

class AcDbObject {
  CORVANE_RX_DECLARE(AcDbObject, nullptr)

 public:
  virtual ~AcDbObject() = default;

  // The object's own class; isKindOf() is true for it and for every class it derives from.
  virtual const AcRxClass* isA() const noexcept { return desc(); }
  bool isKindOf(const AcRxClass* kind) const noexcept { return isA()->isDerivedFrom(kind); }

  virtual AcDbObjectId objectId() const = 0;
  virtual AcDbObjectId ownerId() const = 0;
  virtual AcDbHandle handle() const = 0;
  virtual AcDbDatabase* database() const = 0;
  // The DXF record name ("LINE", "FIELD", "DICTIONARY", ...) and the host class name
  // ("AcDbLine", "AcDbField", ...).
  virtual std::wstring dxfName() const = 0;
  virtual std::wstring className() const = 0;

  virtual bool isErased() const = 0;
  virtual bool isReadEnabled() const = 0;
  virtual bool isWriteEnabled() const = 0;
  virtual Acad::ErrorStatus upgradeOpen() = 0;
  virtual Acad::ErrorStatus downgradeOpen() = 0;
  virtual Acad::ErrorStatus erase(bool erasing = true) = 0;
  virtual Acad::ErrorStatus close() = 0;

  virtual AcDbObjectId extensionDictionary() const = 0;
  virtual Acad::ErrorStatus createExtensionDictionary() = 0;

  // Extended data: the groups of one application ("1001 name" first), or all when the name is
  // empty. Setting a list that is just the application name removes that application's data.
  virtual ResBufList xData(std::wstring_view appName = {}) const = 0;
  virtual Acad::ErrorStatus setXData(const ResBufList& data) = 0;
};

class AcDbEntity : public AcDbObject {
  CORVANE_RX_DECLARE(AcDbEntity, AcDbObject::desc())

 public:
  virtual std::wstring layer() const = 0;
  // The layer's name without a copy, valid while the entity is open.
  virtual std::wstring_view layerName() const = 0;
  virtual bool visible() const = 0;
  virtual AcDbObjectId blockId() const = 0;  // the block table record that holds the entity
  AcDb::Visibility visibility() const { return visible() ? AcDb::kVisible : AcDb::kInvisible; }
  // The box around the entity's geometry in world coordinates; eInvalidExtents for an entity
  // without measurable geometry.
  virtual Acad::ErrorStatus getGeomExtents(AcDbExtents& /*extents*/) const { return Acad::eInvalidExtents; }
};

// Opens an object of a type for the scope of the pointer and closes it on every path.
template <typename T>
class AcDbObjectPointer {
 public:
  AcDbObjectPointer() = default;
  AcDbObjectPointer(AcDbHostApplicationServices& services, AcDbObjectId id, AcDb::OpenMode mode,
                    bool openErased = false);
  explicit AcDbObjectPointer(T* alreadyOpen) : object_(alreadyOpen), status_(alreadyOpen ? Acad::eOk : Acad::eNullObjectPointer) {}
  AcDbObjectPointer(const AcDbObjectPointer&) = delete;
  AcDbObjectPointer& operator=(const AcDbObjectPointer&) = delete;
  AcDbObjectPointer(AcDbObjectPointer&& other) noexcept
      : object_(std::exchange(other.object_, nullptr)), status_(other.status_) {}
  AcDbObjectPointer& operator=(AcDbObjectPointer&& other) noexcept {
    if (this != &other) {
      close();
      object_ = std::exchange(other.object_, nullptr);
      status_ = other.status_;
    }
    return *this;
  }
  ~AcDbObjectPointer() { close(); }

  Acad::ErrorStatus openStatus() const noexcept { return status_; }
  T* object() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  Acad::ErrorStatus close() {
    if (!object_) return Acad::eNullObjectPointer;
    const Acad::ErrorStatus es = object_->close();
    object_ = nullptr;
    return es;
  }

 private:
  T* object_ = nullptr;
  Acad::ErrorStatus status_ = Acad::eNullObjectId;
};

}  // namespace corvane::host

#include "host/hostservices.h"

namespace corvane::host {

template <typename T>
AcDbObjectPointer<T>::AcDbObjectPointer(AcDbHostApplicationServices& services, AcDbObjectId id,
                                        AcDb::OpenMode mode, bool openErased) {
  AcDbObject* raw = nullptr;
  status_ = services.openObject(raw, id, mode, openErased);
  if (status_ != Acad::eOk) return;
  if constexpr (std::is_same_v<T, AcDbObject>) {
    object_ = raw;
  } else {
    // A class with a descriptor of its own is found by it; others, and objects that do not
    // describe themselves, by a cast.
    if constexpr (requires { typename T::RxSelf; }) {
      if constexpr (std::is_same_v<typename T::RxSelf, T>) {
        if (raw->isKindOf(T::desc())) object_ = static_cast<T*>(raw);
      }
    }
    if (!object_) object_ = dynamic_cast<T*>(raw);
    if (!object_) {
      raw->close();
      status_ = Acad::eNotThatKindOfClass;
    }
  }
}

}  // namespace corvane::host
