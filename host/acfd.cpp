#include "host/acfd.h"

#include <cwchar>

namespace corvane::host {

Acad::ErrorStatus AcFdFieldEvaluator::format(AcDbField* field, std::wstring& text) {
  if (!field) return Acad::eInvalidInput;
  return field->formatValue(text);
}

Acad::ErrorStatus AcFdFieldEvaluator::format(AcDbField* field, wchar_t*& text) {
  text = nullptr;
  std::wstring formatted;
  const Acad::ErrorStatus es = format(field, formatted);
  if (es != Acad::eOk) return es;
  return acutNewString(formatted.c_str(), text);
}

Acad::ErrorStatus acutNewString(const wchar_t* source, wchar_t*& destination) {
  destination = nullptr;
  if (!source) return Acad::eInvalidInput;
  const std::size_t length = std::wcslen(source);
  destination = new wchar_t[length + 1];
  std::wmemcpy(destination, source, length + 1);
  return Acad::eOk;
}

void acutDelString(wchar_t*& text) {
  delete[] text;
  text = nullptr;
}

}  // namespace corvane::host
