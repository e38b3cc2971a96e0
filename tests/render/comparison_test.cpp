// Every GPU function with the same input on Vulkan and on the CPU, texel by texel, for every instruction set.

#include <bit>
#include <random>

#include "GpuTest.h"
#include "gpu/cpu/CpuFactory.h"
#include "render/NimbraRenderer.h"
#include "render/Uniforms.h"

namespace veloria::gpu::cpu {
extern const CompiledLibrary renderCpuLibrary;
}

namespace veloria::tests {
namespace {

using gpu::PixelFormat;

constexpr auto light = NimbraRenderer::scenePixelFormat;

constexpr float relative = 0x1p-10F;
constexpr float absolute = 0x1p-11F;

Backend cpuBackendFor(gpu::cpu::InstructionSet set) {
  return {[set] { return gpu::cpu::makeCpuDevice(gpu::cpu::renderCpuLibrary, {.set = set, .threads = 3}); },
          [] { return std::vector<std::byte>(); }, [] { return std::string(); }};
}

/// The content of a texture of halves. The software driver filters bytes with weights of 8 bits.
struct Content {
  PixelFormat format = PixelFormat::invalid;
  gpu::Size size;
  std::vector<float> values;
};

/// A call, or several that take turns with the target and the first image.
struct Call {
  std::string name;
  gpu::PipelineDescriptor pipeline;
  std::vector<Content> textures{}, images{};
  std::vector<float> block{};
  gpu::Size size{};
  PixelFormat format = PixelFormat::rgba16Float;
  int steps = 1;
};

/// The first place at which the CPU's values are too far from Vulkan's; empty if there is none. A half holds 11 bits,
/// and the driver cuts off what the CPU keeps, so one step of a half is no fault; each pass of several adds one.
std::string difference(const Call& call, const std::vector<float>& cpu, const std::vector<float>& vulkan) {
  const bool bytes = gpu::targetKind(call.format) != gpu::TargetKind::light;
  const std::size_t channels = gpu::bytesPerPixel(call.format) / (bytes ? 1 : 2);
  const auto steps = static_cast<float>(call.steps);
  for (std::size_t i = 0; i < cpu.size(); ++i) {
    const float allowed = bytes ? 1 : steps * (absolute + relative * std::abs(vulkan[i]));
    if (std::abs(cpu[i] - vulkan[i]) <= allowed) continue;
    const std::size_t texel = i / channels;
    return "column " + std::to_string(texel % call.size.width) + ", row " + std::to_string(texel / call.size.width) +
           ", channel " + std::to_string(i % channels) + ": " + std::to_string(cpu[i]) + " for " +
           std::to_string(vulkan[i]);
  }
  return "";
}

class Comparison : public GpuTest {
 protected:
  float random(float low, float high) {
    return low + (high - low) * static_cast<float>(random_()) / static_cast<float>(std::mt19937::max());
  }

  /// Values between the two: each its own, or waves that are longer than 20 texels.
  Content content(PixelFormat format, gpu::Size size, float low, float high, bool rough = true) {
    Content made{format, {std::max(size.width, 1U), std::max(size.height, 1U)}, {}};
    const std::size_t channels = gpu::bytesPerPixel(format) / 2;
    std::array<float, 4> shifts{};
    for (float& shift : shifts) shift = random(0, 6);
    for (std::uint32_t y = 0; y < made.size.height; ++y) {
      for (std::uint32_t x = 0; x < made.size.width; ++x) {
        for (std::size_t c = 0; c < channels; ++c) {
          const auto wave =
              std::sin(static_cast<float>(x) * 0.3F + shifts[c]) * std::cos(static_cast<float>(y) * 0.25F + shifts[c]);
          made.values.push_back(rough ? random(low, high) : low + (high - low) * (0.5F + 0.5F * wave));
        }
      }
    }
    return made;
  }

  template <typename Block>
  Block randomBlock() {
    std::array<float, sizeof(Block) / sizeof(float)> values;
    for (float& value : values) value = random(0.05F, 1);
    return std::bit_cast<Block>(values);
  }
  template <typename Block>
  static std::vector<float> floatsOf(const Block& block) {
    const auto values = std::bit_cast<std::array<float, sizeof(Block) / sizeof(float)>>(block);
    return {values.begin(), values.end()};
  }

