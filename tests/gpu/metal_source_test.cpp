// The functions' Metal source and the module that it is made of, against the numbers that the renderer binds by.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "render/Uniforms.h"

namespace veloria::tests {
namespace {

struct Function {
  std::string name;
  std::size_t textures = 0;   // bound from 0
  std::size_t images = 0;     // from 4
  std::size_t blockSize = 0;  // of buffer 0
};

const Function functions[] = {{"k_clear"},
                              {"k_advect_velocity", 1, 0, sizeof(StepBlock)},
                              {"k_curl", 0, 1},
                              {"k_forces", 0, 3, sizeof(StepBlock)},
                              {"k_divergence", 0, 1},
                              {"k_jacobi", 0, 2},
                              {"k_project", 0, 2},
                              {"k_advect_dye", 1, 1, sizeof(StepBlock)},
                              {"v_fullscreen"},
                              {"f_nimbra", 2, 0, sizeof(BandBlock)},
                              {"f_down", 1},
                              {"f_blur", 1, 0, sizeof(BlurParams)},
                              {"f_final", 3, 0, sizeof(BandBlock)},
                              {"f_mask", 1, 0, sizeof(BandBlock)}};

std::string textOf(const std::string& file) {
  std::ifstream stream(std::filesystem::path(METAL_SOURCE) / file);
  return {std::istreambuf_iterator(stream), {}};
}

TEST(MetalSource, HoldsEveryFunctionAndBindsByTheInterfacesNumbers) {
  for (const Function& function : functions) {
    const std::string source = textOf(function.name + ".metal");
    EXPECT_THAT(source, testing::HasSubstr(" " + function.name + "("));
    const auto binds = [&](const char* kind, std::size_t number) {
      return source.find("[[" + std::string(kind) + "(" + std::to_string(number) + ")]]") != std::string::npos;
    };
    for (std::size_t i = 0; i < 8; ++i) {
      const bool target = i == 7 && function.name.starts_with("k_");
      EXPECT_EQ(binds("texture", i), i < function.textures || (i >= 4 && i < 4 + function.images) || target)
          << function.name << i;
      EXPECT_EQ(binds("sampler", i), i < function.textures) << function.name << i;
      EXPECT_EQ(binds("buffer", i), i == 0 && function.blockSize > 0) << function.name << i;
    }
  }
}

TEST(MetalSource, TurnsTheVerticalAxisOnceAndKeepsTheConstants) {
  EXPECT_THAT(textOf("v_fullscreen.metal"), testing::HasSubstr("gl_Position.y = -(out.gl_Position.y)"));
  for (const char* constant : {"target_tmp [[function_constant(2)]]", "extras_tmp [[function_constant(3)]]"}) {
    EXPECT_THAT(textOf("f_final.metal"), testing::HasSubstr(constant));
  }
}

TEST(ShaderModule, HasTheBlocksThatTheRendererGives) {
  std::set<std::string> expected;
  for (const auto& [name, textures, images, blockSize] : functions) {
    expected.insert(name + " textures " + std::to_string(textures) + " images " + std::to_string(images) + " block " +
                    std::to_string(blockSize));
  }
  std::ifstream table(std::filesystem::path(METAL_SOURCE) / "bindings");
  std::set<std::string> found;
  for (std::string line; std::getline(table, line);) found.insert(line);
  EXPECT_EQ(found, expected);
}

}  // namespace
}  // namespace veloria::tests
