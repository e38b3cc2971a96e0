#include "platform/linux/x11/X11Client.h"

#include <xcb/randr.h>

#include <cstring>
#include <stdexcept>

namespace veloria {

namespace {

constexpr std::size_t mostMonitors = 64;

std::string describeDisplay(const std::string& name) {
  if (!name.empty()) return name;
  const char* fromEnvironment = std::getenv("DISPLAY");
  return fromEnvironment != nullptr && *fromEnvironment != '\0' ? fromEnvironment : "(DISPLAY is not set)";
}

xcb_screen_t* screenAt(xcb_connection_t* connection, int number) {
  auto it = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (int i = 0; i < number && it.rem > 1; ++i) xcb_screen_next(&it);
  return it.rem > 0 ? it.data : nullptr;
}

}  // namespace

const char* connectionErrorText(int error) {
  switch (error) {
    case XCB_CONN_CLOSED_MEM_INSUFFICIENT:
      return "out of memory";
    case XCB_CONN_CLOSED_PARSE_ERR:
      return "the display's name is not valid";
    case XCB_CONN_CLOSED_INVALID_SCREEN:
      return "the display has no such screen";
    default:
      return "the connection was refused or has ended";
  }
}

X11Client::X11Client(const std::string& displayName)
    : displayName_(describeDisplay(displayName)),
      connection_(xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenNumber_)) {
  const int error = xcb_connection_has_error(raw());
  if (error == 0) screen_ = screenAt(raw(), screenNumber_);
  if (screen_ == nullptr) {
    throw std::runtime_error("The X display " + displayName_ + " can't be opened: " + connectionErrorText(error) + ".");
  }
}

X11Client::~X11Client() = default;

xcb_get_property_cookie_t X11Client::requestProperty(xcb_window_t window, xcb_atom_t property,
                                                     std::uint32_t maximumWords) const {
  return xcb_get_property(raw(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, maximumWords);
}

std::vector<std::uint32_t> X11Client::numbers(xcb_get_property_cookie_t cookie) {
  const auto property = reply(xcb_get_property_reply, cookie);
  if (!property || property->format != 32) return {};
  const auto count = static_cast<std::size_t>(xcb_get_property_value_length(property.get())) / sizeof(std::uint32_t);
  std::vector<std::uint32_t> values(count);
  if (count > 0) std::memcpy(values.data(), xcb_get_property_value(property.get()), count * sizeof(std::uint32_t));
  return values;
}

std::string X11Client::text(xcb_get_property_cookie_t cookie) {
  const auto property = reply(xcb_get_property_reply, cookie);
  if (!property || property->format != 8) return {};
  return {static_cast<const char*>(xcb_get_property_value(property.get())),
          static_cast<std::size_t>(xcb_get_property_value_length(property.get()))};
}

PixelRect X11Client::rootRect() {
  const auto geometry = reply(xcb_get_geometry_reply, xcb_get_geometry(raw(), root()));
  return geometry ? PixelRect{0, 0, geometry->width, geometry->height} : PixelRect{};
}

X11Extension X11Client::extension(xcb_extension_t* id) const {
  const auto* data = xcb_get_extension_data(raw(), id);
  return data != nullptr && data->present != 0 ? X11Extension{true, data->first_event} : X11Extension{};
}

X11Extension X11Client::randrExtension() {
  X11Extension randr = extension(&xcb_randr_id);
  if (randr.present) {
    randr.present = atLeast(reply(xcb_randr_query_version_reply, xcb_randr_query_version(raw(), 1, 5)), 1, 5);
  }
  return randr;
}

std::vector<X11Monitor> X11Client::monitors() {
  const auto answer = reply(xcb_randr_get_monitors_reply, xcb_randr_get_monitors(raw(), root(), 1));
  if (!answer) return {};
  std::vector<X11Monitor> monitors;
  std::vector<xcb_get_atom_name_cookie_t> names;
  auto it = xcb_randr_get_monitors_monitors_iterator(answer.get());
  for (; it.rem > 0 && monitors.size() < mostMonitors; xcb_randr_monitor_info_next(&it)) {
    const auto& info = *it.data;
    monitors.push_back({{}, {info.x, info.y, info.width, info.height}, info.primary != 0});
    names.push_back(xcb_get_atom_name(raw(), info.name));
  }
  for (std::size_t i = 0; i < names.size(); ++i) monitors[i].name = atomName(names[i]);
  return monitors;
}

std::string X11Client::atomName(xcb_get_atom_name_cookie_t cookie) {
  const auto name = reply(xcb_get_atom_name_reply, cookie);
  if (!name) return {};
  return {xcb_get_atom_name_name(name.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get()))};
}

}  // namespace veloria
