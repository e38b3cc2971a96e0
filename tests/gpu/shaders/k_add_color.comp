#version 450
layout(local_size_x_id = 0, local_size_y_id = 1) in;
layout(set = 0, binding = 4, rgba16f) readonly uniform image2D source;
layout(set = 0, binding = 7, rgba16f) writeonly uniform image2D target;
layout(set = 1, binding = 0, std140) uniform Block {
  float red, green, blue, alpha;
};

void main() {
  const ivec2 at = ivec2(gl_GlobalInvocationID.xy);
  if (any(greaterThanEqual(at, imageSize(target)))) return;
  imageStore(target, at, imageLoad(source, at) + vec4(red, green, blue, alpha));
}
