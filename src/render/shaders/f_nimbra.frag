#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "RenderParams.glsl"
#include "unit.glsl"
#include "noise.glsl"
#include "color.glsl"
#include "palette.glsl"

// The band itself: the dye, combed into rays that lean with the flow, with a bright lower hem, coloured. Linear light.
layout(set = 0, binding = 0) uniform sampler2D dye;
layout(set = 0, binding = 1) uniform sampler2D velocity;

layout(location = 0) in vec2 uv;
layout(location = 0) out vec4 light;

struct Column {
  Linear plain;
  Cubic smoothed;  // the grid is coarser than the picture along the band
  float co, si;    // of the hue's turn
};
Column column;

void makeColumn() {
  vec2 grid = vec2(textureSize(dye, 0));
  column.plain = linearAt(dye, uv.x);
  column.smoothed = cubicAt(dye, uv.x);
  float along = noise(uv.x * grid.x / unitCells(grid) * clamp(params.hueSpreadScale, 0.0, 64.0) * 0.12,
                      phaseAt(params.hueDriftPhase, stepPeriod), 0x9b0568u) - 0.5;
  float hue = params.hueShift + params.hueSwing + params.hueSpread * along * 0.35;
  float angle = 6.28318531 * fract(hue);
  float saturation = clamp(params.saturation, 0.0, 4.0);
  column.co = saturation * cos(angle);
  column.si = saturation * sin(angle);
}

struct Row {
  scalar height;  // above the band's lower edge
  Rows1 here, under;
  Rows2 above;
  Rows3 below;
  vec3 tint;  // of luminance 1
  scalar tinted;
};
Row row;

void makeRow() {
  vec2 grid = vec2(textureSize(dye, 0));
  scalar y = rowOf(uv);
  scalar below = rowOf(vec2(unitCells(grid) / grid.y));
  row.height = 1.0 - y;
  row.here = rowsAt(dye, y);
  row.under = rowsAt(dye, y + 0.12 * below);
  row.below = rowsAt(dye, y + 0.10 * below, 0.45, y + 0.22 * below, 0.33, y + 0.38 * below, 0.22);
  row.above = rowsAt(velocity, y + 0.25 * row.height, 1.0, y + 0.75 * row.height, 1.0);
  vec3 tint = gradient(row.height * 0.9 + 0.1, stop0(), stop1(), stop2(), stop3());
  row.tint = tint / max(luminance(tint), 0.05);
  row.tinted = clamp(params.heightTint * 1.7, 0.0, 1.0) * smoothstep(0.2, 0.95, row.height);
}

// Rays along the band: 0 (gap) to 1 (core). Finer octaves comb the coarse ones.
float rays(float x) {
  int octaves = int(clamp(params.detailOctaves, 1.0, 8.0));
  float sum = 0.0;
  float total = 0.0;
  float amplitude = 1.0;
  for (int i = 0; i < octaves; ++i) {
    scalar speed = 14.0 + 9.0 * float(i);
    Phase phase = phaseAt(params.rayPhase * speed, rayPeriod * speed);
    float n = noise(x, phase, 0x6a09e6u + uint(i) * 0x9e3779b9u);
    sum += amplitude * (1.0 - abs(n * 2.0 - 1.0));
    total += amplitude;
    x = x * 2.17 + 11.3;
    amplitude *= 0.55;
  }
  return sum / total;
}

void main() {
  makeColumn();
  makeRow();
  vec2 grid = vec2(textureSize(dye, 0));
  float unit = unitCells(grid);
  vec2 p = uv * grid / unit;
  scalar height = row.height;

  // Light rises: what is seen here shines from the dye below as well, which draws the flow's eddies out into curtains
  // that are crisp where they begin and soft where they end.
  vec4 here = textureAt(dye, column.smoothed, row.here);
  vec4 rising = textureAt(dye, column.plain, row.below);
  vec4 d = mix(here, rising, 0.15 + 0.55 * clamp((rising.a - here.a) * 1.5, 0.0, 1.0));

  // Rays stand on the lower edge and bend with the flow between there and here (softly limited, or fast flow would tear
  // them); they differ in their reach.
  vec2 flow = textureAt(velocity, column.plain, row.above).xy;
  float lean = clamp(params.rayFlow, -4.0, 4.0) * (flow.x + 0.4 * flow.y) * height * 270.0 / unit;
  lean = 0.5 * lean / (0.5 + abs(lean));
  float x = (p.x + lean) * clamp(params.rayScale, 0.05, 64.0);
  float sharp = clamp(params.raySharpness, 0.05, 16.0);
  // A thin bright core in a wide soft skirt.
  float comb = rays(x);
  float power = log2(max(comb, 1e-6)) * sharp;
  float ray = 0.72 * exp2(power * 2.0) + 0.28 * exp2(power * 0.6);
  float reach = exp(-max(height - 0.1 - 0.7 * comb, 0.0) * 2.6);
  // Sharper rays leave more of the band dark, so they are brighter.
  float combed = mix(1.0, (0.04 + (2.3 + 0.8 * min(sharp, 4.0)) * ray) * reach, clamp(params.rayIntensity, 0.0, 1.0));

  // Thin dye is dark, so that gaps open between the curtains.
  float dense = d.a * d.a / (d.a * d.a + 0.3);

  // Where the dye begins from below, the hem glows.
  float under = textureAt(dye, column.plain, row.under).a;
  float hem = clamp((here.a - under) * 1.6, 0.0, 1.0) * (1.0 - 0.7 * height);

  float sparkle = noise(x * 2.7, phaseOf(3.5, params.time), 0x510e52u) - 0.5;
  float amount = dense * combed * (1.0 + hem * 1.6) * max(1.0 + clamp(params.shimmer, 0.0, 4.0) * sparkle, 0.0);
  vec3 color = d.rgb * (amount / max(d.a, 0.6));

  color = mix(color, row.tint * luminance(color), row.tinted);

  color += clamp(params.ambientLevel, 0.0, 4.0) * 0.24 * mix(stop0(), stop2(), uv.x * 0.4 + height * 0.3);

  if (params.pointerGlowOn > 0.5) {
    vec2 away = (uv - vec2(params.pointerX, params.pointerY)) * grid / unit;
    float radius = max(params.pointerRadius * 4.0, 0.02);
    color += mix(stop1(), vec3(1.0), 0.35) * (params.pointerGlow * exp(-dot(away, away) / (radius * radius)));
  }

  color = graded(color, column.co, column.si);
  color *= clamp(params.exposure, 0.0, 64.0);

  bool finite = all(lessThanEqual(color, vec3(1e4)));
  color = pick(finite, min(color, vec3(64.0)), vec3(0.0));
  light = vec4(color, luminance(color));
}
