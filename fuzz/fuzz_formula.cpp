// Formula text through the tokenizer, the postfix pass and the evaluator, in each of the three
// contexts a formula can stand in (no owner, a table, a block reference). Every input must end
// with a value or an engine message.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/textutil.h"
#include "core/utf8.h"
#include "plugin/formula/exprbinding.h"
#include "plugin/formula/exprengine.h"
#include "plugin/formula/exprerror.h"
#include "plugin/formula/tokenize.h"
#include "plugin/formula/topostfix.h"

namespace {

enum class Context { kNone, kTable, kBlock };

class FuzzBinding : public corvane::ExprBinding {
 public:
  explicit FuzzBinding(Context context) : context_(context) {}

  bool HasOwnerTable() const override { return context_ == Context::kTable; }
  int OwnerTableRows() const override { return 4; }
  int OwnerTableColumns() const override { return 3; }
  std::optional<std::wstring> OwnerTableCell(int row, int column) override {
    static const wchar_t* const cells[] = {L"1", L"2.5", L"x", L"", L"-4", L"1E+05", L"7,8", L"TRUE", L"PI", L"A1",
                                           L"\x13q", L"1/0"};
    return cells[(row - 1) * 3 + (column - 1)];
  }
  std::optional<std::wstring> ObjectProperty(std::wstring_view handle, std::wstring_view property) override {
    if (handle == L"1F" && corvane::core::equalsNoCase(property, L"RADIUS")) return L"2.5";
    return std::nullopt;
  }
  std::optional<std::wstring> SystemVariable(std::wstring_view name) override {
    if (name == L"X") return L"12";
    if (name == L"LUNITS") return L"2";
    if (name == L"EMPTY") return L"";
    if (name == L"SELF") return L"X";  // a value that is itself a name
    return std::nullopt;
  }
  bool HasSelfBlock() const override { return context_ == Context::kBlock; }
  std::optional<std::wstring> SelfBlockProperty(std::wstring_view property) override {
    if (property == L"WIDTH") return L"900";
    if (property == L"NAME") return L"";
    return std::nullopt;
  }
  std::wstring EvaluateFieldCode(std::wstring_view code) override {
    return code == L"%<\\AcVar LUNITS>%" ? L"2" : L"####";
  }
  double SumBlockProperty(std::wstring_view block, std::wstring_view) override {
    return corvane::core::equalsNoCase(block, L"DOOR") ? 1500.0 : 0.0;
  }

 private:
  Context context_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::wstring text = corvane::core::fromUtf8(bytes);

  try {
    const std::vector<std::wstring> tokens = corvane::Tokenize(text);
    corvane::ToPostfix(tokens);
  } catch (const corvane::ExprError& error) {
    if (error.message().empty()) __builtin_trap();
  }

  const Context context = size == 0 ? Context::kNone : static_cast<Context>(data[0] % 3);
  FuzzBinding binding(context);
  corvane::ExprEngine engine(text, binding);
  std::wstring result;
  if (!engine.Evaluate(result) && result.empty()) __builtin_trap();  // a failure always says why
  std::wstring again;
  engine.Evaluate(again);  // a second run reuses the kept lists
  return 0;
}
