#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "render/RenderParams.h"
#include "render/SimParams.h"

// The functions' Metal source and the module that it is made of, against the numbers that the renderer binds by.
namespace veloria {
namespace {

using Indices = std::map<std::string, int>;

struct Function {
  std::string name;
  std::vector<std::string> textures;  // bound from 0
  std::vector<std::string> images;    // from 4
  std::string target;                 // at 7
  std::size_t blockSize = 0;          // of buffer 0
};

constexpr std::size_t blurBytes = 12;  // direction and radius

std::vector<Function> functions() {
  return {{"k_clear", {}, {}, "field"},
          {"k_advect_velocity", {"velocity"}, {}, "velocityOut", sizeof(StepBlock)},
          {"k_curl", {}, {"velocity"}, "curl"},
          {"k_forces", {}, {"velocity", "curl", "dye"}, "velocityOut", sizeof(StepBlock)},
          {"k_divergence", {}, {"velocity"}, "divergence"},
          {"k_jacobi", {}, {"pressure", "divergence"}, "pressureOut"},
          {"k_project", {}, {"velocity", "pressure"}, "velocityOut"},
          {"k_advect_dye", {"dye"}, {"velocity"}, "dyeOut", sizeof(StepBlock)},
          {"v_fullscreen", {}, {}, ""},
          {"f_nimbra", {"dye", "velocity"}, {}, "", sizeof(BandBlock)},
          {"f_down", {"scene"}, {}, ""},
          {"f_blur", {"source"}, {}, "", blurBytes},
          {"f_final", {"scene", "glow", "bar"}, {}, "", sizeof(BandBlock)}};
}

std::string textOf(const std::filesystem::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string sourceOf(const std::string& function) {
  return textOf(std::filesystem::path(METAL_SOURCE) / (function + ".metal"));
}

// The line that declares the function itself.
std::string declarationOf(const Function& function) {
  const std::string stage = function.name[0] == 'k' ? "kernel" : function.name[0] == 'v' ? "vertex" : "fragment";
  std::smatch found;
  const std::string source = sourceOf(function.name);
  if (!std::regex_search(source, found, std::regex("\n" + stage + " \\w+ " + function.name + "\\(.*\\)\n"))) return "";
  return found.str();
}

Indices indicesOf(const std::string& text, const std::string& kind) {
  Indices found;
  const std::regex parameter("(\\w+) \\[\\[" + kind + "\\((\\d+)\\)\\]\\]");
  for (std::sregex_iterator at(text.begin(), text.end(), parameter), end; at != end; ++at) {
    found[(*at)[1]] = std::stoi((*at)[2]);
  }
  return found;
}

Indices numbered(const Function& function) {
  Indices result;
  int index = 0;
  for (const std::string& name : function.textures) result[name] = index++;
  index = 4;
  for (const std::string& name : function.images) result[name] = index++;
  if (!function.target.empty()) result[function.target] = 7;
  return result;
}

TEST(MetalSource, HoldsEveryFunctionUnderItsOwnName) {
  std::set<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(METAL_SOURCE)) {
    if (entry.path().extension() == ".metal") files.insert(entry.path().stem());
  }
  std::set<std::string> wanted;
  for (const Function& function : functions()) {
    wanted.insert(function.name);
    EXPECT_NE(declarationOf(function), "") << function.name;
  }
  EXPECT_EQ(files, wanted);
}

TEST(MetalSource, BindsByTheInterfacesNumbers) {
  for (const Function& function : functions()) {
    const std::string declaration = declarationOf(function);
    EXPECT_EQ(indicesOf(declaration, "texture"), numbered(function)) << function.name;
    const Indices buffers = indicesOf(declaration, "buffer");
    EXPECT_EQ(buffers.size(), function.blockSize > 0 ? 1U : 0U) << function.name;
    for (const auto& [name, index] : buffers) EXPECT_EQ(index, 0) << function.name << " " << name;
    // A sampler has the number of the texture that it belongs to.
    for (const auto& [name, index] : indicesOf(declaration, "sampler")) {
      EXPECT_EQ(function.textures.at(static_cast<std::size_t>(index)) + "Smplr", name) << function.name;
    }
  }
}

TEST(MetalSource, KernelsWriteTheirTargetOnly) {
  const std::regex written("access::(?:read_)?write> (\\w+) ");
  for (const Function& function : functions()) {
    std::vector<std::string> outputs;
    const std::string declaration = declarationOf(function);
    for (std::sregex_iterator at(declaration.begin(), declaration.end(), written), end; at != end; ++at) {
      outputs.push_back((*at)[1]);
    }
    const auto target = function.target.empty() ? std::vector<std::string>{} : std::vector{function.target};
    EXPECT_EQ(outputs, target) << function.name;
  }
}

TEST(MetalSource, TurnsTheVerticalAxisOnce) {
  EXPECT_THAT(sourceOf("v_fullscreen"), ::testing::HasSubstr("gl_Position.y = -(out.gl_Position.y)"));
}

TEST(MetalSource, ConstantsKeepTheirNumbersAndTypes) {
  const std::string source = sourceOf("f_final");
  EXPECT_THAT(source, ::testing::HasSubstr("constant uint target_tmp [[function_constant(2)]]"));
  EXPECT_THAT(source, ::testing::HasSubstr("constant uint extras_tmp [[function_constant(3)]]"));
}

TEST(ShaderModule, HasTheBlocksThatTheRendererGives) {
  std::set<std::string> expected;
  for (const Function& function : functions()) {
    expected.insert(function.name + " textures " + std::to_string(function.textures.size()) + " images " +
                    std::to_string(function.images.size()) + " block " + std::to_string(function.blockSize));
  }
  std::istringstream table(textOf(std::filesystem::path(METAL_SOURCE) / "bindings"));
  std::set<std::string> found;
  for (std::string line; std::getline(table, line);) found.insert(line);
  EXPECT_EQ(found, expected);
}

}  // namespace
}  // namespace veloria
