#include "ui/controls/SettingCatalogue.h"

#include <algorithm>
#include <array>

namespace veloria {

namespace {

#ifdef __APPLE__
constexpr const char* keptTextHelp = QT_TRANSLATE_NOOP(
    "SettingCatalogue",
    "When over the bar: keeps its text and icons uncovered. To see them the system asks you for the Screen Recording "
    "permission; nothing is recorded or sent anywhere.");
constexpr const char* wholeDesktopHelp = QT_TRANSLATE_NOOP("SettingCatalogue", "A live wallpaper, behind all windows.");
#else
constexpr const char* wholeDesktopHelp = QT_TRANSLATE_NOOP(
    "SettingCatalogue", "A live wallpaper, behind all windows. On X11 it covers the icons on the desktop.");
constexpr const char* keptTextHelp =
    QT_TRANSLATE_NOOP("SettingCatalogue", "When over the bar: keeps its text and icons uncovered.");
#endif

/// The range of a number, from the table of the settings.
Range rangeOf(std::string_view key) {
#define VELORIA_NUMBER(type, name, initial, group, low, high) \
  if (key == #name) return ranges::name;
#include "settings/NimbraConfigFields.h"
  return {};
}

Setting row(std::string_view key, SettingField field, const char* title, const char* help, const char* synonyms,
            NumberRange range = {}) {
  range.minimum = rangeOf(key).low;
  range.maximum = rangeOf(key).high;
  return {key, field, title, help, synonyms, range};
}

// A field's key and where it is.
#define FIELD(name) #name, &NimbraConfig::name

/// The settings of each card.
struct Cards {
  Q_DECLARE_TR_FUNCTIONS(SettingCatalogue)

 public:
  using Rows = std::vector<Setting>;

  static Rows light() {
    return {row(FIELD(exposure), QT_TR_NOOP("Exposure"), QT_TR_NOOP("How bright the light is."),
                QT_TR_NOOP("brightness luminosity dim dark"), {0.01, 2, Curve::squared}),
            row(FIELD(opacity), QT_TR_NOOP("Opacity"), QT_TR_NOOP("How opaque the band is."),
                QT_TR_NOOP("alpha transparency see-through strength")),
            row(FIELD(contrast), QT_TR_NOOP("Contrast"), QT_TR_NOOP("Difference between dark and bright."),
                QT_TR_NOOP("tone flat punch")),
            row(FIELD(coverGain), QT_TR_NOOP("Cover"), QT_TR_NOOP("How strongly light covers what is behind it."),
                QT_TR_NOOP("alpha dense solid hide see-through"), {0.01, 2, Curve::squared}),
            row(FIELD(additive), QT_TR_NOOP("Additive blending"),
                QT_TR_NOOP("At 1, light brightens what is behind and never covers it."), QT_TR_NOOP("add blend"))};
  }
  static Rows color() {
    return {
        row(FIELD(saturation), QT_TR_NOOP("Saturation"), QT_TR_NOOP("From grey to vivid."),
            QT_TR_NOOP("color vivid grey gray colourful")),
        row(FIELD(hueShift), QT_TR_NOOP("Hue"), QT_TR_NOOP("Shifts all colours; 1 is a full turn of the colour wheel."),
            QT_TR_NOOP("color tint shift rotate wheel")),
        row(FIELD(colorCycle), QT_TR_NOOP("Colour cycle"), QT_TR_NOOP("How fast the hue drifts over time."),
            QT_TR_NOOP("color rainbow rotate hue speed"), {0.0001, 4, Curve::cubed}),
        row(FIELD(hueSpread), QT_TR_NOOP("Hue spread"), QT_TR_NOOP("How much the hue varies along the band."),
            QT_TR_NOOP("color variety rainbow")),
        row(FIELD(hueSpreadScale), QT_TR_NOOP("Hue spread scale"),
            QT_TR_NOOP("How often the hue changes along the band."), QT_TR_NOOP("color size frequency"), {0.1, 1}),
        row(FIELD(hueSpreadDrift), QT_TR_NOOP("Hue spread drift"), QT_TR_NOOP("How fast the hue pattern moves."),
            QT_TR_NOOP("color speed"), {0.001, 3, Curve::squared}),
        row(FIELD(heightTint), QT_TR_NOOP("Tint by height"),
            QT_TR_NOOP("How much the tips take the palette's last colour."), QT_TR_NOOP("color gradient vertical top")),
        row(FIELD(paletteSpread), QT_TR_NOOP("Palette spread"),
            QT_TR_NOOP("How much of the palette is visible at once."), QT_TR_NOOP("color gradient stops variety"))};
  }
  static Rows glow() {
    return {row(FIELD(glowAmount), QT_TR_NOOP("Glow"), QT_TR_NOOP("How strongly bright light blooms."),
                QT_TR_NOOP("bloom halo blur shine amount")),
            row(FIELD(glowRadius), QT_TR_NOOP("Glow size"), QT_TR_NOOP("How far the bloom reaches."),
                QT_TR_NOOP("bloom radius blur spread"), {0.1, 1}),
            row(FIELD(ambientLevel), QT_TR_NOOP("Ambient light"), QT_TR_NOOP("A faint light that is always there."),
                QT_TR_NOOP("background base floor haze"), {0.005, 3, Curve::squared}),
            row(FIELD(hdrGlow), QT_TR_NOOP("HDR glow"), QT_TR_NOOP("Uses extra brightness on HDR displays."),
                QT_TR_NOOP("brighter than white EDR extended range"))};
  }
  static Rows rays() {
    return {row(FIELD(rayIntensity), QT_TR_NOOP("Rays"), QT_TR_NOOP("From soft fog to combed curtains."),
                QT_TR_NOOP("curtain streaks lines strength")),
            row(FIELD(raySharpness), QT_TR_NOOP("Sharpness"),
                QT_TR_NOOP("How thin the rays are, and how dark the gaps between them."),
                QT_TR_NOOP("ray thin crisp soft"), {0.1, 1}),
            row(FIELD(rayScale), QT_TR_NOOP("Fineness"), QT_TR_NOOP("How many rays stand side by side."),
                QT_TR_NOOP("ray scale size density number"), {0.1, 1, Curve::logarithmic}),
            row(FIELD(raySpeed), QT_TR_NOOP("Ray speed"), QT_TR_NOOP("How fast the rays change."),
                QT_TR_NOOP("animation motion flicker"), {0.001, 3, Curve::cubed}),
            row(FIELD(rayFlow), QT_TR_NOOP("Lean"), QT_TR_NOOP("How much the rays lean with the flow."),
                QT_TR_NOOP("ray flow bend tilt"), {0.005, 3, Curve::squared}),
            row(FIELD(shimmer), QT_TR_NOOP("Shimmer"), QT_TR_NOOP("A quick sparkle in the light."),
                QT_TR_NOOP("sparkle glitter flicker twinkle"), {0.005, 3, Curve::squared}),
            row(FIELD(detailOctaves), QT_TR_NOOP("Detail"), QT_TR_NOOP("Adds layers of finer rays."),
                QT_TR_NOOP("octaves noise texture ray"), {1, 0})};
  }
  static Rows pace() {
    return {row(FIELD(tempo), QT_TR_NOOP("Tempo"), QT_TR_NOOP("The overall speed."), QT_TR_NOOP("pace fast slow"),
                {0.01, 2, Curve::logarithmic, QT_TR_NOOP("×")}),
            row(FIELD(timeScale), QT_TR_NOOP("Fluid speed"), QT_TR_NOOP("How fast the light flows."),
                QT_TR_NOOP("time scale fast slow motion"), {0.01, 2, Curve::logarithmic, QT_TR_NOOP("×")})};
  }
  static Rows flow() {
    return {
        row(FIELD(flowSpeed), QT_TR_NOOP("Wind"), QT_TR_NOOP("Sideways drift; negative values blow to the left."),
            QT_TR_NOOP("flow drift direction speed"), {0.01, 2, Curve::squared}),
        row(FIELD(flowShear), QT_TR_NOOP("Shear"), QT_TR_NOOP("How differently top and bottom drift."),
            QT_TR_NOOP("wind flow fold"), {0.01, 2, Curve::squared}),
        row(FIELD(buoyancy), QT_TR_NOOP("Buoyancy"), QT_TR_NOOP("Makes the light rise; negative values make it sink."),
            QT_TR_NOOP("lift rise sink gravity up down"), {0.01, 2, Curve::squared})};
  }
  static Rows swirls() {
    return {row(FIELD(curlStrength), QT_TR_NOOP("Turbulence"), QT_TR_NOOP("How strongly the fluid is stirred."),
                QT_TR_NOOP("curl noise stir strength"), {0.01, 2, Curve::squared}),
            row(FIELD(curlScale), QT_TR_NOOP("Turbulence scale"), QT_TR_NOOP("Small values make large swirls."),
                QT_TR_NOOP("curl size frequency"), {0.1, 1, Curve::logarithmic}),
            row(FIELD(curlSpeed), QT_TR_NOOP("Turbulence speed"), QT_TR_NOOP("How fast the turbulence changes."),
                QT_TR_NOOP("curl evolution"), {0.001, 3, Curve::cubed}),
            row(FIELD(curlOctaves), QT_TR_NOOP("Turbulence detail"), QT_TR_NOOP("Adds layers of smaller swirls."),
                QT_TR_NOOP("curl octaves noise"), {1, 0}),
            row(FIELD(vorticity), QT_TR_NOOP("Vorticity"), QT_TR_NOOP("Keeps small swirls alive."),
                QT_TR_NOOP("confinement whirl eddy"), {0.01, 2, Curve::squared})};
  }
  static Rows newLight() {
    return {
        row(FIELD(emitRate), QT_TR_NOOP("Emission"), QT_TR_NOOP("How much new light appears."),
            QT_TR_NOOP("emit birth rate dye amount")),
        row(FIELD(emitScale), QT_TR_NOOP("Number of sources"), QT_TR_NOOP("Small values make few, wide sources."),
            QT_TR_NOOP("emit scale size spread"), {0.1, 1, Curve::logarithmic}),
        row(FIELD(emitSpeed), QT_TR_NOOP("Source drift"), QT_TR_NOOP("How fast the sources move."),
            QT_TR_NOOP("emit speed wander"), {0.001, 3, Curve::cubed}),
        row(FIELD(emitHeight), QT_TR_NOOP("Curtain height"), QT_TR_NOOP("How far up new light reaches."),
            QT_TR_NOOP("emit tall size")),
        row(FIELD(emitCenter), QT_TR_NOOP("Position"), QT_TR_NOOP("0 is the lower edge of the band, 1 the upper edge."),
            QT_TR_NOOP("emit centre center vertical middle")),
        row(FIELD(emitThreshold), QT_TR_NOOP("Gaps"), QT_TR_NOOP("Higher values leave more of the band dark."),
            QT_TR_NOOP("emit threshold sparse dark"))};
  }
  static Rows fading() {
    return {row(FIELD(dyeDissipation), QT_TR_NOOP("Light persistence"), QT_TR_NOOP("How slowly the light fades."),
                QT_TR_NOOP("dye dissipation trail afterglow stays"), {0.0001, 4, Curve::nearOne}),
            row(FIELD(velDissipation), QT_TR_NOOP("Motion persistence"), QT_TR_NOOP("How slowly motion dies down."),
                QT_TR_NOOP("velocity dissipation damping friction stays"), {0.0001, 4, Curve::nearOne})};
  }
  static Rows place() {
    return {row(FIELD(layerMode), QT_TR_NOOP("Layer"), QT_TR_NOOP("Where the band is drawn."),
                QT_TR_NOOP("level above below wallpaper panel menu z-order")),
            row(FIELD(extraHeight), QT_TR_NOOP("Bleed"), QT_TR_NOOP("How far the light reaches beyond the bar."),
                QT_TR_NOOP("extra height taller size hang panel"), {1, 0, Curve::squared, QT_TR_NOOP(" pt")}),
            row(FIELD(allDisplays), QT_TR_NOOP("Show on all displays"), QT_TR_NOOP("Off: only on the main display."),
                QT_TR_NOOP("monitors screens second"))};
  }
  static Rows edges() {
    return {row(FIELD(fadeBottom), QT_TR_NOOP("Fade at the bottom"),
                QT_TR_NOOP("Softens the lower edge below the bar."), QT_TR_NOOP("soft edge lower")),
            row(FIELD(fadeTop), QT_TR_NOOP("Fade at the top"), QT_TR_NOOP("As a share of the band's height."),
                QT_TR_NOOP("soft edge upper")),
            row(FIELD(fadeSide), QT_TR_NOOP("Fade at the sides"), QT_TR_NOOP("As a share of the band's width."),
                QT_TR_NOOP("soft edge left right"), {0.001, 3, Curve::squared})};
  }
  static Rows background() {
    return {
        row(FIELD(opaqueBackground), QT_TR_NOOP("Dark background"),
            QT_TR_NOOP("Off: the desktop shows through the gaps. Not used over the bar."),
            QT_TR_NOOP("opaque black transparent")),
        row(FIELD(backgroundLift), QT_TR_NOOP("Background tint"),
            QT_TR_NOOP("How much palette colour the dark background takes."), QT_TR_NOOP("color lift black level"))};
  }
  static Rows barText() {
    return {
        row(FIELD(preserveMenuBarText), QT_TR_NOOP("Keep the bar's text readable"), keptTextHelp,
            QT_TR_NOOP("preserve menu legible crisp mask capture panel")),
        row(FIELD(textThreshold), QT_TR_NOOP("Threshold"), QT_TR_NOOP("How much text must stand out to be recognised."),
            QT_TR_NOOP("text mask sensitivity"), {0.005, 3, Curve::squared}),
        row(FIELD(textSoftness), QT_TR_NOOP("Softness"), QT_TR_NOOP("How gently the light gives way to text."),
            QT_TR_NOOP("text mask smooth"), {0.005, 3, Curve::squared}),
        row(FIELD(textDilate), QT_TR_NOOP("Margin around text"), QT_TR_NOOP("How far the light keeps away from text."),
            QT_TR_NOOP("text mask dilate grow room"), {0.1, 1, Curve::linear, QT_TR_NOOP(" px")}),
        row(FIELD(textBlur), QT_TR_NOOP("Text size"), QT_TR_NOOP("Roughly the height of the letters."),
            QT_TR_NOOP("text mask blur"), {0.5, 1, Curve::linear, QT_TR_NOOP(" px")}),
        row(FIELD(textShadow), QT_TR_NOOP("Shadow"), QT_TR_NOOP("Darkens the light near text."),
            QT_TR_NOOP("text mask contrast")),
        row(FIELD(textShadowSpread), QT_TR_NOOP("Shadow size"), QT_TR_NOOP("How far the shadow reaches."),
            QT_TR_NOOP("text mask spread"), {0.5, 1, Curve::linear, QT_TR_NOOP(" px")})};
  }
  static Rows housing() {
    return {row(FIELD(notchMode), QT_TR_NOOP("Around the camera housing"),
                QT_TR_NOOP("What the light does at the housing."), QT_TR_NOOP("notch cutout camera")),
            row(FIELD(notchFeather), QT_TR_NOOP("Feather"), QT_TR_NOOP("How softly the light ends at the housing."),
                QT_TR_NOOP("notch cutout soft edge"), {0.001, 3, Curve::squared}),
            row(FIELD(notchPadding), QT_TR_NOOP("Padding"), QT_TR_NOOP("Extra space around the housing."),
                QT_TR_NOOP("notch cutout margin"), {0.5, 1, Curve::linear, QT_TR_NOOP(" pt")})};
  }
  static Rows wallpaper() {
    return {row(FIELD(matchWallpaper), QT_TR_NOOP("Match the wallpaper"),
                QT_TR_NOOP("Takes the colours from your wallpaper."),
                QT_TR_NOOP("desktop picture background palette color"))};
  }
  static Rows weather() {
    return {row(FIELD(weatherLatitude), QT_TR_NOOP("Latitude"), QT_TR_NOOP("In degrees; positive is north."),
                QT_TR_NOOP("place position wind coordinates"), {0.01, 4, Curve::linear, QT_TR_NOOP("°")}),
            row(FIELD(weatherLongitude), QT_TR_NOOP("Longitude"), QT_TR_NOOP("In degrees; positive is east."),
                QT_TR_NOOP("place position wind coordinates"), {0.01, 4, Curve::linear, QT_TR_NOOP("°")})};
  }
  static Rows pointer() {
    return {row(FIELD(pointerMode), QT_TR_NOOP("Effect"), QT_TR_NOOP("What the light does near the pointer."),
                QT_TR_NOOP("mouse cursor touch hover")),
            row(FIELD(pointerStrength), QT_TR_NOOP("Strength"), QT_TR_NOOP("How strong the effect is."),
                QT_TR_NOOP("mouse cursor force")),
            row(FIELD(pointerRadius), QT_TR_NOOP("Reach"), QT_TR_NOOP("How far around the pointer it reaches."),
                QT_TR_NOOP("mouse cursor radius size"), {0.01, 2, Curve::squared}),
            row(FIELD(pointerGlow), QT_TR_NOOP("Pointer glow"), QT_TR_NOOP("How bright it is."),
                QT_TR_NOOP("mouse cursor light")),
            row(FIELD(pointerOnlyInStrip), QT_TR_NOOP("Only over the band"),
                QT_TR_NOOP("Off: also reacts when the pointer is near the band."),
                QT_TR_NOOP("mouse cursor strip inside"))};
  }
  static Rows running() {
    return {
        row(FIELD(enabled), QT_TR_NOOP("Show the band"), QT_TR_NOOP("Off: nothing is drawn and no power is used."),
            QT_TR_NOOP("enabled on off pause resume hide")),
        row(FIELD(pauseInFullScreen), QT_TR_NOOP("Pause in full-screen apps"),
            QT_TR_NOOP("Games and films get the whole GPU."), QT_TR_NOOP("fullscreen game video")),
        row(FIELD(pauseOnBattery), QT_TR_NOOP("Pause on battery"), QT_TR_NOOP("Resumes on mains power."),
            QT_TR_NOOP("energy laptop save")),
        row(FIELD(framesPerSecond), QT_TR_NOOP("Frame rate"), QT_TR_NOOP("Fewer frames use less power."),
            QT_TR_NOOP("fps frames per second refresh hertz performance"), {1, 0, Curve::squared, QT_TR_NOOP(" fps")})};
  }
  static Rows resolution() {
    return {
        row(FIELD(quality), QT_TR_NOOP("Quality"), QT_TR_NOOP("How fine the fluid's grid is. Higher uses more GPU."),
            QT_TR_NOOP("resolution performance"), {0.05, 2, Curve::linear, QT_TR_NOOP("×")}),
        row(FIELD(verticalStretch), QT_TR_NOOP("Vertical detail"),
            QT_TR_NOOP("How much finer the grid is from top to bottom."),
            QT_TR_NOOP("rows stretch resolution performance"), {0.1, 1, Curve::linear, QT_TR_NOOP("×")}),
        row(FIELD(pressureIterations), QT_TR_NOOP("Simulation accuracy"),
            QT_TR_NOOP("Higher is more realistic and uses more GPU."),
            QT_TR_NOOP("pressure passes iterations jacobi solver performance"), {1, 0, Curve::squared})};
  }
};

#undef FIELD

}  // namespace

const std::vector<Setting>& SettingCatalogue::all() {
  static const std::vector<Setting> settings = [] {
    std::vector<Setting> all;
    const auto add = [&all](SettingTab tab, const char* group, std::vector<Setting> rows) {
      for (Setting& setting : rows) {
        setting.tab = tab;
        setting.group = group;
        all.push_back(setting);
      }
    };
    add(SettingTab::look, QT_TR_NOOP("Light"), Cards::light());
    add(SettingTab::look, QT_TR_NOOP("Colour"), Cards::color());
    add(SettingTab::look, QT_TR_NOOP("Glow"), Cards::glow());
    add(SettingTab::look, QT_TR_NOOP("Rays"), Cards::rays());
    add(SettingTab::motion, QT_TR_NOOP("Pace"), Cards::pace());
    add(SettingTab::motion, QT_TR_NOOP("Flow"), Cards::flow());
    add(SettingTab::motion, QT_TR_NOOP("Swirls"), Cards::swirls());
    add(SettingTab::motion, QT_TR_NOOP("New light"), Cards::newLight());
    add(SettingTab::motion, QT_TR_NOOP("Fading"), Cards::fading());
    add(SettingTab::bar, QT_TR_NOOP("Place"), Cards::place());
    add(SettingTab::bar, QT_TR_NOOP("Edges"), Cards::edges());
    add(SettingTab::bar, QT_TR_NOOP("Background"), Cards::background());
    add(SettingTab::bar, QT_TR_NOOP("Bar text"), Cards::barText());
    add(SettingTab::bar, QT_TR_NOOP("Camera housing"), Cards::housing());
    add(SettingTab::drive, QT_TR_NOOP("Wallpaper"), Cards::wallpaper());
    add(SettingTab::drive, QT_TR_NOOP("Weather location"), Cards::weather());
    add(SettingTab::pointer, QT_TR_NOOP("Pointer interaction"), Cards::pointer());
    add(SettingTab::system, QT_TR_NOOP("Running"), Cards::running());
    add(SettingTab::system, QT_TR_NOOP("Resolution"), Cards::resolution());
    return all;
  }();
  return settings;
}

const Setting* SettingCatalogue::find(std::string_view key) {
  const auto found = std::ranges::find(all(), key, &Setting::key);
  return found == all().end() ? nullptr : &*found;
}

std::vector<Choice> SettingCatalogue::choices(const Setting& setting) {
  if (std::holds_alternative<LayerMode NimbraConfig::*>(setting.field)) {
    return {{QT_TR_NOOP("Under the bar"),
             QT_TR_NOOP("On the desktop, behind all windows. Visible only where the bar is transparent.")},
            {QT_TR_NOOP("Over the bar"), QT_TR_NOOP("In front of the bar. Clicks pass through.")},
            {QT_TR_NOOP("Whole desktop"), wholeDesktopHelp}};
  }
  if (std::holds_alternative<NotchMode NimbraConfig::*>(setting.field)) {
    return {{QT_TR_NOOP("Keep it dark"), QT_TR_NOOP("The light ends at the housing.")},
            {QT_TR_NOOP("Trace with light"), QT_TR_NOOP("A bright line around it.")},
            {QT_TR_NOOP("Ignore it"), QT_TR_NOOP("The light continues behind it.")}};
  }
  if (std::holds_alternative<PointerMode NimbraConfig::*>(setting.field)) {
    return {{QT_TR_NOOP("None"), QT_TR_NOOP("Ignores the pointer.")},
            {QT_TR_NOOP("Glow follow"), QT_TR_NOOP("A soft glow follows the pointer.")},
            {QT_TR_NOOP("Push the fluid"), QT_TR_NOOP("Drags the light along.")},
            {QT_TR_NOOP("Swirl"), QT_TR_NOOP("Stirs the light around it.")},
            {QT_TR_NOOP("Calm"), QT_TR_NOOP("Stills the light around it.")}};
  }
  return {};
}

const char* SettingCatalogue::tabTitle(SettingTab tab) {
  static constexpr std::array titles{QT_TR_NOOP("Look"),  QT_TR_NOOP("Motion"),  QT_TR_NOOP("Bar"),
                                     QT_TR_NOOP("Drive"), QT_TR_NOOP("Pointer"), QT_TR_NOOP("System")};
  static_assert(titles.size() == settingTabCount);
  return titles.at(static_cast<std::size_t>(tab));
}

}  // namespace veloria
