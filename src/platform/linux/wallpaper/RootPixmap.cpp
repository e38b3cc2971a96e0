#include "platform/linux/wallpaper/RootPixmap.h"

#include <xcb/randr.h>
#include <xcb/render.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace veloria {

namespace {

constexpr std::uint16_t side = DesktopPicture::side;
constexpr std::uint8_t targetDepth = 32;
constexpr double fixedOne = 65536;  // RENDER's fixed point numbers have 16 bits below the point

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

struct PixelArea {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelArea&) const = default;
};

struct RootPicture {
  xcb_pixmap_t pixmap = XCB_PIXMAP_NONE;
  std::uint8_t depth = 0;
  PixelArea area;
};

PixelArea intersection(const PixelArea& a, const PixelArea& b) {
  const int left = std::max(a.x, b.x);
  const int top = std::max(a.y, b.y);
  const int right = std::min(a.x + a.width, b.x + b.width);
  const int bottom = std::min(a.y + a.height, b.y + b.height);
  return {left, top, std::max(0, right - left), std::max(0, bottom - top)};
}

xcb_render_fixed_t fixed(double value) {
  return static_cast<xcb_render_fixed_t>(value * fixedOne);
}

class RootReader {
 public:
  explicit RootReader(const std::string& display) {
    int number = 0;
    connection_.reset(xcb_connect(display.c_str(), &number));
    if (xcb_connection_has_error(raw()) != 0) return;
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(raw()));
    for (int i = 0; i < number && screens.rem > 1; ++i) xcb_screen_next(&screens);
    if (screens.rem > 0) screen_ = screens.data;
  }

  std::optional<DesktopPicture::Pixels> thumbnail(const std::string& screen) {
    if (screen_ == nullptr || !has(&xcb_render_id)) return std::nullopt;
    const auto root = findPixmap();
    if (!root) return std::nullopt;
    readFormats();
    const auto source = formatOf(root->depth);
    const auto target = directFormat(targetDepth);
    if (source == XCB_NONE || target == XCB_NONE) return std::nullopt;
    return fetch(scaledDown(*root, source, target, visibleArea(root->area, screen)));
  }

 private:
  xcb_connection_t* raw() const { return connection_.get(); }

  template <typename Reply, typename Cookie>
  Owned<Reply> reply(Reply* (*fetchReply)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) const {
    xcb_generic_error_t* error = nullptr;
    Owned<Reply> result(fetchReply(raw(), cookie, &error));
    std::free(error);
    return result;
  }

  bool has(xcb_extension_t* extension) const {
    const auto* data = xcb_get_extension_data(raw(), extension);
    return data != nullptr && data->present != 0;
  }

  std::optional<RootPicture> findPixmap() const {
    for (const std::string_view name : {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"}) {
      const xcb_pixmap_t pixmap = pixmapProperty(name);
      if (pixmap == XCB_PIXMAP_NONE) continue;
      const auto geometry = reply(xcb_get_geometry_reply, xcb_get_geometry(raw(), pixmap));
      if (geometry) return RootPicture{pixmap, geometry->depth, {0, 0, geometry->width, geometry->height}};
    }
    return std::nullopt;
  }

  xcb_pixmap_t pixmapProperty(std::string_view name) const {
    const auto atom =
        reply(xcb_intern_atom_reply, xcb_intern_atom(raw(), 1, static_cast<std::uint16_t>(name.size()), name.data()));
    if (!atom || atom->atom == XCB_ATOM_NONE) return XCB_PIXMAP_NONE;
    const auto value =
        reply(xcb_get_property_reply, xcb_get_property(raw(), 0, screen_->root, atom->atom, XCB_ATOM_PIXMAP, 0, 1));
    if (!value || value->format != 32 || xcb_get_property_value_length(value.get()) != 4) return XCB_PIXMAP_NONE;
    xcb_pixmap_t pixmap = XCB_PIXMAP_NONE;
    std::memcpy(&pixmap, xcb_get_property_value(value.get()), sizeof pixmap);
    return pixmap;
  }

  void readFormats() {
    // A server that has not been told a version may treat this as an old client.
    reply(xcb_render_query_version_reply, xcb_render_query_version(raw(), 0, 11));
    formats_ = reply(xcb_render_query_pict_formats_reply, xcb_render_query_pict_formats(raw()));
  }

  /// The root window's own format where the depth is the same, else any with that depth.
  xcb_render_pictformat_t formatOf(std::uint8_t depth) const {
    const auto own = depth == screen_->root_depth ? rootFormat() : xcb_render_pictformat_t{XCB_NONE};
    return own != XCB_NONE ? own : directFormat(depth);
  }

  xcb_render_pictformat_t rootFormat() const {
    if (!formats_) return XCB_NONE;
    for (auto s = xcb_render_query_pict_formats_screens_iterator(formats_.get()); s.rem > 0;
         xcb_render_pictscreen_next(&s)) {
      for (auto d = xcb_render_pictscreen_depths_iterator(s.data); d.rem > 0; xcb_render_pictdepth_next(&d)) {
        const auto* visuals = xcb_render_pictdepth_visuals(d.data);
        for (int i = 0; i < xcb_render_pictdepth_visuals_length(d.data); ++i) {
          if (visuals[i].visual == screen_->root_visual) return visuals[i].format;
        }
      }
    }
    return XCB_NONE;
  }

  /// A format with red above green above blue, which is at the bottom.
  xcb_render_pictformat_t directFormat(std::uint8_t depth) const {
    if (!formats_) return XCB_NONE;
    const auto* all = xcb_render_query_pict_formats_formats(formats_.get());
    for (int i = 0; i < xcb_render_query_pict_formats_formats_length(formats_.get()); ++i) {
      const auto& layout = all[i].direct;
      const bool usual = layout.blue_shift == 0 && layout.red_shift > layout.green_shift && layout.green_shift > 0;
      if (all[i].type == XCB_RENDER_PICT_TYPE_DIRECT && all[i].depth == depth && usual) return all[i].id;
    }
    return XCB_NONE;
  }

  PixelArea visibleArea(const PixelArea& pixmap, const std::string& screen) const {
    const auto root = reply(xcb_get_geometry_reply, xcb_get_geometry(raw(), screen_->root));
    if (!root || pixmap != PixelArea{0, 0, root->width, root->height}) return pixmap;  // a tile
    const PixelArea part = intersection(pixmap, monitorArea(screen));
    return part.width > 0 && part.height > 0 ? part : pixmap;
  }

  PixelArea monitorArea(const std::string& wanted) const {
    if (!has(&xcb_randr_id)) return {};
    const auto version = reply(xcb_randr_query_version_reply, xcb_randr_query_version(raw(), 1, 5));
    if (!version || (version->major_version == 1 && version->minor_version < 5)) return {};
    const auto monitors = reply(xcb_randr_get_monitors_reply, xcb_randr_get_monitors(raw(), screen_->root, 1));
    PixelArea chosen;
    if (!monitors) return chosen;
    for (auto m = xcb_randr_get_monitors_monitors_iterator(monitors.get()); m.rem > 0;
         xcb_randr_monitor_info_next(&m)) {
      const PixelArea area{m.data->x, m.data->y, m.data->width, m.data->height};
      if (nameOf(m.data->name) == wanted) return area;
      if (m.data->primary != 0) chosen = area;
    }
    return chosen;
  }

  std::string nameOf(xcb_atom_t atom) const {
    const auto name = reply(xcb_get_atom_name_reply, xcb_get_atom_name(raw(), atom));
    if (!name) return {};
    return {xcb_get_atom_name_name(name.get()), static_cast<std::size_t>(xcb_get_atom_name_name_length(name.get()))};
  }

  /// Four samples a pixel each way (and each a mean of two by two), then two halvings.
  xcb_pixmap_t scaledDown(const RootPicture& root, xcb_render_pictformat_t source, xcb_render_pictformat_t target,
                          PixelArea area) const {
    xcb_pixmap_t pixmap = root.pixmap;
    xcb_render_pictformat_t format = source;
    for (const int factor : {4, 2, 1}) {
      const auto size = static_cast<std::uint16_t>(side * factor);
      pixmap = drawnInto(size, pixmap, format, target, area);
      format = target;
      area = {0, 0, size, size};
    }
    return pixmap;
  }

  /// A new pixmap of size x size pixels with an area of another in it; none when that has vanished. The connection's
  /// end frees it.
  xcb_pixmap_t drawnInto(std::uint16_t size, xcb_pixmap_t from, xcb_render_pictformat_t fromFormat,
                         xcb_render_pictformat_t format, const PixelArea& area) const {
    const xcb_pixmap_t pixmap = xcb_generate_id(raw());
    const xcb_render_picture_t target = xcb_generate_id(raw());
    const xcb_render_picture_t source = xcb_generate_id(raw());
    xcb_create_pixmap(raw(), targetDepth, pixmap, screen_->root, size, size);
    xcb_render_create_picture(raw(), target, pixmap, format, 0, nullptr);
    const std::uint32_t repeat = XCB_RENDER_REPEAT_PAD;
    xcb_render_create_picture(raw(), source, from, fromFormat, XCB_RENDER_CP_REPEAT, &repeat);
    const xcb_render_transform_t transform{fixed(static_cast<double>(area.width) / size),
                                           0,
                                           fixed(area.x),
                                           0,
                                           fixed(static_cast<double>(area.height) / size),
                                           fixed(area.y),
                                           0,
                                           0,
                                           fixed(1)};
    constexpr std::string_view filter = "bilinear";
    xcb_render_set_picture_transform(raw(), source, transform);
    xcb_render_set_picture_filter(raw(), source, filter.size(), filter.data(), 0, nullptr);
    const Owned<xcb_generic_error_t> error(xcb_request_check(
        raw(), xcb_render_composite_checked(raw(), XCB_RENDER_PICT_OP_SRC, source, XCB_RENDER_PICTURE_NONE, target, 0,
                                            0, 0, 0, 0, 0, size, size)));
    return error ? xcb_pixmap_t{XCB_PIXMAP_NONE} : pixmap;
  }

  std::optional<DesktopPicture::Pixels> fetch(xcb_pixmap_t pixmap) const {
    const auto image =
        reply(xcb_get_image_reply, xcb_get_image(raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, 0, side, side, ~0U));
    constexpr std::size_t count = std::size_t{side} * side;
    if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image.get())) < count * 4) return std::nullopt;
    const bool serverIsLittle = xcb_get_setup(raw())->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
    const std::uint8_t* bytes = xcb_get_image_data(image.get());
    DesktopPicture::Pixels pixels(count);
    for (ColorStop& pixel : pixels) {
      const std::array<std::uint8_t, 3> rgb =
          serverIsLittle ? std::array{bytes[2], bytes[1], bytes[0]} : std::array{bytes[1], bytes[2], bytes[3]};
      std::ranges::transform(rgb, pixel.begin(), [](std::uint8_t value) { return static_cast<float>(value) / 255; });
      bytes += 4;
    }
    return pixels;
  }

  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  const xcb_screen_t* screen_ = nullptr;
  Owned<xcb_render_query_pict_formats_reply_t> formats_;
};

}  // namespace

std::optional<DesktopPicture::Pixels> rootPixmapThumbnail(const std::string& display, const std::string& screen) {
  return RootReader(display).thumbnail(screen);
}

}  // namespace veloria
