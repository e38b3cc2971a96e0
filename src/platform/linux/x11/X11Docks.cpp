#include "platform/linux/x11/X11Docks.h"

#include <algorithm>

namespace veloria {

namespace {

constexpr std::size_t mostWindows = 4096;
constexpr int deepestNesting = 16;
constexpr std::uint32_t mostTypes = 32;
constexpr std::uint32_t partialStrutWords = 12;
constexpr std::uint32_t strutWords = 4;

std::vector<xcb_window_t> candidates(X11Connection& connection) {
  const auto listCookie = connection.requestProperty(connection.root(), connection.atom(X11Atom::netClientList),
                                                     static_cast<std::uint32_t>(mostWindows));
  std::vector<xcb_window_t> windows = topLevelWindows(connection);
  const auto clients = connection.numbers(listCookie);
  windows.insert(windows.end(), clients.begin(), clients.end());
  std::sort(windows.begin(), windows.end());
  windows.erase(std::unique(windows.begin(), windows.end()), windows.end());
  std::erase_if(windows, [&](xcb_window_t window) { return connection.isOwn(window); });
  windows.resize(std::min(windows.size(), mostWindows));
  return windows;
}

struct Query {
  xcb_window_t window;
  xcb_get_window_attributes_cookie_t attributes;
  xcb_get_geometry_cookie_t geometry;
  xcb_translate_coordinates_cookie_t position;
  xcb_get_property_cookie_t type;
  xcb_get_property_cookie_t partialStrut;
  xcb_get_property_cookie_t strut;
};

Query ask(X11Connection& connection, xcb_window_t window) {
  auto* raw = connection.raw();
  return {window,
          xcb_get_window_attributes(raw, window),
          xcb_get_geometry(raw, window),
          xcb_translate_coordinates(raw, window, connection.root(), 0, 0),
          connection.requestProperty(window, connection.atom(X11Atom::netWmWindowType), mostTypes),
          connection.requestProperty(window, connection.atom(X11Atom::netWmStrutPartial), partialStrutWords),
          connection.requestProperty(window, connection.atom(X11Atom::netWmStrut), strutWords)};
}

std::optional<Strut> strutOf(X11Connection& connection, const Query& query, const PixelRect& root) {
  const auto partial = strutFromCardinals(connection.numbers(query.partialStrut), root);
  const auto whole = strutFromCardinals(connection.numbers(query.strut), root);
  const auto& strut = partial ? partial : whole;
  return strut && !strut->empty() ? strut : std::nullopt;
}

DockWindow collect(X11Connection& connection, const Query& query, const PixelRect& root) {
  DockWindow dock;
  dock.window = query.window;
  const auto attributes = connection.reply(xcb_get_window_attributes_reply, query.attributes);
  const auto geometry = connection.reply(xcb_get_geometry_reply, query.geometry);
  const auto position = connection.reply(xcb_translate_coordinates_reply, query.position);
  const auto types = connection.numbers(query.type);
  dock.strut = strutOf(connection, query, root);
  if (!attributes || !geometry || !position) return {};
  dock.isDock = std::find(types.begin(), types.end(), connection.atom(X11Atom::netWmWindowTypeDock)) != types.end();
  dock.viewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  dock.depth = geometry->depth;
  dock.bounds = {position->dst_x, position->dst_y, geometry->width, geometry->height};
  return dock;
}

}  // namespace

std::vector<xcb_window_t> topLevelWindows(X11Connection& connection) {
  const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.raw(), connection.root()));
  if (!tree) return {};
  const auto* first = xcb_query_tree_children(tree.get());
  return {first, first + xcb_query_tree_children_length(tree.get())};
}

xcb_window_t topLevelOf(X11Connection& connection, xcb_window_t window) {
  for (int depth = 0; depth < deepestNesting && window != XCB_WINDOW_NONE; ++depth) {
    const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.raw(), window));
    if (!tree) return XCB_WINDOW_NONE;
    if (tree->parent == connection.root()) return window;
    window = tree->parent;
  }
  return XCB_WINDOW_NONE;
}

std::vector<DockWindow> findDocks(X11Connection& connection) {
  const PixelRect root = connection.rootRect();
  std::vector<Query> queries;
  for (const xcb_window_t window : candidates(connection)) queries.push_back(ask(connection, window));
  std::vector<DockWindow> docks;
  for (const Query& query : queries) {
    const DockWindow dock = collect(connection, query, root);
    if (dock.isDock || dock.strut) docks.push_back(dock);
  }
  return docks;
}

}  // namespace veloria
