#pragma once

#include <xcb/damage.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/MediaClock.h"
#include "platform/linux/screens/Pacing.h"
#include "platform/linux/x11/PanelPicture.h"
#include "platform/linux/x11/X11Docks.h"
#include "platform/linux/x11/X11ImageReader.h"
#include "platform/linux/x11/X11ScreenProvider.h"
#include "ports/BarCaptureStream.h"
#include "ports/EventLoop.h"

namespace veloria {

/// Pictures of the desktop's panels on a strip of a screen, whatever lies over them: read from the pixmaps that the
/// server draws windows into while a compositor runs, so our own windows are never in them. Without a compositor there
/// are no such pixmaps, and to ask the server for them would slow down every program's windows; the stream then fails
/// with that reason.
///
/// It reads only after the server has reported damage to a panel, at most 30 times a second, and passes a picture on
/// only if it has changed. Beside the panels the picture has the mean colour of their edges; it is transparent while
/// there is no panel. A panel that vanishes stays in the picture for a second, under all others, so that panels that
/// restart don't flicker. Main thread; both references must outlive it.
class X11PanelCapture final : public BarCaptureStream {
 public:
  X11PanelCapture(X11Connection& connection, X11ScreenProvider& screens, MediaClock clock = mediaTime);
  ~X11PanelCapture() override;
  X11PanelCapture(const X11PanelCapture&) = delete;
  X11PanelCapture& operator=(const X11PanelCapture&) = delete;

  void start(const BarRegion& region, BarCaptureHandlers handlers) override;
  void stop() override;

  /// How often it has read the panels since it was made; for diagnostics and tests.
  std::int64_t updateCount() const { return updateCount_; }

 private:
  struct Panel {
    PanelPlace place;
    PanelPicture picture;
    xcb_damage_damage_t damage = XCB_NONE;
    bool dirty = true;
    bool present = true;
    double goneSince = 0;  ///< only if it is not present
  };

  std::string obstacle();
  PixelRect stripOf(const Screen& screen) const;
  bool placeStrip();
  void fail(const std::string& message);
  void compositorChanged();
  void screensRefreshed();

  void handle(const xcb_generic_event_t& event);
  void noteDamage(xcb_damage_damage_t damage);
  void noteStructure(const xcb_generic_event_t& event, std::uint8_t code);
  void wake();
  void schedule(double due);
  void update();

  void look();
  void adopt(PanelPlace place);
  void watch(Panel& panel);
  void forget(const Panel& panel);
  void markGone(Panel& panel);
  void sortPanels();
  void dropPanels();
  void readDirtyPanels();
  void read(Panel& panel);
  void handOn();

  X11Connection& connection_;
  X11ScreenProvider& screens_;
  MediaClock clock_;
  bool damagePresent_ = false;
  std::uint8_t damageEvent_ = 0;

  bool running_ = false;
  BarRegion region_;
  BarCaptureHandlers handlers_;
  PixelRect strip_;
  std::unique_ptr<X11ImageReader> reader_;
  xcb_pixmap_t pixmap_ = XCB_NONE;
  std::vector<Panel> panels_;  ///< after an update: bottom to top, those that are gone first
  std::vector<std::byte> composed_;
  std::vector<std::byte> handedOn_;
  bool anyHandedOn_ = false;

  bool lookNeeded_ = false;
  double lastUpdate_ = 0;
  double timerDue_ = 0;
  OneShot timer_;
  AttemptBudget retries_;
  std::int64_t updateCount_ = 0;

  X11Connection::Subscription events_;
  X11Connection::Subscription compositor_;
  std::shared_ptr<void> refresh_;
};

}  // namespace veloria
