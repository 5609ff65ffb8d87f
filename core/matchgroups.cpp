#include "core/matchgroups.h"

#include <memory>
#include <optional>
#include <utility>

namespace corvane::core {

namespace {

// ---- Parsing: the pattern into a small tree --------------------------------------------

struct Node {
  enum Kind { kLiteral, kAny, kSet, kConcat, kAlternate, kStar, kPlus, kQuestion, kGroup } kind;
  wchar_t literal = 0;
  int set = -1;
  int capture = -1;  // kGroup: the capture index, or -1 for a plain group
  std::vector<std::unique_ptr<Node>> children;
};

struct CharSet {
  bool negated = false;
  std::vector<std::pair<wchar_t, wchar_t>> ranges;
  bool contains(wchar_t c) const {
    bool in = false;
    for (const auto& [low, high] : ranges) {
      if (c >= low && c <= high) {
        in = true;
        break;
      }
    }
    return in != negated;
  }
};

class Parser {
 public:
  explicit Parser(std::wstring_view pattern) : p_(pattern) {}

  std::unique_ptr<Node> parse() {
    auto node = alternation();
    if (!node || pos_ != p_.size()) return nullptr;  // a stray ')' or '}'
    return node;
  }
  int captures() const { return captures_; }
  std::vector<CharSet> takeSets() { return std::move(sets_); }

 private:
  static constexpr int kMaxDepth = 500;

  static std::unique_ptr<Node> make(Node::Kind kind) {
    auto node = std::make_unique<Node>();
    node->kind = kind;
    return node;
  }

  std::unique_ptr<Node> alternation() {
    if (++depth_ > kMaxDepth) return nullptr;
    auto left = concatenation();
    if (!left) return nullptr;
    while (pos_ < p_.size() && p_[pos_] == L'|') {
      ++pos_;
      auto right = concatenation();
      if (!right) return nullptr;
      auto alt = make(Node::kAlternate);
      alt->children.push_back(std::move(left));
      alt->children.push_back(std::move(right));
      left = std::move(alt);
    }
    --depth_;
    return left;
  }

  std::unique_ptr<Node> concatenation() {
    auto cat = make(Node::kConcat);
    while (pos_ < p_.size() && p_[pos_] != L'|' && p_[pos_] != L')' && p_[pos_] != L'}') {
      auto item = repetition();
      if (!item) return nullptr;
      cat->children.push_back(std::move(item));
    }
    return cat;
  }

  std::unique_ptr<Node> repetition() {
    auto item = atom();
    if (!item) return nullptr;
    while (pos_ < p_.size() && (p_[pos_] == L'*' || p_[pos_] == L'+' || p_[pos_] == L'?')) {
      const wchar_t op = p_[pos_++];
      auto rep = make(op == L'*' ? Node::kStar : op == L'+' ? Node::kPlus : Node::kQuestion);
      rep->children.push_back(std::move(item));
      item = std::move(rep);
    }
    return item;
  }

  std::unique_ptr<Node> atom() {
    const wchar_t c = p_[pos_++];
    switch (c) {
      case L'*': case L'+': case L'?':
        return nullptr;  // a repeat with nothing before it
      case L'\\': {
        if (pos_ >= p_.size()) return nullptr;
        auto node = make(Node::kLiteral);
        node->literal = p_[pos_++];
        return node;
      }
      case L'.':
        return make(Node::kAny);
      case L'[':
        return charSet();
      case L'{':
      case L'(': {
        auto group = make(Node::kGroup);
        if (c == L'{') group->capture = captures_++;
        auto inner = alternation();
        if (!inner || pos_ >= p_.size() || p_[pos_] != (c == L'{' ? L'}' : L')')) return nullptr;
        ++pos_;
        group->children.push_back(std::move(inner));
        return group;
      }
      default: {
        auto node = make(Node::kLiteral);
        node->literal = c;
        return node;
      }
    }
  }

