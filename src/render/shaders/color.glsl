// Colour, in linear light unless a name says otherwise.

// sRGB to linear: a cubic that stays within 0.003 of the exact curve between 0 and 1.
vec3 linearOf(vec3 encoded) { return encoded * (encoded * (encoded * 0.305306011 + 0.682171111) + 0.012522878); }

// Linear to sRGB (IEC 61966-2-1).
vec3 encodedOf(vec3 c) {
  c = clamp(c, 0.0, 1.0);
  return mix(c * 12.92, 1.055 * pow(max(c, vec3(0.0031308)), vec3(1.0 / 2.4)) - 0.055, step(0.0031308, c));
}

float luminance(vec3 c) { return dot(c, vec3(0.2126, 0.7152, 0.0722)); }

// Turns the hue by `turns` and multiplies the chroma by `saturation` in OKLab (Ottosson 2020), keeping the lightness as
// the eye sees it, so that a hue on its way around never passes through mud. What lies outside the colours that can be
// shown comes back non-negative.
vec3 graded(vec3 c, float turns, float saturation) {
  const mat3 toCones = mat3(0.4122214708, 0.2119034982, 0.0883024619, 0.5363325363, 0.6806995451, 0.2817188376,
                            0.0514459929, 0.1073969566, 0.6299787005);
  const mat3 toLab = mat3(0.2104542553, 1.9779984951, 0.0259040371, 0.7936177850, -2.4285922050, 0.7827717662,
                          -0.0040720468, 0.4505937099, -0.8086757660);
  const mat3 fromLab = mat3(1.0, 1.0, 1.0, 0.3963377774, -0.1055613458, -0.0894841775, 0.2158037573, -0.0638541728,
                            -1.2914855480);
  const mat3 fromCones = mat3(4.0767416621, -1.2684380046, -0.0041960863, -3.3077115913, 2.6097574011, -0.7034186147,
                              0.2309699292, -0.3413193965, 1.7076147010);
  vec3 lab = toLab * pow(max(toCones * c, 0.0), vec3(1.0 / 3.0));
  float angle = 6.28318531 * fract(turns);
  float co = saturation * cos(angle);
  float si = saturation * sin(angle);
  vec3 cones = fromLab * vec3(lab.x, lab.y * co - lab.z * si, lab.y * si + lab.z * co);
  return max(fromCones * (cones * cones * cones), 0.0);
}

// The four stops as a smooth gradient over x from 0 to 1.
vec3 gradient(float x, vec3 a, vec3 b, vec3 c, vec3 d) {
  x = clamp(x, 0.0, 1.0) * 3.0;
  vec3 low = mix(a, b, smoothstep(0.0, 1.0, x));
  vec3 mid = mix(low, c, smoothstep(1.0, 2.0, x));
  return mix(mid, d, smoothstep(2.0, 3.0, x));
}
