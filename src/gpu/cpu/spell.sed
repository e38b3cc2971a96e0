# Spells GLSL as the C++ of wide/: literals, declarations and swizzles. The functions keep to what this file knows.
/^#version/d
/^#extension/d
/^layout\(local_size/d
/^  make(Column|Row)\(\);/d
s/^Column column;/Column* column;/
s/\bcolumn\./column->/g
/^bool outside\(/d
/^layout\(location = 0\) in vec2 uv;/d
s/^(float|uint|int|vec[234]|[iu]vec2|void|Phase) \w+\(.*\) \{/VELORIA_INLINE &/
s/^layout\(location = 0\) out vec4 (\w+);/vec4 \1; vec4 result() const { return \1; }/
s/^layout\(constant_id = 2\) const uint (\w+) = [0-9]+u?;/const uint \1 = call.targetKind;/
s/^layout\(constant_id = 3\) const uint (\w+) = [0-9]+u?;/const uint \1 = call.variant;/
s/^layout\(set = 0, binding = ([0-3])\) uniform sampler2D (\w+);/const sampler2D \2{call.textures[\1]};/
s/^layout\(set = 0, binding = ([4-6])[^)]*\) .*image2D (\w+);/const image2D \2{call.images[\1 - 4]};/
s/^layout\(set = 0, binding = 7[^)]*\) .*image2D (\w+);/const image2D \1{call.target};/
/^layout\(set = 1/,/^\}/ {
  s/^layout\([^)]*\) uniform/struct/
  s/^\} (\w+);/} const \1 = blockBytes();/
}
s/^const float /static constexpr scalar /
s/^const int /static constexpr int /
s/^const bool (\w+) =/const bool \1 =/
s/\bbool (finite|lit) =/const Mask \1 =/
s/\b([0-9]+\.[0-9]+(e[-+]?[0-9]+)?|[0-9]+e[-+]?[0-9]+)\b/\1f/g
s/\bfloat\(/toFloat(/g
s/\bint\(/toInt(/g
s/\buint\(/toUint(/g
s/\bfloat\b/Float/g
s/^const uint (\w+) = 0x/static constexpr unsigned \1 = 0x/
s/^const uint\b/const unsigned/
s/\buint\b/Uint/g
s/\bscalar\b/float/g
s/\.r\b/.x/g
s/\.g\b/.y/g
s/\.b\b/.z/g
s/\.a\b/.w/g
s/\.(xy|yx|xz|yw|rgb)\b/.\1()/g
