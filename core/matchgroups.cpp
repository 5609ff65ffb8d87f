#include "core/matchgroups.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace corvane::core {

namespace {

// ---- Parsing: the pattern into a small tree ----------------------------------------------

struct CharSet {
  bool negated = false;
  std::uint64_t ascii[2] = {0, 0};                            // members below U+0080
  std::vector<std::pair<std::uint32_t, std::uint32_t>> ranges;  // members from U+0080 on

  // Code units compare unsigned here, as everywhere else in the matcher.
  void add(std::uint32_t low, std::uint32_t high) {
    for (std::uint32_t c = low; c <= high && c < 0x80; ++c) ascii[c >> 6] |= std::uint64_t{1} << (c & 63);
    if (high >= 0x80) ranges.emplace_back(low < 0x80 ? 0x80u : low, high);
  }
  bool contains(wchar_t ch) const noexcept {
    const auto c = static_cast<std::uint32_t>(ch);
    bool in = false;
    if (c < 0x80) {
      in = (ascii[c >> 6] >> (c & 63)) & 1u;
    } else {
      for (const auto& [low, high] : ranges) {
        if (c >= low && c <= high) {
          in = true;
          break;
        }
      }
    }
    return in != negated;
  }
};

struct Node {
  enum Kind { kLiteral, kAny, kSet, kConcat, kAlternate, kStar, kPlus, kQuestion, kCapture, kGroup };
  Kind kind;
  wchar_t literal = 0;
  int index = -1;             // kSet: the set; kCapture: the capture number
  std::vector<int> children;  // indexes into the parser's node list
};

class Parser {
 public:
  explicit Parser(std::wstring_view pattern) : p_(pattern) {}

  // The root node, or -1 when the pattern does not parse.
  int parse() {
    const int root = alternation();
    if (root < 0 || pos_ != p_.size()) return -1;  // a stray ')' or '}'
    return root;
  }

  std::vector<Node> nodes;
  std::vector<CharSet> sets;
  int captures = 0;

 private:
  // Deeper nesting than any real pattern needs is refused rather than risking the stack.
  static constexpr int kMaxDepth = 256;

  int make(Node::Kind kind) {
    nodes.push_back(Node{kind, 0, -1, {}});
    return static_cast<int>(nodes.size()) - 1;
  }

  int alternation() {
    if (++depth_ > kMaxDepth) return -1;
    const int first = concatenation();
    if (first < 0) return -1;
    if (pos_ >= p_.size() || p_[pos_] != L'|') {
      --depth_;
      return first;
    }
    const int alt = make(Node::kAlternate);
    nodes[static_cast<std::size_t>(alt)].children.push_back(first);
    while (pos_ < p_.size() && p_[pos_] == L'|') {
      ++pos_;
      const int next = concatenation();
      if (next < 0) return -1;
      nodes[static_cast<std::size_t>(alt)].children.push_back(next);
    }
    --depth_;
    return alt;
  }

  int concatenation() {
    const int cat = make(Node::kConcat);
    while (pos_ < p_.size() && p_[pos_] != L'|' && p_[pos_] != L')' && p_[pos_] != L'}') {
      const int item = repetition();
      if (item < 0) return -1;
      nodes[static_cast<std::size_t>(cat)].children.push_back(item);
    }
    return cat;
  }

  int repetition() {
    const int item = atom();
    if (item < 0 || pos_ >= p_.size()) return item;
    Node::Kind kind;
    switch (p_[pos_]) {
      case L'*': kind = Node::kStar; break;
      case L'+': kind = Node::kPlus; break;
      case L'?': kind = Node::kQuestion; break;
      default: return item;
    }
    ++pos_;
    const int rep = make(kind);
    nodes[static_cast<std::size_t>(rep)].children.push_back(item);
    return rep;  // a second repeat right after this one finds nothing to repeat in atom()
  }

  int atom() {
    const wchar_t c = p_[pos_++];
    switch (c) {
      case L'*':
      case L'+':
      case L'?':
      case L']':
        return -1;  // a repeat with nothing before it, or a bracket never opened
      case L'\\': {
        if (pos_ >= p_.size()) return -1;
        const int node = make(Node::kLiteral);
        nodes[static_cast<std::size_t>(node)].literal = p_[pos_++];
        return node;
      }
      case L'.':
        return make(Node::kAny);
      case L'[':
        return charSet();
      case L'{':
      case L'(': {
        const bool capture = c == L'{';
        const int number = capture ? captures++ : -1;
        const int inner = alternation();
        if (inner < 0 || pos_ >= p_.size() || p_[pos_] != (capture ? L'}' : L')')) return -1;
        ++pos_;
        const int group = make(capture ? Node::kCapture : Node::kGroup);
        nodes[static_cast<std::size_t>(group)].index = number;
        nodes[static_cast<std::size_t>(group)].children.push_back(inner);
        return group;
      }
      default: {
        const int node = make(Node::kLiteral);
        nodes[static_cast<std::size_t>(node)].literal = c;
        return node;
      }
    }
  }

