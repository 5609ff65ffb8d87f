#include "dxf/tags/recordview.h"

#include "core/textutil.h"
#include "dxf/tags/numbertext.h"

namespace corvane::dxf {

std::optional<std::size_t> RecordView::handleIndex() const {
  const int code = type() == "DIMSTYLE" ? 105 : 5;
  bool inGroup = false;
  for (std::size_t i = 1; i < tags_.size(); ++i) {
    const Tag& tag = tags_[i];
    if (tag.code == 1001) break;
    if (tag.code == 102) {
      inGroup = core::trimBlanks(document_->bytes(tag)).starts_with('{');
      continue;
    }
    if (!inGroup && tag.code == code) return i;
  }
  return std::nullopt;
}

std::optional<std::uint64_t> RecordView::handle() const {
  const auto index = handleIndex();
  if (!index) return std::nullopt;
  return document_->toHandle(tags_[*index]);
}

std::optional<std::uint64_t> RecordView::owner() const {
  bool inGroup = false;
  for (std::size_t i = 1; i < tags_.size(); ++i) {
    const Tag& tag = tags_[i];
    if (tag.code == 100 || tag.code == 1001) break;
    if (tag.code == 102) {
      inGroup = core::trimBlanks(document_->bytes(tag)).starts_with('{');
      continue;
    }
    if (!inGroup && tag.code == 330) return document_->toHandle(tag);
  }
  return std::nullopt;
}

std::vector<AppDataGroup> RecordView::appDataGroups() const {
  std::vector<AppDataGroup> groups;
  const std::size_t limit = xdataBegin();
  for (std::size_t i = 1; i < limit; ++i) {
    if (tags_[i].code != 102) continue;
    const std::string_view value = core::trimBlanks(document_->bytes(tags_[i]));
    if (!value.starts_with('{')) continue;
    AppDataGroup group{value.substr(1), i, limit - 1};
    for (std::size_t j = i + 1; j < limit; ++j) {
      if (tags_[j].code == 102 && core::trimBlanks(document_->bytes(tags_[j])) == "}") {
        group.end = j;
        break;
      }
    }
    groups.push_back(group);
    i = group.end;
  }
  return groups;
}

std::optional<std::size_t> RecordView::groupMember(std::string_view name, int code) const {
  for (const auto& group : appDataGroups()) {
    if (group.name != name) continue;
    for (std::size_t i = group.begin + 1; i < group.end; ++i)
      if (tags_[i].code == code) return i;
  }
  return std::nullopt;
}

std::optional<std::uint64_t> RecordView::extensionDictionary() const {
  const auto index = groupMember("ACAD_XDICTIONARY", 360);
  if (!index) return std::nullopt;
  return document_->toHandle(tags_[*index]);
}

std::vector<std::uint64_t> RecordView::reactors() const {
  std::vector<std::uint64_t> handles;
  for (const auto& group : appDataGroups()) {
    if (group.name != "ACAD_REACTORS") continue;
    for (std::size_t i = group.begin + 1; i < group.end; ++i) {
      if (tags_[i].code != 330) continue;
      if (const auto handle = document_->toHandle(tags_[i])) handles.push_back(*handle);
    }
  }
  return handles;
}

std::size_t RecordView::xdataBegin() const {
  for (std::size_t i = 1; i < tags_.size(); ++i)
    if (tags_[i].code == 1001) return i;
  return tags_.size();
}

std::optional<TagRange> RecordView::xdata(std::string_view application) const {
  for (std::size_t i = xdataBegin(); i < tags_.size(); ++i) {
    if (tags_[i].code != 1001 || core::trimBlanks(document_->bytes(tags_[i])) != application) continue;
    std::size_t end = i + 1;
    while (end < tags_.size() && tags_[end].code != 1001) ++end;
    return TagRange{i, end};
  }
  return std::nullopt;
}

std::optional<std::size_t> RecordView::find(int code, std::size_t from) const {
  for (std::size_t i = from; i < tags_.size(); ++i)
    if (tags_[i].code == code) return i;
  return std::nullopt;
}

}  // namespace corvane::dxf
