#include "headless/editor/editorprompts.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/crt.h"
#include "core/printf.h"
#include "core/textutil.h"
#include "headless/db/blocktablerecord.h"
#include "headless/db/database.h"
#include "headless/hostapplication.h"

namespace corvane::headless {

using namespace host;

namespace {

// A whole text that is one finite number.
std::optional<double> number(std::wstring_view text) {
  text = core::trimmed(text);
  if (text.empty()) return std::nullopt;
  std::size_t used = 0;
  const double value = core::wcstod(text, &used);
  if (used != text.size() || !std::isfinite(value)) return std::nullopt;
  // Only plain decimal notation; the runtime would also take "0x1p3" or "inf".
  for (const wchar_t c : text) {
    if (!(c >= L'0' && c <= L'9') && c != L'.' && c != L'-' && c != L'+' && c != L'e' && c != L'E')
      return std::nullopt;
  }
  return value;
}

bool isLayoutBlock(const Database& db, AcDbObjectId block) {
  const auto* record = db.get<BlockTableRecord>(block);
  return record && (core::startsWithNoCase(record->name(), L"*Model_Space") ||
                    core::startsWithNoCase(record->name(), L"*Paper_Space"));
}

// The part of a keyword that must be typed: its leading capitals, or one character.
std::size_t requiredLength(std::wstring_view keyword) {
  std::size_t n = 0;
  while (n < keyword.size() && keyword[n] >= L'A' && keyword[n] <= L'Z') ++n;
  return n == 0 ? 1 : n;
}

// A cell typed as "row,column": two whole numbers; nullopt for anything else.
std::optional<std::pair<int, int>> cellAnswer(std::wstring_view text) {
  const auto parts = core::split(text, L',');
  if (parts.size() != 2) return std::nullopt;
  int values[2] = {0, 0};
  for (std::size_t i = 0; i < 2; ++i) {
    const std::wstring_view part = core::trimmed(parts[i]);
    if (part.empty() || part.size() > 9 || part.find_first_not_of(L"0123456789") != std::wstring_view::npos)
      return std::nullopt;
    values[i] = static_cast<int>(core::wtoi64(part));
  }
  return std::pair{values[0], values[1]};
}

}  // namespace

EditorPrompts::EditorPrompts(Script& script, HostApplication& host, Print print)
    : script_(script), host_(host), print_(std::move(print)) {}

int EditorPrompts::initGet(int flags, std::wstring_view keywords) {
  Control control;
  control.flags = flags;
  std::vector<std::wstring> locals, globals;
  bool inGlobal = false;
  for (const auto& word : core::split(core::trim(keywords), L' ')) {
    if (word.empty()) continue;
    if (!inGlobal && word.front() == L'_') {
      inGlobal = true;
      if (word.size() > 1) globals.push_back(word.substr(1));
      continue;
    }
    (inGlobal ? globals : locals).push_back(word);
  }
  for (std::size_t i = 0; i < locals.size(); ++i)
    control.keywords.emplace_back(locals[i], i < globals.size() ? globals[i] : locals[i]);
  next_ = std::move(control);
  return RTNORM;
}

int EditorPrompts::getInput(std::wstring& keyword) {
  keyword = keyword_;
  return RTNORM;
}

EditorPrompts::Control EditorPrompts::take() { return std::exchange(next_, Control{}); }

bool EditorPrompts::ask(std::wstring_view prompt, std::wstring& answer) {
  print_(prompt);
  std::optional<std::wstring> line = script_.next();
  if (!line || Script::isCancel(*line)) {
    print_(L"\n*Cancel*");
    cancelled_ = true;
    return false;
  }
  if (!line->empty()) print_(!prompt.empty() && prompt.back() != L' ' ? L" " + *line : *line);
  answer = std::move(*line);
  return true;
}

int EditorPrompts::askTrimmed(std::wstring_view prompt, const Control& control, std::wstring_view required,
                              std::wstring& trimmed) {
  while (true) {
    std::wstring answer;
    if (!ask(prompt, answer)) return RTCAN;
    trimmed = core::trim(answer);
    if (!trimmed.empty()) return RTNORM;
    if (!(control.flags & RSG_NONULL)) return RTNONE;
    print_(required);
  }
}

bool EditorPrompts::matchKeyword(const Control& control, std::wstring_view answer) {
  if (answer.empty()) return false;
  for (const auto& [local, global] : control.keywords) {
    if (core::equalsNoCase(answer, local) || (answer.front() == L'_' && core::equalsNoCase(answer.substr(1), global))) {
      keyword_ = global;
      return true;
    }
  }
  for (const auto& [local, global] : control.keywords) {
    if (answer.size() >= requiredLength(local) && answer.size() < local.size() && core::startsWithNoCase(local, answer)) {
      keyword_ = global;
      return true;
    }
  }
  return false;
}

std::optional<AcGePoint3d> EditorPrompts::parsePoint(std::wstring_view text, const AcGePoint3d& reference) {
  text = core::trimmed(text);
  bool relative = false;
  if (!text.empty() && text.front() == L'@') {
    relative = true;
    text.remove_prefix(1);
    if (core::trimmed(text).empty()) return reference;
  }
  AcGePoint3d point;
  if (const std::size_t angle = text.find(L'<'); angle != std::wstring_view::npos) {
    const auto distance = number(text.substr(0, angle));
    const auto degrees = number(text.substr(angle + 1));
    if (!distance || !degrees) return std::nullopt;
    const double radians = *degrees * std::numbers::pi / 180.0;
    point = {*distance * std::cos(radians), *distance * std::sin(radians), 0.0};
  } else {
    const auto parts = core::split(text, L',');
    if (parts.size() < 2 || parts.size() > 3) return std::nullopt;
    double values[3] = {0, 0, 0};
    for (std::size_t i = 0; i < parts.size(); ++i) {
      const auto value = number(parts[i]);
      if (!value) return std::nullopt;
      values[i] = *value;
    }
    point = {values[0], values[1], values[2]};
  }
  if (relative) point = {reference.x + point.x, reference.y + point.y, reference.z + point.z};
  return point;
}

int EditorPrompts::pointPrompt(const AcGePoint3d* base, std::wstring_view prompt, AcGePoint3d& point) {
  const Control control = take();
  while (true) {
    std::wstring trimmed;
    if (const int status = askTrimmed(prompt, control, L"\nPoint or option keyword required.", trimmed); status != RTNORM)
      return status;
    if (const auto parsed = parsePoint(trimmed, base ? *base : lastPoint_)) {
      point = *parsed;
      lastPoint_ = *parsed;
      return RTNORM;
    }
    if (matchKeyword(control, trimmed)) return RTKWORD;
    print_(L"\nInvalid point.");
  }
}

int EditorPrompts::getPoint(const AcGePoint3d* base, std::wstring_view prompt, AcGePoint3d& point) {
  return pointPrompt(base, prompt, point);
}

int EditorPrompts::getCorner(const AcGePoint3d& base, std::wstring_view prompt, AcGePoint3d& point) {
  return pointPrompt(&base, prompt, point);
}

std::vector<AcDbObjectId> EditorPrompts::layoutEntities() const {
  std::vector<AcDbObjectId> out;
  const auto* db = dynamic_cast<const Database*>(host_.workingDatabase());
  if (!db) return out;
  for (const AcDbObjectId id : db->objectIds()) {
    const auto* entity = db->get<AcDbEntity>(id);
    if (entity && !entity->isErased() && isLayoutBlock(*db, entity->ownerId())) out.push_back(id);
  }
  return out;
}

std::optional<AcDbObjectId> EditorPrompts::pickedEntity(std::wstring_view answer, bool nested) const {
  answer = core::trimmed(answer);
  const auto* db = dynamic_cast<const Database*>(host_.workingDatabase());
  if (!db) return std::nullopt;
  if (core::equalsNoCase(answer, L"L") || core::equalsNoCase(answer, L"Last")) {
    const auto all = layoutEntities();
    if (all.empty()) return AcDbObjectId();
    return all.back();
  }
  if (answer.size() < 2 || answer.front() != L'(' || answer.back() != L')') return std::nullopt;
  std::wstring_view inner = core::trimmed(answer.substr(1, answer.size() - 2));
  if (!core::startsWithNoCase(inner, L"handent")) return std::nullopt;
  inner = core::trimmed(inner.substr(7));
  if (inner.size() < 2 || inner.front() != L'"' || inner.back() != L'"') return std::nullopt;
  const auto handle = AcDbHandle::fromText(inner.substr(1, inner.size() - 2));
  AcDbObjectId id;
  if (!handle || db->getAcDbObjectId(id, *handle) != Acad::eOk) return AcDbObjectId();
  const auto* entity = db->get<AcDbEntity>(id);
  if (!entity || entity->isErased()) return AcDbObjectId();
  if (isLayoutBlock(*db, entity->ownerId())) return id;
  // Nested, an attribute counts as placed where its block reference is.
  const auto* owner = nested ? db->get<AcDbEntity>(entity->ownerId()) : nullptr;
  if (owner && !owner->isErased() && isLayoutBlock(*db, owner->ownerId())) return id;
  return AcDbObjectId();
}

int EditorPrompts::entSel(std::wstring_view prompt, AcDbObjectId& entity, AcGePoint3d& picked) {
  return pickEntity(prompt, false, entity, picked);
}

int EditorPrompts::nEntSel(std::wstring_view prompt, AcDbObjectId& entity, AcGePoint3d& picked) {
  return pickEntity(prompt, true, entity, picked);
}

int EditorPrompts::pickEntity(std::wstring_view prompt, bool nested, AcDbObjectId& entity, AcGePoint3d& picked) {
  const Control control = take();
  while (true) {
    std::wstring answer;
    if (!ask(prompt, answer)) return RTCAN;
    const std::wstring trimmed = core::trim(answer);
    if (trimmed.empty()) return RTERROR;  // Enter picks nothing
    if (matchKeyword(control, trimmed)) return RTKWORD;
    if (const auto id = pickedEntity(trimmed, nested); id && !id->isNull()) {
      entity = *id;
      picked = AcGePoint3d{};
      return RTNORM;
    }
    if (parsePoint(trimmed, lastPoint_)) {
      print_(L"\nThis host picks objects by handle: answer (handent \"handle\") or L.");
    } else {
      print_(L"\n*Invalid selection*");
    }
  }
}

bool EditorPrompts::passes(AcDbObjectId id, const SelectionFilter* filter) const {
  if (!filter) return true;
  const auto* db = dynamic_cast<const Database*>(host_.workingDatabase());
  const auto* entity = db ? db->get<AcDbEntity>(id) : nullptr;
  return entity && filter->passes(*entity);
}

bool EditorPrompts::parseFilter(const ResBufList* filter, std::optional<SelectionFilter>& parsed) const {
  if (!filter) return true;
  std::wstring error;
  parsed = SelectionFilter::parse(*filter, error);
  if (!parsed) print_(L"\n" + error);
  return parsed.has_value();
}

int EditorPrompts::ssGet(std::wstring_view mode, const ResBufList* filter, std::vector<AcDbObjectId>& selection) {
  take();
  std::optional<SelectionFilter> parsed;
  if (!parseFilter(filter, parsed)) return RTERROR;
  std::vector<AcDbObjectId> chosen;
  const auto add = [&](AcDbObjectId id) {
    if (!passes(id, parsed ? &*parsed : nullptr)) return false;
    for (const auto existing : chosen) {
      if (existing == id) return false;
    }
    chosen.push_back(id);
    return true;
  };

  if (core::equalsNoCase(mode, L"X")) {
    for (const auto id : layoutEntities()) add(id);
  } else if (mode.empty()) {
    while (true) {
      std::wstring answer;
      if (!ask(L"\nSelect objects: ", answer)) return RTCAN;
      const std::wstring trimmed = core::trim(answer);
      if (trimmed.empty()) break;
      int found = 0;
      if (core::equalsNoCase(trimmed, L"ALL")) {
        for (const auto id : layoutEntities()) found += add(id) ? 1 : 0;
      } else if (const auto id = pickedEntity(trimmed)) {
        if (id->isNull()) {
          print_(L"\n*Invalid selection*");
          continue;
        }
        found = add(*id) ? 1 : 0;
      } else {
        print_(L"\n*Invalid selection*");
        continue;
      }
      print_(core::format(L"\n%d found", found));
    }
  } else {
    print_(core::format(L"\nSelection mode \"%s\" is not available in this host.", mode));
    return RTERROR;
  }
  if (chosen.empty()) return RTERROR;
  selection = std::move(chosen);
  return RTNORM;
}

int EditorPrompts::getTableCellRange(std::wstring_view prompt, const ResBufList* filter, AcDbObjectId& table,
                                     AcCellRange& range) {
  take();
  std::optional<SelectionFilter> parsed;
  if (!parseFilter(filter, parsed)) return RTERROR;
  const auto* db = dynamic_cast<const Database*>(host_.workingDatabase());
  if (!db) return RTERROR;
  const AcDbTable* picked = nullptr;
  AcDbObjectId pickedId;
  while (!picked) {
    std::wstring answer;
    if (!ask(prompt, answer)) return RTCAN;
    const std::wstring trimmed = core::trim(answer);
    if (trimmed.empty()) return RTERROR;  // Enter picks nothing
    const auto id = pickedEntity(trimmed);
    if (!id || id->isNull()) {
      print_(parsePoint(trimmed, lastPoint_) ? L"\nThis host picks objects by handle: answer (handent \"handle\") or L."
                                             : L"\n*Invalid selection*");
    } else if (!passes(*id, parsed ? &*parsed : nullptr)) {
      print_(L"\n1 found, 1 was filtered out.");
    } else if (!(picked = db->get<AcDbTable>(*id))) {
      print_(L"\nThe object is not a table.");
    } else {
      pickedId = *id;
    }
  }
  int firstRow = 0, firstColumn = 0;
  if (!askCell(L"\nFirst cell of the range (row,column): ", *picked, false, firstRow, firstColumn)) return RTCAN;
  int lastRow = firstRow, lastColumn = firstColumn;
  if (!askCell(L"\nLast cell of the range (row,column) <first cell>: ", *picked, true, lastRow, lastColumn))
    return RTCAN;
  table = pickedId;
  range = AcCellRange{std::min(firstRow, lastRow) - 1, std::min(firstColumn, lastColumn) - 1,
                      std::max(firstRow, lastRow) - 1, std::max(firstColumn, lastColumn) - 1};
  return RTNORM;
}

bool EditorPrompts::askCell(std::wstring_view prompt, const AcDbTable& table, bool optional, int& row, int& column) {
  while (true) {
    std::wstring answer;
    if (!ask(prompt, answer)) return false;
    const std::wstring trimmed = core::trim(answer);
    if (trimmed.empty() && optional) return true;
    const auto cell = cellAnswer(trimmed);
    if (!cell) {
      print_(L"\nRequires a cell as row,column.");
    } else if (cell->first < 1 || cell->second < 1 || cell->first > table.numRows() ||
               cell->second > table.numColumns()) {
      print_(core::format(L"\nThe table has no cell in row %d, column %d.", cell->first, cell->second));
    } else {
      row = cell->first;
      column = cell->second;
      return true;
    }
  }
}

int EditorPrompts::getKword(std::wstring_view prompt, std::wstring& keyword) {
  const Control control = take();
  constexpr std::wstring_view kInvalid = L"\nInvalid option keyword.";
  while (true) {
    std::wstring trimmed;
    if (const int status = askTrimmed(prompt, control, kInvalid, trimmed); status != RTNORM) return status;
    if (matchKeyword(control, trimmed)) {
      keyword = keyword_;
      return RTNORM;
    }
    print_(kInvalid);
  }
}

int EditorPrompts::getString(bool allowSpaces, std::wstring_view prompt, std::wstring& text) {
  take();
  std::wstring answer;
  if (!ask(prompt, answer)) return RTCAN;
  if (!allowSpaces) {
    // A blank ends such an input, as it does when typed.
    const std::size_t blank = answer.find_first_of(L" \t");
    if (blank != std::wstring::npos) answer.resize(blank);
  }
  text = std::move(answer);
  return RTNORM;
}

int EditorPrompts::getInt(std::wstring_view prompt, int& value) {
  const Control control = take();
  while (true) {
    std::wstring trimmed;
    if (const int status = askTrimmed(prompt, control, L"\nRequires an integer value.", trimmed); status != RTNORM)
      return status;
    std::size_t digits = trimmed.front() == L'-' || trimmed.front() == L'+' ? 1 : 0;
    const bool integer = digits < trimmed.size() && trimmed.size() - digits <= 9 &&
                         trimmed.find_first_not_of(L"0123456789", digits) == std::wstring::npos;
    if (!integer) {
      if (matchKeyword(control, trimmed)) return RTKWORD;
      print_(L"\nRequires an integer value.");
      continue;
    }
    const long long parsed = core::wtoi64(trimmed);
    if (parsed < -32768 || parsed > 32767) {
      print_(L"\nRequires an integer between -32768 and 32767.");
      continue;
    }
    if ((control.flags & RSG_NOZERO) && parsed == 0) {
      print_(L"\nValue must be nonzero.");
      continue;
    }
    if ((control.flags & RSG_NONEG) && parsed < 0) {
      print_(L"\nValue must be positive.");
      continue;
    }
    value = static_cast<int>(parsed);
    return RTNORM;
  }
}

}  // namespace corvane::headless
