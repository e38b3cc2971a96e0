#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "SimParams.glsl"
#include "kernel.glsl"
#include "unit.glsl"
#include "noise.glsl"
#include "color.glsl"

// Moves the dye, fades it and adds new light. rgb is coloured light, a its amount.
layout(set = 0, binding = 0) uniform sampler2D dye;
layout(set = 0, binding = 4, rg16f) uniform readonly image2D velocity;
layout(set = 0, binding = 7, rgba16f) uniform writeonly image2D dyeOut;

const float birthRate = 0.0075;  // a 60 Hz frame, at emitRate 1 in the middle of a source
const float fullDye = 2.4;       // a source stops adding at this amount

vec4 dyeAt(vec2 cells, vec2 grid) { return textureLod(dye, cells / grid, 0.0); }

// MacCormack advection (Selle, Fedkiw et al. 2008, section 3): what a step there and back loses is given back by half,
// held between the four values around the place that the dye comes from. Curtains keep their edges that way; a plain
// step blurs them by several cells within seconds. The flow counts as even over the step.
vec4 advected(vec2 middle, vec2 v, vec2 grid) {
  vec2 way = sim.dt * v;
  vec2 from = middle - way;
  vec4 there = dyeAt(from, grid);
  vec2 target = middle + way - 0.5;
  vec2 f = fract(target);
  vec2 corner = floor(target) + 0.5 - way;
  vec4 low = mix(dyeAt(corner, grid), dyeAt(corner + vec2(1.0, 0.0), grid), f.x);
  vec4 high = mix(dyeAt(corner + vec2(0.0, 1.0), grid), dyeAt(corner + vec2(1.0, 1.0), grid), f.x);
  vec4 lost = dyeAt(middle, grid) - mix(low, high, f.y);
  ivec2 last = ivec2(grid) - 1;
  ivec2 c = ivec2(floor(from - 0.5));
  vec4 a = texelFetch(dye, clamp(c, ivec2(0), last), 0);
  vec4 b = texelFetch(dye, clamp(c + ivec2(1, 0), ivec2(0), last), 0);
  vec4 d = texelFetch(dye, clamp(c + ivec2(0, 1), ivec2(0), last), 0);
  vec4 e = texelFetch(dye, clamp(c + ivec2(1, 1), ivec2(0), last), 0);
  return clamp(there + 0.5 * lost, min(min(a, b), min(d, e)), max(max(a, b), max(d, e)));
}

struct Column {
  float source;  // strength of the source here, 0 to 1
  float hem;     // height of its lower end
  float along;   // place in the palette
};
Column column;

// Sources along the band, where slow noise rises above the threshold.
void makeColumn() {
  vec2 grid = vec2(imageSize(dyeOut));
  float x = (float(cell().x) + 0.5) / unitCells(grid);
  float scale = clamp(sim.emitScale, 0.05, 32.0);
  Phase phase = phaseAt(sim.emitPhase, stepPeriod);
  float broad = noise(x * scale * 0.30, phase, 0x3c6ef3u);
  float fine = noise(x * scale * 1.15 + broad * 2.0, phase, 0xa54ff5u);
  float low = mix(0.25, 0.75, clamp(sim.emitThreshold, 0.0, 1.0));
  column.source = smoothstep(low, low + 0.36, broad * 0.68 + fine * 0.32);
  float spread = clamp(sim.emitHeight, 0.02, 4.0);
  column.hem = sim.emitCenter - spread * 0.55 + (fine - 0.5) * 0.30 + (broad - 0.5) * 0.25;

  float colors = clamp(sim.paletteSpread, 0.0, 16.0);
  float along = smoothstep(0.12, 0.96, noise(x * 0.26 * max(colors, 0.05), phaseOf(0.03, sim.time), 0x1f83d9u));
  column.along = 0.03 + along * along * along * 0.64 * min(colors, 3.0);
}

// How much light is added at a height (0 bottom to 1 top): each source is a curtain with a sharp lower hem and a long
// soft upper end. 0 to 1.
float birth(float height) {
  float spread = clamp(sim.emitHeight, 0.02, 4.0);
  float above = height - column.hem;
  float profile = exp(-above * above / pick(above < 0.0, 0.012 * spread, 1.1 * spread * spread));
  return column.source * profile;
}

vec3 colorAt(float height) {
  float x = column.along + height * 0.22;
  return gradient(x, linearOf(vec3(sim.palette0r, sim.palette0g, sim.palette0b)),
                  linearOf(vec3(sim.palette1r, sim.palette1g, sim.palette1b)),
                  linearOf(vec3(sim.palette2r, sim.palette2g, sim.palette2b)),
                  linearOf(vec3(sim.palette3r, sim.palette3g, sim.palette3b)));
}

void main() {
  ivec2 c = cell();
  ivec2 size = imageSize(dyeOut);
  if (outside(c, size)) return;
  makeColumn();
  vec2 grid = vec2(size);
  vec2 middle = vec2(c) + 0.5;
  float height = 1.0 - middle.y / grid.y;

  vec4 d = advected(middle, imageLoad(velocity, c).xy, grid);
  d *= pow(clamp(sim.dyeDissipation, 0.0, 1.0), sim.dt);

  float born = birth(height) * clamp(sim.emitRate, 0.0, 5000.0) * birthRate * sim.dt;
  float room = clamp(1.0 - d.a / fullDye, 0.0, 1.0);
  float floorLight = clamp(sim.ambient, 0.0, 4.0) * 0.02 * sim.dt * clamp(1.0 - d.a / max(sim.ambient, 1e-3), 0.0, 1.0);
  float added = min(born * room + floorLight, fullDye);
  d += vec4(colorAt(height), 1.0) * added;

  bool finite = all(lessThanEqual(abs(d), vec4(64.0)));
  imageStore(dyeOut, c, pick(finite, max(d, 0.0), vec4(0.0)));
}