  // One member of a set, with its escape resolved; false at the end of the pattern.
  bool setMember(wchar_t& c) {
    if (pos_ >= p_.size()) return false;
    c = p_[pos_++];
    if (c != L'\\') return true;
    if (pos_ >= p_.size()) return false;
    c = p_[pos_++];
    return true;
  }

  int charSet() {
    CharSet set;
    if (pos_ < p_.size() && p_[pos_] == L'^') {
      set.negated = true;
      ++pos_;
    }
    // A ']' first in the set is a member, so "[]" is never a complete (empty) set.
    bool first = true;
    while (pos_ < p_.size() && (first || p_[pos_] != L']')) {
      first = false;
      wchar_t low = 0;
      if (!setMember(low)) return -1;
      wchar_t high = low;
      if (pos_ + 1 < p_.size() && p_[pos_] == L'-' && p_[pos_ + 1] != L']') {
        ++pos_;
        if (!setMember(high) || static_cast<std::uint32_t>(high) < static_cast<std::uint32_t>(low)) return -1;
      }
      set.add(static_cast<std::uint32_t>(low), static_cast<std::uint32_t>(high));
    }
    if (pos_ >= p_.size()) return -1;
    ++pos_;
    const int node = make(Node::kSet);
    nodes[static_cast<std::size_t>(node)].index = static_cast<int>(sets.size());
    sets.push_back(std::move(set));
    return node;
  }

  std::wstring_view p_;
  std::size_t pos_ = 0;
  int depth_ = 0;
};

// ---- Compiling: the tree into a program -----------------------------------------------------

struct Inst {
  enum Op : std::uint8_t { kChar, kAny, kSet, kSplit, kJump, kSave, kMatch };
  Op op;
  wchar_t c = 0;
  int x = 0;  // kSplit: the preferred branch; kJump: the target; kSave: the slot; kSet: the set
  int y = 0;  // kSplit: the other branch
};

class Compiler {
 public:
  explicit Compiler(const std::vector<Node>& nodes) : nodes_(nodes) {}

  std::vector<Inst> program;

  void emit(int index) {
    const Node& node = nodes_[static_cast<std::size_t>(index)];
    switch (node.kind) {
      case Node::kLiteral: add({Inst::kChar, node.literal, 0, 0}); break;
      case Node::kAny: add({Inst::kAny, 0, 0, 0}); break;
      case Node::kSet: add({Inst::kSet, 0, node.index, 0}); break;
      case Node::kConcat:
        for (const int child : node.children) emit(child);
        break;
      case Node::kAlternate: {
        std::vector<int> exits;
        for (std::size_t k = 0; k < node.children.size(); ++k) {
          const bool last = k + 1 == node.children.size();
          const int split = last ? -1 : add({Inst::kSplit, 0, 0, 0});
          if (!last) program[static_cast<std::size_t>(split)].x = here();
          emit(node.children[k]);
          if (!last) {
            exits.push_back(add({Inst::kJump, 0, 0, 0}));
            program[static_cast<std::size_t>(split)].y = here();
          }
        }
        for (const int jump : exits) program[static_cast<std::size_t>(jump)].x = here();
        break;
      }
      case Node::kStar: {
        const int split = add({Inst::kSplit, 0, 0, 0});
        program[static_cast<std::size_t>(split)].x = here();
        emit(node.children[0]);
        add({Inst::kJump, 0, split, 0});
        program[static_cast<std::size_t>(split)].y = here();
        break;
      }
      case Node::kPlus: {
        const int start = here();
        emit(node.children[0]);
        add({Inst::kSplit, 0, start, here() + 1});
        break;
      }
      case Node::kQuestion: {
        const int split = add({Inst::kSplit, 0, 0, 0});
        program[static_cast<std::size_t>(split)].x = here();
        emit(node.children[0]);
        program[static_cast<std::size_t>(split)].y = here();
        break;
      }
      case Node::kCapture:
        add({Inst::kSave, 0, 2 * node.index, 0});
        emit(node.children[0]);
        add({Inst::kSave, 0, 2 * node.index + 1, 0});
        break;
      case Node::kGroup:
        emit(node.children[0]);
        break;
    }
  }

