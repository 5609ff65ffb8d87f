// The sample drawings of the shared folder, and helpers to look into what a save wrote.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/textutil.h"
#include "dxf/tags/document.h"
#include "dxf/tags/numbertext.h"
#include "dxf/tags/recordview.h"
#include "support/ezdxf.h"

namespace corvane::dxf::testing {

inline std::filesystem::path sampleFolder() { return std::filesystem::path(CORVANE_SHARED_DIR) / "samples" / "dxf"; }

inline bool haveSamples() { return std::filesystem::is_directory(sampleFolder()); }

#define CORVANE_NEED_SAMPLES()                                                      \
  do {                                                                              \
    if (!::corvane::dxf::testing::haveSamples()) {                                  \
      GTEST_SKIP() << "no sample drawings in " << CORVANE_SHARED_DIR;               \
    }                                                                               \
  } while (false)

// The tags of one record as (code, value text) pairs, blanks trimmed.
inline std::vector<std::pair<int, std::string>> recordTags(const Document& doc, RecordId id) {
  std::vector<std::pair<int, std::string>> out;
  for (const Tag& tag : doc.tags(id)) out.emplace_back(tag.code, std::string(core::trimBlanks(doc.valueText(tag))));
  return out;
}

// The first value of a code in a record at or after `from`.
inline std::optional<std::string> firstValue(const Document& doc, RecordId id, int code, std::size_t from = 1) {
  const auto tags = doc.tags(id);
  for (std::size_t i = from; i < tags.size(); ++i)
    if (tags[i].code == code) return std::string(core::trimBlanks(doc.valueText(tags[i])));
  return std::nullopt;
}

inline RecordId recordOfHandle(const Document& doc, std::uint64_t handle) {
  const auto id = doc.findHandle(handle);
  return id ? *id : kNoRecord;
}

// The records of a type, in file order.
inline std::vector<RecordId> recordsOfType(const Document& doc, std::string_view type) {
  std::vector<RecordId> out;
  for (const auto& section : doc.sections())
    for (const RecordId id : section.records)
      if (doc.recordType(id) == type) out.push_back(id);
  return out;
}

using corvane::testing::pythonWithEzdxf;
using corvane::testing::runEzdxfScript;

}  // namespace corvane::dxf::testing
