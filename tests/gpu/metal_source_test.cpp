// The functions' Metal source and the module that it is made of, against the numbers that the renderer binds by.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "render/Uniforms.h"

namespace veloria::tests {
namespace {

struct Function {
  std::string name;
  std::vector<std::string> textures;  // bound from 0
  std::vector<std::string> images;    // from 4
  std::string target;                 // at 7
  std::size_t blockSize = 0;          // of buffer 0
};

const Function functions[] = {{"k_clear", {}, {}, "field"},
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
                              {"f_blur", {"source"}, {}, "", sizeof(BlurParams)},
                              {"f_final", {"scene", "glow", "bar"}, {}, "", sizeof(BandBlock)}};

std::string textOf(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(std::filesystem::path(METAL_SOURCE) / file).rdbuf();
  return text.str();
}

/// What a function binds, from its declaration in the Metal source: "name texture 0".
std::set<std::string> bindingsOf(const std::string& function) {
  const std::string source = textOf(function + ".metal");
  const std::string stage = function[0] == 'k' ? "kernel" : function[0] == 'v' ? "vertex" : "fragment";
  std::smatch declared;
  EXPECT_TRUE(std::regex_search(source, declared, std::regex("\n" + stage + " \\w+ " + function + "\\(.*\\)\n")));
  const std::string declaration = declared.str();
  const std::regex binding("(\\w+) \\[\\[(texture|sampler|buffer)\\((\\d+)\\)\\]\\]");
  std::set<std::string> found;
  for (std::sregex_iterator at(declaration.begin(), declaration.end(), binding), end; at != end; ++at) {
    found.insert(((*at)[2] == "buffer" ? "" : (*at)[1].str() + " ") + (*at)[2].str() + " " + (*at)[3].str());
  }
  return found;
}

TEST(MetalSource, HoldsEveryFunctionAndBindsByTheInterfacesNumbers) {
  std::set<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(METAL_SOURCE)) files.insert(entry.path().filename());
  std::set<std::string> wanted{"bindings", "stamp"};
  for (const Function& function : functions) {
    wanted.insert(function.name + ".metal");
    std::set<std::string> bindings;
    for (std::size_t i = 0; i < function.textures.size(); ++i) {
      bindings.insert(function.textures[i] + " texture " + std::to_string(i));
      bindings.insert(function.textures[i] + "Smplr sampler " + std::to_string(i));
    }
    for (std::size_t i = 0; i < function.images.size(); ++i) {
      bindings.insert(function.images[i] + " texture " + std::to_string(4 + i));
    }
    if (!function.target.empty()) bindings.insert(function.target + " texture 7");
    if (function.blockSize > 0) bindings.insert("buffer 0");
    EXPECT_EQ(bindingsOf(function.name), bindings) << function.name;
  }
  EXPECT_EQ(files, wanted);
}

TEST(MetalSource, TurnsTheVerticalAxisOnceAndKeepsTheConstants) {
  EXPECT_THAT(textOf("v_fullscreen.metal"), testing::HasSubstr("gl_Position.y = -(out.gl_Position.y)"));
  EXPECT_THAT(textOf("f_final.metal"), testing::HasSubstr("constant uint target_tmp [[function_constant(2)]]"));
  EXPECT_THAT(textOf("f_final.metal"), testing::HasSubstr("constant uint extras_tmp [[function_constant(3)]]"));
}

TEST(ShaderModule, HasTheBlocksThatTheRendererGives) {
  std::set<std::string> expected;
  for (const Function& function : functions) {
    expected.insert(function.name + " textures " + std::to_string(function.textures.size()) + " images " +
                    std::to_string(function.images.size()) + " block " + std::to_string(function.blockSize));
  }
  std::istringstream table(textOf("bindings"));
  std::set<std::string> found;
  for (std::string line; std::getline(table, line);) found.insert(line);
  EXPECT_EQ(found, expected);
}

}  // namespace
}  // namespace veloria::tests
