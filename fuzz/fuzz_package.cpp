// Workbook packages from arbitrary bytes: opening and reading must neither crash nor take
// long, a failure always says why, the relationships and content types that parse must read
// back the same, and a package saved with one part written must reopen with the same parts
// holding the same bytes.
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

#include "xlsx/package/contenttypes.h"
#include "xlsx/package/package.h"
#include "xlsx/package/relationships.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using corvane::xlsx::ContentTypes;
using corvane::xlsx::Package;
using corvane::xlsx::Relationships;

void checkXml(std::string_view name, const std::string& bytes) {
  std::string error;
  if (name.ends_with(".rels")) {
    const auto rels = Relationships::parse(bytes, error);
    if (!rels) return;
    const auto again = Relationships::parse(rels->serialize(), error);
    if (!again || again->all().size() != rels->all().size() || again->serialize() != rels->serialize()) std::abort();
    for (const auto& item : rels->all()) {
      const auto part = Relationships::resolve(name, item.target);
      if (part && (part->empty() || part->starts_with('/'))) std::abort();
    }
  } else if (name == "[Content_Types].xml") {
    const auto types = ContentTypes::parse(bytes, error);
    if (!types) return;
    const auto again = ContentTypes::parse(types->serialize(), error);
    if (!again || again->serialize() != types->serialize()) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string error;
  auto package = Package::fromBytes(std::string(reinterpret_cast<const char*>(data), size), error);
  if (!package) {
    if (error.empty()) std::abort();
    return 0;
  }
  std::size_t budget = 1 << 20;  // a small archive may still inflate a lot
  std::map<std::string, std::string> readable;
  for (const auto& name : package->partNames()) {
    std::string bytes;
    const bool read = package->read(
        name,
        [&](std::string_view chunk) {
          if (chunk.size() > budget) return false;
          budget -= chunk.size();
          bytes.append(chunk);
          return true;
        },
        error);
    if (!read && error.empty()) std::abort();
    if (!read) continue;
    checkXml(name, bytes);
    readable.emplace(name, std::move(bytes));
  }

  package->write("[Content_Types].xml", "<Types/>");
  readable["[Content_Types].xml"] = "<Types/>";
  const auto saved = package->save(error);
  if (!saved) {
    if (error.empty()) std::abort();
    return 0;
  }
  const auto again = Package::fromBytes(*saved, error);
  if (!again || again->partNames() != package->partNames()) std::abort();
  for (const auto& [name, bytes] : readable) {
    const auto reread = again->read(name, error);
    if (!reread || *reread != bytes) std::abort();
  }
  return 0;
}
