// Reading a number-format code: split it into sections, each section into tokens, and give every
// token its role from its place (a comma between placeholders groups thousands, after them it
// divides by 1000; m after h is minutes; a slash between placeholders makes a fraction).
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "xlsx/sheet/numberformatcode.h"

namespace corvane::xlsx {
namespace {

constexpr std::size_t kMaxSections = 4;
constexpr int kMaxSecondDigits = 3;
constexpr std::size_t kMaxDenominatorDigits = 9;

char lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lower(x) == lower(y); });
}

bool startsWithIgnoringCase(std::string_view text, std::size_t at, std::string_view prefix) {
  return text.size() - at >= prefix.size() && equalsIgnoringCase(text.substr(at, prefix.size()), prefix);
}

// Bytes of the UTF-8 character starting at `at`; a stray byte counts as one character.
std::size_t characterLength(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  return std::min(length, text.size() - at);
}

bool isSpaceLiteral(const Token& token) {
  return token.kind == FormatToken::Literal && !token.text.empty() &&
         token.text.find_first_not_of(' ') == std::string::npos;
}

Token literal(std::string text) {
  Token token;
  token.text = std::move(text);
  return token;
}

Token coded(FormatToken kind, std::string_view source) {
  Token token;
  token.kind = kind;
  token.text = std::string(source);
  return token;
}

// Reads one section's text; stops at the first problem and says what and where it is.
class SectionReader {
 public:
  SectionReader(std::string_view text, std::size_t offset, Section& section, std::string& error)
      : text_(text), offset_(offset), section_(section), error_(error) {}

  bool read() {
    while (at_ < text_.size()) {
      if (!readToken()) return false;
    }
    return true;
  }

 private:
  bool fail(std::string_view what, std::size_t at) {
    error_ = std::string(what) + " at position " + std::to_string(offset_ + at + 1);
    return false;
  }

  void add(Token token) { section_.tokens.push_back(std::move(token)); }

  // The character after a \, _ or *; false at the end of the section.
  bool nextCharacter(std::string_view& character) {
    if (at_ + 1 >= text_.size()) return false;
    character = text_.substr(at_ + 1, characterLength(text_, at_ + 1));
    at_ += 1 + character.size();
    return true;
  }

  bool readToken() {
    const char c = text_[at_];
    std::string_view character;
    switch (c) {
      case '"': {
        const std::size_t close = text_.find('"', at_ + 1);
        if (close == std::string_view::npos) return fail("quoted text not closed", at_);
        add(literal(std::string(text_.substr(at_ + 1, close - at_ - 1))));
        at_ = close + 1;
        return true;
      }
      case '\\':
        if (!nextCharacter(character)) return fail("nothing after '\\'", at_);
        add(literal(std::string(character)));
        return true;
      case '_':  // a space as wide as the character; one space here
        if (!nextCharacter(character)) return fail("nothing after '_'", at_);
        add(literal(" "));
        return true;
      case '*':  // the character repeated to fill the column; once here
        if (!nextCharacter(character)) return fail("nothing after '*'", at_);
        add(literal(std::string(character)));
        return true;
      case '[':
        return readBracket();
      case '0':
      case '#':
      case '?': {
        Token token = coded(FormatToken::Digit, text_.substr(at_, 1));
        token.placeholder = c;
        add(std::move(token));
        ++at_;
        return true;
      }
      case '.':
        return single(FormatToken::Point);
      case ',':
        return single(FormatToken::Comma);
      case '%':
        return single(FormatToken::Percent);
      case '/':
        return single(FormatToken::Slash);
      case '@':
        return single(FormatToken::Text);
      default:
        break;
    }
    if (c >= '1' && c <= '9') {
      const std::size_t end = std::min(text_.find_first_not_of("0123456789", at_), text_.size());
      add(coded(FormatToken::Number, text_.substr(at_, end - at_)));
      at_ = end;
      return true;
    }
    if ((c == 'E' || c == 'e') && at_ + 1 < text_.size() && (text_[at_ + 1] == '+' || text_[at_ + 1] == '-')) {
      Token token = coded(FormatToken::Exponent, text_.substr(at_, 2));
      token.plusSign = text_[at_ + 1] == '+';
      add(std::move(token));
      at_ += 2;
      return true;
    }
    if (startsWithIgnoringCase(text_, at_, "general")) {
      add(coded(FormatToken::General, text_.substr(at_, 7)));
      at_ += 7;
      return true;
    }
    if (startsWithIgnoringCase(text_, at_, "am/pm") || startsWithIgnoringCase(text_, at_, "a/p")) {
      const std::size_t length = lower(text_[at_ + 1]) == 'm' ? 5 : 3;
      add(coded(FormatToken::AmPm, text_.substr(at_, length)));
      at_ += length;
      return true;
    }
    const char letter = lower(c);
    if (letter == 'y' || letter == 'm' || letter == 'd' || letter == 'h' || letter == 's') {
      std::size_t end = at_ + 1;
      while (end < text_.size() && lower(text_[end]) == letter) ++end;
      Token token = coded(FormatToken::DateCode, text_.substr(at_, end - at_));
      token.placeholder = letter;
      token.width = static_cast<int>(end - at_);
      add(std::move(token));
      at_ = end;
      return true;
    }
    add(literal(std::string(text_.substr(at_, characterLength(text_, at_)))));
    at_ += characterLength(text_, at_);
    return true;
  }

