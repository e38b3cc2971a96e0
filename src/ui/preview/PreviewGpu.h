#pragma once

#include <functional>
#include <memory>

#include "gpu/Device.h"
#include "gpu/Pipeline.h"

namespace veloria {

/// A GPU device of the settings window's own, so that its pictures never wait for the band or hold it up.
struct PreviewGpu {
  std::unique_ptr<gpu::Device> device;
  std::unique_ptr<gpu::Library> library;
};

/// Makes one; called on the thread that draws. Throws std::runtime_error when there is none.
using PreviewGpuFactory = std::function<PreviewGpu()>;

}  // namespace veloria
