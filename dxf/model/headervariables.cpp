#include "dxf/model/headervariables.h"

#include <array>
#include <string_view>
#include <vector>

#include "dxf/tags/recordedit.h"
#include "headless/db/database.h"

namespace corvane::dxf {

namespace {

enum class Form { Integer, Real, Text, Point2, Point3, Color, Separator };

struct Variable {
  const wchar_t* name;
  int code;  // the value's group code; points use 10/20(/30)
  Form form;
  bool writable = true;
};

// The header variables behind system variables of the database, with the group codes the
// header spells them with. The code page is the file's own: it is never written from here.
constexpr Variable kVariables[] = {
    {L"ANGBASE", 50, Form::Real},      {L"ANGDIR", 70, Form::Integer},      {L"AUNITS", 70, Form::Integer},
    {L"AUPREC", 70, Form::Integer},    {L"CECOLOR", 62, Form::Color},       {L"CLAYER", 8, Form::Text},
    {L"DIMDEC", 70, Form::Integer},    {L"DIMDSEP", 70, Form::Separator},   {L"DIMZIN", 70, Form::Integer},
    {L"DWGCODEPAGE", 3, Form::Text, false},
    {L"EXTMAX", 10, Form::Point3},     {L"EXTMIN", 10, Form::Point3},       {L"INSUNITS", 70, Form::Integer},
    {L"LIMMAX", 10, Form::Point2},     {L"LIMMIN", 10, Form::Point2},       {L"LTSCALE", 40, Form::Real},
    {L"LUNITS", 70, Form::Integer},    {L"LUPREC", 70, Form::Integer},      {L"MEASUREMENT", 70, Form::Integer},
    {L"PDMODE", 70, Form::Integer},    {L"TEXTSIZE", 40, Form::Real},       {L"TEXTSTYLE", 7, Form::Text},
    {L"TILEMODE", 70, Form::Integer},  {L"UNITMODE", 70, Form::Integer},
};

std::string headerName(const wchar_t* name) {
  std::string out = "$";
  for (const wchar_t* p = name; *p; ++p) out.push_back(static_cast<char>(*p));
  return out;
}

// The header's value as the database holds it; nullopt when the header has no usable value.
std::optional<host::ResBuf> readVariable(const Document& doc, const Variable& var) {
  const auto place = doc.headerVariable(headerName(var.name));
  if (!place || place->last == place->first) return std::nullopt;
  const auto tags = doc.tags(doc.headerRecord()).subspan(place->first, place->last - place->first);
  const Tag& first = tags.front();
  switch (var.form) {
    case Form::Integer:
      if (const auto v = doc.toInteger(first)) return host::ResBuf{host::RTSHORT, static_cast<std::int32_t>(*v)};
      return std::nullopt;
    case Form::Real:
      if (const auto v = doc.toDouble(first)) return host::ResBuf{host::RTREAL, *v};
      return std::nullopt;
    case Form::Text: return host::ResBuf{host::RTSTR, doc.hostText(first)};
    case Form::Color: {
      const auto v = doc.toInteger(first);
      if (!v) return std::nullopt;
      std::wstring text = *v == 256 ? L"BYLAYER" : *v == 0 ? L"BYBLOCK" : std::to_wstring(*v);
      return host::ResBuf{host::RTSTR, std::move(text)};
    }
    case Form::Separator: {
      const auto v = doc.toInteger(first);
      if (!v || *v <= 0 || *v > 0xFFFF) return std::nullopt;
      return host::ResBuf{host::RTSTR, std::wstring(1, static_cast<wchar_t>(*v))};
    }
    case Form::Point2:
    case Form::Point3: {
      std::array<double, 3> point{};
      for (const Tag& tag : tags) {
        const int axis = tag.code / 10 - 1;
        if (tag.code % 10 == 0 && axis >= 0 && axis < 3) point[static_cast<std::size_t>(axis)] = doc.toDouble(tag).value_or(0);
      }
      return host::ResBuf{host::RT3DPOINT, point};
    }
  }
  return std::nullopt;
}

// The header's tags for a value; empty when the value cannot be spelt in the header's form.
std::vector<NewTag> variableTags(const Document& doc, const Variable& var, const host::ResBuf& value) {
  const auto code = static_cast<std::int16_t>(var.code);
  const auto* integer = std::get_if<std::int32_t>(&value.value);
  const auto* real = std::get_if<double>(&value.value);
  const auto* text = std::get_if<std::wstring>(&value.value);
  const auto* point = std::get_if<std::array<double, 3>>(&value.value);
  switch (var.form) {
    case Form::Integer: if (integer) return {NewTag::integer(code, *integer)}; break;
    case Form::Real: if (real) return {NewTag::real(code, *real)}; break;
    case Form::Text: if (text) return {escapedTextTag(doc, code, *text)}; break;
    case Form::Color:
      if (text) {
        if (*text == L"BYLAYER") return {NewTag::integer(code, 256)};
        if (*text == L"BYBLOCK") return {NewTag::integer(code, 0)};
        try {
          return {NewTag::integer(code, std::stoi(*text))};
        } catch (const std::exception&) {
          return {};
        }
      }
      break;
    case Form::Separator:
      if (text && text->size() == 1) return {NewTag::integer(code, static_cast<std::int64_t>((*text)[0]))};
      break;
    case Form::Point2:
    case Form::Point3:
      if (point) {
        std::vector<NewTag> tags = {NewTag::real(10, (*point)[0]), NewTag::real(20, (*point)[1])};
        if (var.form == Form::Point3) tags.push_back(NewTag::real(30, (*point)[2]));
        return tags;
      }
      break;
  }
  return {};
}

}  // namespace

void HeaderVariables::load(const Document& doc, headless::Database& db) {
  known_.clear();
  for (const auto& var : kVariables) {
    const auto value = readVariable(doc, var);
    if (!value) continue;
    if (db.setSysVar(var.name, *value) == host::Acad::eOk) known_[var.name] = *value;
  }
  // Variables the header lacks are written only once the database changes them.
  for (const auto& var : kVariables) {
    host::ResBuf value;
    if (known_.count(var.name) == 0 && db.getSysVar(var.name, value) == host::Acad::eOk) known_[var.name] = value;
  }
}

int HeaderVariables::save(Document& doc, const headless::Database& db) {
  int written = 0;
  for (const auto& var : kVariables) {
    if (!var.writable) continue;
    host::ResBuf value;
    if (db.getSysVar(var.name, value) != host::Acad::eOk) continue;
    const auto known = known_.find(var.name);
    if (known != known_.end() && known->second == value) continue;
    const auto tags = variableTags(doc, var, value);
    if (tags.empty()) continue;
    doc.setHeaderVariable(headerName(var.name), tags);
    known_[var.name] = value;
    ++written;
  }
  return written;
}

}  // namespace corvane::dxf
