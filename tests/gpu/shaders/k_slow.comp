#version 450
layout(local_size_x_id = 0, local_size_y_id = 1) in;
// Takes long enough to be overtaken by whoever does not wait for it.
layout(set = 0, binding = 7, r16f) writeonly uniform image2D target;
layout(set = 1, binding = 0, std140) uniform Block {
  float rounds, value;
};

void main() {
  const ivec2 at = ivec2(gl_GlobalInvocationID.xy);
  if (any(greaterThanEqual(at, imageSize(target)))) return;
  float x = 0.5;
  for (float round = 0; round < rounds; ++round) x = fract(sin(x + float(at.x)) * 43.0);
  imageStore(target, at, vec4(x == 0.123456 ? -1.0 : value));
}
