// Words that the CPU has its own for. Some say what is the same for every pixel of a call, so that the functions can run many pixels at once. A
// `scalar` is such a float. Only scalars, constants and the bounds of loops may decide a branch; what depends on the pixel
// is chosen by pick(), which works out both sides. The compiler of the CPU's functions refuses anything else. What
// depends on the column alone, a function can put into a structure `Column column` by makeColumn(), which main() calls
// first and the CPU calls once for many rows.
#define scalar float
float pick(bool which, float a, float b) { return which ? a : b; }
vec2 pick(bool which, vec2 a, vec2 b) { return which ? a : b; }
vec3 pick(bool which, vec3 a, vec3 b) { return which ? a : b; }
vec4 pick(bool which, vec4 a, vec4 b) { return which ? a : b; }

// Of numbers that are not negative.
vec3 cubeRoot(vec3 x) { return pow(x, vec3(1.0 / 3.0)); }
