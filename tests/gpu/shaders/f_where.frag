#version 450
// The fragment's place, and whether it has to encode.
layout(constant_id = 2) const uint encodes = 7;
layout(set = 1, binding = 0, std140) uniform Block {
  float width, height;
};
layout(location = 0) out vec4 color;

void main() {
  color = vec4(gl_FragCoord.xy / vec2(width, height), float(encodes), 1);
}