  void add(Call call) {
    call.name = call.pipeline.function + " " + call.name + " " + std::to_string(call.pipeline.variant) + ", " +
                gpu::pixelFormatName(call.format) + ", " + std::to_string(call.size.width) + "x" +
                std::to_string(call.size.height);
    calls_.push_back(std::move(call));
  }

  void addFluid(gpu::Size size, int round) {
    constexpr auto one = PixelFormat::r16Float, two = PixelFormat::rg16Float, four = PixelFormat::rgba16Float;
    auto block = randomBlock<StepBlock>();
    SimParams& params = block.params;
    params.gridW = static_cast<float>(size.width);
    params.gridH = static_cast<float>(size.height);
    params.time = 812.3F;
    params.curlOctaves = 3;
    params.curlStrength = 40;
    params.vorticity = 4;
    params.emitRate = 30;
    params.emitThreshold = 0.1F;
    params.pointerActive = 1;
    params.pointerMode = static_cast<float>(round + 1);
    block.curlPhase = 700.3F;
    block.emitPhase = 1023.6F;  // its next step is the first one again
    const auto step = floatsOf(block);
    // Slow and even, and torn.
    const bool torn = round > 0;
    const auto flow = content(two, size, torn ? -12.0F : -1.0F, torn ? 12.0F : 1.0F, torn);
    const auto dye = content(four, size, 0, 2, torn);
    const auto field = content(one, size, -2, 2);
    const std::string name = torn ? "torn" : "even";
    add({.name = name, .pipeline = {"k_clear"}, .size = size, .format = one});
    add({.name = name, .pipeline = {"k_curl"}, .images = {flow}, .size = size, .format = one});
    add({.name = name, .pipeline = {"k_divergence"}, .images = {flow}, .size = size, .format = one});
    for (const int steps : {1, 2, 7}) {
      add({.name = name + " x" + std::to_string(steps),
           .pipeline = {"k_jacobi"},
           .images = {field, content(one, size, -1, 1)},
           .size = size,
           .format = one,
           .steps = steps});
    }
    add({.name = name, .pipeline = {"k_project"}, .images = {flow, field}, .size = size, .format = two});
    add({.name = name,
         .pipeline = {"k_advect_velocity"},
         .textures = {flow},
         .block = step,
         .size = size,
         .format = two});
    add({.name = name,
         .pipeline = {"k_forces"},
         .images = {flow, field, dye},
         .block = step,
         .size = size,
         .format = two});
    add({.name = name, .pipeline = {"k_advect_dye"}, .textures = {dye}, .images = {flow}, .block = step, .size = size});
  }

  BandBlock bandBlock(gpu::Size size, int round) {
    auto block = randomBlock<BandBlock>();
    RenderParams& params = block.params;
    params.targetW = static_cast<float>(size.width);
    params.targetH = static_cast<float>(size.height);
    params.time = 812.3F;
    params.detailOctaves = 4;
    params.rayScale = 3;
    params.notchLeft = 0.3F;
    params.notchRight = 0.6F;
    params.notchBottom = 0.7F;
    params.notchPresent = 1;
    params.notchHalo = round == 1 ? 1 : 0;
    params.pointerGlowOn = 1;
    params.textMaskOn = 1;
    params.textThreshold = 0.2F;
    params.textDilate = 2;
    params.textBlur = 5;
    params.opaque = round == 2 ? 1 : 0;
    params.additive = round == 1 ? 0.4F : 0;
    params.debugSolid = 0;
    params.palette = {{{0.9F, 0.2F, 0.1F}, {0.1F, 0.8F, 0.3F}, {0.2F, 0.1F, 0.9F}, {0.8F, 0.7F, 0.2F}}};
    block.rayPhase = 13.7F;
    block.hueDriftPhase = 1023.4F;
    return block;
  }

