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

// Value noise along a line that changes with the phase; 0 to 1.
float noise(float x, Phase phase, uint seed) {
  float cx = floor(x);
  vec2 f = fade(vec2(x - cx, fract(phase.value)));
  uint hx = uint(int(cx)) * strideX + seed;
  uvec2 t = timeSteps(phase, strideZ);
  float a = unitFloat(mixBits(hx ^ t.x));
  float b = unitFloat(mixBits((hx + strideX) ^ t.x));
  float c = unitFloat(mixBits(hx ^ t.y));
  float d = unitFloat(mixBits((hx + strideX) ^ t.y));
  return mix(mix(a, b, f.x), mix(c, d, f.x), f.y);
}

// Value noise in the plane that changes with the phase; 0 to 1.
float noise(vec2 p, Phase phase, uint seed) {
  vec2 c = floor(p);
  vec2 f = fade(p - c);
  float ft = fade(fract(phase.value));
  uint hx0 = uint(int(c.x)) * strideX + seed;
  uint hx1 = hx0 + strideX;
  uint hy0 = uint(int(c.y)) * strideY;
  uint hy1 = hy0 + strideY;
  uvec2 t = timeSteps(phase, strideZ);
  vec4 near = vec4(unitFloat(mixBits(hx0 ^ hy0 ^ t.x)), unitFloat(mixBits(hx1 ^ hy0 ^ t.x)),
                   unitFloat(mixBits(hx0 ^ hy1 ^ t.x)), unitFloat(mixBits(hx1 ^ hy1 ^ t.x)));
  vec4 far = vec4(unitFloat(mixBits(hx0 ^ hy0 ^ t.y)), unitFloat(mixBits(hx1 ^ hy0 ^ t.y)),
                  unitFloat(mixBits(hx0 ^ hy1 ^ t.y)), unitFloat(mixBits(hx1 ^ hy1 ^ t.y)));
  vec4 now = mix(near, far, ft);
  vec2 row = mix(now.xz, now.yw, f.x);
  return mix(row.x, row.y, f.y);
}
