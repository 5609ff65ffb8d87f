#include "dxf/model/fieldrecord.h"

#include "core/textutil.h"
#include "dxf/tags/numbertext.h"
#include "dxf/tags/recordedit.h"
#include "dxf/tags/recordview.h"
#include "dxf/tags/textpieces.h"
#include "headless/db/database.h"
#include "headless/db/field.h"

namespace corvane::dxf {

namespace {

constexpr std::wstring_view kValueKey = L"ACFD_FIELD_VALUE";

int integerOf(const Document& doc, const Tag& tag) { return static_cast<int>(doc.toInteger(tag).value_or(0)); }

// Texts count as the host counts them: in UTF-16 code units.
std::int64_t hostLength(std::wstring_view text) {
  std::int64_t length = 0;
  for (const wchar_t c : text) length += static_cast<std::uint32_t>(c) >= 0x10000 ? 2 : 1;
  return length;
}

void copyTags(std::vector<NewTag>& out, const Document& doc, std::span<const Tag> tags) {
  for (const Tag& tag : tags) out.push_back({tag.code, doc.valueText(tag)});
}

}  // namespace

FieldRecord readFieldRecord(const Document& doc, RecordId id, const headless::Database& db) {
  FieldRecord record;
  const RecordView view(doc, id);
  const auto tags = view.tags();
  const std::size_t end = view.xdataBegin();
  std::size_t i = 1;
  while (i < end && !(tags[i].code == 100 && core::trimBlanks(doc.bytes(tags[i])) == "AcDbField")) ++i;
  if (i == end) {
    // No subclass marker: the field's tags start after the common ones.
    i = 1;
    while (i < end && (tags[i].code == 5 || tags[i].code == 102 || tags[i].code == 330 || tags[i].code == 360)) {
      if (tags[i].code == 102 && core::trimBlanks(doc.bytes(tags[i])).starts_with('{')) {
        while (i < end && !(tags[i].code == 102 && core::trimBlanks(doc.bytes(tags[i])) == "}")) ++i;
      }
      ++i;
    }
    record.bodyBegin = i;
  } else {
    record.bodyBegin = ++i;
  }
  record.bodyEnd = end;

  bool haveId = false;
  std::string code;
  std::wstring display;
  while (i < end) {
    const Tag& tag = tags[i];
    switch (tag.code) {
      case 1:
        if (!haveId) record.evaluatorId = doc.text(tag);
        haveId = true;
        ++i;
        break;
      case 2:
      case 3:
        doc.appendValueText(tag, code);
        ++i;
        break;
      case 360:
      case 331: {
        if (const auto handle = doc.toHandle(tag)) (tag.code == 360 ? record.children : record.objects).push_back(*handle);
        ++i;
        break;
      }
      case 4: record.format = doc.text(tag); ++i; break;
      case 91: record.evaluationOption = integerOf(doc, tag); ++i; break;
      case 92: record.filingOption = integerOf(doc, tag); ++i; break;
      case 94: record.state = integerOf(doc, tag); ++i; break;
      case 95: record.status = integerOf(doc, tag); ++i; break;
      case 96: record.errorCode = integerOf(doc, tag); ++i; break;
      case 300: record.errorMessage = doc.hostText(tag); ++i; break;
      case 6:
      case 7: {
        const std::wstring key = doc.text(tag);
        auto block = readValueBlock(doc, tags.first(end), i + 1, db);
        if (!block) {
          ++i;
          break;
        }
        i = block->end;
        if (tag.code == 7) record.value = std::move(*block);
        else record.data.push_back({key, std::move(*block)});
        break;
      }
      case 301:
      case 9: display += doc.text(tag); ++i; break;
      default: ++i; break;  // counts (90, 93, 97, 98) follow from the lists
    }
  }
  // Escapes are decoded once the pieces are joined: a piece may end in the middle of one.
  record.code = decodeCarets(doc.codec().decode(code));
  record.displayText = decodeCarets(display);
  return record;
}

std::vector<NewTag> fieldBodyTags(const headless::Field& field, const Document& doc, const headless::Database& db,
                                  RecordId original) {
  std::optional<FieldRecord> before;
  std::span<const Tag> beforeTags;
  if (original != kNoRecord) {
    before = readFieldRecord(doc, original, db);
    beforeTags = doc.tags(original);
  }
  const bool longForm = doc.isUnicodeVersion();
  const auto handleOf = [&](host::AcDbObjectId id) { return db.objects().handle(id).value(); };

  std::vector<NewTag> out;
  out.push_back(textTag(doc, 1, field.evaluatorId()));
  appendPieces(out, doc, field.ownCode(), 3, 2);
  out.push_back(NewTag::integer(90, static_cast<std::int64_t>(field.children().size())));
  for (const auto child : field.children()) out.push_back(NewTag::handle(360, handleOf(child)));
  out.push_back(NewTag::integer(97, static_cast<std::int64_t>(field.objectIds().size())));
  for (const auto object : field.objectIds()) out.push_back(NewTag::handle(331, handleOf(object)));
  if (!longForm) out.push_back(textTag(doc, 4, field.getFormat()));
  int errorCode = 0;
  std::wstring message;
  const int status = field.evaluationStatus(&errorCode, &message);
  out.push_back(NewTag::integer(91, field.evaluationOption()));
  out.push_back(NewTag::integer(92, before ? before->filingOption : 0));
  out.push_back(NewTag::integer(94, field.state()));
  out.push_back(NewTag::integer(95, status));
  out.push_back(NewTag::integer(96, errorCode));
  out.push_back(escapedTextTag(doc, 300, message));

  // A value that did not change keeps its block's tags; otherwise the block is written anew
  // with the flags and unit it had.
  auto block = [&](const ValueBlock* old, const host::AcValue& value, std::wstring formatted) {
    if (old && old->value == value) {
      copyTags(out, doc, beforeTags.subspan(old->begin, old->end - old->begin));
      return;
    }
    ValueStyle style;
    if (old) {
      style.flags = old->flags;
      style.unitType = old->unitType;
    }
    style.formatted = std::move(formatted);
    appendValueBlock(out, doc, value, style, longForm, db);
  };

  const auto& data = field.dataSet();
  out.push_back(NewTag::integer(93, static_cast<std::int64_t>(data.size())));
  for (const auto& [key, value] : data) {
    const ValueBlock* old = nullptr;
    if (before) {
      for (const auto& entry : before->data)
        if (entry.key == key) old = &entry.block;
    }
    out.push_back(textTag(doc, 6, key));
    block(old, value, L"");
  }
  host::AcValue value;
  field.getValue(value);
  out.push_back(textTag(doc, 7, kValueKey));
  const std::wstring display = field.getDisplayText();
  std::wstring formatted;
  if (!value.isEmpty() && value.dataType() != host::AcValue::kString) formatted = display;
  block(before && before->value ? &*before->value : nullptr, value, std::move(formatted));
  out.push_back(escapedTextTag(doc, 301, display));
  out.push_back(NewTag::integer(98, hostLength(display)));
  return out;
}

}  // namespace corvane::dxf
