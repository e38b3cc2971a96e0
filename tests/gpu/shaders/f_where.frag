#version 450
// The fragment's place, and half the number of its target's kind.
layout(constant_id = 2) const uint targetKind = 7;
layout(set = 1, binding = 0, std140) uniform Block {
  float width, height;
};
layout(location = 0) out vec4 color;

void main() {
  color = vec4(gl_FragCoord.xy / vec2(width, height), float(targetKind) / 2, 1);
}
