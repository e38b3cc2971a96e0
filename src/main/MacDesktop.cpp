#include "main/MacDesktop.h"

#include "app/NimbraWindow.h"
#include "gpu/metal/MetalFactory.h"
#include "main/GpuSetup.h"
#include "platform/macos/activity/FullScreenSpace.h"

namespace veloria {

MacDesktop::MacDesktop(const Environment& environment)
    : panels_([this](void* layer) { return gpu::metal::makeSurface(*device_, layer); },
              debugWindowLevel(environment("NIMBRA_DEBUG_LEVEL"))),
      capture_([this] { return device_; }) {}

std::unique_ptr<gpu::Device> MacDesktop::makeDevice() {
  auto device = veloria::makeDevice({});
  device_ = device.get();
  return device;
}

bool MacDesktop::isFullScreen() {
  return isFullScreenSpace(screens_.screens());
}

}  // namespace veloria
