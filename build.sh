#!/usr/bin/env bash
# Compiles the shader library: every GPU function of src/render/shaders into one module with named entry points.
# usage: ./build.sh [FOLDER]        writes FOLDER/default.spv and, on macOS, FOLDER/default.metallib
#        ./build.sh --app [FOLDER]  macOS: builds the programs too, and makes FOLDER/Veloria.app
#        ./build.sh --msl FOLDER    writes the Metal source of every function, FOLDER/<function>.metal
# The folder is build/ when none is named. On macOS ./build.sh alone is ./build.sh --app.
set -euo pipefail
top=$(cd "$(dirname "$0")" && pwd)
shaders=$top/src/render/shaders
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

onMac=false
[ "$(uname)" != Darwin ] || onMac=true
metalSource=false
app=false
case ${1:-} in
  --msl) metalSource=true; shift ;;
  --app) app=true; shift ;;
  '') app=$onMac ;;
esac
out=${1:-$top/build}

# CMake calls this script again for the shader library.
makeApp() {
  local release=$top/build/release
  (cd "$top" && cmake --preset release "-DCMAKE_PREFIX_PATH=$(packaging/macos/prefixes)")
  cmake --build "$release" --target veloria nimbra shaders
  "$top/packaging/macos/make-bundle" "$release" "$out/Veloria.app"
  cp "$release/default.metallib" "$out/default.metallib"
}

if $app; then
  $onMac || { echo "build.sh: an application bundle can be made on macOS only" >&2; exit 1; }
  makeApp
  exit
fi

tools=(glslangValidator spirv-link spirv-val spirv-dis)
if $metalSource || $onMac; then tools+=(spirv-cross); fi
for tool in "${tools[@]}"; do
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
"$top/script/check-bindings" "$work/default.spv" >/dev/null
mkdir -p "$out"

# Metal source, one file a function: in one file their helpers and constants would get in each other's way.
# The indices are the bindings that the sources give; left to itself the tool would count the textures in the order of
# their first use. Metal's clip space points up where Vulkan's points down.
writeMetalSource() { # FOLDER
  local module
  for module in "${modules[@]}"; do
    spirv-cross "$module" --msl --msl-version 30000 --msl-decoration-binding --flip-vert-y \
      --output "$1/$(basename "${module%.spv}").metal"
  done
}

# The guards against NaN and infinity need exact arithmetic, which is not this compiler's default.
compileMetal() { # FOLDER with the sources
  local source
  for source in "$1"/*.metal; do
    xcrun -sdk macosx metal -std=metal3.0 -mmacosx-version-min=14.0 -fno-fast-math -c "$source" \
      -o "${source%.metal}.air"
  done
  xcrun -sdk macosx metallib "$1"/*.air -o "$work/default.metallib"
}

if $metalSource; then
  writeMetalSource "$out"
  exit
fi
mv "$work/default.spv" "$out/default.spv"
if $onMac; then
  mkdir "$work/metal"
  writeMetalSource "$work/metal"
  compileMetal "$work/metal"
  mv "$work/default.metallib" "$out/default.metallib"
fi