  std::unique_ptr<Node> charSet() {
    CharSet set;
    if (pos_ < p_.size() && p_[pos_] == L'^') {
      set.negated = true;
      ++pos_;
    }
    bool first = true;
    while (pos_ < p_.size() && (p_[pos_] != L']' || first)) {
      first = false;
      wchar_t low = p_[pos_++];
      if (low == L'\\') {
        if (pos_ >= p_.size()) return nullptr;
        low = p_[pos_++];
      }
      wchar_t high = low;
      if (pos_ + 1 < p_.size() && p_[pos_] == L'-' && p_[pos_ + 1] != L']') {
        ++pos_;
        high = p_[pos_++];
        if (high == L'\\') {
          if (pos_ >= p_.size()) return nullptr;
          high = p_[pos_++];
        }
        if (high < low) return nullptr;
      }
      set.ranges.emplace_back(low, high);
    }
    if (pos_ >= p_.size() || set.ranges.empty()) return nullptr;  // unclosed or empty
    ++pos_;
    auto node = make(Node::kSet);
    node->set = static_cast<int>(sets_.size());
    sets_.push_back(std::move(set));
    return node;
  }

  std::wstring_view p_;
  std::size_t pos_ = 0;
  int depth_ = 0;
  int captures_ = 0;
  std::vector<CharSet> sets_;
};

// ---- Compiling: the tree into a program for the simulation -------------------------------

struct Inst {
  enum Op { kChar, kAny, kSet, kSplit, kJump, kSave, kMatch } op;
  wchar_t c = 0;
  int x = 0;  // kSplit: the preferred branch; kJump: the target; kSave: the slot; kSet: the set
  int y = 0;  // kSplit: the other branch
};

class Compiler {
 public:
  std::vector<Inst> program;

  void emit(const Node& node) {
    switch (node.kind) {
      case Node::kLiteral: program.push_back({Inst::kChar, node.literal, 0, 0}); break;
      case Node::kAny: program.push_back({Inst::kAny, 0, 0, 0}); break;
      case Node::kSet: program.push_back({Inst::kSet, 0, node.set, 0}); break;
      case Node::kConcat:
        for (const auto& child : node.children) emit(*child);
        break;
      case Node::kAlternate: {
        const int split = add({Inst::kSplit, 0, 0, 0});
        program[split].x = here();
        emit(*node.children[0]);
        const int jump = add({Inst::kJump, 0, 0, 0});
        program[split].y = here();
        emit(*node.children[1]);
        program[jump].x = here();
        break;
      }
      case Node::kStar: {
        const int split = add({Inst::kSplit, 0, 0, 0});
        program[split].x = here();
        emit(*node.children[0]);
        add({Inst::kJump, 0, split, 0});
        program[split].y = here();
        break;
      }
      case Node::kPlus: {
        const int start = here();
        emit(*node.children[0]);
        add({Inst::kSplit, 0, start, here() + 1});
        break;
      }
      case Node::kQuestion: {
        const int split = add({Inst::kSplit, 0, 0, 0});
        program[split].x = here();
        emit(*node.children[0]);
        program[split].y = here();
        break;
      }
      case Node::kGroup:
        if (node.capture >= 0) add({Inst::kSave, 0, 2 * node.capture, 0});
        emit(*node.children[0]);
        if (node.capture >= 0) add({Inst::kSave, 0, 2 * node.capture + 1, 0});
        break;
    }
  }

 private:
  int here() const { return static_cast<int>(program.size()); }
  int add(Inst inst) {
    program.push_back(inst);
    return here() - 1;
  }
};

// ---- Running: threads in priority order, one step per character -------------------------

struct Thread {
  int pc;
  std::vector<int> saves;
};

class Machine {
 public:
  Machine(const std::vector<Inst>& program, const std::vector<CharSet>& sets, int slots)
      : program_(program), sets_(sets), slots_(slots), mark_(program.size(), -1) {}

