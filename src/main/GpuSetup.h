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

/// Makes a device; `gpu` is a name, an index or empty for the best one. `threads` (0: as many as suit) is for one that
/// draws on the CPU. Throws gpu::NoDeviceError when there is none, gpu::DeviceError when its driver fails.
std::unique_ptr<gpu::Device> makeDevice(const std::string& gpu, unsigned threads = 0);

/// A line for a person about each device of this computer, whether it can be used or not.
std::vector<std::string> deviceLines();

/// A device and its shader library, for a command that draws without a display.
struct Gpu {
  std::unique_ptr<gpu::Device> device;
  std::unique_ptr<gpu::Library> library;
};
/// --gpu and --threads.
void addGpuOptions(QCommandLineParser& parser);
/// Throws as makeDevice() and loadShaderLibrary(), and WorkError for a bad number of threads.
Gpu gpuFrom(const QCommandLineParser& parser);
/// The same for a device of another name.
Gpu gpuFrom(const QCommandLineParser& parser, const std::string& name);

}  // namespace veloria
