#include "xlsx/sheet/xmlstream.h"

#include <expat.h>

#include <algorithm>
#include <climits>

namespace corvane::xlsx {
namespace {

XML_Parser handle(void* parser) { return static_cast<XML_Parser>(parser); }

}  // namespace

ChunkSource chunksOf(std::string_view bytes, std::size_t chunkSize) {
  chunkSize = std::max<std::size_t>(chunkSize, 1);
  return [bytes, chunkSize](const ChunkSink& sink) {
    for (std::size_t at = 0; at < bytes.size(); at += chunkSize) {
      if (!sink(bytes.substr(at, chunkSize))) break;
    }
    return true;
  };
}

const char* findAttribute(const char* const* attributes, std::string_view name) {
  for (; *attributes; attributes += 2) {
    if (name == attributes[0]) return attributes[1];
  }
  return nullptr;
}

XmlStream::XmlStream() : parser_(XML_ParserCreate("UTF-8")) {
  if (!parser_) return;
  XML_SetUserData(handle(parser_), this);
  XML_SetElementHandler(handle(parser_), &XmlStream::onStart, &XmlStream::onEnd);
  XML_SetCharacterDataHandler(handle(parser_), &XmlStream::onText);
  XML_SetStartDoctypeDeclHandler(handle(parser_), &XmlStream::onDoctype);
}

XmlStream::~XmlStream() {
  if (parser_) XML_ParserFree(handle(parser_));
}

bool XmlStream::run(const ChunkSource& source, std::string& error) {
  if (!parser_) {
    error = "out of memory for the XML parser";
    return false;
  }
  bool parsed = true;
  const bool delivered = source([&](std::string_view chunk) {
    while (parsed && !chunk.empty()) {
      const auto length = static_cast<int>(std::min<std::size_t>(chunk.size(), INT_MAX / 2));
      parsed = XML_Parse(handle(parser_), chunk.data(), length, XML_FALSE) == XML_STATUS_OK;
      chunk.remove_prefix(static_cast<std::size_t>(length));
    }
    return parsed;
  });
  if (parsed && delivered) parsed = XML_Parse(handle(parser_), "", 0, XML_TRUE) == XML_STATUS_OK;
  if (parsed && delivered && message_.empty()) return true;
  const auto line = XML_GetCurrentLineNumber(handle(parser_));
  const auto column = XML_GetCurrentColumnNumber(handle(parser_));
  if (!message_.empty()) {
    error = message_;
  } else if (!parsed) {
    error = XML_ErrorString(XML_GetErrorCode(handle(parser_)));
  } else {
    error = "the part could not be read";
    return false;
  }
  error += " (line " + std::to_string(line) + ", column " + std::to_string(column) + ")";
  return false;
}

void XmlStream::fail(std::string message) {
  if (!message_.empty()) return;
  message_ = std::move(message);
  XML_StopParser(handle(parser_), XML_FALSE);
}

std::uint64_t XmlStream::eventOffset() const {
  return static_cast<std::uint64_t>(XML_GetCurrentByteIndex(handle(parser_)));
}

std::uint64_t XmlStream::eventLength() const {
  return static_cast<std::uint64_t>(std::max(XML_GetCurrentByteCount(handle(parser_)), 0));
}

void XmlStream::onStart(void* self, const char* name, const char** attributes) {
  auto* stream = static_cast<XmlStream*>(self);
  if (stream->message_.empty()) stream->startElement(name, attributes);
}

void XmlStream::onEnd(void* self, const char* name) {
  auto* stream = static_cast<XmlStream*>(self);
  if (stream->message_.empty()) stream->endElement(name);
}

void XmlStream::onText(void* self, const char* text, int length) {
  auto* stream = static_cast<XmlStream*>(self);
  if (stream->message_.empty()) stream->text(std::string_view(text, static_cast<std::size_t>(length)));
}

// A document type could declare entities; no part of a workbook has one.
void XmlStream::onDoctype(void* self, const char*, const char*, const char*, int) {
  static_cast<XmlStream*>(self)->fail("a document type declaration is not allowed in a workbook part");
}

}  // namespace corvane::xlsx
