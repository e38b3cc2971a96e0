#include "settings/Palette.h"

namespace veloria {

const std::vector<Palette>& Palette::presets() {
  static const std::vector<Palette> all{
      {"Classic Nimbra", {{0.05F, 1.0F, 0.55F}, {0.15F, 0.95F, 0.8F}, {0.35F, 0.55F, 1.0F}, {0.85F, 0.3F, 0.95F}}},
      {"Solar Storm", {{1.0F, 0.28F, 0.16F}, {1.0F, 0.62F, 0.2F}, {0.95F, 0.2F, 0.55F}, {0.55F, 0.12F, 0.85F}}},
      {"Arctic Ice", {{0.2F, 0.95F, 1.0F}, {0.35F, 0.65F, 1.0F}, {0.55F, 0.45F, 1.0F}, {0.85F, 0.92F, 1.0F}}},
      {"Nebula", {{0.35F, 0.1F, 0.75F}, {0.85F, 0.2F, 0.7F}, {0.25F, 0.55F, 1.0F}, {1.0F, 0.8F, 0.45F}}},
      {"Dragonfire", {{1.0F, 0.85F, 0.25F}, {1.0F, 0.4F, 0.08F}, {0.8F, 0.08F, 0.2F}, {0.35F, 0.02F, 0.3F}}},
      {"Bioluminescence", {{0.1F, 1.0F, 0.85F}, {0.05F, 0.7F, 0.95F}, {0.45F, 0.25F, 1.0F}, {0.9F, 0.45F, 1.0F}}},
      {"Rose Quartz", {{1.0F, 0.55F, 0.7F}, {1.0F, 0.75F, 0.55F}, {0.7F, 0.5F, 1.0F}, {0.98F, 0.9F, 0.95F}}},
      {"Flurry", {{1.0F, 0.2F, 0.55F}, {1.0F, 0.8F, 0.15F}, {0.15F, 0.9F, 1.0F}, {0.55F, 0.25F, 1.0F}}},
      {"Monochrome Glass", {{0.65F, 0.78F, 0.95F}, {0.85F, 0.92F, 1.0F}, {0.45F, 0.55F, 0.75F}, {1.0F, 1.0F, 1.0F}}},
  };
  return all;
}

}  // namespace veloria
