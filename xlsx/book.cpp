#include "xlsx/book.h"

#include <algorithm>
#include <ctime>

#include "core/textutil.h"
#include "core/utf8.h"
#include "xlsx/sheet/newworkbook.h"
#include "xlsx/sheet/xmlstream.h"

namespace corvane::xlsx {

namespace {

constexpr std::string_view kContentTypesPart = "[Content_Types].xml";
constexpr std::string_view kCommentsType =
    "application/vnd.openxmlformats-officedocument.spreadsheetml.comments+xml";
constexpr std::string_view kVmlType = "application/vnd.openxmlformats-officedocument.vmlDrawing";
constexpr std::string_view kRelationshipBase = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr std::string_view kAuthor = "Corvane";

// The relationships of a part, or none when it has no relationships part.
std::optional<Relationships> relationshipsOf(const Package& package, std::string_view part, std::string& error) {
  const std::string relsPart = Relationships::partFor(part);
  if (!package.has(relsPart)) {
    return Relationships::parse(
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"/>", error);
  }
  const auto xml = package.read(relsPart, error);
  if (!xml) return std::nullopt;
  return Relationships::parse(*xml, error);
}

// The part the first relationship of the type leads to; empty when there is none.
std::string targetOf(const Relationships& rels, std::string_view source, std::string_view type) {
  for (const Relationship* rel : rels.byType(type)) {
    if (rel->external) continue;
    if (auto part = Relationships::resolve(source, rel->target)) return *part;
  }
  return {};
}

// A part name not yet in the package: the pattern with the first free number.
std::string freePart(const Package& package, std::string_view prefix, std::string_view suffix) {
  for (int n = 1;; ++n) {
    std::string name = std::string(prefix) + std::to_string(n) + std::string(suffix);
    if (!package.has(name)) return name;
  }
}

// The target of a relationship from `source` to `part`, relative to the source's folder.
std::string relativeTarget(std::string_view source, std::string_view part) {
  const std::size_t slash = source.rfind('/');
  const std::string_view folder = slash == std::string_view::npos ? std::string_view() : source.substr(0, slash + 1);
  if (!folder.empty() && part.substr(0, folder.size()) == folder) return std::string(part.substr(folder.size()));
  return "/" + std::string(part);
}

}  // namespace

std::unique_ptr<Book> Book::open(const std::filesystem::path& path, std::string& error) {
  auto package = Package::open(path, error);
  if (!package) return nullptr;
  std::unique_ptr<Book> book(new Book());
  book->path_ = path;
  book->package_ = std::move(*package);
  if (!book->readParts(error)) {
    error = path.string() + ": " + error;
    return nullptr;
  }
  return book;
}

std::unique_ptr<Book> Book::create(std::int64_t nowUnixSeconds) {
  std::unique_ptr<Book> book(new Book());
  for (auto& [name, bytes] : newWorkbookParts(nowUnixSeconds)) book->package_.write(name, std::move(bytes));
  std::string error;
  book->readParts(error);  // the parts made above are known to be whole
  book->dirty_ = true;
  return book;
}

bool Book::readParts(std::string& error) {
  const auto types = package_.read(kContentTypesPart, error);
  if (!types) return false;
  auto contentTypes = ContentTypes::parse(*types, error);
  if (!contentTypes) return false;
  contentTypes_ = std::move(*contentTypes);

  auto packageRels = relationshipsOf(package_, "", error);
  if (!packageRels) return false;
  workbookPart_ = targetOf(*packageRels, "", "/officeDocument");
  if (workbookPart_.empty() || !package_.has(workbookPart_)) {
    error = "it has no workbook part (the package names no office document)";
    return false;
  }
  const auto workbookXml = package_.read(workbookPart_, error);
  if (!workbookXml) return false;
  auto workbook = WorkbookPart::parse(*workbookXml, error);
  if (!workbook) return false;
  workbook_ = std::move(*workbook);
  auto workbookRels = relationshipsOf(package_, workbookPart_, error);
  if (!workbookRels) return false;
  workbookRels_ = std::move(*workbookRels);

  const std::string stringsPart = targetOf(workbookRels_, workbookPart_, "/sharedStrings");
  if (!stringsPart.empty() && package_.has(stringsPart)) {
    auto strings = SharedStrings::parse(
        [&](const ChunkSink& sink) { return package_.read(stringsPart, sink, error); }, error);
    if (!strings) {
      error = stringsPart + ": " + error;
      return false;
    }
    strings_ = std::move(*strings);
  }
  const std::string stylesPart = targetOf(workbookRels_, workbookPart_, "/styles");
  styles_ = Styles::defaults();
  if (!stylesPart.empty() && package_.has(stylesPart)) {
    const auto xml = package_.read(stylesPart, error);
    if (!xml) return false;
    auto styles = Styles::parse(*xml, error);
    if (!styles) {
      error = stylesPart + ": " + error;
      return false;
    }
    styles_ = std::move(*styles);
  }

  sheets_.clear();
  for (const SheetEntry& entry : workbook_.sheets()) {
    SheetState state;
    if (const Relationship* rel = workbookRels_.byId(entry.relationshipId); rel && !rel->external) {
      if (auto part = Relationships::resolve(workbookPart_, rel->target)) state.part = *part;
    }
    sheets_.push_back(std::move(state));
  }
  return true;
}

int Book::activeSheet() const noexcept {
  const int tab = workbook_.activeTab();
  return tab >= 0 && static_cast<std::size_t>(tab) < sheetCount() ? tab : 0;
}

std::optional<std::size_t> Book::sheetIndex(std::string_view name) const {
  const auto& sheets = workbook_.sheets();
  const std::wstring wanted = core::fromUtf8(name);
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    // Sheet names compare without regard to case, as Excel's do.
    if (core::equalsNoCase(core::fromUtf8(sheets[i].name), wanted)) return i;
  }
  return std::nullopt;
}

