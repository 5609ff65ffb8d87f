// docProps/core.xml: who made and last saved the document and when. Only the save time and
// its author are changed; the rest of the part is written back as read.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace pugi {
class xml_document;
}

namespace corvane::xlsx {

class CoreProperties {
 public:
  ~CoreProperties();
  CoreProperties(CoreProperties&&) noexcept;
  CoreProperties& operator=(CoreProperties&&) noexcept;

  // nullopt, with the reason in `error`, for XML that is not a core properties part.
  static std::optional<CoreProperties> parse(std::string_view xml, std::string& error);

  // dcterms:modified as seconds since 1970 UTC; nullopt when absent or not a W3C date-time
  // (a zone offset is applied; fractions of a second are dropped).
  std::optional<std::int64_t> modifiedUnixSeconds() const;
  // Sets dcterms:modified (in UTC) and cp:lastModifiedBy, adding them when missing.
  void setModified(std::int64_t unixSeconds, std::string_view by);
  std::string serialize() const;

  // "2026-11-21T04:20:41Z"
  static std::string timeText(std::int64_t unixSeconds);
  static std::optional<std::int64_t> parseTime(std::string_view text);

 private:
  CoreProperties();
  std::unique_ptr<pugi::xml_document> document_;
};

}  // namespace corvane::xlsx
