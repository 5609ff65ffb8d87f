// A part's XML read as a stream of events, for the parts that can be large (sheets, shared
// strings): the bytes come in chunks and are never held whole.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace pugi {
class xml_node;
}

namespace corvane::xlsx {

// Calls its sink with consecutive chunks of a part, stopping early when the sink returns
// false. Returns false when it could not deliver the bytes (a damaged zip entry, say).
using ChunkSink = std::function<bool(std::string_view)>;
using ChunkSource = std::function<bool(const ChunkSink&)>;

// A source over bytes already in memory, in chunks of the given size.
ChunkSource chunksOf(std::string_view bytes, std::size_t chunkSize = 1 << 16);

class XmlStream {
 public:
  XmlStream();
  virtual ~XmlStream();
  XmlStream(const XmlStream&) = delete;
  XmlStream& operator=(const XmlStream&) = delete;

  // True when the whole part was read and well-formed and no handler failed; otherwise
  // `error` says what went wrong and where.
  bool run(const ChunkSource& source, std::string& error);

 protected:
  // Names as written, prefix included; attributes as name/value pairs ending in nullptr.
  virtual void startElement(std::string_view name, const char* const* attributes) = 0;
  virtual void endElement(std::string_view name) = 0;
  virtual void text(std::string_view text) = 0;

  // Ends the run with this message.
  void fail(std::string message);
  bool failed() const noexcept { return !message_.empty(); }
  // Where the event being handled starts in the part and how many bytes it spans; the count
  // is 0 for the end of an element written as <a/>. Only for events of the XML parser, not of
  // batches (below).
  std::uint64_t eventOffset() const;
  std::uint64_t eventLength() const;

  // From the start handler of a large element: its content, a run of `unit` elements, is read
  // a batch of whole units at a time, several times faster: by the handler from the bytes or
  // from a DOM parser's tree (readBytes, readTree), or by a DOM parser with the same events. `open` names the elements from the root down to this one, as written. A batch that
  // holds anything the DOM parser might read otherwise than the XML parser (comments, CDATA,
  // references other than the five named ones, doubtful bytes...) goes to the XML parser, and
  // so does the rest of the part; so does a batch whose events made a handler fail, so that the
  // error comes with its place. Only events of elements inside the content come from batches.
  void readContentInBatches(std::vector<std::string> open, std::string unit);
  // Before each batch, and to take back the events of a batch handed to the XML parser.
  virtual void saveState() {}
  virtual void restoreState() {}

  // A handler may read a batch itself: first from its bytes, before any DOM parser sees them,
  // then straight from the DOM parser's tree (from `first`, its first node, on through its
  // siblings), and last through events. kRead when it did; kOn leaves the batch to the next
  // way, what was read of it taken back first. A failure (fail()) sends the batch to the XML
  // parser as a failing event would.
  //
  // The bytes are those the batches' checks passed: well-formed UTF-8 without control
  // characters, with no references but the five named ones, and no "]]>"; the handler may
  // change them in place. `nonAscii`: the batch has bytes above 0x7F.
  enum class BatchRead { kRead, kOn };
  virtual BatchRead readBytes(char* bytes, std::size_t size);
  virtual BatchRead readTree(const pugi::xml_node& first, bool nonAscii);
  // The element's attributes as the XML parser would give them, name/value pairs ending in
  // nullptr; false when the XML parser would read them otherwise (a '<' in a value, a name
  // given twice, a name that is not ASCII when `nonAscii`), and the batch must go to it.
  static bool attributesOf(const pugi::xml_node& element, bool nonAscii, std::vector<const char*>& out);

 private:
  struct Batches;
  static void onStart(void* self, const char* name, const char** attributes);
  static void onEnd(void* self, const char* name);
  static void onText(void* self, const char* text, int length);
  static void onDoctype(void* self, const char*, const char*, const char*, int);

  void* newParser();
  bool feed(std::string_view bytes, bool last);
  bool feedBatches(std::string_view bytes, bool last);
  bool takeBatches(bool last);
  bool readBatch(std::string_view batch);
  bool handToParser(std::size_t at, bool last);

  void* parser_;
  std::string message_;
  std::uint64_t fed_ = 0;     // bytes given to the current parser, its replayed opening included
  std::uint64_t offset_ = 0;  // where in the part the current parser's byte 0 would be
  // Where the current parser took over from batches, for the places errors give: its line 1
  // starts at this line and column of the part, after `replayed_` bytes it was given again.
  std::uint64_t resumedLine_ = 0, resumedColumn_ = 0, replayed_ = 0;
  bool replaying_ = false;
  std::unique_ptr<Batches> batches_;
};

// The part of a qualified name after its prefix: "x:c" -> "c".
inline std::string_view localName(std::string_view name) {
  const std::size_t colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

// The value of an attribute, nullptr when absent.
const char* findAttribute(const char* const* attributes, std::string_view name);

}  // namespace corvane::xlsx
