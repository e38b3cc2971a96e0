#include "desktop/DesktopSession.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "base/OwnedDescriptor.h"

namespace veloria::tests {

namespace {

constexpr double startSeconds = 20;
constexpr std::uint32_t mostWords = 65536;

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

Owned<xcb_get_property_reply_t> fetch(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property) {
  const auto cookie = xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, mostWords);
  return Owned<xcb_get_property_reply_t>(xcb_get_property_reply(connection, cookie, nullptr));
}

}  // namespace

std::string DesktopSession::missing(std::vector<std::string> programs) {
  programs.emplace_back("Xvfb");
  return Session::missing(programs);
}

DesktopSession::DesktopSession(const Options& options) {
  startServer(options);
  observer_.reset(xcb_connect(display().c_str(), nullptr));
  if (xcb_connection_has_error(observer_.get()) != 0) throw std::runtime_error("Xvfb refuses connections.");
  root_ = xcb_setup_roots_iterator(xcb_get_setup(observer_.get())).data->root;
}

void DesktopSession::startServer(const Options& options) {
  const OwnedDescriptor number(open((folder() / "display").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  const std::string size = std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
  std::vector<std::string> argv{"Xvfb", "-displayfd", std::to_string(number.get()), "-screen", "0", size, "-noreset"};
  argv.insert(argv.end(), {"+extension", "Composite", "+extension", "RANDR", "-nolisten", "tcp"});
  argv.insert(argv.end(), options.serverArguments.begin(), options.serverArguments.end());
  server_ = std::make_unique<ChildProcess>(argv, environment_, folder() / "Xvfb.log", number.get());
  require("Xvfb did not start", *server_, [&] {
    std::string line;
    std::getline(std::ifstream(folder() / "display"), line);
    environment_["DISPLAY"] = ":" + line;
    return !line.empty();
  });
}

void DesktopSession::startWindowManager(const std::string& name) {
  std::vector<std::string> argv{name};
  if (name == "openbox") argv = {name, "--sm-disable", "--config-file", VELORIA_DESKTOP_DATA "/openbox.xml"};
  if (name == "xfwm4") argv = {"dbus-run-session", "--", name, "--compositor=off", "--vblank=off"};
  windowManager_ = run(argv);
  require(name + " does not manage windows", *windowManager_, [this] { return windowManagerRuns(); });
  require(name + " does not manage windows", *windowManager_, [this] { return managesWindows(); });
}

// A window manager that has announced itself may still drop what is asked of it for a moment.
bool DesktopSession::managesWindows() const {
  const xcb_window_t probe = xcb_generate_id(observer());
  xcb_create_window(observer(), XCB_COPY_FROM_PARENT, probe, root(), 0, 0, 8, 8, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, 0, nullptr);
  double asked = 0;
  const bool managed = waitUntil(
      [&] {
        if (now() - asked > 0.2) {
          xcb_map_window(observer(), probe);
          asked = now();
        }
        return !property(probe, "WM_STATE").empty();
      },
      startSeconds);
  xcb_destroy_window(observer(), probe);
  const auto gone = [&] {
    const auto clients = property(root(), "_NET_CLIENT_LIST");
    return std::find(clients.begin(), clients.end(), probe) == clients.end();
  };
  return managed && waitUntil(gone, startSeconds);
}

void DesktopSession::replaceWindowManager() {
  // The new check window may get the old one's number, but not what is written on it here.
  const auto check = property(root(), "_NET_SUPPORTING_WM_CHECK");
  xcb_change_property(observer(), XCB_PROP_MODE_REPLACE, check.at(0), atom("_VELORIA_TEST_MARK"), XCB_ATOM_CARDINAL, 32,
                      1, check.data());
  runToEnd({"openbox", "--restart"});
  require("openbox did not start again", *windowManager_, [&] {
    return windowManagerRuns() &&
           property(property(root(), "_NET_SUPPORTING_WM_CHECK").at(0), "_VELORIA_TEST_MARK").empty();
  });
  require("openbox does not manage windows", *windowManager_, [this] { return managesWindows(); });
}

bool DesktopSession::windowManagerRuns() const {
  const auto check = property(root(), "_NET_SUPPORTING_WM_CHECK");
  return check.size() == 1 && property(check.front(), "_NET_SUPPORTING_WM_CHECK") == check;
}

void DesktopSession::startPanel(int height, const std::string& monitor) {
  panel_.reset();
  std::ifstream source(VELORIA_DESKTOP_DATA "/tint2rc");
  std::ostringstream text;
  text << source.rdbuf() << "\npanel_size = 100% " << height << "\npanel_monitor = " << monitor << "\n";
  panel_ = run({"tint2", "-c", folder_.write("tint2rc", text.str())});
  require("tint2 shows no panel", *panel_, [&] { return panelIsUp(height); });
}

bool DesktopSession::panelIsUp(int height) const {
  for (const WindowInfo& window : windows()) {
    if (window.windowClass != "Tint2" || window.height != height) continue;
    const auto strut = property(window.id, "_NET_WM_STRUT_PARTIAL");
    if (strut.size() == 12 && strut[2] >= static_cast<std::uint32_t>(height)) return true;
  }
  return false;
}

void DesktopSession::stopPanel() {
  panel_.reset();
  waitUntil([this] { return count("Tint2") == 0; });
}

void DesktopSession::startCompositor() {
  compositor_ = run({"picom", "--config", VELORIA_DESKTOP_DATA "/picom.conf"});
  require("picom does not composite", *compositor_, [this] { return compositorRuns(); });
}

void DesktopSession::stopCompositor() {
  compositor_.reset();
  waitUntil([this] { return !compositorRuns(); });
}

bool DesktopSession::compositorRuns() const {
  const auto cookie = xcb_get_selection_owner(observer(), atom("_NET_WM_CM_S0"));
  const Owned<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(observer(), cookie, nullptr));
  return owner && owner->owner != XCB_WINDOW_NONE;
}

Screenshot DesktopSession::screenshot(const std::string&) const {
  const Owned<xcb_get_geometry_reply_t> size(
      xcb_get_geometry_reply(observer(), xcb_get_geometry(observer(), root()), nullptr));
  if (!size) throw std::runtime_error("The X server is gone.");
  const auto cookie =
      xcb_get_image(observer(), XCB_IMAGE_FORMAT_Z_PIXMAP, root(), 0, 0, size->width, size->height, 0xFFFFFFFFU);
  const Owned<xcb_get_image_reply_t> image(xcb_get_image_reply(observer(), cookie, nullptr));
  Screenshot shot{size->width, size->height, {}};
  const std::size_t count = static_cast<std::size_t>(shot.width) * static_cast<std::size_t>(shot.height);
  if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < count * 4) {
    throw std::runtime_error("The X server gives no picture of the screen.");
  }
  shot.pixels.resize(count);
  const std::uint8_t* bytes = xcb_get_image_data(image.get());
  for (std::size_t i = 0; i < count; ++i) shot.pixels[i] = {bytes[4 * i + 2], bytes[4 * i + 1], bytes[4 * i]};
  return shot;
}

