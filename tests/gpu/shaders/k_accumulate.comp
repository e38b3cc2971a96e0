#version 450
layout(local_size_x_id = 0, local_size_y_id = 1) in;
layout(set = 0, binding = 0, rgba16f) uniform image2D target;
layout(set = 1, binding = 0, std140) uniform Block {
  float red, green, blue, alpha;
};

void main() {
  const ivec2 at = ivec2(gl_GlobalInvocationID.xy);
  if (any(greaterThanEqual(at, imageSize(target)))) return;
  imageStore(target, at, imageLoad(target, at) + vec4(red, green, blue, alpha));
}
