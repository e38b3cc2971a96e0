#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Result.h"
#include "settings/NimbraConfig.h"

namespace veloria {

/// The record as one JSON object (UTF-8, indented, with a line feed at its end), one member for each field in
/// declaration order; `customPalette` only when there is one. Doubles and colour stops come back exactly.
/// Nothing for a record that decodeSettings() would refuse or that JSON can't hold: a number that is not finite, a
/// string that is not UTF-8, a custom palette that is not valid, more than maximumJsonBytes.
std::optional<std::string> encodeSettings(const NimbraConfig& config);

/// Reads a record from bytes of any origin, all or nothing. Fails when the bytes are not a JSON object (see
/// parseStrictJson()), when any key but `customPalette` is missing, or when a value is of the wrong kind: - a truth
/// value is true or false, a string is a string, an enum is exactly one of its raw values; - a double is any number; an
/// integer is a number without a fraction that fits 64 bits (60.0 is 60); - `customPalette` is null (as if missing) or
/// an object with a string `name` and `stops`: at least four, each of at least three numbers from 0 to 1, of which the
/// first three count. Unknown keys are ignored; of duplicate keys the last counts. No value is clamped. The error names
/// the key and says what is expected.
Result<NimbraConfig> decodeSettings(std::string_view bytes);

/// One field, for help texts.
struct SettingsField {
  std::string_view key;
  std::string kind;         ///< what its value is, such as "a number" or "one of \"mask\", \"halo\", \"ignore\""
  std::string defaultJson;  ///< its default as JSON; "null" when it is absent by default
};

/// All fields in declaration order.
const std::vector<SettingsField>& settingsFields();

/// Sets one field to a value given as JSON text, checked as decodeSettings() does. On failure the record is unchanged
/// and the error says what is expected; for an unknown key it suggests similar ones.
Result<Done> setField(NimbraConfig& config, std::string_view key, std::string_view json);

}  // namespace veloria
