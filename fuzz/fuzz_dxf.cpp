// The DXF reader on arbitrary bytes: it either builds a document or says what is wrong, and a
// document it builds writes back as the same bytes and survives a trip through the other
// format, also once its records have let go of their tags.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "dxf/tags/document.h"
#include "dxf/tags/recordview.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane::dxf;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  const ReadResult read = Document::read(bytes);
  if (!read.document) {
    if (read.error.empty()) std::abort();  // a failure must say why
    return 0;
  }
  Document& doc = *read.document;
  StringSink same;
  if (!doc.write(same).ok() || same.data != bytes) std::abort();

  for (const auto& section : doc.sections()) {
    for (RecordId id : section.records) {
      const RecordView record(doc, id);
      (void)record.handle();
      (void)record.owner();
      (void)record.appDataGroups();
      (void)record.xdata("ACAD");
      for (const Tag& tag : doc.tags(id)) (void)doc.text(tag);
    }
  }

  const FileFormat other = doc.format() == FileFormat::Ascii ? FileFormat::Binary : FileFormat::Ascii;
  StringSink converted;
  // Some values cannot cross (a line break in binary text, oversized binary data); the
  // writer must then say so rather than produce a broken file.
  const Status status = doc.write(converted, other);
  if (!status.ok()) {
    if (status.message().empty()) std::abort();
    return 0;
  }
  const ReadResult again = Document::read(converted.data);
  if (!again.document) std::abort();

  // Records let go of their tags read them again exactly as the reader read them.
  for (const RecordId id : doc.fileOrder()) doc.release(id);
  StringSink sameAgain;
  StringSink convertedAgain;
  if (!doc.write(sameAgain).ok() || sameAgain.data != bytes) std::abort();
  if (!doc.write(convertedAgain, other).ok() || convertedAgain.data != converted.data) std::abort();
  return 0;
}
