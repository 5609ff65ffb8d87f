#include "xlsx/sheet/xmlstream.h"

#include <expat.h>
#include <pugixml.hpp>

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>

namespace corvane::xlsx {
namespace {

XML_Parser handle(void* parser) { return static_cast<XML_Parser>(parser); }

// Large enough that the DOM parser's fixed costs vanish, small enough that its tree (a few
// times the batch) stays a small part of what a sheet holds.
constexpr std::size_t kBatchBytes = 256 * 1024;

// Every node type is asked for, so that what the XML parser would treat differently shows up
// as a node and sends the batch back to it.
constexpr unsigned kBatchOptions = pugi::parse_default | pugi::parse_ws_pcdata | pugi::parse_fragment |
                                   pugi::parse_embed_pcdata | pugi::parse_comments | pugi::parse_pi |
                                   pugi::parse_declaration | pugi::parse_doctype;

// A byte of the word is below 0x20 or above 0x7F, or is '&' or ']': the word needs a closer look.
bool suspicious(std::uint64_t w) {
  constexpr std::uint64_t ones = 0x0101010101010101ULL, highs = 0x8080808080808080ULL;
  const auto hasZero = [](std::uint64_t v) { return (v - ones) & ~v & highs; };
  const std::uint64_t control = (w - 0x20 * ones) & ~w & highs;
  return ((w & highs) | control | hasZero(w ^ ('&' * ones)) | hasZero(w ^ (']' * ones))) != 0;
}

// The length of the UTF-8 sequence at `p`, 0 when it is not one the XML parser takes: the
// shortest form of a character other than a surrogate, U+FFFE and U+FFFF.
std::size_t utf8Length(const unsigned char* p, std::size_t left) {
  const unsigned char c = p[0];
  const auto cont = [&](std::size_t i, unsigned char low = 0x80, unsigned char high = 0xBF) {
    return i < left && p[i] >= low && p[i] <= high;
  };
  if (c >= 0xC2 && c <= 0xDF) return cont(1) ? 2 : 0;
  if (c >= 0xE0 && c <= 0xEF) {
    const unsigned char low = c == 0xE0 ? 0xA0 : 0x80, high = c == 0xED ? 0x9F : 0xBF;
    if (!cont(1, low, high) || !cont(2)) return 0;
    if (c == 0xEF && p[1] == 0xBF && p[2] >= 0xBE) return 0;
    return 3;
  }
  if (c >= 0xF0 && c <= 0xF4) {
    const unsigned char low = c == 0xF0 ? 0x90 : 0x80, high = c == 0xF4 ? 0x8F : 0xBF;
    return cont(1, low, high) && cont(2) && cont(3) ? 4 : 0;
  }
  return 0;
}

// Whether both parsers read these bytes alike as far as characters go: no control characters,
// valid UTF-8, only the five named references, no "]]>" in text. `nonAscii` tells whether
// names need a look as well.
bool plainBytes(std::string_view bytes, bool& nonAscii) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t n = bytes.size();
  std::size_t i = 0;
  while (i < n) {
    if (i + 8 <= n) {
      std::uint64_t w;
      std::memcpy(&w, p + i, 8);
      if (!suspicious(w)) {
        i += 8;
        continue;
      }
    }
    const unsigned char c = p[i];
    if (c >= 0x80) {
      const std::size_t length = utf8Length(p + i, n - i);
      if (!length) return false;
      nonAscii = true;
      i += length;
    } else if (c == '&') {
      const std::string_view rest = bytes.substr(i + 1);
      std::size_t length = 0;
      for (std::string_view name : {"amp;", "lt;", "gt;", "quot;", "apos;"}) {
        if (rest.substr(0, name.size()) == name) length = name.size();
      }
      if (!length) return false;
      i += 1 + length;
    } else {
      if (c < 0x20 && c != '\t' && c != '\n' && c != '\r') return false;
      if (c == ']' && bytes.substr(i, 3) == "]]>") return false;
      ++i;
    }
  }
  return true;
}

// Values are a few bytes: a loop beats a call.
bool hasOpenBracket(const char* value) {
  for (; *value; ++value) {
    if (*value == '<') return true;
  }
  return false;
}

bool asciiName(const char* name) {
  for (; *name; ++name) {
    if (static_cast<unsigned char>(*name) >= 0x80) return false;
  }
  return true;
}

}  // namespace

