#include "host/objectid.h"

namespace corvane::host {

std::optional<AcDbHandle> AcDbHandle::fromText(std::wstring_view text) noexcept {
  if (text.empty()) return std::nullopt;
  std::uint64_t value = 0;
  int significant = 0;
  for (const wchar_t c : text) {
    unsigned digit = 0;
    if (c >= L'0' && c <= L'9') digit = static_cast<unsigned>(c - L'0');
    else if (c >= L'A' && c <= L'F') digit = static_cast<unsigned>(c - L'A' + 10);
    else if (c >= L'a' && c <= L'f') digit = static_cast<unsigned>(c - L'a' + 10);
    else return std::nullopt;
    if (value != 0 || digit != 0) ++significant;
    if (significant > 16) return std::nullopt;
    value = (value << 4) | digit;
  }
  return AcDbHandle(value);
}

std::wstring AcDbHandle::text() const {
  static constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  if (value_ == 0) return L"0";
  std::wstring out;
  for (std::uint64_t v = value_; v != 0; v >>= 4) out.insert(out.begin(), kDigits[v & 0xF]);
  return out;
}

}  // namespace corvane::host