Worksheet* Book::sheet(std::size_t index, std::string& error) {
  if (index >= sheets_.size()) {
    error = "there is no sheet " + std::to_string(index + 1);
    return nullptr;
  }
  SheetState& state = sheets_[index];
  if (state.cells) return state.cells.get();
  if (state.part.empty() || !package_.has(state.part)) {
    error = "the sheet \"" + sheetName(index) + "\" has no worksheet part";
    return nullptr;
  }
  auto cells = Worksheet::parse([&](const ChunkSink& sink) { return package_.read(state.part, sink, error); }, error);
  if (!cells) {
    error = state.part + ": " + error;
    return nullptr;
  }
  state.cells = std::make_unique<Worksheet>(std::move(*cells));
  return state.cells.get();
}

Comments* Book::notes(std::size_t index, std::string& error) {
  if (index >= sheets_.size()) {
    error = "there is no sheet " + std::to_string(index + 1);
    return nullptr;
  }
  SheetState& state = sheets_[index];
  if (state.notes) return state.notes.get();
  std::string commentsXml, vmlXml;
  if (!state.part.empty() && package_.has(state.part)) {
    auto rels = relationshipsOf(package_, state.part, error);
    if (!rels) return nullptr;
    state.commentsPart = targetOf(*rels, state.part, "/comments");
    state.vmlPart = targetOf(*rels, state.part, "/vmlDrawing");
    if (!state.commentsPart.empty() && package_.has(state.commentsPart)) {
      auto xml = package_.read(state.commentsPart, error);
      if (!xml) return nullptr;
      commentsXml = std::move(*xml);
    } else {
      state.commentsPart.clear();
    }
    if (!state.vmlPart.empty() && package_.has(state.vmlPart)) {
      auto xml = package_.read(state.vmlPart, error);
      if (!xml) return nullptr;
      vmlXml = std::move(*xml);
    } else {
      state.vmlPart.clear();
    }
  }
  if (commentsXml.empty()) commentsXml = "<comments xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"/>";
  auto notes = Comments::parse(commentsXml, vmlXml, error);
  if (!notes) {
    error = state.commentsPart + ": " + error;
    return nullptr;
  }
  state.notes = std::make_unique<Comments>(std::move(*notes));
  return state.notes.get();
}

const NumberFormat& Book::formatOf(std::uint32_t style) const {
  // One slot a style, and a last one that every style past the list shares.
  const std::size_t count = styles_.styleCount();
  if (formats_.size() != count + 1) formats_.assign(count + 1, std::nullopt);
  std::optional<NumberFormat>& format = formats_[std::min<std::size_t>(style, count)];
  if (!format) format = NumberFormat::parse(styles_.formatCode(style));
  return *format;
}

std::string Book::displayText(const Worksheet& sheet, const CellView& cell) const {
  switch (cell.kind) {
    case CellKind::kNumber: return formatOf(cell.style).format(sheet.number(cell.position), date1904());
    case CellKind::kSharedString:
    case CellKind::kInlineString:
    case CellKind::kFormulaString: return formatOf(cell.style).formatText(sheet.text(cell.position, strings_));
    case CellKind::kBoolean: return sheet.number(cell.position) != 0 ? "TRUE" : "FALSE";
    case CellKind::kError:
    case CellKind::kIsoDate: return std::string(sheet.text(cell.position, strings_));
    case CellKind::kBlank: break;
  }
  return {};
}

std::optional<std::int64_t> Book::lastSaveTime() const {
  std::string error;
  auto packageRels = relationshipsOf(package_, "", error);
  if (!packageRels) return std::nullopt;
  const std::string corePart = targetOf(*packageRels, "", "/core-properties");
  if (corePart.empty() || !package_.has(corePart)) return std::nullopt;
  const auto xml = package_.read(corePart, error);
  if (!xml) return std::nullopt;
  const auto core = CoreProperties::parse(*xml, error);
  return core ? core->modifiedUnixSeconds() : std::nullopt;
}

