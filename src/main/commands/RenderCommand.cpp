#include <sys/stat.h>
#include <unistd.h>

#include <QCommandLineParser>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/Files.h"
#include "base/StrictJson.h"
#include "main/GpuSetup.h"
#include "main/commands/Arguments.h"
#include "main/commands/Command.h"
#include "main/commands/Pictures.h"
#include "main/commands/VirtualDriver.h"
#include "render/NimbraRenderer.h"
#include "render/OffscreenTarget.h"
#include "render/ScreenGeometry.h"
#include "scene/AgentSource.h"

namespace veloria {

namespace {

constexpr double longestClip = 86400;

struct RenderJob {
  gpu::Size size{1920, 32};
  double scale = 1;
  std::optional<double> barHeight;
  std::optional<Extent> notch;
  PanelEdge edge = PanelEdge::top;
  long frames = 600;
  double fps = 60;
  std::vector<std::uint8_t> ground;  ///< empty: none
  std::optional<std::string> mask;
  NimbraConfig config;
  std::vector<ChannelEvent> events;
  VirtualState state;
  PointerState pointer;
  FramePattern output;
  bool raw = false;
};

void addOptions(QCommandLineParser& parser) {
  parser.setApplicationDescription(
      "Draws frames without a display, on a virtual clock: the same input gives the same bytes. Reads no other files "
      "than those named here.");
  parser.addOptions({
      {"size", "Size of the picture in pixels (default 1920x32).", "WxH"},
      {"scale", "Pixels per point, 0.25 to 8 (default 1).", "number"},
      {"bar-height", "Height of the bar in points; the rest is the bleed below it (default: all of the picture).",
       "points"},
      {"edge", "Edge of the screen that the band is at, top (the default) or bottom.", "edge"},
      {"notch", "Camera housing at the top centre, in points, such as 200x32.", "WxH"},
      {"seconds", "Length of the clip, up to 86400 (default 10).", "number"},
      {"fps", "Frames per second, 1 to 240 (default 60).", "number"},
      {"background", "What lies behind the band: a colour such as \"#101018\" or a picture (default: nothing).",
       "colour|file"},
      {"mask", "Picture of the bar whose text is kept clear; turns preserveMenuBarText on.", "file"},
      {"channel", "Holds an input channel at a value, such as bass=0.8. May be repeated.", "name=value"},
      {"channels", "Input channels over time: JSON lines {\"t\": seconds, \"name\": text, \"value\": number}.", "file"},
      {"state", "An agent state file, as the nimbra command writes it; the clip begins when it was last changed.",
       "file"},
      {"pointer",
       "Pointer position X,Y (points from the top left) and velocity DX,DY (points per 1/60 s; positive DY is up).",
       "X,Y[,DX,DY]"},
      {{"o", "output"},
       "PNG file for the last frame, or for every frame when the name has a number such as %05d.",
       "file"},
      {"raw", "Writes every frame as RGBA rows (straight alpha) to standard output; takes \"-\".", "-"},
  });
  addConfigOptions(parser);
  addGpuOptions(parser);
}

ChannelEvent channelEvent(const std::string& where, const std::string& line) {
  const auto json = parseStrictJson(line);
  const std::string wanted = where + ": expected {\"t\": seconds, \"name\": text, \"value\": number}";
  if (!json || !json->is_object()) throw WorkError(wanted);
  const auto t = json->find("t");
  const auto name = json->find("name");
  const auto value = json->find("value");
  if (t == json->end() || name == json->end() || value == json->end() || !t->is_number() || !name->is_string() ||
      !value->is_number()) {
    throw WorkError(wanted);
  }
  return {t->get<double>(), name->get<std::string>(), value->get<double>()};
}

std::vector<ChannelEvent> channelFile(const std::string& path) {
  constexpr std::size_t maximumBytes = 64 << 20;
  const auto text = readFileBounded(path, maximumBytes);
  if (!text) throw WorkError(text.error());
  std::vector<ChannelEvent> events;
  std::size_t begin = 0;
  for (long number = 1; begin < text->size(); ++number) {
    const std::size_t end = std::min(text->find('\n', begin), text->size());
    const std::string line = text->substr(begin, end - begin);
    begin = end + 1;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    events.push_back(channelEvent(path + ", line " + std::to_string(number), line));
  }
  return events;
}

std::vector<ChannelEvent> eventsFrom(const QCommandLineParser& parser) {
  std::vector<ChannelEvent> events;
  for (const QString& text : parser.values("channel")) {
    const auto [name, value] = parseChannel("--channel", text.toStdString());
    events.push_back({0, name, value});
  }
  if (parser.isSet("channels")) {
    for (auto& event : channelFile(parser.value("channels").toStdString())) events.push_back(std::move(event));
  }
  return events;
}

VirtualState stateFrom(const std::string& path) {
  const auto bytes = readFileBounded(path, maximumJsonBytes);
  if (!bytes) throw WorkError(bytes.error());
  if (!readAgentState(*bytes)) throw WorkError(path + ": this is not one JSON object");
  struct stat attributes {};
  if (::stat(path.c_str(), &attributes) != 0) throw WorkError(path + ": its time can't be read");
  const timespec modified = modificationTime(attributes);
  return {path, static_cast<double>(modified.tv_sec) + 1e-9 * static_cast<double>(modified.tv_nsec)};
}

std::vector<std::uint8_t> groundFrom(const std::string& text, gpu::Size size) {
  const auto color = parseColor("--background", text);
  if (!color) return loadPicture(text, size);
  std::vector<std::uint8_t> ground(std::size_t{size.width} * size.height * 4, 255);
  for (std::size_t i = 0; i < ground.size(); i += 4)
    std::copy(color->begin(), color->end(), ground.begin() + static_cast<std::ptrdiff_t>(i));
  return ground;
}

PointerState pointerFrom(const std::string& text) {
  const auto numbers = parsePointer("--pointer", text);
  PointerState pointer{Point{numbers[0], numbers[1]}, {}, true};
  if (numbers.size() == 4) pointer.velocity = {numbers[2], numbers[3]};
  return pointer;
}

RenderJob jobFrom(const QCommandLineParser& parser) {
  const auto text = [&](const char* name) { return parser.value(name).toStdString(); };
  RenderJob job;
  if (parser.isSet("size")) job.size = parsePixelSize("--size", text("size"));
  if (parser.isSet("scale")) job.scale = parseNumber("--scale", text("scale"), 0.25, 8);
  if (parser.isSet("bar-height")) job.barHeight = parseNumber("--bar-height", text("bar-height"), 1, 16384);
  if (parser.isSet("edge")) job.edge = parseEdge("--edge", text("edge"));
  if (parser.isSet("notch") && job.edge == PanelEdge::bottom) {
    throw UsageError("--notch: a camera housing is at the top only; leave --edge out");
  }
  if (parser.isSet("notch")) job.notch = parseExtent("--notch", text("notch"));
  if (parser.isSet("fps")) job.fps = parseNumber("--fps", text("fps"), 1, 240);
  const double seconds = parser.isSet("seconds") ? parseNumber("--seconds", text("seconds"), 0, longestClip) : 10;
  job.frames = std::max(1L, std::lround(seconds * job.fps));
  if (parser.isSet("raw") && text("raw") != "-") throw UsageError("--raw writes to standard output only: --raw -");
  job.raw = parser.isSet("raw");
  if (job.raw == parser.isSet("output")) {
    throw UsageError("say where the frames go: either --output FILE.png or --raw -");
  }
  if (parser.isSet("output")) job.output = parseFramePattern("--output", text("output"));
  job.events = eventsFrom(parser);
  if (parser.isSet("state")) job.state = stateFrom(text("state"));
  if (parser.isSet("pointer")) job.pointer = pointerFrom(text("pointer"));
  if (parser.isSet("background")) job.ground = groundFrom(text("background"), job.size);
  job.config = configFrom(parser);
  if (parser.isSet("mask")) {
    job.mask = text("mask");
    job.config.preserveMenuBarText = true;
  }
  return job;
}

/// The geometry of a screen that is exactly as large as the picture.
StripGeometry geometryFor(const RenderJob& job) {
  Screen screen;
  screen.frame = {0, 0, job.size.width / job.scale, job.size.height / job.scale};
  screen.visibleFrame = screen.frame;
  screen.backingScale = job.scale;
  if (job.notch) {
    const double side = std::max((screen.frame.width - job.notch->width) / 2, 0.0);
    const double y = screen.frame.maxY() - job.notch->height;
    screen.safeAreaTop = job.notch->height;
    screen.auxiliaryTopLeft = Rect{0, y, side, job.notch->height};
    screen.auxiliaryTopRight = Rect{screen.frame.width - side, y, side, job.notch->height};
  }
  NimbraConfig whole = job.config;
  whole.layerMode = LayerMode::desktopFull;
  StripGeometry geometry = ScreenGeometry::geometry(screen, whole);
  geometry.edge = job.edge;
  geometry.menuBarHeight = std::min(job.barHeight.value_or(screen.frame.height), screen.frame.height);
  return geometry;
}

std::shared_ptr<TextureBox> maskFrom(gpu::Device& device, const RenderJob& job) {
  if (!job.mask) return nullptr;
  const auto pixels = loadPicture(*job.mask, job.size);
  auto texture = device.makeTexture({.format = gpu::PixelFormat::rgba8Unorm,
                                     .size = job.size,
                                     .usage = gpu::TextureUsage::shaderRead,
                                     .storage = gpu::StorageMode::shared,
                                     .label = "mask"});
  texture->write(std::as_bytes(std::span(pixels)));
  auto box = std::make_shared<TextureBox>();
  box->store(std::move(texture));
  return box;
}

/// Shows the progress on a terminal once the work has taken more than a second.
class Progress {
 public:
  explicit Progress(long total) : total_(total) {}