  std::optional<std::vector<int>> run(std::wstring_view text) {
    std::vector<Thread> current, next;
    std::optional<std::vector<int>> best;
    int generation = 0;
    for (std::size_t pos = 0;; ++pos) {
      // A new attempt starting here ranks below every attempt that started earlier.
      if (!best) add(current, 0, pos, std::vector<int>(static_cast<std::size_t>(slots_), -1), generation);
      if (current.empty()) break;
      ++generation;
      next.clear();
      for (auto& thread : current) {
        const Inst& inst = program_[static_cast<std::size_t>(thread.pc)];
        if (inst.op == Inst::kMatch) {
          best = std::move(thread.saves);
          break;  // the threads after this one rank lower
        }
        if (pos >= text.size()) continue;
        const wchar_t c = text[pos];
        const bool step = inst.op == Inst::kAny || (inst.op == Inst::kChar && inst.c == c) ||
                          (inst.op == Inst::kSet && sets_[static_cast<std::size_t>(inst.x)].contains(c));
        if (step) add(next, thread.pc + 1, pos + 1, std::move(thread.saves), generation);
      }
      std::swap(current, next);
      if (pos >= text.size()) {
        // Past the end only matches can be left; take the best of them.
        for (auto& thread : current) {
          if (program_[static_cast<std::size_t>(thread.pc)].op == Inst::kMatch) {
            best = std::move(thread.saves);
            break;
          }
        }
        break;
      }
    }
    return best;
  }

 private:
  // Follows jumps, splits and saves from pc, in priority order, without recursion.
  void add(std::vector<Thread>& list, int pc, std::size_t pos, std::vector<int> saves, int generation) {
    std::vector<Thread> stack;
    stack.push_back({pc, std::move(saves)});
    while (!stack.empty()) {
      Thread t = std::move(stack.back());
      stack.pop_back();
      auto& mark = mark_[static_cast<std::size_t>(t.pc)];
      if (mark == generation) continue;
      mark = generation;
      const Inst& inst = program_[static_cast<std::size_t>(t.pc)];
      switch (inst.op) {
        case Inst::kJump:
          stack.push_back({inst.x, std::move(t.saves)});
          break;
        case Inst::kSplit:
          stack.push_back({inst.y, t.saves});
          stack.push_back({inst.x, std::move(t.saves)});
          break;
        case Inst::kSave:
          t.saves[static_cast<std::size_t>(inst.x)] = static_cast<int>(pos);
          stack.push_back({t.pc + 1, std::move(t.saves)});
          break;
        default:
          list.push_back(std::move(t));
          break;
      }
    }
  }

  const std::vector<Inst>& program_;
  const std::vector<CharSet>& sets_;
  int slots_;
  std::vector<int> mark_;
};

}  // namespace

bool MatchGroups(std::wstring_view text, std::wstring_view pattern, std::vector<std::wstring>& captures) {
  captures.clear();
  if (text.empty() || pattern.empty()) return false;
  Parser parser(pattern);
  const auto tree = parser.parse();
  if (!tree) return false;
  const std::vector<CharSet> sets = parser.takeSets();
  Compiler compiler;
  compiler.emit(*tree);
  compiler.program.push_back({Inst::kMatch, 0, 0, 0});

  Machine machine(compiler.program, sets, 2 * parser.captures());
  const auto saves = machine.run(text);
  if (!saves) return false;
  for (int i = 0; i < parser.captures(); ++i) {
    const int start = (*saves)[static_cast<std::size_t>(2 * i)];
    const int end = (*saves)[static_cast<std::size_t>(2 * i + 1)];
    captures.emplace_back(start >= 0 && end >= start ? std::wstring(text.substr(static_cast<std::size_t>(start),
                                                                               static_cast<std::size_t>(end - start)))
                                                     : std::wstring());
  }
  return true;
}

}  // namespace corvane::core