bool Book::writeNotes(SheetState& state, std::string& legacyDrawingId, std::string& error) {
  if (!state.notes || !state.notesChanged) return true;
  const bool made = state.commentsPart.empty();
  if (made) {
    // First notes of the sheet: a comments part and its drawing, wired to the sheet.
    state.commentsPart = freePart(package_, "xl/comments", ".xml");
    state.vmlPart = freePart(package_, "xl/drawings/vmlDrawing", ".vml");
    auto rels = relationshipsOf(package_, state.part, error);
    if (!rels) return false;
    rels->add(std::string(kRelationshipBase) + "/comments", relativeTarget(state.part, state.commentsPart));
    legacyDrawingId = rels->add(std::string(kRelationshipBase) + "/vmlDrawing", relativeTarget(state.part, state.vmlPart));
    package_.write(Relationships::partFor(state.part), rels->serialize());
    contentTypes_.setOverride("/" + state.commentsPart, std::string(kCommentsType));
    contentTypes_.ensureDefault("vml", std::string(kVmlType));
    package_.write(kContentTypesPart, contentTypes_.serialize());
  } else if (state.vmlPart.empty()) {
    state.vmlPart = freePart(package_, "xl/drawings/vmlDrawing", ".vml");
    auto rels = relationshipsOf(package_, state.part, error);
    if (!rels) return false;
    legacyDrawingId = rels->add(std::string(kRelationshipBase) + "/vmlDrawing", relativeTarget(state.part, state.vmlPart));
    package_.write(Relationships::partFor(state.part), rels->serialize());
    contentTypes_.ensureDefault("vml", std::string(kVmlType));
    package_.write(kContentTypesPart, contentTypes_.serialize());
  }
  package_.write(state.commentsPart, state.notes->serializeComments());
  package_.write(state.vmlPart, state.notes->serializeVml());
  return true;
}

bool Book::writeChanges(std::int64_t now, std::string& error) {
  for (std::size_t i = 0; i < sheets_.size(); ++i) {
    SheetState& state = sheets_[i];
    std::string legacyDrawingId;
    if (!writeNotes(state, legacyDrawingId, error)) return false;
    const bool needsDrawing = !legacyDrawingId.empty();
    if (needsDrawing && !state.cells && !sheet(i, error)) return false;
    if (!state.cells || (!state.cells->changed() && !(needsDrawing && !state.cells->hasLegacyDrawing()))) continue;
    const auto original = package_.read(state.part, error);
    if (!original) return false;
    std::string bytes = state.cells->serialize(*original, needsDrawing ? legacyDrawingId : std::string_view());
    if (bytes.empty()) {
      error = state.part + ": the sheet could not be written back";
      return false;
    }
    package_.write(state.part, std::move(bytes));
  }
  auto packageRels = relationshipsOf(package_, "", error);
  if (!packageRels) return false;
  const std::string corePart = targetOf(*packageRels, "", "/core-properties");
  if (!corePart.empty() && package_.has(corePart)) {
    const auto xml = package_.read(corePart, error);
    if (!xml) return false;
    auto core = CoreProperties::parse(*xml, error);
    if (!core) return false;
    core->setModified(now, kAuthor);
    package_.write(corePart, core->serialize());
  }
  return true;
}

bool Book::save(std::string& error) {
  if (path_.empty()) {
    error = "the workbook has never been saved: it needs a file name";
    return false;
  }
  return saveAs(path_, error);
}

bool Book::saveAs(const std::filesystem::path& path, std::string& error) {
  // The package is changed on a copy, so that a failed save leaves the book as it was.
  const Package before = package_;
  const ContentTypes typesBefore = contentTypes_;
  std::vector<std::pair<std::string, std::string>> partsBefore;
  for (const SheetState& state : sheets_) partsBefore.emplace_back(state.commentsPart, state.vmlPart);
  const auto undo = [&] {
    package_ = before;
    contentTypes_ = typesBefore;
    for (std::size_t i = 0; i < sheets_.size(); ++i) std::tie(sheets_[i].commentsPart, sheets_[i].vmlPart) = partsBefore[i];
  };
  if (!writeChanges(static_cast<std::int64_t>(std::time(nullptr)), error)) {
    undo();
    return false;
  }
  std::filesystem::path backup = path;
  backup += ".bak";
  if (!package_.saveAs(path, backup, error)) {
    undo();
    return false;
  }
  // Read back what was written, so that the next save starts from the file as it now is.
  auto reopened = Package::open(path, error);
  if (!reopened) return false;
  package_ = std::move(*reopened);
  path_ = path;
  for (SheetState& state : sheets_) {
    state.cells.reset();
    state.notes.reset();
    state.notesChanged = false;
  }
  dirty_ = false;
  return true;
}

}  // namespace corvane::xlsx
