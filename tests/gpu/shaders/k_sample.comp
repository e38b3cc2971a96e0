#version 450
layout(local_size_x_id = 0, local_size_y_id = 1) in;
// Samples at a point given in texture coordinates.
layout(set = 0, binding = 0) uniform sampler2D source;
layout(set = 0, binding = 7, rgba16f) writeonly uniform image2D target;
layout(set = 1, binding = 0, std140) uniform Block {
  float x, y;
};

void main() {
  const ivec2 at = ivec2(gl_GlobalInvocationID.xy);
  if (any(greaterThanEqual(at, imageSize(target)))) return;
  imageStore(target, at, textureLod(source, vec2(x, y), 0));
}
