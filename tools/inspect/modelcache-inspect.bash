# Completion for bash: of folders, the options, and the values that --help tells.
_modelcache_inspect() {
  local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} help words
  help=$(modelcache-inspect --help 2>/dev/null)
  words=$(sed -n "s/^ *$option \([a-z]*|[a-z|]*\).*/\1/p" <<<"$help" | tr '|' ' ')
  [[ $word != -* ]] || words=$(grep -o '^  [^A-Z ]*--[a-z-]*' <<<"$help" | grep -o -- '--.*')
  mapfile -t COMPREPLY < <(if [[ $words ]]; then compgen -W "$words" -- "$word"
    else compgen -d -- "$word"; fi)
}
complete -o filenames -F _modelcache_inspect modelcache-inspect