  bool single(FormatToken kind) {
    add(coded(kind, text_.substr(at_, 1)));
    ++at_;
    return true;
  }

  bool readBracket() {
    const std::size_t close = text_.find(']', at_ + 1);
    if (close == std::string_view::npos) return fail("'[' not closed", at_);
    const std::string_view content = text_.substr(at_ + 1, close - at_ - 1);
    const std::size_t start = at_;
    at_ = close + 1;
    if (content.empty()) return fail("empty []", start);
    if (content[0] == '$') {  // [$€-407]: a currency text, then a locale id
      const std::string_view shown = content.substr(1, content.find('-', 1) - 1);  // npos - 1 is still "to the end"
      if (!shown.empty()) add(literal(std::string(shown)));
      return true;
    }
    if (content[0] == '<' || content[0] == '>' || content[0] == '=') return readCondition(content, start);
    if (const char letter = lower(content[0]); letter == 'h' || letter == 'm' || letter == 's') {
      if (std::all_of(content.begin(), content.end(), [letter](char x) { return lower(x) == letter; })) {
        Token token = coded(letter == 'h'   ? FormatToken::ElapsedHours
                            : letter == 'm' ? FormatToken::ElapsedMinutes
                                            : FormatToken::ElapsedSeconds,
                            text_.substr(start, close + 1 - start));
        token.width = static_cast<int>(content.size());
        add(std::move(token));
        return true;
      }
    }
    if (isColour(content) || startsWithIgnoringCase(content, 0, "dbnum") || startsWithIgnoringCase(content, 0, "natnum")) {
      return true;  // colours change no text; other numeral systems are not shown
    }
    return fail("unknown [" + std::string(content) + "]", start);
  }

  static bool isColour(std::string_view content) {
    static constexpr std::string_view kNames[] = {"black", "blue", "cyan", "green", "magenta", "red", "white", "yellow"};
    for (const std::string_view name : kNames) {
      if (equalsIgnoringCase(content, name)) return true;
    }
    if (!startsWithIgnoringCase(content, 0, "color") || content.size() == 5) return false;
    int index = 0;
    const auto [end, problem] = std::from_chars(content.data() + 5, content.data() + content.size(), index);
    return problem == std::errc() && end == content.data() + content.size() && index >= 1 && index <= 56;
  }

  bool readCondition(std::string_view content, std::size_t start) {
    using Test = Condition::Test;
    static constexpr std::pair<std::string_view, Test> kTests[] = {
        {"<=", Test::LessEqual}, {">=", Test::GreaterEqual}, {"<>", Test::NotEqual},
        {"<", Test::Less},       {">", Test::Greater},       {"=", Test::Equal},
    };
    if (section_.condition.present()) return fail("a second condition in one section", start);
    for (const auto& [symbol, test] : kTests) {
      if (content.substr(0, symbol.size()) != symbol) continue;
      std::string_view number = content.substr(symbol.size());
      if (!number.empty() && number[0] == '+') number.remove_prefix(1);
      double bound = 0;
      const auto [end, problem] = std::from_chars(number.data(), number.data() + number.size(), bound);
      if (number.empty() || problem != std::errc() || end != number.data() + number.size() || !std::isfinite(bound)) {
        return fail("no number in condition [" + std::string(content) + "]", start);
      }
      section_.condition = {test, bound};
      return true;
    }
    return fail("no number in condition [" + std::string(content) + "]", start);
  }

  std::string_view text_;
  std::size_t offset_;
  Section& section_;
  std::string& error_;
  std::size_t at_ = 0;
};

struct SectionText {
  std::string_view text;
  std::size_t offset;
};

