// One sheet's notes (legacy comments): the comments part (xl/commentsN.xml) with author and
// text, and its VML drawing with one hidden text box per note, which Excel needs to show
// them. The wiring between the two and the sheet (relationships, <legacyDrawing>, content
// types) belongs to the package.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "xlsx/sheet/cellref.h"

namespace pugi {
class xml_document;
}

namespace corvane::xlsx {

struct Note {
  CellRef ref;
  std::string author, text;  // the text of all runs, _xHHHH_ escapes decoded
};

class Comments {
 public:
  // The notes of a sheet that has none yet. `shapeBlock` numbers the drawing's shapes (ids
  // 1024 * block + 1 ...); each sheet's drawing should have its own.
  explicit Comments(int shapeBlock = 1);
  ~Comments();
  Comments(Comments&&) noexcept;
  Comments& operator=(Comments&&) noexcept;

  // `vmlXml` may be empty: the notes then get text boxes of the usual size next to their
  // cells. nullopt, with the reason in `error`, when either part is not well-formed, has the
  // wrong root, or a note's cell reference is not one.
  static std::optional<Comments> parse(std::string_view commentsXml, std::string_view vmlXml, std::string& error);

  const std::vector<Note>& notes() const noexcept { return notes_; }
  const Note* find(CellRef ref) const;

  // Replaces an existing note at `ref`; a new note's box is hidden until the cell is pointed
  // at. False, with nothing changed, for a reference outside the sheet.
  bool add(CellRef ref, std::string text, std::string author);
  bool remove(CellRef ref);
  // Notes on the row go; the notes below move up one, with their boxes.
  void deleteRow(std::uint32_t row);

  std::string serializeComments() const;
  // Note boxes read from the drawing keep their look and size; the drawing's shapes that are
  // not notes (form controls) are kept as they were.
  std::string serializeVml() const;

 private:
  struct Box;

  std::vector<Note> notes_;
  std::vector<std::unique_ptr<Box>> boxes_;      // one for each note, same order
  std::unique_ptr<pugi::xml_document> drawing_;  // the VML as read, its note shapes taken out
  int shapeBlock_ = 1;
};

}  // namespace corvane::xlsx
