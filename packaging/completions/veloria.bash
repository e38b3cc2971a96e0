# bash completion for veloria

# The word that COMPREPLY completes, out of those on each line of $1.
_veloria_lines() {
  local line
  while IFS= read -r line; do
    if [[ $line == "$word"* ]]; then COMPREPLY+=("$line"); fi
  done <<<"$1"
}

_veloria_words() {
  _veloria_lines "$(printf '%s\n' "$@")"
}

_veloria_options() {
  local -a look=(--config --preset --set --script --gpu --threads)
  case $1 in
    render)
      _veloria_words --size --scale --bar-height --edge --notch --seconds --fps --background --mask --channel \
        --channels --state --pointer --output --raw "${look[@]}" --help
      ;;
    bench) _veloria_words --size --frames --compare --json "${look[@]}" --help ;;
    check) _veloria_words --channel --json --help ;;
    status) _veloria_words --json --help ;;
    panel) _veloria_words --yes --help ;;
    *) _veloria_words --help ;;
  esac
}

_veloria_files() {
  compopt -o filenames 2>/dev/null || true
  mapfile -t COMPREPLY < <(compgen -f -- "$word")
}

_veloria_preset() {
  word=${word#[\"\']}
  word=${word//\\/}
  _veloria_lines "Northern Lights
Geomagnetic Storm
Glacier Drift
Deep Nebula
Whisper
Flurry
Rave"
  local i
  for i in "${!COMPREPLY[@]}"; do printf -v "COMPREPLY[i]" %q "${COMPREPLY[i]}"; done
}

_veloria() {
  local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]}
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _veloria_words render bench check status panel devices --help --version
    return
  fi
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --config | --script | --state | --channels | --mask | --background | --output | -o) _veloria_files ;;
    --preset) _veloria_preset ;;
    --raw) _veloria_words - ;;
    --edge) _veloria_words top bottom ;;
    --size | --scale | --bar-height | --notch | --seconds | --fps | --frames | --channel | --pointer | --set | --gpu | --threads | \
      --compare) ;;
    *)
      if [[ $word == -* ]]; then
        _veloria_options "$command"
      elif [[ $command == check ]]; then
        _veloria_files
      elif [[ $command == panel ]] && ((COMP_CWORD == 2)); then
        _veloria_words clear restore
      fi
      ;;
  esac
}

complete -F _veloria veloria
