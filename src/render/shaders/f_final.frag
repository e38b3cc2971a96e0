#version 460
#extension GL_GOOGLE_include_directive : require
#include "words.glsl"
#include "RenderParams.glsl"
#include "color.glsl"
#include "palette.glsl"

// Puts scene and glow together, shapes tone and cover, keeps the bar's text and the camera housing free, fades the
// edges. The result is premultiplied.
layout(set = 0, binding = 0) uniform sampler2D scene;
layout(set = 0, binding = 1) uniform sampler2D glow;
layout(set = 0, binding = 2) uniform sampler2D mask;  // f_mask's

// The kind of target: 0 floating point; 1 8 bits a channel, for encoded, dithered values; 2 8 bits that the target
// encodes itself, so that the result has to be decoded first.
layout(constant_id = 2) const uint target = 0u;
const bool eightBit = target != 0u;
// Parts that few bands need. They cost time even if a branch skips them, so they are compiled in only when needed:
// 1 the text mask, 2 the camera housing, 4 a scene that has to be enlarged, 8 a picture upside down.
layout(constant_id = 3) const uint extras = 0u;
const bool masksText = (extras & 1u) != 0u;
const bool hasHousing = (extras & 2u) != 0u;
const bool enlarges = (extras & 4u) != 0u;
const bool mirrors = (extras & 8u) != 0u;

layout(location = 0) in vec2 uv;
layout(location = 0) out vec4 color;

// Compresses the brightest channel and keeps the ratios, so that strong light stays coloured; what is far too bright
// goes some way to white.
vec3 toned(vec3 c) {
  float peak = max(max(c.r, c.g), c.b);
  float limit = eightBit ? 1.0 : 2.5;
  float level = limit * (1.0 - exp(peak * (-1.0 / limit)));
  float white = smoothstep(2.0, 12.0, peak) * 0.35;
  return mix(c * (level * (1.0 / max(peak, 1e-9))), vec3(level), white);
}

// The factor that spreads luminances around a middle grey.
float contrasted(float y) {
  const float pivot = 0.18;
  return pow(max(y, 1e-5) * (1.0 / pivot), clamp(params.contrast, 0.05, 8.0) - 1.0);
}

// Share of light that may pass at x for a fade of width `width` from the edge at 0.
float edge(float x, scalar width) { return width > 1e-4 ? smoothstep(0.0, width, x) : 1.0; }

struct Column {
  Linear glow;
  float passes;  // light that the fades at the sides let pass
};
Column column;

void makeColumn() {
  column.glow = linearAt(glow, uv.x);
  column.passes = edge(uv.x, params.fadeSide) * edge(1.0 - uv.x, params.fadeSide);
}

struct Row {
  scalar y;  // in the scene
  Rows1 glow;
  float passes;  // light that the fades at the top and the bottom let pass
};
Row row;

void makeRow() {
  row.y = mirrors ? 1.0 - rowOf(uv) : rowOf(uv);
  row.glow = rowsAt(glow, row.y);
  row.passes = edge(row.y, params.fadeTop) * edge(1.0 - row.y, params.fadeBottom);
}

// x: light that passes by the housing. y: light that its outline adds. The rectangle's lower corners are round.
vec2 housing() {
  vec2 size = vec2(params.targetW, params.targetH);
  vec2 at = uv * size;
  vec2 low = vec2(params.notchLeft, -params.notchBottom) * size;
  vec2 high = vec2(params.notchRight, params.notchBottom) * size;
  float round = min(0.35 * params.notchBottom * size.y, 0.5 * (high.x - low.x));
  vec2 q = abs(at - 0.5 * (low + high)) - 0.5 * (high - low) + round;
  float away = length(max(q, 0.0)) + min(max(q.x, q.y), 0.0) - round;
  float feather = max(params.notchFeather, 0.0) * size.x * 0.25 + 1.0;
  float open = smoothstep(-0.5, feather, away);
  float ring = params.notchHalo > 0.5 ? exp(-max(away, 0.0) / (feather * 0.6)) * smoothstep(-1.5, 0.5, away) : 0.0;
  return vec2(params.notchHalo > 0.5 ? smoothstep(-0.5, 0.5, away) : open, ring);
}

uint pixelHash(uvec2 p) {
  uint h = p.x * 0x8da6b343u ^ p.y * 0xd8163841u;
  h ^= h >> 15;
  h *= 0x2c1b3c6du;
  h ^= h >> 12;
  h *= 0x297a2d39u;
  return h ^ (h >> 15);
}

