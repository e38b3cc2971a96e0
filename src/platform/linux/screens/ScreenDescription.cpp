#include "platform/linux/screens/ScreenDescription.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "base/Log.h"

namespace veloria {

namespace {

constexpr double lowestCoordinate = -32768;
constexpr double highestCoordinate = 32767;
constexpr int largestWindow = 32767;

int edge(double pixels) {
  return static_cast<int>(std::lround(std::clamp(pixels, lowestCoordinate, highestCoordinate)));
}

bool finite(const Rect& rect) {
  return std::isfinite(rect.minX()) && std::isfinite(rect.minY()) && std::isfinite(rect.maxX()) &&
         std::isfinite(rect.maxY());
}

}  // namespace

PixelRect intersection(const PixelRect& a, const PixelRect& b) {
  const int left = std::max(a.x, b.x);
  const int top = std::max(a.y, b.y);
  const PixelRect shared{left, top, std::min(a.right(), b.right()) - left, std::min(a.bottom(), b.bottom()) - top};
  return shared.empty() ? PixelRect{} : shared;
}

Rect ScreenSpace::toPoints(const PixelRect& pixels) const {
  return {(pixels.x - originX) / scale, (originBottom - pixels.bottom()) / scale, pixels.width / scale,
          pixels.height / scale};
}

PixelRect ScreenSpace::toPixels(const Rect& points, double pixelsPerPoint) const {
  if (points.empty() || !finite(points)) return {};
  const double factor = pixelsPerPoint > 0 && std::isfinite(pixelsPerPoint) ? pixelsPerPoint : scale;
  const int left = edge(originX + std::round(points.minX() * factor));
  const int right = edge(originX + std::round(points.maxX() * factor));
  const int top = edge(originBottom - std::round(points.maxY() * factor));
  const int bottom = edge(originBottom - std::round(points.minY() * factor));
  const PixelRect result{left, top, std::min(right - left, largestWindow), std::min(bottom - top, largestWindow)};
  return result.empty() ? PixelRect{} : result;
}

namespace {

constexpr double highestBar = 1000;
constexpr double largestNotch = 10000;
constexpr double baseDpi = 96;
constexpr double lowestDpi = 24;
constexpr double highestDpi = 960;
constexpr int largestSide = 65535;
constexpr int coordinateLimit = 32767;
constexpr std::string_view blanks = " \t\r";

// Plain decimal only: std::from_chars takes neither signs in front, spaces, nor a locale's comma.
std::optional<double> parseDecimal(std::string_view text, double lowest, double highest) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && value >= lowest && value <= highest ? std::optional(value) : std::nullopt;
}

std::optional<double> parsePositive(std::string_view text, double highest) {
  const auto value = parseDecimal(text, 0, highest);
  return value && *value > 0 ? value : std::nullopt;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view takeLine(std::string_view& text) {
  const auto end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return line;
}

template <typename Parse>
auto fromEnvironment(const char* variable, const char* wanted, Parse parse) -> decltype(parse(std::string_view{})) {
  const char* text = std::getenv(variable);
  if (text == nullptr || *text == '\0') return std::nullopt;
  const auto value = parse(std::string_view(text));
  if (!value) systemLog(std::string("Veloria: ") + variable + " is ignored: it should be " + wanted + ".");
  return value;
}

bool plausible(const PixelRect& frame) {
  return frame.width > 0 && frame.height > 0 && frame.width <= largestSide && frame.height <= largestSide &&
         std::abs(frame.x) <= coordinateLimit && std::abs(frame.y) <= coordinateLimit;
}

bool builtIn(std::string_view name) {
  constexpr std::array<std::string_view, 3> prefixes{"eDP", "LVDS", "DSI"};
  for (const std::string_view prefix : prefixes) {
    if (name.starts_with(prefix)) return true;
  }
  return false;
}

/// The bar that the environment tells of is where a panel is known to be, or at the top.
void applyBarHeight(Screen& screen, double barHeight) {
  const double height = std::min(barHeight, screen.frame.height / 2);
  screen.panelEdge = screen.panelEdge.value_or(PanelEdge::top);
  const bool top = screen.panelEdge == PanelEdge::top;
  const double low = top ? screen.visibleFrame.minY() : screen.frame.minY() + height;
  const double high = top ? screen.frame.maxY() - height : screen.visibleFrame.maxY();
  screen.visibleFrame.y = low;
  screen.visibleFrame.height = high - low;
  screen.statusBarThickness = height;
}

void applyNotch(Screen& screen, const Extent& notch) {
  const Rect& frame = screen.frame;
  if (notch.width >= frame.width || notch.height > frame.height / 2) return;
  const double side = (frame.width - notch.width) / 2;
  const double bottom = frame.maxY() - notch.height;
  screen.safeAreaTop = notch.height;
  screen.auxiliaryTopLeft = Rect{frame.x, bottom, side, notch.height};
  screen.auxiliaryTopRight = Rect{frame.maxX() - side, bottom, side, notch.height};
}

// Two outputs may share a name, and two names a number.
std::uint32_t unusedNumber(std::uint32_t number, std::span<const Screen> taken) {
  for (const Screen& screen : taken) {
    if (screen.number == number) return unusedNumber(number + 1 == 0 ? 1 : number + 1, taken);
  }
  return number;
}

std::optional<PanelEdge> edgeWithMoreReserved(const Screen& screen) {
  const double top = screen.reserved(PanelEdge::top);
  const double bottom = screen.reserved(PanelEdge::bottom);
  if (!(std::max(top, bottom) > 0)) return std::nullopt;
  return bottom > top ? PanelEdge::bottom : PanelEdge::top;
}

Screen describeScreen(const MonitorDescription& monitor, const ScreenSpace& space) {
  Screen screen;
  screen.name = monitor.name;
  screen.frame = space.toPoints(monitor.frame);
  screen.visibleFrame = space.toPoints(monitor.visible);
  screen.panelEdge = monitor.panel ? monitor.panel : edgeWithMoreReserved(screen);
  screen.backingScale = space.scale;
  return screen;
}

}  // namespace

std::optional<double> parseBarHeight(std::string_view text) {
  return parsePositive(text, highestBar);
}

std::optional<Extent> parseNotch(std::string_view text) {
  const auto cross = text.find('x');
  if (cross == std::string_view::npos) return std::nullopt;
  const auto width = parsePositive(text.substr(0, cross), largestNotch);
  const auto height = parsePositive(text.substr(cross + 1), largestNotch);
  return width && height ? std::optional(Extent{*width, *height}) : std::nullopt;
}

ScreenOverrides screenOverridesFromEnvironment() {
  return {fromEnvironment("NIMBRA_BAR_HEIGHT", "a number of points above 0 and up to 1000, such as 32", parseBarHeight),
          fromEnvironment("NIMBRA_NOTCH", "WIDTHxHEIGHT in points, such as 200x32", parseNotch)};
}

double scaleFromResources(std::string_view resources) {
  constexpr std::string_view key = "Xft.dpi:";
  std::optional<double> dpi;
  while (!resources.empty()) {
    const std::string_view line = trimmed(takeLine(resources));
    if (line.starts_with(key)) dpi = parseDecimal(trimmed(line.substr(key.size())), lowestDpi, highestDpi);
  }
  return dpi ? std::clamp(std::round(*dpi / baseDpi * 4) / 4, 1.0, 4.0) : 1.0;
}

std::uint32_t screenNumberForName(std::string_view name) {
  std::uint32_t hash = 2166136261U;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  return hash == 0 ? 1 : hash;
}

std::size_t notchScreenIndex(std::span<const MonitorDescription> monitors) {
  for (std::size_t i = 0; i < monitors.size(); ++i) {
    if (builtIn(monitors[i].name)) return i;
  }
  return 0;
}

std::vector<MonitorDescription> plausibleMonitors(std::vector<MonitorDescription> monitors) {
  std::vector<MonitorDescription> kept;
  for (MonitorDescription& monitor : monitors) {
    const auto same = [&](const MonitorDescription& other) { return other.frame == monitor.frame; };
    if (plausible(monitor.frame) && std::none_of(kept.begin(), kept.end(), same)) kept.push_back(std::move(monitor));
  }
  return kept;
}

ScreenSpace spaceOf(std::span<const MonitorDescription> monitors, double scale) {
  if (monitors.empty()) return {0, 0, scale};
  return {monitors.front().frame.x, monitors.front().frame.bottom(), scale};
}

std::vector<Screen> describeScreens(std::span<const MonitorDescription> monitors, double scale,
                                    const ScreenOverrides& overrides) {
  const ScreenSpace space = spaceOf(monitors, scale);
  std::vector<Screen> screens;
  for (const MonitorDescription& monitor : monitors) {
    Screen screen = describeScreen(monitor, space);
    screen.number = unusedNumber(screenNumberForName(screen.name), screens);
    if (overrides.barHeight) applyBarHeight(screen, *overrides.barHeight);
    screens.push_back(std::move(screen));
  }
  if (overrides.notch && !screens.empty()) applyNotch(screens[notchScreenIndex(monitors)], *overrides.notch);
  return screens;
}

}  // namespace veloria
