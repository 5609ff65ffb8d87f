#include "headless/editor/selectionfilter.h"

#include "core/printf.h"
#include "core/textutil.h"
#include "headless/editor/wcmatch.h"

namespace corvane::headless {

namespace {

struct Operator {
  const wchar_t* open;
  const wchar_t* close;
  int minimum;
  int maximum;  // -1: any number
};

// In the order of SelectionFilter::Kind.
constexpr Operator kOperators[] = {
    {L"<and", L"and>", 1, -1},
    {L"<or", L"or>", 1, -1},
    {L"<not", L"not>", 1, 1},
    {L"<xor", L"xor>", 2, 2},
};

}  // namespace

std::optional<SelectionFilter> SelectionFilter::parse(const host::ResBufList& list, std::wstring& error) {
  struct Open {
    Node node;
    std::size_t item;  // 1-based, for the messages
  };
  std::vector<Open> open{{Node{Kind::kAnd, 0, {}, {}}, 0}};
  for (std::size_t i = 0; i < list.size(); ++i) {
    const host::ResBuf& rb = list[i];
    const std::size_t item = i + 1;
    const auto* text = std::get_if<std::wstring>(&rb.value);
    if (rb.restype == 0 || rb.restype == 8) {
      if (!text) {
        error = core::format(L"Selection filter item %d: group code %d needs a text value.", int(item), rb.restype);
        return std::nullopt;
      }
      open.back().node.operands.push_back(Node{Kind::kTest, rb.restype, *text, {}});
      continue;
    }
    if (rb.restype != -4) {
      error = core::format(L"Selection filters on group code %d are not available in this host.", rb.restype);
      return std::nullopt;
    }
    const std::wstring op = text ? core::trim(*text) : std::wstring();
    bool known = false;
    for (std::size_t k = 0; k < std::size(kOperators) && !known; ++k) {
      const Operator& candidate = kOperators[k];
      if (core::equalsNoCase(op, candidate.open)) {
        open.push_back({Node{static_cast<Kind>(k), 0, {}, {}}, item});
        known = true;
      } else if (core::equalsNoCase(op, candidate.close)) {
        known = true;
        if (open.size() == 1) {
          error = core::format(L"Selection filter item %d: \"%s\" closes no \"%s\".", int(item), candidate.close,
                               candidate.open);
          return std::nullopt;
        }
        Open group = std::move(open.back());
        open.pop_back();
        const Operator& opened = kOperators[static_cast<std::size_t>(group.node.kind)];
        if (static_cast<std::size_t>(group.node.kind) != k) {
          error = core::format(L"Selection filter item %d: \"%s\" closes the \"%s\" of item %d.", int(item),
                               candidate.close, opened.open, int(group.item));
          return std::nullopt;
        }
        const int count = static_cast<int>(group.node.operands.size());
        if (count < opened.minimum || (opened.maximum >= 0 && count > opened.maximum)) {
          const wchar_t* needs = opened.maximum == 1   ? L"exactly one operand"
                                 : opened.maximum == 2 ? L"exactly two operands"
                                                       : L"at least one operand";
          error = core::format(L"Selection filter item %d: \"%s\" ... \"%s\" needs %s, not %d.", int(group.item),
                               opened.open, opened.close, needs, count);
          return std::nullopt;
        }
        open.back().node.operands.push_back(std::move(group.node));
      }
    }
    if (!known) {
      error = core::format(L"Selection filter item %d: \"%s\" is no logical operator.", int(item), op);
      return std::nullopt;
    }
  }
  if (open.size() > 1) {
    const Operator& unclosed = kOperators[static_cast<std::size_t>(open.back().node.kind)];
    error = core::format(L"Selection filter item %d: \"%s\" has no closing \"%s\".", int(open.back().item),
                         unclosed.open, unclosed.close);
    return std::nullopt;
  }
  SelectionFilter filter;
  filter.root_ = std::move(open.front().node);
  return filter;
}

bool SelectionFilter::holds(const Node& node, const host::AcDbEntity& entity) {
  switch (node.kind) {
    case Kind::kTest: return wcMatch(node.code == 0 ? entity.dxfName() : entity.layer(), node.pattern);
    case Kind::kAnd:
      for (const Node& operand : node.operands) {
        if (!holds(operand, entity)) return false;
      }
      return true;
    case Kind::kOr:
      for (const Node& operand : node.operands) {
        if (holds(operand, entity)) return true;
      }
      return false;
    case Kind::kNot: return !holds(node.operands.front(), entity);
    case Kind::kXor: return holds(node.operands[0], entity) != holds(node.operands[1], entity);
  }
  return false;
}

bool SelectionFilter::passes(const host::AcDbEntity& entity) const { return holds(root_, entity); }

}  // namespace corvane::headless