// Splits at each ';' that is not quoted, escaped or inside [].
std::vector<SectionText> splitSections(std::string_view code) {
  std::vector<SectionText> sections;
  std::size_t start = 0;
  for (std::size_t at = 0; at < code.size(); ++at) {
    switch (code[at]) {
      case '"':
        at = std::min(code.find('"', at + 1), code.size());
        break;
      case '[':
        at = std::min(code.find(']', at + 1), code.size());
        break;
      case '\\':
      case '_':
      case '*':
        ++at;
        break;
      case ';':
        sections.push_back({code.substr(start, at - start), start});
        start = at + 1;
        break;
      default:
        break;
    }
  }
  sections.push_back({code.substr(start), start});
  return sections;
}

bool contains(const Section& section, FormatToken kind) {
  return std::any_of(section.tokens.begin(), section.tokens.end(), [kind](const Token& t) { return t.kind == kind; });
}

void toLiteral(Token& token) {
  token.kind = FormatToken::Literal;  // the text is already the code text
}

// Joins neighbouring literals, so that rendering walks fewer tokens.
void mergeLiterals(Section& section) {
  std::vector<Token>& tokens = section.tokens;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    // The fraction's first and last tokens are never literals, so no join crosses them.
    if (kept > 0 && tokens[i].kind == FormatToken::Literal && tokens[kept - 1].kind == FormatToken::Literal) {
      tokens[kept - 1].text += tokens[i].text;
    } else {
      if (section.kind == SectionKind::Fraction) {
        if (i == section.fractionBegin) section.fractionBegin = kept;
        if (i == section.fractionEnd) section.fractionEnd = kept;
      }
      if (kept != i) tokens[kept] = std::move(tokens[i]);
      ++kept;
    }
  }
  tokens.resize(kept);
}

void compileText(Section& section) {
  section.kind = SectionKind::Text;
  section.condition = {};
  for (Token& token : section.tokens) {
    if (token.kind == FormatToken::General) token.kind = FormatToken::Text;
    if (token.kind != FormatToken::Text) toLiteral(token);
  }
}

void compileGeneral(Section& section) {
  section.kind = SectionKind::General;
  for (Token& token : section.tokens) {
    if (token.kind != FormatToken::General) toLiteral(token);
  }
}

// The nearest token before `from` that is not a literal, or null.
const Token* fieldBefore(const std::vector<Token>& tokens, std::size_t from) {
  for (std::size_t i = from; i > 0; --i) {
    if (tokens[i - 1].kind != FormatToken::Literal) return &tokens[i - 1];
  }
  return nullptr;
}

// The nearest token after `from` that is not a literal, or null.
const Token* fieldAfter(const std::vector<Token>& tokens, std::size_t from) {
  for (std::size_t i = from + 1; i < tokens.size(); ++i) {
    if (tokens[i].kind != FormatToken::Literal) return &tokens[i];
  }
  return nullptr;
}

bool compileDateTime(Section& section, std::string& error) {
  section.kind = SectionKind::DateTime;
  std::vector<Token>& tokens = section.tokens;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    Token& token = tokens[i];
    switch (token.kind) {
      case FormatToken::Point: {  // .000 after the seconds
        std::size_t end = i + 1;
        while (end < tokens.size() && tokens[end].kind == FormatToken::Digit && tokens[end].placeholder == '0') ++end;
        if (end == i + 1) {
          toLiteral(token);
          break;
        }
        token.kind = FormatToken::SubSecond;
        token.width = static_cast<int>(end - i - 1);
        if (token.width > kMaxSecondDigits) {
          error = "more than three digits of a second";
          return false;
        }
        section.secondDigits = std::max(section.secondDigits, token.width);
        for (std::size_t j = i + 1; j < end; ++j) tokens[j] = literal("");
        i = end - 1;
        break;
      }
      case FormatToken::DateCode:
        token.kind = token.placeholder == 'y'   ? FormatToken::Year
                     : token.placeholder == 'm' ? FormatToken::Month
                     : token.placeholder == 'd' ? FormatToken::Day
                     : token.placeholder == 'h' ? FormatToken::Hour
                                                : FormatToken::Second;
        token.placeholder = 0;
        break;
      case FormatToken::AmPm:
        section.twelveHour = true;
        break;
      case FormatToken::Text:
        error = "'@' in a section for numbers";
        return false;
      case FormatToken::ElapsedHours:
      case FormatToken::ElapsedMinutes:
      case FormatToken::ElapsedSeconds:
      case FormatToken::Literal:
        break;
      default:
        toLiteral(token);
        break;
    }
  }
  // m and mm are minutes right after hours or right before seconds.
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].kind != FormatToken::Month || tokens[i].width > 2) continue;
    const Token* before = fieldBefore(tokens, i);
    const Token* after = fieldAfter(tokens, i);
    if ((before && (before->kind == FormatToken::Hour || before->kind == FormatToken::ElapsedHours)) ||
        (after && (after->kind == FormatToken::Second || after->kind == FormatToken::ElapsedSeconds))) {
      tokens[i].kind = FormatToken::Minute;
    }
  }
  return true;
}

