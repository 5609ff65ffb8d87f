#include "xlsx/sheet/sharedstrings.h"

#include "xlsx/sheet/xmltext.h"

namespace corvane::xlsx {

class SharedStringsReader : public XmlStream {
 public:
  explicit SharedStringsReader(SharedStrings& table) : table_(table) {}

 protected:
  void startElement(std::string_view name, const char* const*) override {
    const std::string_view local = localName(name);
    ++depth_;
    if (depth_ == 1) {
      if (local != "sst") fail("the part is not a shared string table: its root is <" + std::string(name) + ">");
    } else if (depth_ == 2 && local == "si") {
      inItem_ = true;
      item_.clear();
    } else if (inItem_ && local == "rPh") {
      phoneticDepth_ = depth_;
    } else if (inItem_ && local == "t" && phoneticDepth_ == 0) {
      inText_ = true;
    }
  }
  void endElement(std::string_view name) override {
    const std::string_view local = localName(name);
    if (inText_ && local == "t") {
      inText_ = false;
    } else if (phoneticDepth_ == depth_) {
      phoneticDepth_ = 0;
    } else if (depth_ == 2 && inItem_) {
      inItem_ = false;
      appendDecodedXstring(table_.text_, item_);
      table_.ends_.push_back(table_.text_.size());
    }
    --depth_;
  }
  void text(std::string_view text) override {
    if (inText_) item_.append(text);
  }

 private:
  SharedStrings& table_;
  std::string item_;
  int depth_ = 0;
  int phoneticDepth_ = 0;
  bool inItem_ = false;
  bool inText_ = false;
};

std::optional<SharedStrings> SharedStrings::parse(const ChunkSource& source, std::string& error) {
  SharedStrings table;
  SharedStringsReader reader(table);
  if (!reader.run(source, error)) {
    error = "shared strings: " + error;
    return std::nullopt;
  }
  table.text_.shrink_to_fit();
  table.ends_.shrink_to_fit();
  return table;
}

std::string_view SharedStrings::at(std::size_t index) const noexcept {
  if (index >= ends_.size()) return {};
  const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
  return std::string_view(text_).substr(begin, ends_[index] - begin);
}

}  // namespace corvane::xlsx
