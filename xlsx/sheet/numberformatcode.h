// A number-format code as read: its sections, each a list of tokens ready to render. Shared by
// the reader (numberformatread.cpp) and the renderer (numberformatrender.cpp) of NumberFormat;
// nothing else uses it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::xlsx {

enum class FormatToken : std::uint8_t {
  Literal,           // text shown as it is
  Digit,             // 0 # ? placeholder
  DecimalPoint,
  Exponent,          // E+ E- e+ e-
  FractionSlash,
  FixedDenominator,  // the 8 of # ?/8
  Text,              // @
  General,
  Year,
  Month,
  Day,
  Hour,
  Minute,
  Second,
  SubSecond,  // .0 .00 .000 after the seconds
  AmPm,
  ElapsedHours,
  ElapsedMinutes,
  ElapsedSeconds,
  // Only while reading: each becomes one of the above or a literal, by its place in the section.
  Point,
  Comma,
  Percent,
  Slash,
  Number,    // a digit run starting 1-9
  DateCode,  // a run of y, m, d, h or s
};

// Which number a placeholder shows a digit of.
enum class DigitGroup : std::uint8_t { Integer, Decimals, Exponent, Numerator, Denominator };
inline constexpr int kDigitGroups = 5;

struct Token {
  FormatToken kind = FormatToken::Literal;
  char placeholder = 0;                    // Digit: '0', '#' or '?'
  DigitGroup group = DigitGroup::Integer;  // Digit
  // Digit: its index in its group, from the left. Date and time fields: the number of letters
  // in the code (mmm is 3); SubSecond: the number of digits.
  int width = 0;
  bool plusSign = false;  // Exponent: E+ shows '+' for a positive exponent
  // Literal: the text shown. Exponent: "E" or "e". AmPm: "AM/PM" or "A/P" as written. Any
  // other: the code text it was read from, for when it turns out to be a literal.
  std::string text;
};

struct Condition {
  enum class Test : std::uint8_t { None, Equal, NotEqual, Less, LessEqual, Greater, GreaterEqual };
  Test test = Test::None;
  double bound = 0;

  bool present() const { return test != Test::None; }
  bool holds(double value) const;
};

enum class SectionKind : std::uint8_t { Number, Scientific, Fraction, DateTime, General, Text };

struct Section {
  SectionKind kind = SectionKind::Number;
  std::vector<Token> tokens;
  Condition condition;
  int powerOfTen = 0;      // +2 for each %, -3 for each comma after the last placeholder
  bool thousands = false;  // a comma between integer placeholders
  int digits[kDigitGroups] = {};  // placeholders in each DigitGroup
  double fixedDenominator = 0;    // Fraction: the denominator written in the code, 0 if none
  // Fraction: the tokens from the numerator's first placeholder to the denominator's last,
  // which turn to spaces when a mixed fraction has no fractional part.
  std::size_t fractionBegin = 0;
  std::size_t fractionEnd = 0;
  bool denominatorPadsRight = false;  // Fraction: ?? after the slash, padded with spaces after it
  bool twelveHour = false;  // DateTime: AM/PM or A/P present
  int secondDigits = 0;     // DateTime: the most digits of a second shown (0-3)

  int count(DigitGroup group) const { return digits[static_cast<int>(group)]; }
};

struct NumberFormatCode {
  std::string error;             // why the code could not be read; it then renders as General
  std::vector<Section> numbers;  // one to three sections for numbers
  std::optional<Section> text;   // the section for text, if the code has one
  bool general = false;          // numbers render as General (a plain "General", or an error)
};

NumberFormatCode readNumberFormatCode(std::string_view code);

// Appends the text of `value` under a section for numbers. A negative value gets a leading '-';
// a section chosen for negative numbers is given the value without its sign.
void renderNumber(const Section& section, double value, bool date1904, std::string& out);
// Appends the text of a text value under the section for text.
void renderText(const Section& section, std::string_view text, std::string& out);
void appendGeneral(double value, std::string& out);

}  // namespace corvane::xlsx
