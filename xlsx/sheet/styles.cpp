#include "xlsx/sheet/styles.h"

#include <array>

#include "xlsx/sheet/xmldom.h"

namespace corvane::xlsx {

std::string_view builtinFormatCode(int id) {
  static constexpr std::array<std::string_view, 50> kCodes = {
      "General",
      "0",
      "0.00",
      "#,##0",
      "#,##0.00",
      "$#,##0_);($#,##0)",
      "$#,##0_);[Red]($#,##0)",
      "$#,##0.00_);($#,##0.00)",
      "$#,##0.00_);[Red]($#,##0.00)",
      "0%",
      "0.00%",
      "0.00E+00",
      "# ?/?",
      "# ?\?/?\?",
      "m/d/yyyy",
      "d-mmm-yy",
      "d-mmm",
      "mmm-yy",
      "h:mm AM/PM",
      "h:mm:ss AM/PM",
      "h:mm",
      "h:mm:ss",
      "m/d/yyyy h:mm",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",
      "",  // 23-36: locale-specific
      "#,##0_);(#,##0)",
      "#,##0_);[Red](#,##0)",
      "#,##0.00_);(#,##0.00)",
      "#,##0.00_);[Red](#,##0.00)",
      "_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)",
      "_(\"$\"* #,##0_);_(\"$\"* (#,##0);_(\"$\"* \"-\"_);_(@_)",
      "_(* #,##0.00_);_(* (#,##0.00);_(* \"-\"?\?_);_(@_)",
      "_(\"$\"* #,##0.00_);_(\"$\"* (#,##0.00);_(\"$\"* \"-\"?\?_);_(@_)",
      "mm:ss",
      "[h]:mm:ss",
      "mm:ss.0",
      "##0.0E+0",
      "@",
  };
  if (id < 0 || static_cast<std::size_t>(id) >= kCodes.size()) return {};
  return kCodes[static_cast<std::size_t>(id)];
}

std::optional<Styles> Styles::parse(std::string_view xml, std::string& error) {
  pugi::xml_document document;
  if (!loadPart(document, xml, "styleSheet", "styles", error)) return std::nullopt;
  const pugi::xml_node root = document.document_element();
  Styles styles;
  for (pugi::xml_node format : childNamed(root, "numFmts").children()) {
    if (localName(format) != "numFmt") continue;
    const pugi::xml_attribute id = format.attribute("numFmtId");
    if (id.empty()) continue;
    styles.customCodes_[id.as_int()] = format.attribute("formatCode").value();
  }
  for (pugi::xml_node xf : childNamed(root, "cellXfs").children()) {
    if (localName(xf) == "xf") styles.formatIds_.push_back(xf.attribute("numFmtId").as_int(0));
  }
  return styles;
}

Styles Styles::defaults() {
  Styles styles;
  styles.formatIds_.push_back(0);
  return styles;
}

int Styles::numFmtId(std::uint32_t styleIndex) const {
  return styleIndex < formatIds_.size() ? formatIds_[styleIndex] : 0;
}

std::string_view Styles::formatCode(std::uint32_t styleIndex) const {
  const int id = numFmtId(styleIndex);
  if (const auto custom = customCodes_.find(id); custom != customCodes_.end() && !custom->second.empty()) {
    return custom->second;
  }
  const std::string_view builtin = builtinFormatCode(id);
  return builtin.empty() ? "General" : builtin;
}

}  // namespace corvane::xlsx
