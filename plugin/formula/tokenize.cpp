#include "plugin/formula/tokenize.h"

#include "core/textutil.h"
#include "plugin/formula/exprerror.h"
#include "plugin/formula/exprtoken.h"

namespace corvane {

std::vector<std::wstring> Tokenize(std::wstring_view expression) {
  std::size_t begin = 0;
  std::size_t end = expression.size();
  while (begin < end && core::isSpace(expression[begin])) ++begin;
  while (end > begin && core::isSpace(expression[end - 1])) --end;
  const std::wstring_view text = expression.substr(begin, end - begin);

  std::vector<std::wstring> tokens;
  if (text.empty()) return tokens;
  tokens.reserve(text.size() / 2 + 1);

  // The pending token is always a run of the text itself: every branch that does not add to
  // it flushes it first. So it is kept as a start and a length and copied out once.
  std::size_t pendingStart = 0;
  std::size_t pendingLength = 0;
  const auto append = [&](std::size_t at) {
    if (pendingLength == 0) pendingStart = at;
    ++pendingLength;
  };
  long depth = 0;
  const auto flush = [&] {
    if (pendingLength != 0) {
      tokens.emplace_back(text.substr(pendingStart, pendingLength));
      pendingLength = 0;
    }
  };
  const auto emit = [&](std::wstring_view token) { tokens.emplace_back(token); };

  std::size_t i = 0;
  while (i < text.size()) {
    const wchar_t c = text[i];
    const wchar_t n = i + 1 < text.size() ? text[i + 1] : L'\0';
    // Control characters, "}", "~" and all non-ASCII text never split a token.
    if (c < 32 || c > 124) {
      append(i);
      ++i;
      continue;
    }
    switch (c) {
      case L' ':
        flush();
        ++i;
        break;
      case L'"':
      case L'\'': {
        flush();
        const std::size_t close = text.find(c, i + 1);
        if (close == std::wstring_view::npos) throw ExprError(L"Unterminated string constant");
        std::wstring literal;
        literal.reserve(close - i);
        literal.push_back(StringMarker);
        literal.append(text.substr(i + 1, close - i - 1));
        tokens.push_back(std::move(literal));
        i = close + 1;
        break;
      }
      case L'%':
      case L'*':
      case L'/':
      case L'^':
      case L',':
      case L'=':
        flush();
        emit(text.substr(i, 1));
        ++i;
        break;
      case L'(':
        ++depth;
        flush();
        emit(L"(");
        ++i;
        break;
      case L')':
        --depth;
        flush();
        emit(L")");
        ++i;
        break;
      case L'&':
      case L'|':
        flush();
        if (n == c) {
          emit(text.substr(i, 2));
          i += 2;
        } else {
          emit(text.substr(i, 1));
          ++i;
        }
        break;
      case L'<':
        flush();
        if (n == L'=' || n == L'>') {
          emit(text.substr(i, 2));
          i += 2;
        } else {
          emit(L"<");
          ++i;
        }
        break;
      case L'>':
        flush();
        if (n == L'=') {
          emit(L">=");
          i += 2;
        } else {
          emit(L">");
          ++i;
        }
        break;
      case L'+':
      case L'-': {
        flush();
        const std::wstring_view last = tokens.empty() ? std::wstring_view() : std::wstring_view(tokens.back());
        const bool signStartsOperand =
            i == 0 || ((IsOperatorText(last) || last == L"(" || last == L",") && ((n >= L'0' && n <= L'9') || n == L'('));
        if (signStartsOperand) {
          append(i);
        } else {
          emit(text.substr(i, 1));
        }
        ++i;
        break;
      }
      default:
        append(i);
        ++i;
        break;
    }
  }
  // Extra ")" are left for the postfix pass to find.
  if (depth > 0) throw ExprError(L"Unbalanced parenthesis.");
  flush();
  return tokens;
}

}  // namespace corvane