 private:
  int here() const { return static_cast<int>(program.size()); }
  int add(Inst inst) {
    program.push_back(inst);
    return here() - 1;
  }

  const std::vector<Node>& nodes_;
};

// ---- Running: all threads in step, in priority order ---------------------------------------
//
// Each thread is a program counter with the saves made along its path. A thread reaches a
// program counter at a text position only if no thread of higher priority reached it there
// first, which keeps the work per character bounded by the program size while still choosing
// the match a backtracking matcher would choose first.
//
// The saves of all threads form one shared log: a save appends a node pointing at the saves
// before it, so stepping or forking a thread costs the same whatever the number of captures.
// Nodes are counted references and go back to a free list when no thread needs them.

template <typename Pos>
class SaveLog {
 public:
  static constexpr Pos kNone = std::numeric_limits<Pos>::max();

  // A node for `slot` = `pos` after `parent`, taking over the caller's reference to parent.
  Pos append(Pos parent, std::uint32_t slot, Pos pos) {
    Pos i;
    if (!free_.empty()) {
      i = free_.back();
      free_.pop_back();
    } else {
      i = static_cast<Pos>(nodes_.size());
      nodes_.emplace_back();
    }
    nodes_[i] = Node{parent, slot, pos, 1};
    return i;
  }
  void retain(Pos i) {
    if (i != kNone) ++nodes_[i].refs;
  }
  void release(Pos i) {
    while (i != kNone && --nodes_[i].refs == 0) {
      free_.push_back(i);
      i = nodes_[i].parent;
    }
  }
  // The latest save of each slot along the path ending at `i`.
  void read(Pos i, std::vector<Pos>& slots, Pos unset) const {
    for (; i != kNone; i = nodes_[i].parent) {
      if (slots[nodes_[i].slot] == unset) slots[nodes_[i].slot] = nodes_[i].pos;
    }
  }

 private:
  struct Node {
    Pos parent;
    std::uint32_t slot;
    Pos pos;
    Pos refs;
  };
  std::vector<Node> nodes_;
  std::vector<Pos> free_;
};

template <typename Pos>
class Machine {
 public:
  static constexpr Pos kUnset = std::numeric_limits<Pos>::max();
  static constexpr Pos kNone = SaveLog<Pos>::kNone;

  Machine(const std::vector<Inst>& program, const std::vector<CharSet>& sets)
      : program_(program.data()), sets_(sets), mark_(program.size(), kUnset) {
    current_.reserve(program.size());
    next_.reserve(program.size());
  }

  // The leftmost match: fills `slots` (already sized, all kUnset) and returns true, or false.
  bool run(std::wstring_view text, std::vector<Pos>& slots) {
    wchar_t first = 0;
    const bool hasFirst = firstChar(first);
    bool matched = false;
    for (std::size_t pos = 0; pos <= text.size(); ++pos) {
      if (!matched) {
        if (current_.count == 0 && hasFirst) {
          // Nothing is under way: jump to where a match can begin.
          const std::size_t at = text.find(first, pos);
          if (at == std::wstring_view::npos) break;
          pos = at;
        }
        // A new attempt ranks below every attempt that started earlier.
        addThread(current_, 0, pos, kNone);
      }
      if (current_.count == 0) break;
      next_.count = 0;
      const wchar_t c = pos < text.size() ? text[pos] : 0;
      bool cut = false;
      for (std::size_t t = 0; t < current_.count; ++t) {
        const int pc = current_.pcs[t];
        const Pos saves = current_.saves[t];
        const Inst& inst = program_[pc];
        if (cut) {
          log_.release(saves);  // ranks below the match found
        } else if (inst.op == Inst::kMatch) {
          matched = true;
          cut = true;
          std::fill(slots.begin(), slots.end(), kUnset);
          log_.read(saves, slots, kUnset);
          log_.release(saves);
        } else if (pos < text.size() && consumes(inst, c)) {
          addThread(next_, pc + 1, pos + 1, saves);
        } else {
          log_.release(saves);
        }
      }
      std::swap(current_, next_);
    }
    return matched;
  }

 private:
  struct ThreadList {
    std::vector<int> pcs;
    std::vector<Pos> saves;  // the last node of each thread's saves
    std::size_t count = 0;

    void reserve(std::size_t programSize) {
      pcs.resize(programSize);
      saves.resize(programSize);
    }
  };

