#pragma once

#include "ui/controls/SettingCatalogue.h"

namespace veloria {

/// Reads and writes any setting as a number: a switch is 0 or 1, a choice the index of its value.

enum class SettingKind { toggle, number, choice };
SettingKind kindOf(const Setting& setting);

/// The record's value, in range or not. Integers above 2^53 lose their last digits.
double valueIn(const NimbraConfig& config, const Setting& setting);

/// Writes a value, clamped to the range of a number or the choices of a choice. Integers are rounded. NaN changes
/// nothing.
void setValue(NimbraConfig& config, const Setting& setting, double value);

bool isDefault(const NimbraConfig& config, const Setting& setting);
void resetToDefault(NimbraConfig& config, const Setting& setting);

/// A value's place on a slider's travel, 0 to 1. Values out of range are at the end, NaN is at 0.
double travelOf(const NumberRange& range, double value);

/// The value at a place on the travel (clamped to 0 to 1), rounded to the range's decimals and within the range.
double valueAt(const NumberRange& range, double travel);

/// The value after a move by `travel` (-1 to 1): at least one fine step away from `value` and within the range.
double movedBy(const NumberRange& range, double value, double travel);

/// The value `steps` fine steps further, within the range.
double steppedBy(const NumberRange& range, double value, int steps);

}  // namespace veloria