// The slash of a fraction: a placeholder before it and a placeholder or a number after it, with
// at most spaces between.
std::optional<std::size_t> findFractionSlash(const std::vector<Token>& tokens) {
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].kind != FormatToken::Slash) continue;
    std::size_t before = i;
    while (before > 0 && isSpaceLiteral(tokens[before - 1])) --before;
    std::size_t after = i + 1;
    while (after < tokens.size() && isSpaceLiteral(tokens[after])) ++after;
    if (before > 0 && tokens[before - 1].kind == FormatToken::Digit && after < tokens.size() &&
        (tokens[after].kind == FormatToken::Digit || tokens[after].kind == FormatToken::Number)) {
      return i;
    }
  }
  return std::nullopt;
}

bool assignFractionGroups(Section& section, std::size_t slash, std::string& error) {
  std::vector<Token>& tokens = section.tokens;
  section.kind = SectionKind::Fraction;
  std::size_t numeratorEnd = slash;
  while (tokens[numeratorEnd - 1].kind != FormatToken::Digit) --numeratorEnd;
  std::size_t numeratorBegin = numeratorEnd - 1;
  while (numeratorBegin > 0 && tokens[numeratorBegin - 1].kind == FormatToken::Digit) --numeratorBegin;
  section.fractionBegin = numeratorBegin;
  section.fractionEnd = slash;
  tokens[slash].kind = FormatToken::FractionSlash;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    Token& token = tokens[i];
    const bool denominatorStarted = section.fractionEnd != slash;
    if (i > slash && token.kind == FormatToken::Number && !denominatorStarted) {
      token.kind = FormatToken::FixedDenominator;
      if (token.text.size() > kMaxDenominatorDigits) {
        error = "denominator " + token.text + " has more than nine digits";
        return false;
      }
      std::from_chars(token.text.data(), token.text.data() + token.text.size(), section.fixedDenominator);
      section.fractionEnd = i;
    } else if (token.kind == FormatToken::Digit) {
      if (i < numeratorBegin) {
        token.group = DigitGroup::Integer;
      } else if (i < slash) {
        token.group = DigitGroup::Numerator;
      } else if (section.fixedDenominator == 0) {
        token.group = DigitGroup::Denominator;
        section.fractionEnd = i;
        if (token.placeholder == '?') section.denominatorPadsRight = true;
      } else {
        toLiteral(token);
      }
    } else if (token.kind == FormatToken::Point || token.kind == FormatToken::Exponent) {
      toLiteral(token);
    }
  }
  return true;
}

void assignPointGroups(Section& section) {
  bool seenPoint = false;
  bool seenExponent = false;
  for (Token& token : section.tokens) {
    if (token.kind == FormatToken::Point) {
      if (seenPoint || seenExponent) {
        toLiteral(token);
      } else {
        token.kind = FormatToken::DecimalPoint;
        seenPoint = true;
      }
    } else if (token.kind == FormatToken::Exponent) {
      if (seenExponent) {
        toLiteral(token);
      } else {
        token.text.resize(1);  // "E" or "e"; the sign is drawn from plusSign
        seenExponent = true;
        section.kind = SectionKind::Scientific;
      }
    } else if (token.kind == FormatToken::Digit) {
      token.group = seenExponent ? DigitGroup::Exponent : seenPoint ? DigitGroup::Decimals : DigitGroup::Integer;
    }
  }
}