  // A branch of the closure walk waiting its turn, holding a reference to its saves.
  struct Job {
    int pc;
    Pos saves;
  };

  bool consumes(const Inst& inst, wchar_t c) const {
    switch (inst.op) {
      case Inst::kChar: return inst.c == c;
      case Inst::kAny: return true;
      case Inst::kSet: return sets_[static_cast<std::size_t>(inst.x)].contains(c);
      default: return false;
    }
  }

  // Whether every match must begin with one particular character, and which: then the
  // search can skip text that cannot start a match.
  bool firstChar(wchar_t& c) {
    ThreadList start;
    start.reserve(mark_.size());
    addThread(start, 0, 0, kNone, kUnset - 1);
    bool single = start.count > 0;
    for (std::size_t t = 0; t < start.count && single; ++t) {
      const Inst& inst = program_[start.pcs[t]];
      if (inst.op != Inst::kChar || (t > 0 && inst.c != c)) single = false;
      c = inst.c;
    }
    for (std::size_t t = 0; t < start.count; ++t) log_.release(start.saves[t]);
    std::fill(mark_.begin(), mark_.end(), kUnset);
    return single;
  }

  // Adds the threads reachable from pc without consuming, in priority order, each with the
  // saves along its path. Takes over the caller's reference to `saves`. The list built for a
  // text position is told apart by the position itself.
  void addThread(ThreadList& list, int pc, std::size_t pos, Pos saves) {
    addThread(list, pc, pos, saves, static_cast<Pos>(pos));
  }

  void addThread(ThreadList& list, int pc, std::size_t pos, Pos saves, Pos stamp) {
    Pos* const mark = mark_.data();
    Job job{pc, saves};
    for (;;) {
      Pos current = job.saves;
      // Follow the preferred way at once; only the other branch of a split waits.
      for (int at = job.pc;;) {
        if (mark[at] == stamp) {
          log_.release(current);  // a thread of higher priority got here first
          break;
        }
        mark[at] = stamp;
        const Inst& inst = program_[at];
        if (inst.op == Inst::kJump) {
          at = inst.x;
        } else if (inst.op == Inst::kSplit) {
          log_.retain(current);
          stack_.push_back({inst.y, current});
          at = inst.x;
        } else if (inst.op == Inst::kSave) {
          current = log_.append(current, static_cast<std::uint32_t>(inst.x), static_cast<Pos>(pos));
          ++at;
        } else {
          list.pcs[list.count] = at;
          list.saves[list.count] = current;
          ++list.count;
          break;
        }
      }
      if (stack_.empty()) break;
      job = stack_.back();
      stack_.pop_back();
    }
  }

  const Inst* program_;
  const std::vector<CharSet>& sets_;
  std::vector<Pos> mark_;  // per program counter: the stamp of the list that holds it
  SaveLog<Pos> log_;
  std::vector<Job> stack_;
  ThreadList current_, next_;
};

template <typename Pos>
bool matchWith(std::wstring_view text, const Parser& parser, const std::vector<Inst>& program,
               std::vector<std::wstring>& captures) {
  using Run = Machine<Pos>;
  std::vector<Pos> slots(2 * static_cast<std::size_t>(parser.captures), Run::kUnset);
  Run machine(program, parser.sets);
  if (!machine.run(text, slots)) return false;
  captures.reserve(static_cast<std::size_t>(parser.captures));
  for (std::size_t i = 0; i < slots.size(); i += 2) {
    const Pos begin = slots[i];
    const Pos end = slots[i + 1];
    if (begin == Run::kUnset || end == Run::kUnset || end < begin) captures.emplace_back();
    else captures.emplace_back(text.substr(begin, end - begin));
  }
  return true;
}

}  // namespace

bool MatchGroups(std::wstring_view text, std::wstring_view pattern, std::vector<std::wstring>& captures) {
  captures.clear();
  if (text.empty() || pattern.empty()) return false;
  Parser parser(pattern);
  const int root = parser.parse();
  if (root < 0) return false;
  Compiler compiler(parser.nodes);
  compiler.emit(root);
  compiler.program.push_back({Inst::kMatch, 0, 0, 0});
  // Positions (and the save log's size) fit in 32 bits for any text short of four thousand
  // million characters, which halves the memory the simulation touches.
  if (text.size() < std::numeric_limits<std::uint32_t>::max() - 2) {
    return matchWith<std::uint32_t>(text, parser, compiler.program, captures);
  }
  return matchWith<std::size_t>(text, parser, compiler.program, captures);
}

}  // namespace corvane::core
