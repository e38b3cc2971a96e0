#pragma once

#include <functional>
#include <memory>

#include "gpu/Device.h"
#include "gpu/Pipeline.h"

namespace veloria {

/// The settings window's own GPU device, so that its pictures and the band never wait for each other.
struct PreviewGpu {
  std::unique_ptr<gpu::Device> device;
  std::unique_ptr<gpu::Library> library;
};

/// Makes one; called on the thread that draws. Throws std::runtime_error when there is none.
using PreviewGpuFactory = std::function<PreviewGpu()>;

}  // namespace veloria
