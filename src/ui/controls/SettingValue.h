#pragma once

#include "ui/controls/SettingCatalogue.h"

namespace veloria {

/// Reading and writing a setting by number, whatever its field is: a switch is 0 or 1, a choice the index of its value.

enum class SettingKind { toggle, number, choice };
SettingKind kindOf(const Setting& setting);

/// What the record holds, in range or not. Integers above 2^53 lose their last digits.
double valueIn(const NimbraConfig& config, const Setting& setting);

/// Writes a value, held to what the control offers: the range of a number, the choices of a choice. Integers are
/// rounded. A value that is not a number changes nothing.
void setValue(NimbraConfig& config, const Setting& setting, double value);

bool isDefault(const NimbraConfig& config, const Setting& setting);
void resetToDefault(NimbraConfig& config, const Setting& setting);

/// Where along a slider's travel a value stands, 0 to 1; values out of range stand at the end, what is not a number at
/// 0.
double travelOf(const NumberRange& range, double value);

/// The value at a place of the travel (held to 0 to 1), rounded to the range's decimals and within the range.
double valueAt(const NumberRange& range, double travel);

/// The value after a move by `travel` (-1 to 1): at least one fine step away from `value` and within the range.
double movedBy(const NumberRange& range, double value, double travel);

/// The value `steps` fine steps further, within the range.
double steppedBy(const NumberRange& range, double value, int steps);

}  // namespace veloria
