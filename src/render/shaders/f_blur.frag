#version 460

// A Gaussian along one direction. Between two taps lies a bilinear one that weighs both.
layout(set = 0, binding = 0) uniform sampler2D source;
layout(set = 1, binding = 0, std140) uniform BlurParams {
  float dirX, dirY;
  float radius;
} blur;
layout(location = 0) in vec2 uv;
layout(location = 0) out vec4 blurred;

void main() {
  vec2 along = vec2(blur.dirX, blur.dirY) / vec2(textureSize(source, 0));
  float sigma = clamp(blur.radius, 0.1, 16.0) * 1.5;
  int pairs = int(ceil(sigma * 1.25));
  float scale = -0.5 / (sigma * sigma);
  vec4 sum = textureLod(source, uv, 0.0);
  float total = 1.0;
  for (int i = 0; i < pairs; ++i) {
    float near = float(2 * i + 1);
    float far = near + 1.0;
    float nearWeight = exp(near * near * scale);
    float farWeight = exp(far * far * scale);
    float weight = nearWeight + farWeight;
    vec2 offset = along * (near + farWeight / weight);
    sum += weight * (textureLod(source, uv + offset, 0.0) + textureLod(source, uv - offset, 0.0));
    total += 2.0 * weight;
  }
  blurred = sum / total;
}
