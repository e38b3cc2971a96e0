#version 450
layout(local_size_x_id = 0, local_size_y_id = 1) in;
// Writes where it is, also beyond the target if the last groups reach there: such writes must be lost.
layout(set = 0, binding = 7, rg16f) writeonly uniform image2D target;

void main() {
  imageStore(target, ivec2(gl_GlobalInvocationID.xy), vec4(gl_GlobalInvocationID.xy, 0, 0));
}
