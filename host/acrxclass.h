// Run-time class descriptors: each class of the port that callers tell apart names its parent,
// so "is this object a kind of arc?" is a walk up a short chain of pointers.
#pragma once

namespace corvane::host {

class AcRxClass {
 public:
  constexpr AcRxClass(const wchar_t* name, const AcRxClass* parent) noexcept : name_(name), parent_(parent) {}
  AcRxClass(const AcRxClass&) = delete;
  AcRxClass& operator=(const AcRxClass&) = delete;

  const wchar_t* name() const noexcept { return name_; }
  const AcRxClass* myParent() const noexcept { return parent_; }
  bool isDerivedFrom(const AcRxClass* other) const noexcept {
    for (const AcRxClass* c = this; c; c = c->parent_) {
      if (c == other) return true;
    }
    return false;
  }

 private:
  const wchar_t* name_;
  const AcRxClass* parent_;
};

}  // namespace corvane::host

// Declares the descriptor of a port class: CLASS::desc(), a kind of PARENT.
#define CORVANE_RX_DECLARE(CLASS, PARENT)                                       \
 public:                                                                        \
  using RxSelf = CLASS;                                                         \
  static const ::corvane::host::AcRxClass* desc() noexcept {                    \
    static const ::corvane::host::AcRxClass kClass(L## #CLASS, PARENT);         \
    return &kClass;                                                             \
  }
