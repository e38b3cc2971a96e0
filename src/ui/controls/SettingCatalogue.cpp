#include "ui/controls/SettingCatalogue.h"

#include <algorithm>
#include <type_traits>

namespace veloria {

namespace {

#ifdef __APPLE__
constexpr const char* keptTextHelp = QT_TRANSLATE_NOOP("SettingCatalogue",
                                                       "Above the bar: leaves its text and icons free. To see them the "
                                                       "system asks you for the Screen Recording permission; "
                                                       "nothing is recorded or sent anywhere.");
#else
constexpr const char* keptTextHelp =
    QT_TRANSLATE_NOOP("SettingCatalogue", "Above the bar: leaves its text and icons free.");
#endif

/// Of a number.
Range rangeOf(std::string_view key) {
#define VELORIA_NUMBER(type, name, initial, group, low, high) \
  if (key == #name) return ranges::name;
#include "settings/NimbraConfigFields.h"
  return {};
}

}  // namespace

struct SettingCatalogue::Builder {
  void group(SettingTab tab, const char* title, std::vector<Setting> settings) {
    for (Setting& setting : settings) {
      const Range range = rangeOf(setting.key);
      setting.range.minimum = range.low;
      setting.range.maximum = range.high;
      setting.tab = tab;
      setting.group = title;
      all.push_back(setting);
    }
  }
  std::vector<Setting> all;
};

// A field's key and where it is.
#define FIELD(name) #name, &NimbraConfig::name

void SettingCatalogue::addLook(Builder& builder) {
  builder.group(SettingTab::look, QT_TR_NOOP("Light"),
                {{FIELD(exposure),
                  QT_TR_NOOP("Exposure"),
                  QT_TR_NOOP("How bright the light is."),
                  QT_TR_NOOP("brightness luminosity dim dark"),
                  {0.01, 2, Curve::squared}},
                 {FIELD(opacity), QT_TR_NOOP("Opacity"), QT_TR_NOOP("How much of it is there at all."),
                  QT_TR_NOOP("alpha transparency see-through strength")},
                 {FIELD(contrast), QT_TR_NOOP("Contrast"), QT_TR_NOOP("How far dark and bright lie apart."),
                  QT_TR_NOOP("tone flat punch")},
                 {FIELD(coverGain),
                  QT_TR_NOOP("Cover"),
                  QT_TR_NOOP("How soon light hides what lies behind it."),
                  QT_TR_NOOP("alpha dense solid see-through"),
                  {0.01, 2, Curve::squared}},
                 {FIELD(additive), QT_TR_NOOP("Add to what is behind"),
                  QT_TR_NOOP("At 1 light only adds and never hides."), QT_TR_NOOP("blend blending additive")}});
  builder.group(
      SettingTab::look, QT_TR_NOOP("Colour"),
      {{FIELD(saturation), QT_TR_NOOP("Saturation"), QT_TR_NOOP("From grey to vivid."),
        QT_TR_NOOP("color vivid grey gray colourful")},
       {FIELD(hueShift), QT_TR_NOOP("Hue"), QT_TR_NOOP("Turns all colours; 1 is once around the wheel."),
        QT_TR_NOOP("color tint shift rotate wheel")},
       {FIELD(colorCycle),
        QT_TR_NOOP("Colour cycle"),
        QT_TR_NOOP("How fast the hue drifts over time."),
        QT_TR_NOOP("color rainbow rotate hue speed"),
        {0.0001, 4, Curve::cubed}},
       {FIELD(hueSpread), QT_TR_NOOP("Hue spread"), QT_TR_NOOP("How far colours differ along the band."),
        QT_TR_NOOP("color variety rainbow")},
       {FIELD(hueSpreadScale),
        QT_TR_NOOP("Hue spread scale"),
        QT_TR_NOOP("How often the hue changes along the band."),
        QT_TR_NOOP("color size frequency"),
        {0.1, 1}},
       {FIELD(hueSpreadDrift),
        QT_TR_NOOP("Hue spread drift"),
        QT_TR_NOOP("How fast these differences move."),
        QT_TR_NOOP("color speed"),
        {0.001, 3, Curve::squared}},
       {FIELD(heightTint), QT_TR_NOOP("Tint by height"),
        QT_TR_NOOP("How much the tips take the palette's last colour."), QT_TR_NOOP("color gradient vertical top")},
       {FIELD(paletteSpread), QT_TR_NOOP("Palette spread"), QT_TR_NOOP("How much of the palette is seen side by side."),
        QT_TR_NOOP("color gradient stops variety")}});
  builder.group(
      SettingTab::look, QT_TR_NOOP("Glow"),
      {{FIELD(glowAmount), QT_TR_NOOP("Glow"), QT_TR_NOOP("How strongly bright light blooms."),
        QT_TR_NOOP("bloom halo blur shine amount")},
       {FIELD(glowRadius),
        QT_TR_NOOP("Glow size"),
        QT_TR_NOOP("How far the bloom reaches."),
        QT_TR_NOOP("bloom radius blur spread"),
        {0.1, 1}},
       {FIELD(ambientLevel),
        QT_TR_NOOP("Ambient light"),
        QT_TR_NOOP("A faint light that is always there."),
        QT_TR_NOOP("background base floor haze"),
        {0.005, 3, Curve::squared}},
       {FIELD(hdrGlow), QT_TR_NOOP("Brighter than white"),
        QT_TR_NOOP("Uses the extended range of displays that have one."), QT_TR_NOOP("HDR EDR glow extended range")}});
  builder.group(SettingTab::look, QT_TR_NOOP("Rays"),
                {{FIELD(rayIntensity), QT_TR_NOOP("Rays"), QT_TR_NOOP("From soft fog to combed curtains."),
                  QT_TR_NOOP("curtain streaks lines strength")},
                 {FIELD(raySharpness),
                  QT_TR_NOOP("Sharpness"),
                  QT_TR_NOOP("How thin the rays are and how dark the gaps."),
                  QT_TR_NOOP("ray thin crisp soft"),
                  {0.1, 1}},
                 {FIELD(rayScale),
                  QT_TR_NOOP("Fineness"),
                  QT_TR_NOOP("How many rays stand side by side."),
                  QT_TR_NOOP("ray scale size density number"),
                  {0.1, 1, Curve::logarithmic}},
                 {FIELD(raySpeed),
                  QT_TR_NOOP("Ray speed"),
                  QT_TR_NOOP("How fast the rays change."),
                  QT_TR_NOOP("animation motion flicker"),
                  {0.001, 3, Curve::cubed}},
                 {FIELD(rayFlow),
                  QT_TR_NOOP("Lean"),
                  QT_TR_NOOP("How much the rays lean with the flow."),
                  QT_TR_NOOP("ray flow bend tilt"),
                  {0.005, 3, Curve::squared}},
                 {FIELD(shimmer),
                  QT_TR_NOOP("Shimmer"),
                  QT_TR_NOOP("A quick sparkle in the light."),
                  QT_TR_NOOP("sparkle glitter flicker twinkle"),
                  {0.005, 3, Curve::squared}},
                 {FIELD(detailOctaves),
                  QT_TR_NOOP("Detail"),
                  QT_TR_NOOP("Layers of finer rays within the rays."),
                  QT_TR_NOOP("octaves noise texture ray"),
                  {1, 0}}});
}

void SettingCatalogue::addMotion(Builder& builder) {
  builder.group(SettingTab::motion, QT_TR_NOOP("Pace"),
                {{FIELD(tempo),
                  QT_TR_NOOP("Tempo"),
                  QT_TR_NOOP("The pace of everything."),
                  QT_TR_NOOP("speed fast slow"),
                  {0.01, 2, Curve::logarithmic, QT_TR_NOOP("×")}},
                 {FIELD(timeScale),
                  QT_TR_NOOP("Time scale"),
                  QT_TR_NOOP("How fast the fluid's own time runs."),
                  QT_TR_NOOP("speed fast slow motion"),
                  {0.01, 2, Curve::logarithmic, QT_TR_NOOP("×")}}});
  builder.group(SettingTab::motion, QT_TR_NOOP("Flow"),
                {{FIELD(flowSpeed),
                  QT_TR_NOOP("Wind"),
                  QT_TR_NOOP("Sideways drift; below 0 it blows to the left."),
                  QT_TR_NOOP("flow drift direction speed"),
                  {0.01, 2, Curve::squared}},
                 {FIELD(flowShear),
                  QT_TR_NOOP("Shear"),
                  QT_TR_NOOP("How differently top and bottom drift."),
                  QT_TR_NOOP("wind flow fold"),
                  {0.01, 2, Curve::squared}},
                 {FIELD(buoyancy),
                  QT_TR_NOOP("Buoyancy"),
                  QT_TR_NOOP("Light rises; below 0 it sinks."),
                  QT_TR_NOOP("lift rise sink gravity up down"),
                  {0.01, 2, Curve::squared}}});
  builder.group(SettingTab::motion, QT_TR_NOOP("Swirls"),
                {{FIELD(curlStrength),
                  QT_TR_NOOP("Curl"),
                  QT_TR_NOOP("How hard hidden currents stir."),
                  QT_TR_NOOP("turbulence noise stir strength"),
                  {0.01, 2, Curve::squared}},
                 {FIELD(curlScale),
                  QT_TR_NOOP("Curl scale"),
                  QT_TR_NOOP("Small values stir in large swirls."),
                  QT_TR_NOOP("turbulence size frequency"),
                  {0.1, 1, Curve::logarithmic}},
                 {FIELD(curlSpeed),
                  QT_TR_NOOP("Curl speed"),
                  QT_TR_NOOP("How fast these currents change."),
                  QT_TR_NOOP("turbulence evolution"),
                  {0.001, 3, Curve::cubed}},
                 {FIELD(curlOctaves),
                  QT_TR_NOOP("Curl detail"),
                  QT_TR_NOOP("Layers of smaller swirls within the swirls."),
                  QT_TR_NOOP("turbulence octaves noise"),
                  {1, 0}},
                 {FIELD(vorticity),
                  QT_TR_NOOP("Vorticity"),
                  QT_TR_NOOP("Keeps small whirls alive."),
                  QT_TR_NOOP("confinement whirl eddy"),
                  {0.01, 2, Curve::squared}}});
  builder.group(
      SettingTab::motion, QT_TR_NOOP("New light"),
      {{FIELD(emitRate), QT_TR_NOOP("Birth rate"), QT_TR_NOOP("How much new light is born."),
        QT_TR_NOOP("emit emission dye amount")},
       {FIELD(emitScale),
        QT_TR_NOOP("Number of sources"),
        QT_TR_NOOP("Small values make few, wide sources."),
        QT_TR_NOOP("emit scale size spread"),
        {0.1, 1, Curve::logarithmic}},
       {FIELD(emitSpeed),
        QT_TR_NOOP("Wandering"),
        QT_TR_NOOP("How fast the sources move about."),
        QT_TR_NOOP("emit speed drift"),
        {0.001, 3, Curve::cubed}},
       {FIELD(emitHeight), QT_TR_NOOP("Height of curtains"), QT_TR_NOOP("How far up new light reaches."),
        QT_TR_NOOP("emit tall size")},
       {FIELD(emitCenter), QT_TR_NOOP("Position"), QT_TR_NOOP("0 is the lower edge of the band, 1 the upper one."),
        QT_TR_NOOP("emit centre center vertical middle")},
       {FIELD(emitThreshold), QT_TR_NOOP("Gaps"), QT_TR_NOOP("High values leave more of the band dark."),
        QT_TR_NOOP("emit threshold sparse dark")}});
  builder.group(SettingTab::motion, QT_TR_NOOP("Fading"),
                {{FIELD(dyeDissipation),
                  QT_TR_NOOP("Light that stays"),
                  QT_TR_NOOP("The share that is left after each frame."),
                  QT_TR_NOOP("fade dye dissipation trail afterglow persistence"),
                  {0.0001, 4, Curve::nearOne}},
                 {FIELD(velDissipation),
                  QT_TR_NOOP("Motion that stays"),
                  QT_TR_NOOP("The share that is left after each frame."),
                  QT_TR_NOOP("velocity dissipation damping friction"),
                  {0.0001, 4, Curve::nearOne}}});
}

void SettingCatalogue::addBar(Builder& builder) {
  builder.group(SettingTab::bar, QT_TR_NOOP("Place"),
                {{FIELD(layerMode), QT_TR_NOOP("Layer"), QT_TR_NOOP("Where the light is."),
                  QT_TR_NOOP("level above below wallpaper panel menu z-order")},
                 {FIELD(extraHeight),
                  QT_TR_NOOP("Bleed"),
                  QT_TR_NOOP("How far the light hangs down below the bar."),
                  QT_TR_NOOP("extra height taller size below"),
                  {1, 0, Curve::squared, QT_TR_NOOP(" pt")}},
                 {FIELD(allDisplays), QT_TR_NOOP("On all displays"), QT_TR_NOOP("Otherwise on the main one only."),
                  QT_TR_NOOP("monitors screens second")}});
  builder.group(SettingTab::bar, QT_TR_NOOP("Edges"),
                {{FIELD(fadeBottom), QT_TR_NOOP("Fade at the bottom"),
                  QT_TR_NOOP("Of the part that hangs below the bar."), QT_TR_NOOP("soft edge lower")},
                 {FIELD(fadeTop), QT_TR_NOOP("Fade at the top"), QT_TR_NOOP("As a share of the band's height."),
                  QT_TR_NOOP("soft edge upper")},
                 {FIELD(fadeSide),
                  QT_TR_NOOP("Fade at the sides"),
                  QT_TR_NOOP("As a share of the band's width."),
                  QT_TR_NOOP("soft edge left right"),
                  {0.001, 3, Curve::squared}}});
  builder.group(SettingTab::bar, QT_TR_NOOP("Background"),
                {{FIELD(opaqueBackground), QT_TR_NOOP("Dark background"),
                  QT_TR_NOOP("Otherwise the desktop shows through the gaps. Never above the bar."),
                  QT_TR_NOOP("opaque black transparent")},
                 {FIELD(backgroundLift), QT_TR_NOOP("Background colour"),
                  QT_TR_NOOP("A trace of the palette in the dark."), QT_TR_NOOP("lift black level")}});
  builder.group(SettingTab::bar, QT_TR_NOOP("Bar text"),
                {{FIELD(preserveMenuBarText), QT_TR_NOOP("Keep the bar's text readable"), keptTextHelp,
                  QT_TR_NOOP("preserve menu legible crisp mask capture")},
                 {FIELD(textThreshold),
                  QT_TR_NOOP("Threshold"),
                  QT_TR_NOOP("How much text must stand out to be kept."),
                  QT_TR_NOOP("text mask sensitivity"),
                  {0.005, 3, Curve::squared}},
                 {FIELD(textSoftness),
                  QT_TR_NOOP("Softness"),
                  QT_TR_NOOP("How gently the light gives way to text."),
                  QT_TR_NOOP("text mask smooth"),
                  {0.005, 3, Curve::squared}},
                 {FIELD(textDilate),
                  QT_TR_NOOP("Room around text"),
                  QT_TR_NOOP("How far around its strokes."),
                  QT_TR_NOOP("text mask dilate grow margin"),
                  {0.1, 1, Curve::linear, QT_TR_NOOP(" px")}},
                 {FIELD(textBlur),
                  QT_TR_NOOP("Size of text"),
                  QT_TR_NOOP("About as much as its letters are high."),
                  QT_TR_NOOP("text mask blur"),
                  {0.5, 1, Curve::linear, QT_TR_NOOP(" px")}},
                 {FIELD(textShadow), QT_TR_NOOP("Shadow"), QT_TR_NOOP("Darkens the light near text."),
                  QT_TR_NOOP("text mask contrast")},
                 {FIELD(textShadowSpread),
                  QT_TR_NOOP("Size of the shadow"),
                  QT_TR_NOOP("How far it reaches."),
                  QT_TR_NOOP("text mask spread"),
                  {0.5, 1, Curve::linear, QT_TR_NOOP(" px")}}});
  builder.group(SettingTab::bar, QT_TR_NOOP("Camera housing"),
                {{FIELD(notchMode), QT_TR_NOOP("At the housing"), QT_TR_NOOP("What the light does there."),
                  QT_TR_NOOP("notch cutout camera")},
                 {FIELD(notchFeather),
                  QT_TR_NOOP("Feather"),
                  QT_TR_NOOP("How softly the light ends there."),
                  QT_TR_NOOP("notch cutout soft edge"),
                  {0.001, 3, Curve::squared}},
                 {FIELD(notchPadding),
                  QT_TR_NOOP("Padding"),
                  QT_TR_NOOP("Room around the housing."),
                  QT_TR_NOOP("notch cutout margin"),
                  {0.5, 1, Curve::linear, QT_TR_NOOP(" pt")}}});
}

void SettingCatalogue::addDrive(Builder& builder) {
  builder.group(
      SettingTab::drive, QT_TR_NOOP("Desktop picture"),
      {{FIELD(matchWallpaper), QT_TR_NOOP("Colours of the desktop picture"),
        QT_TR_NOOP("Takes the palette from your wallpaper."), QT_TR_NOOP("wallpaper match background palette color")}});
  builder.group(SettingTab::drive, QT_TR_NOOP("Place of the weather"),
                {{FIELD(weatherLatitude),
                  QT_TR_NOOP("Latitude"),
                  QT_TR_NOOP("Degrees; north is above 0."),
                  QT_TR_NOOP("location position weather wind coordinates"),
                  {0.01, 4, Curve::linear, QT_TR_NOOP("°")}},
                 {FIELD(weatherLongitude),
                  QT_TR_NOOP("Longitude"),
                  QT_TR_NOOP("Degrees; east is above 0."),
                  QT_TR_NOOP("location position weather wind coordinates"),
                  {0.01, 4, Curve::linear, QT_TR_NOOP("°")}}});
}

void SettingCatalogue::addPointer(Builder& builder) {
  builder.group(SettingTab::pointer, QT_TR_NOOP("Pointer interaction"),
                {{FIELD(pointerMode), QT_TR_NOOP("Near the pointer"), QT_TR_NOOP("What the light does."),
                  QT_TR_NOOP("mouse cursor touch hover")},
                 {FIELD(pointerStrength), QT_TR_NOOP("Strength"), QT_TR_NOOP("Of the push, the swirl or the calm."),
                  QT_TR_NOOP("mouse cursor force")},
                 {FIELD(pointerRadius),
                  QT_TR_NOOP("Reach"),
                  QT_TR_NOOP("How far around the pointer."),
                  QT_TR_NOOP("mouse cursor radius size"),
                  {0.01, 2, Curve::squared}},
                 {FIELD(pointerGlow), QT_TR_NOOP("Glow of the pointer"),
                  QT_TR_NOOP("How bright the following glow is."), QT_TR_NOOP("mouse cursor light")},
                 {FIELD(pointerOnlyInStrip), QT_TR_NOOP("Only over the band"),
                  QT_TR_NOOP("Otherwise from further around it, too."), QT_TR_NOOP("mouse cursor strip inside")}});
}

void SettingCatalogue::addSystem(Builder& builder) {
  builder.group(SettingTab::system, QT_TR_NOOP("Running"),
                {{FIELD(enabled), QT_TR_NOOP("Show the band"), QT_TR_NOOP("Off: nothing is drawn, nothing is spent."),
                  QT_TR_NOOP("enabled on off pause resume hide")},
                 {FIELD(pauseInFullScreen), QT_TR_NOOP("Pause in full-screen apps"),
                  QT_TR_NOOP("Games and films get the whole GPU."), QT_TR_NOOP("fullscreen game video")},
                 {FIELD(pauseOnBattery), QT_TR_NOOP("Pause on battery"), QT_TR_NOOP("Starts again when power is back."),
                  QT_TR_NOOP("energy power laptop save")},
                 {FIELD(framesPerSecond),
                  QT_TR_NOOP("Frame rate"),
                  QT_TR_NOOP("Fewer frames cost less power."),
                  QT_TR_NOOP("fps frames per second refresh hertz performance"),
                  {1, 0, Curve::squared, QT_TR_NOOP(" fps")}}});
  builder.group(SettingTab::system, QT_TR_NOOP("Resolution"),
                {{FIELD(quality),
                  QT_TR_NOOP("Quality"),
                  QT_TR_NOOP("How fine the fluid's grid is. More costs more."),
                  QT_TR_NOOP("grid resolution performance GPU"),
                  {0.05, 2, Curve::linear, QT_TR_NOOP("×")}},
                 {FIELD(verticalStretch),
                  QT_TR_NOOP("Rows"),
                  QT_TR_NOOP("How much finer it is from top to bottom."),
                  QT_TR_NOOP("vertical stretch grid resolution performance"),
                  {0.1, 1, Curve::linear, QT_TR_NOOP("×")}},
                 {FIELD(pressureIterations),
                  QT_TR_NOOP("Pressure passes"),
                  QT_TR_NOOP("More make the swirls truer and cost more."),
                  QT_TR_NOOP("iterations jacobi solver performance"),
                  {1, 0, Curve::squared}}});
}

#undef FIELD

std::vector<Choice> SettingCatalogue::layerChoices() {
  return {{QT_TR_NOOP("Under the bar"), QT_TR_NOOP("On the desktop, behind all windows. Seen where the bar is clear.")},
          {QT_TR_NOOP("Over the bar"), QT_TR_NOOP("In front of the bar. Clicks go through.")},
          {QT_TR_NOOP("Whole desktop"), QT_TR_NOOP("A live wallpaper, behind all windows.")}};
}

std::vector<Choice> SettingCatalogue::notchChoices() {
  return {{QT_TR_NOOP("Keep it dark"), QT_TR_NOOP("The light ends at the housing.")},
          {QT_TR_NOOP("Trace with light"), QT_TR_NOOP("A bright line around it.")},
          {QT_TR_NOOP("Ignore it"), QT_TR_NOOP("The light goes on behind it.")}};
}

std::vector<Choice> SettingCatalogue::pointerChoices() {
  return {{QT_TR_NOOP("None"), QT_TR_NOOP("The pointer is not followed.")},
          {QT_TR_NOOP("Glow follow"), QT_TR_NOOP("A soft glow goes along with it.")},
          {QT_TR_NOOP("Push the fluid"), QT_TR_NOOP("Drags the light along.")},
          {QT_TR_NOOP("Swirl"), QT_TR_NOOP("Stirs the light around it.")},
          {QT_TR_NOOP("Calm"), QT_TR_NOOP("Stills the light around it.")}};
}

const std::vector<Setting>& SettingCatalogue::all() {
  static const std::vector<Setting> settings = [] {
    Builder builder;
    addLook(builder);
    addMotion(builder);
    addBar(builder);
    addDrive(builder);
    addPointer(builder);
    addSystem(builder);
    return builder.all;
  }();
  return settings;
}

const Setting* SettingCatalogue::find(std::string_view key) {
  const auto found =
      std::find_if(all().begin(), all().end(), [&](const Setting& setting) { return setting.key == key; });
  return found == all().end() ? nullptr : &*found;
}

std::vector<Choice> SettingCatalogue::choices(const Setting& setting) {
  if (std::holds_alternative<LayerMode NimbraConfig::*>(setting.field)) return layerChoices();
  if (std::holds_alternative<NotchMode NimbraConfig::*>(setting.field)) return notchChoices();
  if (std::holds_alternative<PointerMode NimbraConfig::*>(setting.field)) return pointerChoices();
  return {};
}

const char* SettingCatalogue::tabTitle(SettingTab tab) {
  switch (tab) {
    case SettingTab::look:
      return QT_TR_NOOP("Look");
    case SettingTab::motion:
      return QT_TR_NOOP("Motion");
    case SettingTab::bar:
      return QT_TR_NOOP("Bar");
    case SettingTab::drive:
      return QT_TR_NOOP("Drive");
    case SettingTab::pointer:
      return QT_TR_NOOP("Pointer");
    case SettingTab::system:
      return QT_TR_NOOP("System");
  }
  return "";
}

}  // namespace veloria
