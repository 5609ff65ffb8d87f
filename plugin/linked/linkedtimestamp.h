// The time stamp a linked field keeps of its source: when the workbook, text file or other
// drawing was last written at the moment its value was read. It sits in the field's extended
// data as date-time text, so that it travels with the drawing, and lets an update skip a
// source that has not changed.
#pragma once

#include <optional>

#include "host/acdbfield.h"
#include "host/acdbobject.h"

namespace corvane {

inline constexpr wchar_t kTimeStampApp[] = L"5922BCAD362F4a2f85F978E948CC606B";

// Two times count as one when less than half a second apart, either way.
inline constexpr double kSameTimeTolerance = 1.0 / 172800.0;
bool SameTime(double a, double b) noexcept;

// The first text of the application at the outer level (texts inside braces belong to
// something else), read as a date-time; nullopt when there is none or it does not read.
std::optional<double> ReadTimeStamp(const host::AcDbObject& object);
// Registers the application when the drawing lacks it, then writes the time in place of the
// application's first outer text, or as its first text. The object must be open for write.
host::Acad::ErrorStatus WriteTimeStamp(host::AcDbObject& object, double oleDate);

// The field's present value when its stamp says the source was written at `modified` and the
// field has a value to keep; nullopt when the source must be read again.
std::optional<host::AcValue> UnchangedValue(const host::AcDbField& field, double modified);

}  // namespace corvane
