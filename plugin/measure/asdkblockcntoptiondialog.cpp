#include "plugin/measure/asdkblockcntoptiondialog.h"

#include <cstdint>

#include "core/printf.h"
#include "core/textutil.h"
#include "host/acedprompts.h"
#include "plugin/support/corvanesettings.h"

namespace corvane {

namespace {

constexpr wchar_t kConditionSeparator = L'\u00A6';  // broken bar

// A corner kept as "x y z"; the origin when the text is not three numbers.
host::AcGePoint3d readCorner(const std::wstring& text) {
  std::vector<std::wstring> parts;
  for (const std::wstring& part : core::split(core::trim(text), L' ')) {
    if (!part.empty()) parts.push_back(part);
  }
  double xyz[3] = {};
  if (parts.size() != 3) return {};
  for (std::size_t i = 0; i < 3; ++i) {
    if (!CDefineWindowPointsDialog::readCoordinate(parts[i], xyz[i])) return {};
  }
  return {xyz[0], xyz[1], xyz[2]};
}

std::wstring cornerSetting(const host::AcGePoint3d& p) {
  return core::format(L"%s %s %s", coordinateText(p.x), coordinateText(p.y), coordinateText(p.z));
}

std::wstring joined(const std::vector<std::wstring>& entries, wchar_t separator) {
  std::wstring text;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (i > 0) text += separator;
    text += entries[i];
  }
  return text;
}

}  // namespace

bool AsdkBlockCntOptionDialog::wildcardMatches(std::wstring_view pattern, std::wstring_view name) noexcept {
  // Backtracking over the last "*" only: linear enough for names.
  std::size_t p = 0, n = 0, star = std::wstring_view::npos, resume = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == L'*') {
      star = p++;
      resume = n;
    } else if (p < pattern.size() &&
               (pattern[p] == L'?' || core::toUpperChar(pattern[p]) == core::toUpperChar(name[n]))) {
      ++p;
      ++n;
    } else if (star != std::wstring_view::npos) {
      p = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == L'*') ++p;
  return p == pattern.size();
}

void AsdkBlockCntOptionDialog::onInitDialog() {
  source = ComboList({{L"Entire Drawing", kEntireDrawing}, {L"Window", kWindow}});
  source.select(0);
  if (!source.selectItem(registry_.getInt(settings::kCorvane, settings::kBlockSource, kEntireDrawing)))
    source.select(0);
  blocks.clear();
  for (std::wstring& name : host_.blockNames()) blocks.push_back({std::move(name), false});
  wildcard.clear();
  includeNested = registry_.get(settings::kIncNestedBlock) != 0;
  filter = {};
  additional = {};
  first_ = readCorner(registry_.get(settings::kBlockCountSelWnd1Pt));
  second_ = readCorner(registry_.get(settings::kBlockCountSelWnd2Pt));
  typed_ = false;
  texts_ = pickedTexts();
}

void AsdkBlockCntOptionDialog::onSourceChanged() {
  registry_.writeInt(settings::kCorvane, settings::kBlockSource, source.selectedItem().value_or(kEntireDrawing));
}

void AsdkBlockCntOptionDialog::onNestedChanged() { registry_.write(settings::kIncNestedBlock, includeNested ? 1 : 0); }

void AsdkBlockCntOptionDialog::onCheckAll() {
  for (CheckItem& item : blocks) {
    if (wildcard.empty() || wildcardMatches(wildcard, item.name)) item.checked = true;
  }
}

void AsdkBlockCntOptionDialog::onUncheckAll() {
  for (CheckItem& item : blocks) {
    if (wildcard.empty() || wildcardMatches(wildcard, item.name)) item.checked = false;
  }
}

CDefineWindowPointsDialog::Texts AsdkBlockCntOptionDialog::pickedTexts() const {
  return {coordinateText(first_.x),  coordinateText(first_.y),  coordinateText(first_.z),
          coordinateText(second_.x), coordinateText(second_.y), coordinateText(second_.z)};
}

