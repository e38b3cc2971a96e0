#include "platform/linux/wallpaper/RootPixmap.h"

#include <xcb/render.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "platform/linux/x11/X11Client.h"

namespace veloria {

namespace {

constexpr std::uint16_t side = DesktopPicture::side;
constexpr std::uint8_t targetDepth = 32;
constexpr double fixedOne = 65536;  // RENDER's fixed point numbers have 16 bits below the point

struct RootPicture {
  xcb_pixmap_t pixmap = XCB_PIXMAP_NONE;
  std::uint8_t depth = 0;
  PixelRect area;
};

xcb_render_fixed_t fixed(double value) {
  return static_cast<xcb_render_fixed_t>(value * fixedOne);
}

class RootReader {
 public:
  explicit RootReader(const std::string& display) : server_(display) {}

  std::optional<DesktopPicture::Pixels> thumbnail(const std::string& screen) {
    if (!server_.extension(&xcb_render_id).present) return std::nullopt;
    const auto root = findPixmap();
    if (!root) return std::nullopt;
    readFormats();
    const auto source = formatOf(root->depth);
    const auto target = directFormat(targetDepth);
    if (source == XCB_NONE || target == XCB_NONE) return std::nullopt;
    return fetch(scaledDown(*root, source, target, visibleArea(root->area, screen)));
  }

 private:
  xcb_connection_t* raw() const { return server_.raw(); }

  std::optional<RootPicture> findPixmap() {
    for (const std::string_view name : {"_XROOTPMAP_ID", "ESETROOT_PMAP_ID"}) {
      const xcb_pixmap_t pixmap = pixmapProperty(name);
      if (pixmap == XCB_PIXMAP_NONE) continue;
      const auto geometry = server_.reply(xcb_get_geometry_reply, xcb_get_geometry(raw(), pixmap));
      if (geometry) return RootPicture{pixmap, geometry->depth, {0, 0, geometry->width, geometry->height}};
    }
    return std::nullopt;
  }

  xcb_pixmap_t pixmapProperty(std::string_view name) {
    const auto atom = server_.reply(xcb_intern_atom_reply,
                                    xcb_intern_atom(raw(), 1, static_cast<std::uint16_t>(name.size()), name.data()));
    if (!atom || atom->atom == XCB_ATOM_NONE) return XCB_PIXMAP_NONE;
    const auto values = server_.numbers(xcb_get_property(raw(), 0, server_.root(), atom->atom, XCB_ATOM_PIXMAP, 0, 1));
    return values.size() == 1 ? values.front() : xcb_pixmap_t{XCB_PIXMAP_NONE};
  }

  void readFormats() {
    // A server that has not been told a version may treat this as an old client.
    server_.reply(xcb_render_query_version_reply, xcb_render_query_version(raw(), 0, 11));
    formats_ = server_.reply(xcb_render_query_pict_formats_reply, xcb_render_query_pict_formats(raw()));
  }

  /// The root window's own format if it has this depth, else any format that has.
  xcb_render_pictformat_t formatOf(std::uint8_t depth) const {
    const auto own = depth == server_.screen().root_depth ? rootFormat() : xcb_render_pictformat_t{XCB_NONE};
    return own != XCB_NONE ? own : directFormat(depth);
  }

  xcb_render_pictformat_t rootFormat() const {
    if (!formats_) return XCB_NONE;
    for (auto s = xcb_render_query_pict_formats_screens_iterator(formats_.get()); s.rem > 0;
         xcb_render_pictscreen_next(&s)) {
      for (auto d = xcb_render_pictscreen_depths_iterator(s.data); d.rem > 0; xcb_render_pictdepth_next(&d)) {
        const auto* visuals = xcb_render_pictdepth_visuals(d.data);
        for (int i = 0; i < xcb_render_pictdepth_visuals_length(d.data); ++i) {
          if (visuals[i].visual == server_.screen().root_visual) return visuals[i].format;
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

  PixelRect visibleArea(const PixelRect& pixmap, const std::string& screen) {
    if (pixmap != server_.rootRect()) return pixmap;  // a tile
    const PixelRect part = intersection(pixmap, monitorArea(screen));
    return part.empty() ? pixmap : part;
  }

  PixelRect monitorArea(const std::string& wanted) {
    PixelRect chosen;
    if (!server_.randrExtension().present) return chosen;
    for (const X11Monitor& monitor : server_.monitors()) {
      if (monitor.name == wanted) return monitor.frame;
      if (monitor.primary) chosen = monitor.frame;
    }
    return chosen;
  }

  /// Four samples a pixel each way (and each a mean of two by two), then two halvings.
  xcb_pixmap_t scaledDown(const RootPicture& root, xcb_render_pictformat_t source, xcb_render_pictformat_t target,
                          PixelRect area) const {
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
                         xcb_render_pictformat_t format, const PixelRect& area) const {
    const xcb_pixmap_t pixmap = xcb_generate_id(raw());
    const xcb_render_picture_t target = xcb_generate_id(raw());
    const xcb_render_picture_t source = xcb_generate_id(raw());
    xcb_create_pixmap(raw(), targetDepth, pixmap, server_.root(), size, size);
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
    const XcbPtr<xcb_generic_error_t> error(xcb_request_check(
        raw(), xcb_render_composite_checked(raw(), XCB_RENDER_PICT_OP_SRC, source, XCB_RENDER_PICTURE_NONE, target, 0,
                                            0, 0, 0, 0, 0, size, size)));
    return error ? xcb_pixmap_t{XCB_PIXMAP_NONE} : pixmap;
  }

  std::optional<DesktopPicture::Pixels> fetch(xcb_pixmap_t pixmap) {
    const auto image = server_.reply(xcb_get_image_reply,
                                     xcb_get_image(raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, 0, side, side, ~0U));
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

  X11Client server_;
  XcbPtr<xcb_render_query_pict_formats_reply_t> formats_;
};

}  // namespace

std::optional<DesktopPicture::Pixels> rootPixmapThumbnail(const std::string& display, const std::string& screen) {
  try {
    return RootReader(display).thumbnail(screen);
  } catch (const std::runtime_error&) {  // no connection
    return std::nullopt;
  }
}

}  // namespace veloria
