#version 450
layout(local_size_x_id = 0, local_size_y_id = 1) in;
// A block as large as it can be.
layout(set = 0, binding = 7, r16f) writeonly uniform image2D target;
layout(set = 1, binding = 0, std140) uniform Block {
  vec4 numbers[256];
};

void main() {
  const ivec2 at = ivec2(gl_GlobalInvocationID.xy);
  if (any(greaterThanEqual(at, imageSize(target)))) return;
  vec4 sum = vec4(0);
  for (int index = 0; index < 256; ++index) sum += numbers[index];
  imageStore(target, at, vec4(sum.x + sum.y + sum.z + sum.w));
}
