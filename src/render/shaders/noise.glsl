// Smooth noise on an integer lattice, without textures. All of it repeats in time with timePeriod, so that the time
// that the CPU sends can be wrapped there without a jump.

const float timePeriod = 8192.0;

// The phases that the CPU sums up repeat after these: lattice steps, and for the rays units of raySpeed x seconds.
const float stepPeriod = 1024.0;
const float rayPeriod = 64.0;

// A phase in lattice steps and the whole number of steps after which it repeats.
struct Phase {
  scalar value;
  scalar period;
};

Phase phaseAt(scalar value, scalar period) {
  Phase phase;
  phase.value = value;
  phase.period = period;
  return phase;
}

// A phase that moves at about `speed` steps a second. The speed must be a constant: a change would make the phase jump.
Phase phaseOf(scalar speed, scalar time) {
  scalar period = max(round(abs(speed) * timePeriod), 1.0);
  return phaseAt(time * (period / timePeriod), period);
}

// Spreads the pattern that is left in lattice coordinates multiplied by large odd numbers.
uint mixBits(uint h) {
  h ^= h >> 15;
  h *= 0x2c1b3c6du;
  return h ^ (h >> 13);
}

float unitFloat(uint h) { return float(h >> 8) * (1.0 / 16777216.0); }

// The lattice's two steps in time around a phase, as hash parts. A phase lies between 0 and its period.
uvec2 timeSteps(Phase phase, uint stride) {
  scalar now = floor(phase.value);
  scalar next = now + 1.0;
  return uvec2(uint(now), uint(next < phase.period ? next : 0.0)) * stride;
}

vec2 fade(vec2 f) { return f * f * f * (f * (f * 6.0 - 15.0) + 10.0); }
float fade(float f) { return f * f * f * (f * (f * 6.0 - 15.0) + 10.0); }

const uint strideX = 0x8da6b343u;
const uint strideY = 0xd8163841u;
const uint strideZ = 0xcb1ab31fu;

// A lattice's value at a place of one of its lines: `row` is what the line's number adds to the hash.
float latticeValue(uint x, uint row, uint seed, Phase phase) {
  uint h = (x * strideX + seed) ^ row;
  uvec2 t = timeSteps(phase, strideZ);
  return mix(unitFloat(mixBits(h ^ t.x)), unitFloat(mixBits(h ^ t.y)), fade(fract(phase.value)));
}

// Value noise along a line that changes with the phase; 0 to 1.
float noise(float x, Phase phase, uint seed) {
  float cell = floor(x);
  vec2 ends = neighbours(latticeValue, uint(int(cell)), 0u, seed, phase);
  return mix(ends.x, ends.y, fade(x - cell));
}

// Value noise in the plane that changes with the phase; 0 to 1. p's y must be the same for a whole row of pixels.
float noise(vec2 p, Phase phase, uint seed) {
  vec2 cell = floor(p);
  vec2 f = fade(p - cell);
  uint x = uint(int(cell.x));
  uint row = uint(int(cell.y)) * strideY;
  vec2 near = neighbours(latticeValue, x, row, seed, phase);
  vec2 far = neighbours(latticeValue, x, row + strideY, seed, phase);
  vec2 ends = mix(near, far, f.y);
  return mix(ends.x, ends.y, f.x);
}
