// The host application as the plug-in reaches it: the working database, object ids across
// every open database, the field engine and the command line.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/acgepoint.h"
#include "host/acvalue.h"
#include "host/errorstatus.h"
#include "host/objectid.h"
#include "host/resbuf.h"

namespace corvane::host {

class AcDbDatabase;
class AcDbObject;
class AcDbField;
class AcFdFieldEngine;
namespace AcDb {
enum OpenMode : int;
}

class AcDbHostApplicationServices {
 public:
  virtual ~AcDbHostApplicationServices() = default;

  // The drawing commands work on; null when no drawing is open.
  virtual AcDbDatabase* workingDatabase() const = 0;
  // Makes another drawing (one read with readDrawingFile) the one commands work on, for a
  // while; the caller puts the earlier one back.
  virtual void setWorkingDatabase(AcDbDatabase* db) = 0;
  // The process's field engine, or null.
  virtual AcFdFieldEngine* fieldEngine() = 0;

  // Ids are unique across every database of the process.
  virtual bool isValid(AcDbObjectId id) const = 0;
  virtual bool isErased(AcDbObjectId id) const = 0;
  virtual AcDbHandle handle(AcDbObjectId id) const = 0;
  virtual AcDbDatabase* database(AcDbObjectId id) const = 0;
  virtual Acad::ErrorStatus openObject(AcDbObject*& object, AcDbObjectId id, AcDb::OpenMode mode,
                                       bool openErased = false) = 0;
  // A hint that the object is about to be opened, so a walk over many objects can have the
  // next ones on their way from memory while it works on the current one. It opens nothing.
  virtual void willOpen(AcDbObjectId /*id*/) const noexcept {}

  // A new field that belongs to no drawing (the host's `new AcDbField`), open for write; it is
  // deleted with the holder. It evaluates against the database given to evaluate().
  using FieldHolder = std::unique_ptr<AcDbField, std::function<void(AcDbField*)>>;
  virtual FieldHolder newField() = 0;
  // The same, owned by `owner` as a field placed on that object is (a new field given the
  // owner's id): it reads its surroundings from there, as a formula reads the cells of the table
  // it stands in, but it shows in nothing. Empty when the owner is not a valid object.
  virtual FieldHolder newField(AcDbObjectId owner) = 0;

  // Another drawing read from its file for looking at (a database made without a default
  // drawing, then readDwgFile with every kind of sharing allowed). Its objects are opened like
  // any others; it is deleted with the holder. On failure the holder is empty and `reason`
  // says what went wrong in the file.
  using DatabaseHolder = std::unique_ptr<AcDbDatabase, std::function<void(AcDbDatabase*)>>;
  virtual Acad::ErrorStatus readDrawingFile(std::wstring_view path, DatabaseHolder& db, std::wstring& reason) = 0;
  // AcDbDatabase::saveAs for a drawing read with readDrawingFile: written to `path` in the file
  // version it was read in. On failure the file is left as it was and `reason` says why.
  virtual Acad::ErrorStatus saveDrawingFile(AcDbDatabase& db, std::wstring_view path, std::wstring& reason) = 0;

  // acdbEntGet: an object's record as group codes, in the order a DXF file has them, starting
  // with 0 (the record name), 5 (the handle) and 330 (the owner). References to other objects
  // (330) come as handle text, as the file writes them. eNotImplementedYet for a record whose
  // body the host does not hand out; the head is filled all the same.
  virtual Acad::ErrorStatus entGet(AcDbObjectId id, ResBufList& data) const = 0;
  // AcDbObject::setField with a new field made from the code: the field is linked to the
  // object's property ("TEXT" for the text of a text, multiline text, attribute or multileader)
  // in place of an earlier one, and added to the drawing's field list. The object must not be
  // open; eNotApplicable for an object whose property cannot hold a field.
  virtual Acad::ErrorStatus setField(AcDbObjectId object, std::wstring_view property, std::wstring_view code,
                                     AcDbObjectId& fieldId) = 0;
  // A new multiline text (new AcDbMText, then appendAcDbEntity) at `location` in the block
  // `space` (a layout's space), with the drawing's text height and the given contents.
  virtual Acad::ErrorStatus appendMText(AcDbObjectId space, const AcGePoint3d& location, std::wstring_view contents,
                                        AcDbObjectId& id) = 0;

  // The table that holds an object: the object itself when it is a table, else the nearest
  // table up its owners (a cell's field, a field nested in it); null when no table holds it.
  virtual AcDbObjectId owningTable(AcDbObjectId id) const = 0;

  // A named property of an object as the host's property system reads it ("Area", "Layer",
  // "Radius", ...): eInvalidObjectId/eWasErased for a missing object, eKeyNotFound for a
  // property the object does not have.
  virtual Acad::ErrorStatus getPropertyValue(AcDbObjectId id, std::wstring_view name, AcValue& value) const = 0;

  // Start and end (one past the closing marker) of the first field code at or after `from`,
  // nested fields included; nullopt when the text holds none.
  struct FieldSpan {
    std::size_t start = 0;
    std::size_t end = 0;
  };
  virtual std::optional<FieldSpan> findField(std::wstring_view text, std::size_t from = 0) const = 0;

  // Command-line output (the host's acutPrintf).
  virtual void print(std::wstring_view text) = 0;

  // acdbRToS: a real in linear units 1-5 with precision 0-8, zeros suppressed as the working
  // drawing's DIMZIN says; false when the host refuses the arguments.
  virtual bool realToString(double value, int units, int precision, std::wstring& text) const = 0;
  // AcValue::format: the value as the host displays it with a field format string, in the
  // working drawing's units.
  virtual std::wstring formatValue(const AcValue& value, std::wstring_view format) const = 0;
  // The host's major version number (23 for the release family the plug-in serves).
  virtual int versionMajor() const = 0;
};

}  // namespace corvane::host
