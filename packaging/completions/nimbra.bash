# bash completion for nimbra

# The word that COMPREPLY completes, out of those on each line of $1.
_nimbra_lines() {
  local line
  while IFS= read -r line; do
    if [[ $line == "$word"* ]]; then COMPREPLY+=("$line"); fi
  done <<<"$1"
}

_nimbra_words() {
  _nimbra_lines "$(printf '%s\n' "$@")"
}

_nimbra_options() {
  case $1 in
    busy | idle | ok | fail | set | run) _nimbra_words --session --ttl --verbose --help ;;
    unset | palette | clear) _nimbra_words --verbose --help ;;
    status) _nimbra_words --json --help ;;
    *) _nimbra_words --help ;;
  esac
}

# Where the command that `run` starts begins; 0: not yet.
_nimbra_program_at() {
  local at
  for ((at = 2; at < COMP_CWORD; ++at)); do
    case ${COMP_WORDS[at]} in
      --session | --ttl) ((++at)) ;;
      --) echo $((at + 1)); return ;;
      -*) ;;
      *) echo "$at"; return ;;
    esac
  done
  echo 0
}

_nimbra_program() {
  if declare -F _command_offset >/dev/null; then
    _command_offset "$1"
  elif ((COMP_CWORD == $1)); then
    mapfile -t COMPREPLY < <(compgen -c -- "$word")
  else
    compopt -o default 2>/dev/null
  fi
}

_nimbra_preset() {
  word=${word#[\"\']}
  word=${word//\\/}
  _nimbra_lines "Northern Lights
Geomagnetic Storm
Glacier Drift
Deep Nebula
Whisper
Flurry
Rave"
  local i
  for i in "${!COMPREPLY[@]}"; do printf -v "COMPREPLY[i]" %q "${COMPREPLY[i]}"; done
}

_nimbra() {
  local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} program=0
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _nimbra_words busy idle ok fail set unset palette clear status run preset pause resume --help --version
    return
  fi
  [[ $command == run ]] && program=$(_nimbra_program_at)
  if ((program > 0)); then
    _nimbra_program "$program"
  elif [[ ${COMP_WORDS[COMP_CWORD - 1]} == --@(session|ttl) ]]; then
    return
  elif [[ $word == -* ]]; then
    _nimbra_options "$command"
  else
    case $command in
      set | unset) _nimbra_words busy ok err a0 a1 a2 a3 ;;
      palette) _nimbra_words clear ;;
      preset) _nimbra_preset ;;
      run) _nimbra_program "$COMP_CWORD" ;;
    esac
  fi
}

complete -F _nimbra nimbra
