// What only the CPU's back end does.

#include <cmath>

#include "GpuTest.h"
#include "gpu/cpu/CpuFactory.h"

namespace veloria::gpu::cpu {
extern const CompiledLibrary testsCpuLibrary;
}

namespace veloria::tests {

const Backend& backend() {
  return cpuBackend();
}

namespace {

using namespace gpu;

TEST(CpuFactory, WishesNameAnInstructionSetOrTellTheKnownOnes) {
  using cpu::optionsFromWish;
  using cpu::testsCpuLibrary;
  EXPECT_FALSE(optionsFromWish("", testsCpuLibrary));
  EXPECT_FALSE(optionsFromWish("a cpu", testsCpuLibrary));
  EXPECT_FALSE(optionsFromWish("CPU", testsCpuLibrary)->set);
  EXPECT_EQ(optionsFromWish("cpu:BASELINE", testsCpuLibrary)->set, cpu::InstructionSet::baseline);
  try {
    optionsFromWish("cpu:mmx", testsCpuLibrary);
    FAIL();
  } catch (const NoDeviceError& error) {
    EXPECT_THAT(error.what(), testing::HasSubstr("\"cpu:mmx\"; it has cpu, cpu:baseline"));
  }
}

class CpuTest : public GpuTest {};

TEST_F(CpuTest, HalvesRoundAndKeepWhatIsNotANumber) {
  const auto texture = makeTexture(PixelFormat::r16Float, {6, 1});
  const auto target = makeTexture(PixelFormat::r16Float, {6, 1});
  writeFloats(*texture, {1, 2048, 65504, 0, 1.0F / 4096, -4});
  // The sum is kept in 32 bits, so reading it back rounds.
  const std::pair<float, std::vector<float>> cases[] = {{1.0F, {-3, 1, 1, 65504, 2049 - 1, 2}},
                                                        {NAN, std::vector<float>(6, NAN)},
                                                        {70000.0F, std::vector<float>(6, INFINITY)}};
  for (const auto& [amount, expected] : cases) {
    runOne({.pipeline = *computePipeline("k_add"),
            .images = {texture.get()},
            .bytes = floats({amount}),
            .target = *target});
    const auto values = readFloats(*target);
    for (std::size_t index = 0; index < 6; ++index) {
      if (std::isnan(expected[index])) {
        EXPECT_TRUE(std::isnan(values[index]));
      } else {
        EXPECT_EQ(values[index], expected[index]) << amount << ", " << index;
      }
    }
  }
}

TEST_F(CpuTest, CoordinatesThatAreNoNumbersOrHugeReadNothingOutside) {
  const auto source = makeTexture(PixelFormat::rgba16Float, {5, 3});
  writeFloats(*source, std::vector<float>(60, 7));
  const auto target = makeTexture(PixelFormat::rgba16Float, {40, 3});
  const auto sample = computePipeline("k_sample");
  for (const float wild : {NAN, INFINITY, -INFINITY, 1e30F, -1e30F, 3e9F}) {
    for (const auto& [x, y] : {std::pair{wild, 0.5F}, std::pair{0.5F, wild}, std::pair{wild, wild}}) {
      runOne({.pipeline = *sample, .textures = {source.get()}, .bytes = floats({x, y}), .target = *target});
      for (const float value : readFloats(*target)) EXPECT_TRUE(std::isnan(value) || value == 7) << x << ", " << y;
    }
  }
}

}  // namespace
}  // namespace veloria::tests