// A comma between two placeholders groups thousands (when in the integer part); a run of
// commas after a placeholder and before anything that is not one divides by 1000 each;
// elsewhere a comma is shown.
void assignCommas(Section& section) {
  std::vector<Token>& tokens = section.tokens;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].kind != FormatToken::Comma) continue;
    std::size_t end = i;
    while (end < tokens.size() && tokens[end].kind == FormatToken::Comma) ++end;
    const bool afterDigit = i > 0 && tokens[i - 1].kind == FormatToken::Digit;
    const bool beforeDigit = end < tokens.size() && tokens[end].kind == FormatToken::Digit;
    for (std::size_t j = i; j < end; ++j) {
      if (!afterDigit) {
        toLiteral(tokens[j]);
      } else if (beforeDigit) {
        if (tokens[i - 1].group == DigitGroup::Integer) section.thousands = true;
        tokens[j].kind = FormatToken::Literal;
        tokens[j].text.clear();
      } else {
        section.powerOfTen -= 3;
        tokens[j].kind = FormatToken::Literal;
        tokens[j].text.clear();
      }
    }
    i = end - 1;
  }
}

bool compileNumber(Section& section, std::string& error) {
  if (contains(section, FormatToken::Text)) {
    error = "'@' in a section for numbers";
    return false;
  }
  section.kind = SectionKind::Number;
  if (const auto slash = findFractionSlash(section.tokens)) {
    if (!assignFractionGroups(section, *slash, error)) return false;
  } else {
    assignPointGroups(section);
  }
  assignCommas(section);
  for (Token& token : section.tokens) {
    switch (token.kind) {
      case FormatToken::Percent:
        section.powerOfTen += 2;
        toLiteral(token);
        break;
      case FormatToken::Digit:
        token.width = section.digits[static_cast<int>(token.group)]++;
        break;
      case FormatToken::Point:
      case FormatToken::Slash:
      case FormatToken::Number:
        toLiteral(token);
        break;
      default:
        break;
    }
  }
  return true;
}

bool isDateTime(const Section& section) {
  return std::any_of(section.tokens.begin(), section.tokens.end(), [](const Token& t) {
    return t.kind == FormatToken::DateCode || t.kind == FormatToken::AmPm || t.kind == FormatToken::ElapsedHours ||
           t.kind == FormatToken::ElapsedMinutes || t.kind == FormatToken::ElapsedSeconds;
  });
}

bool compileForNumbers(Section& section, std::string& error) {
  bool read = true;
  if (isDateTime(section)) {
    read = compileDateTime(section, error);
  } else if (contains(section, FormatToken::General)) {
    compileGeneral(section);
  } else {
    read = compileNumber(section, error);
  }
  mergeLiterals(section);
  return read;
}

NumberFormatCode failed(std::string error) {
  NumberFormatCode code;
  code.error = std::move(error);
  code.general = true;
  return code;
}

}  // namespace

bool Condition::holds(double value) const {
  switch (test) {
    case Test::Equal:
      return value == bound;
    case Test::NotEqual:
      return value != bound;
    case Test::Less:
      return value < bound;
    case Test::LessEqual:
      return value <= bound;
    case Test::Greater:
      return value > bound;
    case Test::GreaterEqual:
      return value >= bound;
    case Test::None:
      break;
  }
  return true;
}

NumberFormatCode readNumberFormatCode(std::string_view code) {
  NumberFormatCode result;
  if (code.empty()) {
    result.general = true;
    return result;
  }
  const std::vector<SectionText> texts = splitSections(code);
  if (texts.size() > kMaxSections) {
    return failed("more than four sections: a fifth starts at position " + std::to_string(texts[kMaxSections].offset + 1));
  }
  std::vector<Section> sections(texts.size());
  std::string error;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (!SectionReader(texts[i].text, texts[i].offset, sections[i], error).read()) return failed(std::move(error));
    // A section of colours and conditions alone ([Red][<=100]) shows General; an empty one, nothing.
    if (sections[i].tokens.empty() && !texts[i].text.empty()) sections[i].tokens.push_back(coded(FormatToken::General, ""));
  }
  // The fourth section is for text; so is a last one that shows the text.
  const bool hasText = sections.size() == kMaxSections || contains(sections.back(), FormatToken::Text);
  if (hasText) {
    compileText(sections.back());
    mergeLiterals(sections.back());
    result.text = std::move(sections.back());
    sections.pop_back();
  }
  for (std::size_t i = 0; i < sections.size(); ++i) {
    if (!compileForNumbers(sections[i], error)) return failed(error + " (section " + std::to_string(i + 1) + ")");
    if (i >= 2) sections[i].condition = {};  // the third section takes what the first two do not
  }
  result.numbers = std::move(sections);
  const bool plainGeneral = result.numbers.size() == 1 && result.numbers[0].kind == SectionKind::General &&
                            result.numbers[0].tokens.size() == 1 && !result.numbers[0].condition.present();
  result.general = result.numbers.empty() || plainGeneral;
  return result;
}

}  // namespace corvane::xlsx