std::string DesktopSession::textProperty(xcb_window_t window, xcb_atom_t name) const {
  const auto reply = fetch(observer(), window, name);
  if (!reply || reply->format != 8) return {};
  return {static_cast<const char*>(xcb_get_property_value(reply.get())),
          static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

void DesktopSession::describe(xcb_window_t window, xcb_window_t topLevel, std::vector<WindowInfo>& result) const {
  const Owned<xcb_get_window_attributes_reply_t> attributes(
      xcb_get_window_attributes_reply(observer(), xcb_get_window_attributes(observer(), window), nullptr));
  const Owned<xcb_get_geometry_reply_t> size(
      xcb_get_geometry_reply(observer(), xcb_get_geometry(observer(), window), nullptr));
  const Owned<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
      observer(), xcb_translate_coordinates(observer(), window, root(), 0, 0), nullptr));
  if (!attributes || !size || !place || attributes->map_state != XCB_MAP_STATE_VIEWABLE) return;
  const std::string classes = textProperty(window, XCB_ATOM_WM_CLASS);
  const auto second = classes.find('\0');
  const std::string windowClass = second == std::string::npos ? "" : classes.c_str() + second + 1;
  result.push_back({window, topLevel, textProperty(window, XCB_ATOM_WM_NAME), windowClass, place->dst_x, place->dst_y,
                    size->width, size->height});
}

std::vector<WindowInfo> DesktopSession::windows() const {
  std::vector<WindowInfo> result;
  const auto children = [this](xcb_window_t parent) {
    const Owned<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(observer(), xcb_query_tree(observer(), parent), nullptr));
    if (!tree) return std::vector<xcb_window_t>{};
    const auto* first = xcb_query_tree_children(tree.get());
    return std::vector<xcb_window_t>(first, first + xcb_query_tree_children_length(tree.get()));
  };
  for (const xcb_window_t topLevel : children(root())) {
    const auto before = result.size();
    describe(topLevel, topLevel, result);
    if (result.size() == before) continue;
    for (const xcb_window_t inner : children(topLevel)) describe(inner, topLevel, result);
  }
  return result;
}

std::size_t DesktopSession::count(const std::string& nameOrClass) const {
  const auto all = windows();
  return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), [&](const WindowInfo& each) {
    return each.name == nameOrClass || each.windowClass == nameOrClass;
  }));
}

std::optional<WindowInfo> DesktopSession::waitForWindow(const std::string& nameOrClass, double seconds) const {
  std::optional<WindowInfo> found;
  waitUntil(
      [&] {
        for (const WindowInfo& window : windows()) {
          if (window.name == nameOrClass || window.windowClass == nameOrClass) found = window;
        }
        return found.has_value();
      },
      seconds);
  return found;
}

std::vector<std::uint32_t> DesktopSession::property(xcb_window_t window, const std::string& name) const {
  const auto reply = fetch(observer(), window, atom(name));
  if (!reply || reply->format != 32) return {};
  const auto bytes = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
  std::vector<std::uint32_t> values(bytes / sizeof(std::uint32_t));
  if (bytes > 0) std::memcpy(values.data(), xcb_get_property_value(reply.get()), bytes);
  return values;
}

std::vector<std::string> DesktopSession::atomProperty(xcb_window_t window, const std::string& name) const {
  std::vector<std::string> names;
  for (const std::uint32_t value : property(window, name)) {
    const Owned<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(observer(), xcb_get_atom_name(observer(), value), nullptr));
    if (!reply) continue;
    names.emplace_back(xcb_get_atom_name_name(reply.get()),
                       static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())));
  }
  return names;
}

xcb_atom_t DesktopSession::atom(const std::string& name) const {
  const auto cookie = xcb_intern_atom(observer(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(observer(), cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

}  // namespace veloria::tests
