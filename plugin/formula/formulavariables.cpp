#include "plugin/formula/formulavariables.h"

#include <optional>

#include "host/acdbdatabase.h"
#include "host/acdbdictionary.h"

namespace corvane {

using host::Acad;

namespace {

constexpr int kText = 1000;
constexpr int kAppName = 1001;
constexpr int kControl = 1002;
// The host keeps at most 255 characters in one extended-data string.
constexpr std::size_t kPieceLength = 250;

const std::wstring* textOf(const host::ResBuf& item, int restype) {
  return item.restype == restype ? std::get_if<std::wstring>(&item.value) : nullptr;
}

std::vector<FormulaVariable> parseVariables(const host::ResBufList& data) {
  std::vector<FormulaVariable> variables;
  std::optional<FormulaVariable> open;
  for (const host::ResBuf& item : data) {
    if (const std::wstring* control = textOf(item, kControl)) {
      if (*control == L"{") {
        open = FormulaVariable{};
      } else if (open) {
        // A group without a name is nothing a write made; it is passed over.
        if (!open->name.empty()) variables.push_back(std::move(*open));
        open.reset();
      }
    } else if (const std::wstring* text = textOf(item, kText); text && open) {
      if (open->name.empty())
        open->name = *text;
      else
        open->fieldCode += *text;
    }
  }
  return variables;
}

host::ResBufList buildVariables(const std::vector<FormulaVariable>& variables) {
  host::ResBufList data{{kAppName, std::wstring(kFormulaVariablesApp)}};
  for (const FormulaVariable& variable : variables) {
    data.push_back({kControl, std::wstring(L"{")});
    data.push_back({kText, variable.name});
    for (std::size_t at = 0; at < variable.fieldCode.size(); at += kPieceLength) {
      data.push_back({kText, variable.fieldCode.substr(at, kPieceLength)});
    }
    data.push_back({kControl, std::wstring(L"}")});
  }
  return data;
}

}  // namespace

std::vector<FormulaVariable> ReadFormulaVariables(host::AcDbHostApplicationServices& services) {
  host::AcDbDatabase* db = services.workingDatabase();
  if (!db) return {};
  host::AcDbObjectPointer<host::AcDbDictionary> root(services, db->namedObjectsDictionaryId(), host::AcDb::kForRead);
  if (!root) return {};
  return parseVariables(root->xData(kFormulaVariablesApp));
}

Acad::ErrorStatus WriteFormulaVariables(host::AcDbHostApplicationServices& services,
                                        const std::vector<FormulaVariable>& variables) {
  host::AcDbDatabase* db = services.workingDatabase();
  if (!db) return Acad::eNoDatabase;
  if (!db->isRegApp(kFormulaVariablesApp)) {
    if (const Acad::ErrorStatus es = db->registerApp(kFormulaVariablesApp); es != Acad::eOk) return es;
  }
  host::AcDbObjectPointer<host::AcDbDictionary> root(services, db->namedObjectsDictionaryId(), host::AcDb::kForWrite);
  if (!root) return root.openStatus();
  return root->setXData(buildVariables(variables));
}

}  // namespace corvane