  void at(long frame) {
    if (!terminal_) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - start_ < std::chrono::seconds(1) || now - shown_ < std::chrono::milliseconds(100)) return;
    shown_ = now;
    visible_ = true;
    std::fprintf(stderr, "\rrendering: frame %ld of %ld (%ld %%)", frame, total_, frame * 100 / total_);
  }

  ~Progress() {
    if (visible_) std::fputs("\r\033[K", stderr);
  }

 private:
  long total_;
  bool terminal_ = isatty(STDERR_FILENO) != 0;
  bool visible_ = false;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  std::chrono::steady_clock::time_point shown_ = start_;
};

/// The frame as it is written: over the background, or with straight alpha.
std::vector<std::uint8_t> finished(std::span<const std::uint8_t> frame, const RenderJob& job) {
  std::vector<std::uint8_t> pixels(frame.begin(), frame.end());
  if (job.ground.empty()) {
    unpremultiply(pixels);
  } else {
    layOver(pixels, job.ground);
  }
  return pixels;
}

void write(const RenderJob& job, long frame, std::span<const std::uint8_t> pixels) {
  if (job.raw) {
    if (std::fwrite(pixels.data(), 1, pixels.size(), stdout) != pixels.size()) {
      throw WorkError("standard output was closed");
    }
    return;
  }
  savePng(job.output.fileFor(frame), job.size, pixels);
}

void renderFrames(const RenderJob& job, gpu::Device& device, const gpu::Library& library) {
  double now = 1;  // the virtual clock; 0 would mean that there was no frame before
  RenderStats stats([&now] { return now; });
  NimbraRenderer renderer(device, library, stats, [&now] { return now; });
  OffscreenTarget target(device, job.size);
  VirtualDriver driver(job.config, job.events, job.state);
  renderer.geometry = geometryFor(job);
  renderer.backdrop = maskFrom(device, job);
  renderer.pointer = job.pointer;
  Progress progress(job.frames);
  const bool everyFrame = job.raw || job.output.numbered;
  for (long frame = 0; frame < job.frames; ++frame) {
    const double t = static_cast<double>(frame) / job.fps;
    now = 1 + t;
    driver.advanceTo(t);
    renderer.config = driver.driven();
    renderer.draw(target);
    if (everyFrame || frame + 1 == job.frames) write(job, frame, finished(target.pixels(), job));
    progress.at(frame + 1);
  }
  if (job.raw && std::fflush(stdout) != 0) throw WorkError("standard output was closed");
}

}  // namespace

int runRender(const QStringList& arguments) {
  QCommandLineParser parser;
  addOptions(parser);
  if (!parseArguments(parser, "veloria render", arguments, 0)) return done;
  const RenderJob job = jobFrom(parser);
  const Gpu gpu = gpuFrom(parser);
  renderFrames(job, *gpu.device, *gpu.library);
  return done;
}

}  // namespace veloria
