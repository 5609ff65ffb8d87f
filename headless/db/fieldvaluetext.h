#pragma once

#include <string>

#include "host/acvalue.h"

namespace corvane::headless {

class Database;

// A field's value as the host displays it: formatted with the field's format string and the
// drawing's unit settings.
std::wstring displayFieldValue(const host::AcValue& value, const std::wstring& format, const Database& db);

}  // namespace corvane::headless
