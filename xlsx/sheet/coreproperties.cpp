#include "xlsx/sheet/coreproperties.h"

#include <charconv>
#include <cstdio>
#include <pugixml.hpp>

#include "xlsx/sheet/xmldom.h"

namespace corvane::xlsx {
namespace {

constexpr const char* kTerms = "http://purl.org/dc/terms/";
constexpr const char* kInstance = "http://www.w3.org/2001/XMLSchema-instance";

// Days since 1970-01-01 of a proleptic Gregorian date, and back.
std::int64_t daysFromCivil(std::int64_t year, unsigned month, unsigned day) {
  year -= month <= 2;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const auto yearOfEra = static_cast<unsigned>(year - era * 400);
  const unsigned dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + static_cast<std::int64_t>(dayOfEra) - 719468;
}

void civilFromDays(std::int64_t days, std::int64_t& year, unsigned& month, unsigned& day) {
  days += 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
  const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned mp = (5 * dayOfYear + 2) / 153;
  day = dayOfYear - (153 * mp + 2) / 5 + 1;
  month = mp < 10 ? mp + 3 : mp - 9;
  year = static_cast<std::int64_t>(yearOfEra) + era * 400 + (month <= 2);
}

// A fixed number of digits at `at`, moving past them.
std::optional<int> digits(std::string_view text, std::size_t& at, std::size_t count) {
  if (at + count > text.size()) return std::nullopt;
  int value = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    if (text[i] < '0' || text[i] > '9') return std::nullopt;
    value = value * 10 + (text[i] - '0');
  }
  at += count;
  return value;
}

bool expect(std::string_view text, std::size_t& at, char c) {
  if (at >= text.size() || text[at] != c) return false;
  ++at;
  return true;
}

std::string prefixOf(const pugi::xml_node& node) {
  const std::string_view name = node.name();
  const std::size_t colon = name.find(':');
  return colon == std::string_view::npos ? std::string() : std::string(name.substr(0, colon + 1));
}

// The prefix bound to `uri` on the root, declaring `wanted` for it when none is.
std::string prefixFor(pugi::xml_node root, const char* uri, const char* wanted) {
  for (pugi::xml_attribute a = root.first_attribute(); a; a = a.next_attribute()) {
    const std::string_view name = a.name();
    if (name.substr(0, 6) == "xmlns:" && std::string_view(a.value()) == uri) return std::string(name.substr(6)) + ':';
  }
  root.append_attribute((std::string("xmlns:") + wanted).c_str()).set_value(uri);
  return std::string(wanted) + ':';
}

}  // namespace

CoreProperties::CoreProperties() : document_(std::make_unique<pugi::xml_document>()) {}
CoreProperties::~CoreProperties() = default;
CoreProperties::CoreProperties(CoreProperties&&) noexcept = default;
CoreProperties& CoreProperties::operator=(CoreProperties&&) noexcept = default;

std::optional<CoreProperties> CoreProperties::parse(std::string_view xml, std::string& error) {
  CoreProperties properties;
  if (!loadPart(*properties.document_, xml, "coreProperties", "document properties", error)) return std::nullopt;
  return properties;
}

std::optional<std::int64_t> CoreProperties::parseTime(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\n')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\n')) text.remove_suffix(1);
  std::size_t at = 0;
  const auto year = digits(text, at, 4);
  if (!year || !expect(text, at, '-')) return std::nullopt;
  const auto month = digits(text, at, 2);
  if (!month || !expect(text, at, '-')) return std::nullopt;
  const auto day = digits(text, at, 2);
  if (!day || *month < 1 || *month > 12 || *day < 1 || *day > 31) return std::nullopt;
  std::int64_t seconds = daysFromCivil(*year, static_cast<unsigned>(*month), static_cast<unsigned>(*day)) * 86400;
  if (at == text.size()) return seconds;
  if (!expect(text, at, 'T')) return std::nullopt;
  const auto hour = digits(text, at, 2);
  if (!hour || !expect(text, at, ':')) return std::nullopt;
  const auto minute = digits(text, at, 2);
  if (!minute || *hour > 23 || *minute > 59) return std::nullopt;
  int second = 0;
  if (at < text.size() && text[at] == ':') {
    ++at;
    const auto parsed = digits(text, at, 2);
    if (!parsed || *parsed > 60) return std::nullopt;
    second = *parsed;
    if (at < text.size() && text[at] == '.') {
      ++at;
      const std::size_t begin = at;
      while (at < text.size() && text[at] >= '0' && text[at] <= '9') ++at;
      if (at == begin) return std::nullopt;
    }
  }
  seconds += *hour * 3600 + *minute * 60 + second;
  if (at == text.size()) return seconds;  // no zone: taken as UTC
  if (text[at] == 'Z') return at + 1 == text.size() ? std::optional<std::int64_t>(seconds) : std::nullopt;
  if (text[at] != '+' && text[at] != '-') return std::nullopt;
  const int sign = text[at++] == '+' ? 1 : -1;
  const auto zoneHour = digits(text, at, 2);
  if (!zoneHour || !expect(text, at, ':')) return std::nullopt;
  const auto zoneMinute = digits(text, at, 2);
  if (!zoneMinute || at != text.size() || *zoneHour > 14 || *zoneMinute > 59) return std::nullopt;
  return seconds - sign * (*zoneHour * 3600 + *zoneMinute * 60);
}

std::string CoreProperties::timeText(std::int64_t unixSeconds) {
  std::int64_t days = unixSeconds / 86400;
  std::int64_t rest = unixSeconds % 86400;
  if (rest < 0) {
    rest += 86400;
    --days;
  }
  std::int64_t year = 0;
  unsigned month = 0, day = 0;
  civilFromDays(days, year, month, day);
  char text[48];
  std::snprintf(text, sizeof text, "%04lld-%02u-%02uT%02d:%02d:%02dZ", static_cast<long long>(year), month, day,
                static_cast<int>(rest / 3600), static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60));
  return text;
}

std::optional<std::int64_t> CoreProperties::modifiedUnixSeconds() const {
  const pugi::xml_node modified = childNamed(document_->document_element(), "modified");
  if (!modified) return std::nullopt;
  return parseTime(modified.text().get());
}

void CoreProperties::setModified(std::int64_t unixSeconds, std::string_view by) {
  pugi::xml_node root = document_->document_element();
  pugi::xml_node modified = childNamed(root, "modified");
  if (!modified) {
    modified = root.append_child((prefixFor(root, kTerms, "dcterms") + "modified").c_str());
  }
  const std::string instance = prefixFor(root, kInstance, "xsi");
  const std::string terms = prefixFor(root, kTerms, "dcterms");
  pugi::xml_attribute type = modified.attribute((instance + "type").c_str());
  if (!type) type = modified.append_attribute((instance + "type").c_str());
  type.set_value((terms + "W3CDTF").c_str());
  modified.text().set(timeText(unixSeconds).c_str());
  pugi::xml_node author = childNamed(root, "lastModifiedBy");
  if (!author) author = root.append_child((prefixOf(root) + "lastModifiedBy").c_str());
  author.text().set(std::string(by).c_str());
}

std::string CoreProperties::serialize() const {
  struct Writer : pugi::xml_writer {
    std::string out;
    void write(const void* data, size_t size) override { out.append(static_cast<const char*>(data), size); }
  } writer;
  document_->save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n" + writer.out;
}

}  // namespace corvane::xlsx
