#include "plugin/workflows/insertfieldsintodrawing.h"

#include <vector>

#include "core/printf.h"
#include "host/acdbattribute.h"
#include "host/acdbblockreference.h"
#include "host/acdbblocktablerecord.h"
#include "host/acdbdatabase.h"
#include "host/acdbfield.h"
#include "host/acdbobject.h"
#include "host/acdbsymboltable.h"
#include "host/acfd.h"
#include "host/hostservices.h"
#include "plugin/workflows/insertfieldstodrawingsdialog.h"

namespace corvane {

namespace {

using host::AcDbObjectId;
using host::AcDbObjectPointer;
namespace AcDb = host::AcDb;
using Acad = host::Acad;

constexpr const wchar_t* kTextProperty = L"TEXT";
// Every context but the preview.
constexpr int kEvaluationOption = host::AcDbField::kAutomatic;

// The block references of the drawing's layouts, as a selection of all INSERTs would give them.
std::vector<AcDbObjectId> blockReferences(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db) {
  std::vector<AcDbObjectId> found;
  AcDbObjectPointer<host::AcDbBlockTable> table(services, db.blockTableId(), AcDb::kForRead);
  if (!table) return found;
  for (auto records = table->newIterator(); !records.done(); records.step()) {
    AcDbObjectPointer<host::AcDbBlockTableRecord> block(services, records.objectId(), AcDb::kForRead);
    if (!block || !block->isLayout()) continue;
    for (auto entities = block->newIterator(); !entities.done(); entities.step()) {
      AcDbObjectPointer<host::AcDbBlockReference> reference(services, entities.objectId(), AcDb::kForRead);
      if (reference) found.push_back(entities.objectId());
    }
  }
  return found;
}

struct Walk {
  host::AcDbHostApplicationServices& services;
  host::AcDbDatabase& db;
  const FieldRules& rules;
  InsertFieldsMatch match;
  InsertFieldsCount count;

  void blockReference(AcDbObjectId id) {
    std::wstring blockName;
    std::wstring dynamicName;
    std::vector<AcDbObjectId> attributes;
    {
      AcDbObjectPointer<host::AcDbBlockReference> reference(services, id, AcDb::kForRead);
      if (!reference) return;
      AcDbObjectPointer<host::AcDbBlockTableRecord> block(services, reference->blockTableRecord(), AcDb::kForRead);
      if (!block || block->getName(blockName) != Acad::eOk) return;
      if (match == InsertFieldsMatch::kDynamicBlockName && reference->isDynamicBlock() &&
          reference->dynamicBlockTableRecord() != reference->blockTableRecord()) {
        AcDbObjectPointer<host::AcDbBlockTableRecord> dynamic(services, reference->dynamicBlockTableRecord(),
                                                              AcDb::kForRead);
        if (!dynamic || dynamic->getName(dynamicName) != Acad::eOk) dynamicName.clear();
      }
      for (auto walk = reference->attributeIterator(); !walk.done(); walk.step()) attributes.push_back(walk.objectId());
    }
    for (const AcDbObjectId attribute : attributes) apply(blockName, dynamicName, attribute);
  }

  void apply(const std::wstring& blockName, const std::wstring& dynamicName, AcDbObjectId attribute) {
    std::wstring tag;
    {
      AcDbObjectPointer<host::AcDbAttribute> opened(services, attribute, AcDb::kForWrite);
      if (!opened) return;
      tag = opened->tag();
    }
    auto rule = rules.find(RuleKey(blockName, tag));
    // A rule for the variant itself comes first; the dynamic block's name only stands in for it.
    if (rule == rules.end() && !dynamicName.empty()) rule = rules.find(RuleKey(dynamicName, tag));
    if (rule == rules.end()) return;
    AcDbObjectId field;
    if (const auto es = services.setField(attribute, kTextProperty, rule->second, field); es != Acad::eOk) {
      services.print(core::format(L"\nCannot set field to %s.%s: %s.", blockName, tag, host::acadErrorStatusText(es)));
      ++count.errors;
      return;
    }
    ++count.stamped;
    if (AcDbObjectPointer<host::AcDbField> opened(services, field, AcDb::kForWrite); opened) {
      opened->setEvaluationOption(kEvaluationOption);
    }
    host::AcFdFieldEngine* engine = services.fieldEngine();
    if (engine && engine->evaluateFields(&db, {field}, kEvaluationOption) == Acad::eOk) ++count.evaluated;
  }
};

}  // namespace

InsertFieldsCount InsertFieldsIntoDrawing(host::AcDbHostApplicationServices& services, host::AcDbDatabase& db,
                                          const FieldRules& rules, InsertFieldsMatch match) {
  Walk walk{services, db, rules, match, {}};
  for (const AcDbObjectId id : blockReferences(services, db)) walk.blockReference(id);
  return walk.count;
}

}  // namespace corvane