// Triangular noise of one 8-bit step, still, its own for each channel; it hides the steps of dark gradients.
vec3 ditherNoise(uvec2 pixel) {
  uint h = pixelHash(pixel);
  uint k = pixelHash(pixel.yx + 7919u);
  vec3 a = vec3(h & 1023u, (h >> 10) & 1023u, (h >> 20) & 1023u);
  vec3 b = vec3(k & 1023u, (k >> 10) & 1023u, (k >> 20) & 1023u);
  return (a - b) * (1.0 / (1023.0 * 255.0));
}

void main() {
  if (params.debugSolid > 0.0) {
    float a = min(params.debugSolid, 1.0);
    color = vec4(a, 0.0, a, a);
    return;
  }
  makeColumn();
  makeRow();
  uvec2 pixel = uvec2(gl_FragCoord.xy);
  if (mirrors && !enlarges) pixel.y = uint(textureSize(scene, 0).y) - 1u - pixel.y;
  vec3 light = enlarges ? textureLod(scene, vec2(uv.x, row.y), 0.0).rgb : texelFetch(scene, ivec2(pixel), 0).rgb;
  if (params.glowAmount > 0.001)
    light += textureAt(glow, column.glow, row.glow).rgb * (clamp(params.glowAmount, 0.0, 16.0) * 0.55);

  // The bar's text and the housing are where they are on the screen, even if the picture is upside down.
  float open = 1.0;
  if (hasHousing && params.notchPresent > 0.5) {
    vec2 notch = housing();
    open = notch.x;
    light += (stop0() * 0.4 + stop2() * 0.6 + light) * notch.y * 0.9;
  }

  light = toned(light);
  float bright = luminance(light);
  float strength = max(bright, max(light.r, max(light.g, light.b)) * 0.5);
  float gain = contrasted(bright);
  light *= gain;
  float opacity = clamp(params.opacity, 0.0, 1.0);
  float cover = 1.0 - exp(-strength * gain * (clamp(params.coverGain, 0.0, 16.0) * 3.2));
  float alpha = max(cover, 0.0) * opacity;
  // How much of what lies behind is taken away; additive light leaves it all.
  float covered = alpha * (1.0 - clamp(params.additive, 0.0, 1.0));
  vec3 shown = light * opacity;
  if (params.opaque > 0.5) {
    vec3 ground = (stop0() + stop1() + stop2() + stop3()) * 0.25;
    shown += clamp(params.backgroundLift, 0.0, 1.0) * 0.11 * ground;
    alpha = 1.0;
    covered = 1.0;
  }

  float passes = row.passes * column.passes;
  if (masksText && params.textMaskOn > 0.5) {
    vec2 text = textureLod(mask, uv, 0.0).xy;
    float shadow = clamp(params.textShadow, 0.0, 1.0) * text.y;
    shown *= 1.0 - shadow;
    alpha = mix(alpha, max(alpha, shadow), 0.6);
    covered = mix(covered, max(covered, shadow), 0.6);
    passes *= 1.0 - text.x;
  }
  // The housing is black glass: nothing is drawn there.
  passes *= open;
  shown *= passes;
  alpha *= passes;
  covered *= passes;

  bool finite = all(lessThanEqual(shown, vec3(1e4))) && alpha <= 1.0;
  bool lit = finite && alpha + max(shown.r, max(shown.g, shown.b)) > 0.0;
  if (eightBit) {
    // Compositors blend encoded values: encode the straight colour, then premultiply. Additive light is encoded as it
    // is.
    vec3 covering = encodedOf(shown * (1.0 / max(alpha, 1e-9))) * alpha;
    scalar additive = params.opaque > 0.5 ? 0.0 : clamp(params.additive, 0.0, 1.0);
    vec3 premultiplied = additive > 0.0 ? mix(covering, encodedOf(shown), additive) : covering;
    float strongest = max(premultiplied.r, max(premultiplied.g, premultiplied.b));
    vec3 dithered = premultiplied + ditherNoise(pixel) * step(1.0 / 512.0, strongest);
    vec3 kept = clamp(dithered, 0.0, additive > 0.0 ? 1.0 : alpha);
    color = pick(lit, vec4(target == 2u ? decodedOf(kept) : kept, covered), vec4(0.0));
  } else {
    color = pick(lit, vec4(shown, covered), vec4(0.0));
  }
}
