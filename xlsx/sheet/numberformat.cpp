#include "xlsx/sheet/numberformat.h"

#include <cmath>

#include "xlsx/sheet/numberformatcode.h"

namespace corvane::xlsx {
namespace {

// The section a number is shown with. A section chosen because the number is negative shows it
// without its sign (the section writes its own '-' or parentheses); any other section, a
// conditional one included, gets a leading '-' for a negative number.
struct Choice {
  const Section* section = nullptr;  // none: General, or kNotShownText when notShown
  bool dropSign = false;
  bool notShown = false;
};

Choice chooseSection(const std::vector<Section>& sections, double value) {
  const Section& first = sections[0];
  if (sections.size() == 1) {
    if (first.condition.present() && !first.condition.holds(value)) return {};
    return {&first};
  }
  const Section& second = sections[1];
  const bool conditional = first.condition.present() || second.condition.present();
  if (sections.size() == 2) {
    if (!conditional) return value < 0 ? Choice{&second, true} : Choice{&first};
    if (first.condition.present() ? first.condition.holds(value) : value >= 0) return {&first};
    if (!second.condition.present() || second.condition.holds(value)) return {&second};
    return {nullptr, false, true};
  }
  // With three sections the third takes whatever the first two do not: zero, or any number
  // that fails their conditions.
  if (first.condition.present() ? first.condition.holds(value) : value > 0) return {&first};
  if (second.condition.present()) {
    if (second.condition.holds(value)) return {&second};
  } else if (value < 0) {
    return {&second, true};
  }
  return {&sections[2]};
}

}  // namespace

NumberFormat::NumberFormat() = default;

NumberFormat NumberFormat::parse(std::string_view code) {
  NumberFormat format;
  format.code_ = std::make_shared<const NumberFormatCode>(readNumberFormatCode(code));
  return format;
}

const std::string& NumberFormat::error() const noexcept {
  static const std::string none;
  return code_ ? code_->error : none;
}

bool NumberFormat::isDate() const noexcept {
  return code_ && !code_->numbers.empty() && code_->numbers[0].kind == SectionKind::DateTime;
}

std::string NumberFormat::format(double value, bool date1904) const {
  if (!code_ || code_->general) return formatGeneral(value);
  if (!std::isfinite(value)) return std::string(kNotFiniteText);
  const Choice choice = chooseSection(code_->numbers, value);
  if (choice.notShown) return std::string(kNotShownText);
  if (!choice.section) return formatGeneral(value);
  // A negative number is no date, whichever section shows it.
  if (choice.section->kind == SectionKind::DateTime && value < 0) return std::string(kNotShownText);
  std::string text;
  renderNumber(*choice.section, choice.dropSign ? -value : value, date1904, text);
  return text;
}

std::string NumberFormat::formatText(std::string_view text) const {
  if (!code_ || !code_->text) return std::string(text);
  std::string shown;
  renderText(*code_->text, text, shown);
  return shown;
}

}  // namespace corvane::xlsx