int AsdkBlockCntOptionDialog::onPickWindow() {
  host::AcGePoint3d first, second;
  int result = host_.getPoint(kFirstCornerPrompt, first);
  if (result == host::RTNORM) result = host_.getCorner(first, kOtherCornerPrompt, second);
  if (result != host::RTNORM) return result;
  first_ = first;
  second_ = second;
  typed_ = false;
  texts_ = pickedTexts();
  registry_.write(settings::kBlockCountSelWnd1Pt, cornerSetting(first_));
  registry_.write(settings::kBlockCountSelWnd2Pt, cornerSetting(second_));
  return result;
}

bool AsdkBlockCntOptionDialog::onDefineWindowPoints(const ShowModal<CDefineWindowPointsDialog>& show) {
  CDefineWindowPointsDialog dialog(host_, registry_);
  dialog.onInitDialog(pickedTexts());
  if (!show(dialog)) return false;
  texts_ = dialog.result();
  const auto& v = dialog.values();
  first_ = {v[0], v[1], v[2]};
  second_ = {v[3], v[4], v[5]};
  typed_ = true;
  return true;
}

bool AsdkBlockCntOptionDialog::onFilter(const ShowModal<CBlockFilterDialog>& show) {
  CBlockFilterDialog dialog(host_);
  dialog.onInitDialog(filter);
  if (!show(dialog)) return false;
  filter = dialog.result();
  return true;
}

bool AsdkBlockCntOptionDialog::onAdditionalFormat(const ShowModal<CAdditionalFormatDialog>& show) {
  const PreviewResult count = host_.preview(fieldCode());
  const auto whole = static_cast<std::int32_t>(count.status == 2 ? count.value : 0.0);
  CAdditionalFormatDialog dialog(host_,
                                 {L"", L"", -1, CAdditionalFormatDialog::kInteger, host::AcValue(whole), additional});
  dialog.onInitDialog();
  if (!show(dialog)) return false;
  additional.takeChosen(dialog.result());
  return true;
}

std::wstring AsdkBlockCntOptionDialog::statusText() const {
  if (!isWindow()) return {};
  return typed_ ? kDefineWindowPoints : kSelectWindow;
}

std::wstring AsdkBlockCntOptionDialog::firstPointText() const {
  return core::format(L"(%s, %s)", texts_[0], texts_[1]);
}

std::wstring AsdkBlockCntOptionDialog::secondPointText() const {
  return core::format(L"(%s, %s)", texts_[3], texts_[4]);
}

std::wstring AsdkBlockCntOptionDialog::formatString() const { return additional.build(host_.hostVersion()); }

std::wstring AsdkBlockCntOptionDialog::fieldCode() const {
  const std::vector<std::wstring> names = checkedNames(blocks);
  if (names.empty()) return L"%<\\AcBlockCount >%";
  std::wstring code = core::format(L"%%<\\AcBlockCount \"%s\"", joined(names, L';'));
  if (!filter.selectedLayers.empty()) code += core::format(L" \\layer \"%s\"", joined(filter.selectedLayers, L';'));
  if (filter.attribute) {
    std::vector<std::wstring> ops, tags, values;
    for (const CBlockFilterDialog::Condition& condition : filter.conditions) {
      if (condition.tag.empty()) continue;
      ops.push_back(condition.op);
      tags.push_back(condition.tag);
      values.push_back(condition.value);
    }
    if (!tags.empty()) {
      code += core::format(L" \\op \"%s\" \\tag \"%s\" \\value \"%s\"", joined(ops, kConditionSeparator),
                           joined(tags, kConditionSeparator), joined(values, kConditionSeparator));
    }
  }
  if (includeNested) code += L" \\nested";
  if (isWindow()) {
    const std::wstring space = host_.currentSpaceHandle();
    if (typed_) {
      code += core::format(L" \\Space(%s) \\Window(%s,%s,%s:%s,%s,%s)", space, texts_[0], texts_[1], texts_[2],
                           texts_[3], texts_[4], texts_[5]);
    } else {
      code += core::format(L" \\Space(%s) \\Window(%g,%g,%g:%g,%g,%g)", space, first_.x, first_.y, first_.z, second_.x,
                           second_.y, second_.z);
    }
  }
  const std::wstring format = formatString();
  if (!format.empty()) code += core::format(L" \\f \"%s\"", format);
  return code + L">%";
}

}  // namespace corvane
