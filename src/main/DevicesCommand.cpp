#include <QCommandLineParser>
#include <cstdio>

#include "gpu/vulkan/VulkanFactory.h"
#include "main/Command.h"
#include "main/Commands.h"
#include "render/RendererError.h"

namespace veloria {

int runDevices(const QStringList& arguments) {
  QCommandLineParser parser;
  if (!parseArguments(parser, "veloria devices", arguments, 0)) return done;
  const auto devices = gpu::vulkan::listDevices();
  if (devices.empty()) throw RendererError::noDevice();
  for (const auto& device : devices) {
    std::printf("%u  %-10s %s%s\n", device.index, gpu::vulkan::deviceTypeName(device.type), device.name.c_str(),
                device.usable ? "" : "  (can't be used: it lacks something that Veloria needs)");
  }
  return done;
}

}  // namespace veloria