struct XmlStream::Batches {
  enum class State { kAsked, kDeclined, kReading, kOver };
  State state = State::kAsked;
  std::vector<std::string> open;
  std::string unitEnd, contentEnd;  // "</row", "</sheetData"
  std::uint64_t at = 0;             // where in the part `pending` starts
  std::uint64_t line = 1, column = 0;
  std::string pending, work;
  std::size_t searched = 0;  // of `pending`, for the content's end
  std::vector<const char*> attributes;
  pugi::xml_document document;

  // The place in the part after `bytes`, which start at the current place.
  void advance(std::string_view bytes) {
    // memrchr: rfind goes back a byte at a time through batches that are one long line.
    if (const void* newline = bytes.empty() ? nullptr : memrchr(bytes.data(), '\n', bytes.size())) {
      line += static_cast<std::uint64_t>(std::count(bytes.begin(), bytes.end(), '\n'));
      column = 0;
      bytes.remove_prefix(static_cast<std::size_t>(static_cast<const char*>(newline) - bytes.data()) + 1);
    }
    // The XML parser counts characters, not bytes.
    column += static_cast<std::uint64_t>(
        std::count_if(bytes.begin(), bytes.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
  }
};

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
    const char* a = attributes[0];
    std::size_t i = 0;
    while (i < name.size() && a[i] == name[i]) ++i;  // stops at a's end: names hold no NUL
    if (i == name.size() && a[i] == '\0') return attributes[1];
  }
  return nullptr;
}

XmlStream::XmlStream() : parser_(newParser()) {}

XmlStream::~XmlStream() {
  if (parser_) XML_ParserFree(handle(parser_));
}

void* XmlStream::newParser() {
  XML_Parser parser = XML_ParserCreate("UTF-8");
  if (!parser) return nullptr;
  XML_SetUserData(parser, this);
  XML_SetElementHandler(parser, &XmlStream::onStart, &XmlStream::onEnd);
  XML_SetCharacterDataHandler(parser, &XmlStream::onText);
  XML_SetStartDoctypeDeclHandler(parser, &XmlStream::onDoctype);
  return parser;
}

