#include "dxf/tags/recordheader.h"

#include "core/textutil.h"
#include "dxf/tags/numbertext.h"

namespace corvane::dxf {

RecordHeader scanRecordHeader(const Document& doc, RecordId id) {
  RecordHeader header;
  const auto tags = doc.tags(id);
  const int handleCode = doc.recordType(id) == "DIMSTYLE" ? 105 : 5;
  header.bodyBegin = tags.size();
  header.xdataBegin = tags.size();
  enum class Group { None, Reactors, XDictionary, Other } group = Group::None;
  std::size_t i = 1;
  for (; i < tags.size(); ++i) {
    const Tag& tag = tags[i];
    if (tag.code == 100 || tag.code == 1001) break;
    if (tag.code == 102) {
      const std::string_view value = core::trimBlanks(doc.bytes(tag));
      if (value.starts_with('{')) {
        group = value == "{ACAD_REACTORS" ? Group::Reactors
                : value == "{ACAD_XDICTIONARY" ? Group::XDictionary
                                               : Group::Other;
      } else {
        if (group == Group::Reactors) header.reactorsEnd = i;
        if (group == Group::XDictionary) header.xdictionaryEnd = i;
        group = Group::None;
      }
      continue;
    }
    if (group == Group::XDictionary && tag.code == 360 && header.xdictionaryIndex == kNoIndex) {
      header.xdictionaryIndex = i;
      header.extensionDictionary = doc.toHandle(tag).value_or(0);
    } else if (group == Group::None) {
      if (tag.code == handleCode && header.handleIndex == kNoIndex) {
        header.handleIndex = i;
        header.handle = doc.toHandle(tag);
      } else if (tag.code == 330 && header.ownerIndex == kNoIndex) {
        header.ownerIndex = i;
        header.owner = doc.toHandle(tag).value_or(0);
      }
    }
  }
  header.bodyBegin = i;
  for (; i < tags.size(); ++i) {
    if (tags[i].code == 1001) {
      header.xdataBegin = i;
      break;
    }
  }
  if (header.handleIndex == kNoIndex) {
    // Records without subclass markers (R12) may keep their handle among their data.
    for (std::size_t j = 1; j < header.xdataBegin; ++j) {
      if (tags[j].code == handleCode) {
        header.handleIndex = j;
        header.handle = doc.toHandle(tags[j]);
        break;
      }
    }
  }
  return header;
}

std::size_t findSubclass(const Document& doc, std::span<const Tag> tags, std::string_view name, std::size_t from) {
  for (std::size_t i = from; i < tags.size(); ++i) {
    if (tags[i].code == 1001) break;
    if (tags[i].code == 100 && core::trimBlanks(doc.bytes(tags[i])) == name) return i;
  }
  return kNoIndex;
}

std::size_t subclassEnd(std::span<const Tag> tags, std::size_t marker) {
  std::size_t i = marker + 1;
  while (i < tags.size() && tags[i].code != 100 && tags[i].code != 101 && tags[i].code != 1001) ++i;
  return i;
}

}  // namespace corvane::dxf
