#include "desktop/DesktopSession.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace veloria::tests {

std::string DesktopSession::missing(std::vector<std::string> programs) {
  programs.emplace_back("Xvfb");
  return Session::missing(programs);
}

DesktopSession::DesktopSession(const Options& options) {
  const std::string size = std::to_string(options.width) + "x" + std::to_string(options.height) + "x24";
  std::vector<std::string> argv{"Xvfb", "-displayfd", "1", "-screen", "0", size, "-noreset", "-nolisten", "tcp"};
  argv.insert(argv.end(), {"+extension", "Composite", "+extension", "RANDR"});
  argv.insert(argv.end(), options.serverArguments.begin(), options.serverArguments.end());
  server_ = run(argv);
  require("Xvfb did not start", *server_, [&] {
    std::istringstream output(server_->output());
    for (std::string line; std::getline(output, line);) {
      const bool number = !line.empty() && line.find_first_not_of("0123456789") == std::string::npos;
      if (number && !output.eof()) environment_["DISPLAY"] = ":" + line;
    }
    return !display().empty();
  });
  client_ = std::make_unique<X11Client>(display());
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
  const bool managed = waitUntil([&] {
    if (now() - asked > 0.2) {
      xcb_map_window(observer(), probe);
      asked = now();
    }
    return !property(probe, "WM_STATE").empty();
  });
  xcb_destroy_window(observer(), probe);
  const auto gone = [&] {
    const auto clients = property(root(), "_NET_CLIENT_LIST");
    return std::find(clients.begin(), clients.end(), probe) == clients.end();
  };
  return managed && waitUntil(gone);
}

bool DesktopSession::windowManagerRuns() const {
  const auto check = property(root(), "_NET_SUPPORTING_WM_CHECK");
  return check.size() == 1 && property(check.front(), "_NET_SUPPORTING_WM_CHECK") == check;
}

void DesktopSession::startPanel(int height, const std::string& monitor, const std::string& edge) {
  panel_.reset();
  std::ifstream source(VELORIA_DESKTOP_DATA "/tint2rc");
  std::ostringstream text;
  text << source.rdbuf() << "\npanel_size = 100% " << height << "\npanel_monitor = " << monitor
       << "\npanel_position = " << edge << " center horizontal\n";
  panel_ = run({"tint2", "-c", folder_.write("tint2rc", text.str())});
  require("tint2 shows no panel", *panel_, [&] { return panelIsUp(height, edge == "top"); });
}

bool DesktopSession::panelIsUp(int height, bool top) const {
  for (const WindowInfo& window : windows()) {
    if (window.windowClass != "Tint2" || window.height != height) continue;
    const auto strut = property(window.id, "_NET_WM_STRUT_PARTIAL");
    if (strut.size() == 12 && strut[top ? 2 : 3] >= static_cast<std::uint32_t>(height)) return true;
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
  const auto owner =
      client_->reply(xcb_get_selection_owner_reply, xcb_get_selection_owner(observer(), atom("_NET_WM_CM_S0")));
  return owner && owner->owner != XCB_WINDOW_NONE;
}

Screenshot DesktopSession::screenshot(const std::string&) const {
  const PixelRect size = client_->rootRect();
  const auto image =
      client_->reply(xcb_get_image_reply, xcb_get_image(observer(), XCB_IMAGE_FORMAT_Z_PIXMAP, root(), 0, 0,
                                                        static_cast<std::uint16_t>(size.width),
                                                        static_cast<std::uint16_t>(size.height), 0xFFFFFFFFU));
  Screenshot shot{size.width, size.height, {}};
  shot.pixels.resize(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
  if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < shot.pixels.size() * 4) {
    throw std::runtime_error("The X server gives no picture of the screen.");
  }
  const std::uint8_t* bytes = xcb_get_image_data(image.get());
  for (std::size_t i = 0; i < shot.pixels.size(); ++i) {
    shot.pixels[i] = {bytes[4 * i + 2], bytes[4 * i + 1], bytes[4 * i]};
  }
  return shot;
}

std::optional<WindowInfo> DesktopSession::describe(xcb_window_t window, int level) const {
  const auto attributes =
      client_->reply(xcb_get_window_attributes_reply, xcb_get_window_attributes(observer(), window));
  const auto size = client_->reply(xcb_get_geometry_reply, xcb_get_geometry(observer(), window));
  const auto place =
      client_->reply(xcb_translate_coordinates_reply, xcb_translate_coordinates(observer(), window, root(), 0, 0));
  if (!attributes || !size || !place || attributes->map_state != XCB_MAP_STATE_VIEWABLE) return std::nullopt;
  const auto text = [&](xcb_atom_t name) { return client_->text(client_->requestProperty(window, name, 1000)); };
  const std::string classes = text(XCB_ATOM_WM_CLASS);
  const std::string windowClass = classes.c_str() + std::min(classes.find('\0') + 1, classes.size());
  return WindowInfo{window,      level,       text(XCB_ATOM_WM_NAME), windowClass, place->dst_x, place->dst_y,
                    size->width, size->height};
}

std::vector<xcb_window_t> DesktopSession::children(xcb_window_t window) const {
  const auto tree = client_->reply(xcb_query_tree_reply, xcb_query_tree(observer(), window));
  if (!tree) return {};
  const auto* first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

std::vector<WindowInfo> DesktopSession::windows() const {
  std::vector<WindowInfo> result;
  int level = 0;
  for (const xcb_window_t topLevel : children(root())) {
    const auto outer = describe(topLevel, level);
    if (!outer) continue;
    result.push_back(*outer);
    for (const xcb_window_t window : children(topLevel)) {
      if (const auto inner = describe(window, level)) result.push_back(*inner);
    }
    ++level;
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
  const auto isThere = [&] {
    for (const WindowInfo& window : windows()) {
      if (window.name == nameOrClass || window.windowClass == nameOrClass) found = window;
    }
    return found.has_value();
  };
  waitUntil(isThere, seconds);
  return found;
}

std::vector<std::uint32_t> DesktopSession::property(xcb_window_t window, const std::string& name) const {
  return client_->numbers(client_->requestProperty(window, atom(name), 1000));
}

xcb_atom_t DesktopSession::atom(const std::string& name) const {
  const auto cookie = xcb_intern_atom(observer(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const auto reply = client_->reply(xcb_intern_atom_reply, cookie);
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace veloria::tests
