#pragma once

#include <QCommandLineParser>
#include <memory>
#include <string>
#include <vector>

#include "app/ShaderLibrary.h"
#include "gpu/Device.h"

namespace veloria {

/// Where this program's files are: the resource folder (../share/veloria from the executable, in a bundle Resources),
/// the executable's folder and the current one. Needs a QCoreApplication.
ProgramPlaces programPlaces();

/// Makes a device; `gpu` is a name, an index or empty for the best one. Throws gpu::NoDeviceError when there is none,
/// gpu::DeviceError when its driver fails.
std::unique_ptr<gpu::Device> makeDevice(const std::string& gpu);

/// A line for a person about each device of this computer, whether it can be used or not.
std::vector<std::string> deviceLines();

/// A device and its shader library, for a command that draws without a display.
struct Gpu {
  std::unique_ptr<gpu::Device> device;
  std::unique_ptr<gpu::Library> library;
};
void addGpuOption(QCommandLineParser& parser);
/// Throws RendererError::noDevice when there is no GPU at all; otherwise as makeDevice() and loadShaderLibrary().
Gpu gpuFrom(const QCommandLineParser& parser);

}  // namespace veloria
