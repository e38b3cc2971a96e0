# fish completion for nimbra

# Whether the command is one of those named.
function __nimbra_command
    set -l words (commandline -opc)
    test (count $words) -ge 2; and contains -- $words[2] $argv
end

function __nimbra_no_command
    test (count (commandline -opc)) -eq 1
end

# Whether the command line is that of `run`, before the program's own.
function __nimbra_in_run_options
    __nimbra_command run; or return 1
    set -l words (commandline -opc)
    set -l skip 0
    for word in $words[3..-1]
        if test $skip = 1
            set skip 0
        else if contains -- $word --session --ttl
            set skip 1
        else if not string match -q -- '-?*' $word; or test $word = --
            return 1
        end
    end
end

# Completes the command line of the program that `run` starts.
function __nimbra_complete_program
    set -l words (commandline -opc)
    set -l at 3
    while string match -q -- '-?*' "$words[$at]"
        switch $words[$at]
            case --
                set at (math $at + 1)
                break
            case --session --ttl
                set at (math $at + 2)
            case '*'
                set at (math $at + 1)
        end
    end
    set -l line (string join ' ' -- (string escape -- $words[$at..-1]) (commandline -ct))
    string match -q -- '-*' "$line"; or complete --do-complete="$line"
end

complete -c nimbra -f
complete -c nimbra -n __nimbra_no_command -a busy -d 'work has begun'
complete -c nimbra -n __nimbra_no_command -a idle -d 'nothing is going on'
complete -c nimbra -n __nimbra_no_command -a ok -d 'work has succeeded'
complete -c nimbra -n __nimbra_no_command -a fail -d 'work has failed'
complete -c nimbra -n __nimbra_no_command -a set -d 'set a channel'
complete -c nimbra -n __nimbra_no_command -a unset -d 'set a channel to 0'
complete -c nimbra -n __nimbra_no_command -a palette -d 'use 2 to 4 colours'
complete -c nimbra -n __nimbra_no_command -a clear -d 'set all channels to 0, remove sessions and palette'
complete -c nimbra -n __nimbra_no_command -a status -d 'show what is set and whether Veloria is running'
complete -c nimbra -n __nimbra_no_command -a run -d 'busy while a command runs, then ok or fail'
complete -c nimbra -n __nimbra_no_command -a preset -d 'switch the running band to a look'
complete -c nimbra -n __nimbra_no_command -a pause -d 'pause the running band'
complete -c nimbra -n __nimbra_no_command -a resume -d 'resume it'
complete -c nimbra -n __nimbra_no_command -l version -d 'show the version'
complete -c nimbra -n 'not __nimbra_command run; or __nimbra_in_run_options' -s h -l help -d 'show the help'

set -l writers '__nimbra_command busy idle ok fail set; or __nimbra_in_run_options'
complete -c nimbra -n $writers -l session -x -d 'session to write to'
complete -c nimbra -n $writers -l ttl -x -d 'seconds until the session expires'
complete -c nimbra -n "$writers; or __nimbra_command unset palette clear" -s v -l verbose -d 'report what was written'
complete -c nimbra -n '__nimbra_command status' -l json -d 'print JSON'
complete -c nimbra -n '__nimbra_command set unset' -a 'busy ok err a0 a1 a2 a3'
complete -c nimbra -n '__nimbra_command palette' -a clear -d 'back to the normal palette'
complete -c nimbra -n '__nimbra_command preset' -a '"Northern Lights" "Geomagnetic Storm" "Glacier Drift" "Deep Nebula" Whisper Flurry Rave'
complete -c nimbra -n '__nimbra_command run' -a '(__nimbra_complete_program)'
