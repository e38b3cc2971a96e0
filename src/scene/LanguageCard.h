#pragma once

#include <string_view>

namespace veloria {

/// A summary of the scene language, shown beside the script editor. It leaves out huespread, rayflow and tempo.
inline constexpr std::string_view languageCard = R"card(# ; // all start a comment

palette #0dff8c #26f2cc #5a8cff #d94df2
palette wallpaper
set  <param> <number>
bind <param> = <expression>

params   exposure opacity contrast saturation hue cycle
         glow glowspread ambient shimmer
         rays raysharp rayscale rayspeed
         speed wind shear curl curlscale vorticity
         buoyancy emit emitspread fade tint

inputs   t                       seconds since launch
         level bass mid treble beat    (Music)
         temp wind gust cloud rain     (Weather / Wind)
         busy ok err a0..a3            (AI agent)

maths    + - * / % ^  < >  ( )
         sin cos abs sqrt floor min max pow
         clamp(v,lo,hi) lerp(a,b,t) smoothstep(e0,e1,v))card";

}  // namespace veloria