  void addPicture(gpu::Size size, int round) {
    const auto pipeline = [](const char* function, PixelFormat format = light, std::uint32_t variant = 0) {
      return gpu::PipelineDescriptor{function, "v_fullscreen", format, variant};
    };
    const gpu::Size third{size.width / 3, size.height};
    const gpu::Size half{size.width / 2, size.height / 2};
    const std::string name = "round " + std::to_string(round);
    add({.name = name,
         .pipeline = pipeline("f_nimbra"),
         .textures = {content(light, third, 0, 2, round == 0), content(PixelFormat::rg16Float, third, -1, 1, false)},
         .block = floatsOf(bandBlock(size, round)),
         .size = size});
    add({.name = name,
         .pipeline = pipeline("f_down"),
         .textures = {content(light, size, 0, 2)},
         .size = {(size.width + 3) / 4, (size.height + 3) / 4}});
    add({.name = name,
         .pipeline = pipeline("f_blur"),
         .textures = {content(light, size, 0, 2)},
         .block = floatsOf(round == 1 ? BlurParams{1, 0, 9} : BlurParams{0, 1, 2.5F}),
         .size = size});
    for (const PixelFormat format :
         {light, PixelFormat::bgra8Unorm, PixelFormat::rgba8Unorm, PixelFormat::bgra8UnormSrgb}) {
      for (const std::uint32_t variant : {0U, 1U, 2U, 4U, 8U, 15U}) {
        if (format == PixelFormat::rgba8Unorm && variant != 0) continue;  // its order of channels alone is different
        add({.name = name,
             .pipeline = pipeline("f_final", format, variant),
             .textures = {content(light, (variant & 4) != 0 ? half : size, 0, 1.5F), content(light, half, 0, 1),
                          content(light, {size.width, size.height + 3}, 0, 1)},
             .block = floatsOf(bandBlock(size, round)),
             .size = size,
             .format = format});
      }
    }
  }

  std::shared_ptr<gpu::Texture> upload(const Content& content, gpu::TextureUsage usage) {
    auto texture = makeTexture(content.format, content.size, usage);
    writeFloats(*texture, content.values);
    return texture;
  }

  std::vector<std::vector<float>> results() {
    std::vector<std::vector<float>> values;
    std::vector<std::shared_ptr<gpu::Pipeline>> used;  // those in use are not compiled again
    for (const Call& call : calls_) {
      used.push_back(device_->makePipeline(*library_, call.pipeline));
      values.push_back(result(call, *used.back()));
    }
    return values;
  }

  std::vector<float> result(const Call& call, const gpu::Pipeline& pipeline) {
    const auto computed = gpu::TextureUsage::shaderRead | gpu::TextureUsage::shaderWrite;
    std::vector<std::shared_ptr<gpu::Texture>> textures, images;
    for (const Content& each : call.textures) textures.push_back(upload(each, gpu::TextureUsage::shaderRead));
    for (const Content& each : call.images) images.push_back(upload(each, computed));
    auto target = makeTexture(call.format, call.size, pipeline.draws() ? drawnAndRead : computed);
    run([&](gpu::Frame& frame) {
      for (int step = 0; step < call.steps; ++step) {
        if (step > 0) std::swap(target, images[0]);
        gpu::Pass pass{.pipeline = pipeline, .bytes = std::as_bytes(std::span(call.block)), .target = *target};
        std::ranges::transform(textures, pass.textures.begin(), [](const auto& texture) { return texture.get(); });
        std::ranges::transform(images, pass.images.begin(), [](const auto& image) { return image.get(); });
        frame.run(pass);
      }
    });
    if (gpu::targetKind(call.format) == gpu::TargetKind::light) return readFloats(*target);
    std::vector<std::uint8_t> bytes(target->byteCount());
    target->read(std::as_writable_bytes(std::span(bytes)));
    return {bytes.begin(), bytes.end()};
  }

  std::mt19937 random_{2026};
  std::vector<Call> calls_;
};

TEST_F(Comparison, TheCpuDrawsWhatVulkanDraws) {
  for (const int round : {0, 1, 2}) {
    // Less than a vector, one and a bit, and more than the columns that are kept for many rows.
    for (const gpu::Size size : {gpu::Size{1, 1}, {5, 3}, {19, 2}, {37, 18}, {1093, 3}}) {
      addFluid(size, round);
      addPicture(size, round);
    }
  }
  addFluid({1093, 19}, 2);  // enough for several threads
  open(vulkanBackend());
  const auto expected = results();
  for (const auto set : gpu::cpu::usableInstructionSets(gpu::cpu::renderCpuLibrary)) {
    open(cpuBackendFor(set));
    const auto actual = results();
    for (std::size_t i = 0; i < calls_.size(); ++i) {
      EXPECT_EQ(difference(calls_[i], actual[i], expected[i]), "")
          << gpu::cpu::instructionSetName(set) << ", " << calls_[i].name;
    }
  }
}

}  // namespace
}  // namespace veloria::tests
