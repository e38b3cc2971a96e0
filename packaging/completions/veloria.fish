# fish completion for veloria

# Whether the command is one of those named.
function __veloria_command
    set -l words (commandline -opc)
    test (count $words) -ge 2; and contains -- $words[2] $argv
end

function __veloria_no_command
    test (count (commandline -opc)) -eq 1
end

complete -c veloria -f
complete -c veloria -n __veloria_no_command -a render -d 'draw frames without a display'
complete -c veloria -n __veloria_no_command -a bench -d 'measure drawing'
complete -c veloria -n __veloria_no_command -a check -d 'check a scene script'
complete -c veloria -n __veloria_no_command -a status -d 'show the state of the running band'
complete -c veloria -n __veloria_no_command -a panel -d 'let the light through the panel, or put the panel back'
complete -c veloria -n __veloria_no_command -a devices -d 'list the GPUs and the CPU'
complete -c veloria -n __veloria_no_command -l version -d 'show the version'
complete -c veloria -s h -l help -d 'show the help'

set -l render '__veloria_command render'
complete -c veloria -n $render -l scale -x -d 'pixels per point'
complete -c veloria -n $render -l bar-height -x -d 'height of the bar in points'
complete -c veloria -n $render -l edge -x -a 'top bottom' -d 'edge of the screen that the band is at'
complete -c veloria -n $render -l notch -x -d 'camera housing at the top centre, WxH in points'
complete -c veloria -n $render -l seconds -x -d 'length of the clip'
complete -c veloria -n $render -l fps -x -d 'frames per second'
complete -c veloria -n $render -l background -r -F -d 'colour or picture behind the band'
complete -c veloria -n $render -l mask -r -F -d 'picture of the bar whose text is kept clear'
complete -c veloria -n $render -l channels -r -F -d 'input channels over time'
complete -c veloria -n $render -l state -r -F -d 'agent state file'
complete -c veloria -n $render -l pointer -x -d 'X,Y or X,Y,DX,DY in points'
complete -c veloria -n $render -s o -l output -r -F -d 'PNG file'
complete -c veloria -n $render -l raw -x -a - -d 'write frames to standard output'

set -l drawing '__veloria_command render bench'
complete -c veloria -n $drawing -l size -x -d 'WxH of the picture in pixels'
complete -c veloria -n $drawing -l config -r -F -d 'settings file to start from'
complete -c veloria -n $drawing -l preset -x -a '"Northern Lights" "Geomagnetic Storm" "Glacier Drift" "Deep Nebula" Whisper Flurry Rave' -d 'look preset'
complete -c veloria -n $drawing -l set -x -d 'key=json: set one setting'
complete -c veloria -n $drawing -l script -r -F -d 'scene script'
complete -c veloria -n $drawing -l gpu -x -d 'name or number of the GPU'
complete -c veloria -n $drawing -l threads -x -d 'threads that draw on the CPU'

complete -c veloria -n '__veloria_command bench' -l frames -x -d 'frames to measure'
complete -c veloria -n '__veloria_command bench' -l compare -x -d 'device to compare'
complete -c veloria -n '__veloria_command render check' -l channel -x -d 'name=value: hold an input channel'
complete -c veloria -n '__veloria_command bench check status' -l json -d 'print JSON'
complete -c veloria -n '__veloria_command check' -F

set -l panel '__veloria_command panel'
complete -c veloria -n $panel -a clear -d 'let the light through the panel'
complete -c veloria -n $panel -a restore -d 'put the panel back'
complete -c veloria -n $panel -l yes -d 'do not ask'
