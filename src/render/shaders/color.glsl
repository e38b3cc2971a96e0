// Colour, in linear light unless a name says otherwise.

// sRGB to linear: a cubic that stays within 0.003 of the exact curve between 0 and 1.
vec3 linearOf(vec3 encoded) { return encoded * (encoded * (encoded * 0.305306011 + 0.682171111) + 0.012522878); }

// Linear to sRGB (IEC 61966-2-1).
vec3 encodedOf(vec3 c) {
  c = clamp(c, 0.0, 1.0);
  return mix(c * 12.92, 1.055 * pow(max(c, vec3(0.0031308)), vec3(1.0 / 2.4)) - 0.055, step(0.0031308, c));
}

// Its exact inverse.
vec3 decodedOf(vec3 c) {
  return mix(c / 12.92, pow((max(c, vec3(0.04045)) + 0.055) / 1.055, vec3(2.4)), step(0.04045, c));
}

float luminance(vec3 c) { return dot(c, vec3(0.2126, 0.7152, 0.0722)); }

// Turns the hue by `turns` around the grey axis (Rodrigues' rotation), keeping the luminance and staying non-negative.
vec3 hueTurned(vec3 c, float turns) {
  float angle = 6.28318531 * fract(turns);
  float co = cos(angle);
  float si = sin(angle);
  const vec3 axis = vec3(0.57735027);
  vec3 turned = max(c * co + cross(axis, c) * si + axis * (dot(axis, c) * (1.0 - co)), 0.0);
  return turned * (luminance(c) / max(luminance(turned), 1e-5));
}

// The four stops as a smooth gradient over x from 0 to 1.
vec3 gradient(float x, vec3 a, vec3 b, vec3 c, vec3 d) {
  x = clamp(x, 0.0, 1.0) * 3.0;
  vec3 low = mix(a, b, smoothstep(0.0, 1.0, x));
  vec3 mid = mix(low, c, smoothstep(1.0, 2.0, x));
  return mix(mid, d, smoothstep(2.0, 3.0, x));
}
