#version 450
layout(local_size_x_id = 0, local_size_y_id = 1) in;
layout(set = 0, binding = 4, r16f) readonly uniform image2D source;
layout(set = 0, binding = 7, r16f) writeonly uniform image2D target;
layout(set = 1, binding = 0, std140) uniform Block {
  float amount;
};

void main() {
  const ivec2 at = ivec2(gl_GlobalInvocationID.xy);
  const ivec2 size = imageSize(target);
  if (any(greaterThanEqual(at, size))) return;
  // Reads the opposite corner, so that it depends on what other groups wrote.
  imageStore(target, at, imageLoad(source, size - 1 - at) + amount);
}
