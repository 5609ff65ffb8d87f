// The filter of a selection set: tests on an entity's type (group code 0) and layer (8), with
// wildcard values, combined by the logical operators of group code -4 ("<and" ... "and>",
// "<or", "<not" with one operand, "<xor" with two). Items outside any operator must all hold.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/acdbobject.h"
#include "host/resbuf.h"

namespace corvane::headless {

class SelectionFilter {
 public:
  // The filter of the list, or nullopt with `error` saying what does not read: a group code
  // this host cannot test, an unknown operator, or operators that do not nest.
  static std::optional<SelectionFilter> parse(const host::ResBufList& list, std::wstring& error);

  bool passes(const host::AcDbEntity& entity) const;

 private:
  enum class Kind { kAnd, kOr, kNot, kXor, kTest };
  struct Node {
    Kind kind = Kind::kAnd;
    int code = 0;          // kTest: 0 type, 8 layer
    std::wstring pattern;  // kTest
    std::vector<Node> operands;
  };
  static bool holds(const Node& node, const host::AcDbEntity& entity);

  Node root_;
};

}  // namespace corvane::headless