bool XmlStream::run(const ChunkSource& source, std::string& error) {
  if (!parser_) {
    error = "out of memory for the XML parser";
    return false;
  }
  bool parsed = true;
  const bool delivered = source([&](std::string_view chunk) {
    parsed = feed(chunk, false);
    return parsed;
  });
  if (parsed && delivered) parsed = feed({}, true);
  if (parsed && delivered && message_.empty()) return true;
  if (!parser_) {
    error = "out of memory for the XML parser";
    return false;
  }
  auto line = static_cast<std::uint64_t>(XML_GetCurrentLineNumber(handle(parser_)));
  auto column = static_cast<std::uint64_t>(XML_GetCurrentColumnNumber(handle(parser_)));
  if (resumedLine_) {
    if (line <= 1) {
      column = resumedColumn_ + (column >= replayed_ ? column - replayed_ : 0);
      line = resumedLine_;
    } else {
      line += resumedLine_ - 1;
    }
  }
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

// Hands bytes to the XML parser, or to batches once they have taken over.
bool XmlStream::feed(std::string_view bytes, bool last) {
  if (batches_ && batches_->state == Batches::State::kReading) return feedBatches(bytes, last);
  if (!parser_) return false;
  do {
    const auto length = static_cast<int>(std::min<std::size_t>(bytes.size(), INT_MAX / 2));
    const bool final = last && static_cast<std::size_t>(length) == bytes.size();
    const std::uint64_t start = offset_ + fed_;
    fed_ += static_cast<std::uint64_t>(length);
    auto status = XML_Parse(handle(parser_), bytes.data(), length, final ? XML_TRUE : XML_FALSE);
    while (status == XML_STATUS_SUSPENDED) {
      if (batches_->state == Batches::State::kAsked) {
        // The parser stopped right after the start tag; what follows goes to batches.
        batches_->state = Batches::State::kReading;
        bytes.remove_prefix(static_cast<std::size_t>(batches_->at - start));
        return feedBatches(bytes, last);
      }
      status = XML_ResumeParser(handle(parser_));  // the element was empty: nothing to batch
    }
    if (status != XML_STATUS_OK) return false;
    bytes.remove_prefix(static_cast<std::size_t>(length));
  } while (!bytes.empty());
  return true;
}

void XmlStream::readContentInBatches(std::vector<std::string> open, std::string unit) {
  if (batches_ || open.empty() || replaying_) return;
  batches_ = std::make_unique<Batches>();
  Batches& b = *batches_;
  b.unitEnd = "</" + unit;
  b.contentEnd = "</" + open.back();
  b.open = std::move(open);
  b.at = eventOffset() + eventLength();
  // The start tag seldom spans lines; where it does, error places after it are off.
  b.line = static_cast<std::uint64_t>(XML_GetCurrentLineNumber(handle(parser_)));
  b.column = static_cast<std::uint64_t>(XML_GetCurrentColumnNumber(handle(parser_))) + eventLength();
  XML_StopParser(handle(parser_), XML_TRUE);
}

bool XmlStream::feedBatches(std::string_view bytes, bool last) {
  batches_->pending.append(bytes);
  return takeBatches(last);
}

namespace {

// Where the end tag `<tag` + optional blanks + '>' that starts at `at` ends; npos when the
// bytes there are not that (or not all there yet).
std::size_t endTagEnd(std::string_view text, std::size_t at, std::size_t tagLength) {
  std::size_t i = at + tagLength;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' || text[i] == '\r')) ++i;
  return i < text.size() && text[i] == '>' ? i + 1 : std::string_view::npos;
}

}  // namespace

// Reads the whole units in what is pending; ends the batches where the content ends, or where a
// batch must go to the XML parser.
bool XmlStream::takeBatches(bool last) {
  Batches& b = *batches_;
  while (true) {
    const std::string_view pending = b.pending;
    std::size_t end = std::string_view::npos;
    // memmem skips ahead by more than a byte where a plain find stops at every '<'.
    for (std::size_t from = b.searched; from < pending.size(); ++from) {
      const void* found =
          memmem(pending.data() + from, pending.size() - from, b.contentEnd.data(), b.contentEnd.size());
      if (!found) break;
      from = static_cast<std::size_t>(static_cast<const char*>(found) - pending.data());
      if (endTagEnd(pending, from, b.contentEnd.size()) != std::string_view::npos) {
        end = from;
        break;
      }
    }
    if (end != std::string_view::npos) {
      return handToParser(readBatch(pending.substr(0, end)) ? end : 0, last);
    }
    b.searched = pending.size() > b.contentEnd.size() ? pending.size() - b.contentEnd.size() : 0;
    if (last) {
      // The part ends inside the content: the XML parser says how.
      return handToParser(0, last);
    }
    if (pending.size() < kBatchBytes) return true;
    std::size_t cut = std::string_view::npos;
    for (std::size_t at = pending.rfind(b.unitEnd); at != std::string_view::npos && cut == std::string_view::npos;
         at = at ? pending.rfind(b.unitEnd, at - 1) : std::string_view::npos) {
      cut = endTagEnd(pending, at, b.unitEnd.size());
    }
    if (cut == std::string_view::npos) return true;  // one unit larger than a batch: wait for its end
    if (!readBatch(pending.substr(0, cut))) {
      return handToParser(0, last);
    }
    b.advance(pending.substr(0, cut));
    b.at += cut;
    b.pending.erase(0, cut);
    b.searched = 0;
  }
}

// The events of one batch of whole units, from the DOM parser; false, with the sheet as it was
// before the batch, when the batch must go to the XML parser instead.
bool XmlStream::readBatch(std::string_view batch) {
  Batches& b = *batches_;
  bool nonAscii = false;
  if (!plainBytes(batch, nonAscii)) return false;
  saveState();
  const auto takeBack = [&] {
    restoreState();
    message_.clear();
    return false;
  };
  b.work.assign(batch);
  BatchRead read = readBytes(b.work.data(), b.work.size());
  if (!message_.empty()) return takeBack();
  if (read == BatchRead::kRead) return true;
  restoreState();
  b.work.assign(batch);  // as it came: the handler may have changed it
  if (!b.document.load_buffer_inplace(b.work.data(), b.work.size(), kBatchOptions, pugi::encoding_utf8)) return false;
  pugi::xml_node node = b.document.first_child();
  read = readTree(node, nonAscii);
  if (!message_.empty()) return takeBack();
  if (read == BatchRead::kRead) return true;
  restoreState();
  while (node) {
    const pugi::xml_node_type type = node.type();
    if (type == pugi::node_pcdata) {
      text(node.value());
    } else if (type == pugi::node_element) {
      if (nonAscii && !asciiName(node.name())) return takeBack();
      if (!attributesOf(node, nonAscii, b.attributes)) return takeBack();
      const std::string_view name = node.name();
      startElement(name, b.attributes.data());
      const char* value = node.value();
      if (*value) text(value);  // the element's first text, kept on the element
      if (!message_.empty()) return takeBack();
      if (const pugi::xml_node child = node.first_child()) {
        node = child;
        continue;
      }
      endElement(name);
    } else {
      return takeBack();  // a comment, CDATA section, processing instruction or declaration
    }
    if (!message_.empty()) return takeBack();
    pugi::xml_node next = node.next_sibling();
    while (!next) {
      node = node.parent();
      if (node == b.document) break;
      endElement(node.name());
      if (!message_.empty()) return takeBack();
      next = node.next_sibling();
    }
    node = next;
  }
  return true;
}

XmlStream::BatchRead XmlStream::readBytes(char*, std::size_t) { return BatchRead::kOn; }
XmlStream::BatchRead XmlStream::readTree(const pugi::xml_node&, bool) { return BatchRead::kOn; }

bool XmlStream::attributesOf(const pugi::xml_node& element, bool nonAscii, std::vector<const char*>& out) {
  out.clear();
  for (pugi::xml_attribute a = element.first_attribute(); a; a = a.next_attribute()) {
    // The XML parser refuses '<' in a value and a name given twice; the DOM parser does not.
    const char* name = a.name();
    const char* value = a.value();
    if (hasOpenBracket(value) || (nonAscii && !asciiName(name))) return false;
    for (std::size_t i = 0; i < out.size(); i += 2) {
      if (std::strcmp(out[i], name) == 0) return false;
    }
    out.push_back(name);
    out.push_back(value);
  }
  out.push_back(nullptr);
  return true;
}

// The XML parser reads on from `at` in what is pending, the elements the content lies in opened
// again first with their events held back.
bool XmlStream::handToParser(std::size_t at, bool last) {
  Batches& b = *batches_;
  b.state = Batches::State::kOver;
  b.document.reset();
  b.work = std::string();
  b.advance(std::string_view(b.pending).substr(0, at));
  std::string opening;
  for (const auto& name : b.open) opening += '<' + name + '>';
  XML_ParserFree(handle(parser_));
  parser_ = newParser();
  if (!parser_) return false;
  replaying_ = true;
  const auto status = XML_Parse(handle(parser_), opening.data(), static_cast<int>(opening.size()), XML_FALSE);
  replaying_ = false;
  if (status != XML_STATUS_OK) return false;
  fed_ = opening.size();
  offset_ = b.at + at - opening.size();
  resumedLine_ = b.line;
  resumedColumn_ = b.column;
  replayed_ = opening.size();
  const std::string rest = std::move(b.pending);
  return feed(std::string_view(rest).substr(at), last);
}

void XmlStream::fail(std::string message) {
  if (!message_.empty()) return;
  message_ = std::move(message);
  if (parser_) XML_StopParser(handle(parser_), XML_FALSE);
}

std::uint64_t XmlStream::eventOffset() const {
  return offset_ + static_cast<std::uint64_t>(XML_GetCurrentByteIndex(handle(parser_)));
}

std::uint64_t XmlStream::eventLength() const {
  return static_cast<std::uint64_t>(std::max(XML_GetCurrentByteCount(handle(parser_)), 0));
}

void XmlStream::onStart(void* self, const char* name, const char** attributes) {
  auto* stream = static_cast<XmlStream*>(self);
  if (stream->message_.empty() && !stream->replaying_) stream->startElement(name, attributes);
}

void XmlStream::onEnd(void* self, const char* name) {
  auto* stream = static_cast<XmlStream*>(self);
  if (stream->batches_ && stream->batches_->state == Batches::State::kAsked) {
    stream->batches_->state = Batches::State::kDeclined;
  }
  if (stream->message_.empty() && !stream->replaying_) stream->endElement(name);
}

void XmlStream::onText(void* self, const char* text, int length) {
  auto* stream = static_cast<XmlStream*>(self);
  if (stream->message_.empty() && !stream->replaying_) {
    stream->text(std::string_view(text, static_cast<std::size_t>(length)));
  }
}

// A document type could declare entities; no part of a workbook has one.
void XmlStream::onDoctype(void* self, const char*, const char*, const char*, int) {
  static_cast<XmlStream*>(self)->fail("a document type declaration is not allowed in a workbook part");
}

}  // namespace corvane::xlsx
