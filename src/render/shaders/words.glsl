// Words that the CPU has its own for, in wide/. They say what is the same for many pixels, so that the CPU runs many of
// them at once and works out once what they share.

// A `scalar` is a float that is the same for every pixel of a row. Only scalars, constants and the bounds of loops may
// decide a branch; what depends on the pixel is chosen by pick(), which works out both sides. The compiler of the CPU's
// functions refuses anything else.
//
// What depends on the column alone, a function can put into a structure `Column column` by makeColumn(), and what
// depends on the row alone into a structure `Row row` by makeRow(). main() calls both first; the CPU calls them once for
// many pixels.
#define scalar float
float pick(bool which, float a, float b) { return which ? a : b; }
vec2 pick(bool which, vec2 a, vec2 b) { return which ? a : b; }
vec3 pick(bool which, vec3 a, vec3 b) { return which ? a : b; }
vec4 pick(bool which, vec4 a, vec4 b) { return which ? a : b; }

// The y of a place that is the same for the whole row.
scalar rowOf(vec2 place) { return place.y; }

// Of numbers that are not negative.
vec3 cubeRoot(vec3 x) { return pow(x, vec3(1.0 / 3.0)); }

// A lattice's values at two neighbouring places of a line: `valueAt(x, row, seed, phase)` for x and for x + 1. `row` must
// be the same for a whole row of pixels, and a function must not use a seed with two phases.
#define neighbours(valueAt, x, row, seed, phase) \
  vec2(valueAt(x, row, seed, phase), valueAt((x) + 1u, row, seed, phase))

// Where textureAt() reads along x: linear between two texels, or a cubic B-spline of four, read by two bilinear taps
// (Sigg, Hadwiger 2005).
struct Linear {
  float x;
};
struct Cubic {
  float x0, x1, share;  // of the tap at x0
};
Linear linearAt(sampler2D s, float x) { return Linear(x); }
Cubic cubicAt(sampler2D s, float x) {
  float width = float(textureSize(s, 0).x);
  float at = x * width - 0.5;
  float f = fract(at);
  float g = 1.0 - f;
  float w0 = g * g * g;
  float w1 = 4.0 - 3.0 * f * f * (2.0 - f);
  float w2 = 4.0 - 3.0 * g * g * (2.0 - g);
  float w3 = f * f * f;
  float base = at - f + 0.5;
  return Cubic((base + w1 / (w0 + w1) - 1.0) / width, (base + w3 / (w2 + w3) + 1.0) / width, (w0 + w1) / 6.0);
}

// Where it reads along y: at one height, or at several whose values are multiplied by weights and summed.
struct Rows1 {
  scalar y;
};
struct Rows2 {
  scalar y0, weight0, y1, weight1;
};
struct Rows3 {
  scalar y0, weight0, y1, weight1, y2, weight2;
};
Rows1 rowsAt(sampler2D s, scalar y) { return Rows1(y); }
Rows2 rowsAt(sampler2D s, scalar y0, scalar weight0, scalar y1, scalar weight1) {
  return Rows2(y0, weight0, y1, weight1);
}
Rows3 rowsAt(sampler2D s, scalar y0, scalar weight0, scalar y1, scalar weight1, scalar y2, scalar weight2) {
  return Rows3(y0, weight0, y1, weight1, y2, weight2);
}

// What was made for one texture may be used for another of the same size.
vec4 textureAt(sampler2D s, Linear at, Rows1 rows) { return textureLod(s, vec2(at.x, rows.y), 0.0); }
vec4 textureAt(sampler2D s, Cubic at, Rows1 rows) {
  return mix(textureLod(s, vec2(at.x1, rows.y), 0.0), textureLod(s, vec2(at.x0, rows.y), 0.0), at.share);
}
vec4 textureAt(sampler2D s, Linear at, Rows2 rows) {
  return rows.weight0 * textureLod(s, vec2(at.x, rows.y0), 0.0) + rows.weight1 * textureLod(s, vec2(at.x, rows.y1), 0.0);
}
vec4 textureAt(sampler2D s, Linear at, Rows3 rows) {
  return rows.weight0 * textureLod(s, vec2(at.x, rows.y0), 0.0) + rows.weight1 * textureLod(s, vec2(at.x, rows.y1), 0.0) +
         rows.weight2 * textureLod(s, vec2(at.x, rows.y2), 0.0);
}
