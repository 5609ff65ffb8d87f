#include "xlsx/sheet/workbookpart.h"

#include <algorithm>

#include "xlsx/sheet/xmldom.h"

namespace corvane::xlsx {
namespace {

// xsd:boolean
bool isTrue(const pugi::xml_attribute& attribute) {
  const std::string_view value = attribute.value();
  return value == "1" || value == "true";
}

}  // namespace

std::optional<WorkbookPart> WorkbookPart::parse(std::string_view xml, std::string& error) {
  pugi::xml_document document;
  if (!loadPart(document, xml, "workbook", "workbook", error)) return std::nullopt;
  const pugi::xml_node root = document.document_element();
  WorkbookPart part;
  for (pugi::xml_node sheet : childNamed(root, "sheets").children()) {
    if (localName(sheet) != "sheet") continue;
    SheetEntry entry;
    entry.name = sheet.attribute("name").value();
    entry.relationshipId = attributeNamed(sheet, "id").value();
    entry.sheetId = sheet.attribute("sheetId").as_uint();
    entry.state = sheet.attribute("state").empty() ? "visible" : sheet.attribute("state").value();
    if (entry.name.empty() || entry.relationshipId.empty()) {
      error = "workbook: sheet " + std::to_string(part.sheets_.size() + 1) + " has no name or no relationship";
      return std::nullopt;
    }
    part.sheets_.push_back(std::move(entry));
  }
  for (pugi::xml_node name : childNamed(root, "definedNames").children()) {
    if (localName(name) != "definedName") continue;
    DefinedName entry;
    entry.name = name.attribute("name").value();
    entry.formula = name.text().get();
    if (const pugi::xml_attribute local = name.attribute("localSheetId"); !local.empty()) {
      entry.localSheet = local.as_int(-1);
      if (*entry.localSheet < 0 || static_cast<std::size_t>(*entry.localSheet) >= part.sheets_.size()) {
        error = "workbook: name \"" + entry.name + "\" belongs to sheet " + local.value() + ", which does not exist";
        return std::nullopt;
      }
    }
    entry.hidden = isTrue(name.attribute("hidden"));
    if (entry.name.empty()) {
      error = "workbook: a defined name has no name";
      return std::nullopt;
    }
    part.names_.push_back(std::move(entry));
  }
  part.date1904_ = isTrue(childNamed(root, "workbookPr").attribute("date1904"));
  const int active = childNamed(childNamed(root, "bookViews"), "workbookView").attribute("activeTab").as_int(0);
  part.activeTab_ = part.sheets_.empty() ? 0 : std::clamp(active, 0, static_cast<int>(part.sheets_.size()) - 1);
  return part;
}

}  // namespace corvane::xlsx
