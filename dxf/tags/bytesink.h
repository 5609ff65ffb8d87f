// Where written DXF bytes go: a file being saved, a string, or a test's failing writer.
#pragma once

#include <string>
#include <string_view>

namespace corvane::dxf {

class ByteSink {
 public:
  virtual ~ByteSink() = default;
  // False when the bytes could not be taken; error() then says why.
  virtual bool write(std::string_view bytes) = 0;
  virtual std::string error() const { return "write failed"; }
};

class StringSink : public ByteSink {
 public:
  bool write(std::string_view bytes) override {
    data.append(bytes);
    return true;
  }
  std::string data;
};

}  // namespace corvane::dxf
