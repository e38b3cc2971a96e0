// What every compute kernel needs. The group size comes from the device; grids need not be a multiple of it.
layout(local_size_x_id = 0, local_size_y_id = 1) in;

ivec2 cell() { return ivec2(gl_GlobalInvocationID.xy); }

bool outside(ivec2 c, ivec2 size) { return any(greaterThanEqual(c, size)); }

// x when it is finite and no larger than limit in magnitude, else the nearest that is (0 for NaN).
vec2 bounded(vec2 x, float limit) {
  float size = length(x);
  return pick(size < 1e18, pick(size > limit, x * (limit / size), x), vec2(0.0));
}
float bounded(float x, float limit) { return pick(x == x, clamp(x, -limit, limit), 0.0); }
