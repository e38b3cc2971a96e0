#!/usr/bin/env bash
# Compiles the shader library: every GPU function of src/render/shaders into one module with named entry points.
# usage: ./build.sh [folder]     writes <folder>/default.spv; the folder is build/ when none is named
set -euo pipefail
top=$(cd "$(dirname "$0")" && pwd)
out=${1:-$top/build}
shaders=$top/src/render/shaders
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for tool in glslangValidator spirv-link spirv-val; do
  command -v "$tool" >/dev/null || { echo "build.sh: $tool is missing; run script/bootstrap" >&2; exit 1; }
done

modules=()
for source in "$shaders"/k_*.comp "$shaders"/v_*.vert "$shaders"/f_*.frag; do
  name=$(basename "${source%.*}")
  glslangValidator -V --target-env vulkan1.2 -I"$shaders" -e "$name" --source-entrypoint main \
    -o "$work/$name.spv" "$source" >"$work/log" || { cat "$work/log" >&2; exit 1; }
  modules+=("$work/$name.spv")
done

spirv-link --target-env vulkan1.2 "${modules[@]}" -o "$work/default.spv"
spirv-val --target-env vulkan1.2 "$work/default.spv"
mkdir -p "$out"
mv "$work/default.spv" "$out/default.spv"
