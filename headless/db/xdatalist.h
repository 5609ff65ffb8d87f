// The extended data of an object. Few objects carry any, while every object keeps a place for
// it: the list lives behind one pointer, made when the first group arrives. Reads see a
// ResBufList (empty when there is none); writes replace the list or go through edit().
#pragma once

#include <cstddef>
#include <memory>

#include "host/resbuf.h"

namespace corvane::headless {

class XDataList {
 public:
  XDataList() = default;
  XDataList(const XDataList& other) : list_(other.list_ ? std::make_unique<host::ResBufList>(*other.list_) : nullptr) {}
  XDataList(XDataList&&) noexcept = default;
  XDataList& operator=(const XDataList& other) {
    if (this != &other) *this = other.list();
    return *this;
  }
  XDataList& operator=(XDataList&&) noexcept = default;
  XDataList& operator=(host::ResBufList list) {
    if (list.empty()) list_.reset();
    else list_ = std::make_unique<host::ResBufList>(std::move(list));
    return *this;
  }

  const host::ResBufList& list() const noexcept { return list_ ? *list_ : none(); }
  operator const host::ResBufList&() const noexcept { return list(); }  // NOLINT: reads see the list
  // The list to change in place, made if there was none.
  host::ResBufList& edit() {
    if (!list_) list_ = std::make_unique<host::ResBufList>();
    return *list_;
  }

  host::ResBufList::const_iterator begin() const noexcept { return list().begin(); }
  host::ResBufList::const_iterator end() const noexcept { return list().end(); }
  std::size_t size() const noexcept { return list().size(); }
  bool empty() const noexcept { return list().empty(); }
  const host::ResBuf& operator[](std::size_t i) const { return list()[i]; }
  const host::ResBuf& back() const { return list().back(); }
  host::ResBuf& back() { return edit().back(); }

  friend bool operator==(const XDataList& a, const host::ResBufList& b) { return a.list() == b; }
  friend bool operator==(const XDataList& a, const XDataList& b) { return a.list() == b.list(); }

 private:
  static const host::ResBufList& none() noexcept {
    static const host::ResBufList nothing;
    return nothing;
  }

  std::unique_ptr<host::ResBufList> list_;
};

}  // namespace corvane::headless
