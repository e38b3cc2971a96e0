#pragma once

#include <QCoreApplication>
#include <cstdint>
#include <string_view>
#include <variant>
#include <vector>

#include "settings/NimbraConfig.h"

namespace veloria {

/// The tabs of the settings window, in their order.
enum class SettingTab { look, motion, bar, drive, pointer, system };
inline constexpr int settingTabCount = 6;

/// How a slider's travel maps to its range: the travel is linear in a monotone function of the value; see
/// SettingValue.h.
enum class Curve {
  linear,
  squared,      ///< finer towards 0, from which it grows both ways
  cubed,        ///< much finer towards 0
  logarithmic,  ///< each doubling takes the same travel; the minimum is above 0
  nearOne,      ///< finer towards 1, which the maximum stays below
};

/// What the control of a number offers; the record itself may hold anything.
struct NumberRange {
  double step = 0.01;  ///< the fine step of the keyboard
  int decimals = 2;    ///< a slider rounds to these
  Curve curve = Curve::linear;
  const char* unit = "";  ///< shown right after the value; to be translated
  double minimum = 0;     ///< from the table of the settings, as is the maximum
  double maximum = 0;
};

/// One of the values of an enumeration.
struct Choice {
  const char* title;
  const char* help;
};

using SettingField = std::variant<bool NimbraConfig::*, std::int64_t NimbraConfig::*, double NimbraConfig::*,
                                  LayerMode NimbraConfig::*, NotchMode NimbraConfig::*, PointerMode NimbraConfig::*>;

/// A field of the record that has an ordinary control. The texts are English; translate them for display:
/// SettingCatalogue::tr(setting.title).
struct Setting {
  std::string_view key;  ///< the field's name
  SettingField field;
  const char* title;
  const char* help;      ///< one line
  const char* synonyms;  ///< other words for it, for the search, separated by spaces
  NumberRange range{};   ///< of numbers only
  SettingTab tab{};
  const char* group = "";  ///< the title of its card
};

class SettingCatalogue {
  Q_DECLARE_TR_FUNCTIONS(SettingCatalogue)

 public:
  /// All settings in display order, by tab and by card.
  static const std::vector<Setting>& all();

  /// The setting of this key; null for a field that has no ordinary control.
  static const Setting* find(std::string_view key);

  /// The choices of a setting, in the order of the enumeration's values; empty for a number or a switch.
  static std::vector<Choice> choices(const Setting& setting);

  /// English, to be translated.
  static const char* tabTitle(SettingTab tab);
};

}  // namespace veloria
