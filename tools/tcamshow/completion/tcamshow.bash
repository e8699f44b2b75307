# Completion of tcamshow for bash. Needs nothing of the bash-completion package, which loads it by
# its name; without that package, source it.

# The options that are followed by a value.
_tcamshow_valued='--from --where --sort --limit --columns --color --since --fail-on --only --with --by'
_tcamshow_valued+=' --warn --fail --format'

_tcamshow() {
  local word command='' format='' file='' second='' packet='' dashes='' wants_value=''
  local current=${COMP_WORDS[COMP_CWORD]}

  # What stands before the word: the command, a format of import, a file.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ -n $wants_value ]]; then
      wants_value=''
    elif [[ -z $dashes && $word == -- ]]; then
      dashes=1
    elif [[ -z $dashes && " $_tcamshow_valued " == *" $word "* ]]; then
      wants_value=$word
    elif [[ -z $dashes && $word == -?* ]]; then
      continue
    elif [[ -z $command ]]; then
      command=$word
    elif [[ $command == import && -z $format ]]; then
      format=$word
    elif [[ $command == explain && -z $packet ]]; then
      packet=$word
    elif [[ -n $file ]]; then
      second=$word
    else
      file=$word
    fi
  done

  local words='' wants_file='' formats='snapshot classbench openconfig ovs sonic'
  if [[ -n $wants_value ]]; then
    # Classes of findings have commas between them: the last one is completed.
    local before='' classes='not-installed empty duplicate shadowed dead-but-hit redundant tie'
    classes+=' never-hit unknown'
    case $wants_value in
      --from) words=$formats ;;
      --color) words='auto always never' ;;
      --by) words='match id' ;;
      --format) words='openmetrics prometheus' ;;
      --fail-on) words="$classes any" ;;
      --only) words=$classes ;;
      --with) words='redundant never-hit' ;;
    esac
    [[ $wants_value == --@(fail-on|only|with) && $current == *,* ]] && before=${current%,*},
    mapfile -t COMPREPLY < <(compgen -P "$before" -W "$words" -- "${current#"$before"}")
    if [[ $wants_value == --since ]]; then
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      compopt -o filenames 2>/dev/null
    fi
    return 0
  fi
  case $command in
    '')
      words='list ip ip6 mac tcam usage summary inspect explain lint cost diff capacity metrics'
      words+=' import'
      ;;
    import)
      # One word alone is a format or a file; files come once a letter is there.
      [[ -z $format ]] && words=$formats
      [[ -z $format && -z $current ]] || wants_file=1
      ;;
    list | ip | ip6 | mac | tcam | usage | summary | inspect | lint | cost | diff | capacity | \
      metrics) wants_file=1 ;;
    explain)
      # The packet, then a file.
      [[ -z $packet ]] || wants_file=1
      ;;
    *) return ;;
  esac
  # diff has two files.
  [[ -z $file || ($command == diff && -z $second) ]] || wants_file=''

  if [[ -z $dashes && $current == -* ]]; then
    words='--help --trace'
    case $command in
      '') words+=' --json --version' ;;
      list) words+=' --json --where --sort --limit --count --since --columns --color --from' ;;
      ip | ip6 | mac | tcam) words+=' --json --where --sort --limit --count --since --from' ;;
      usage) words+=' --json --detail --where --from' ;;
      summary) words+=' --json --where --from' ;;
      inspect) words+=' --types --where --from' ;;
      explain | cost) words+=' --json --where --from' ;;
      lint) words+=' --json --fail-on --only --with --where --from' ;;
      diff) words+=' --json --by --ignore-place --from' ;;
      capacity) words+=' --json --warn --fail --where --color --from' ;;
      metrics) words+=' --format --per-entry --lint --from' ;;
    esac
    # A file called "-" is standard input.
    [[ -z $wants_file || $current != - ]] || words+=' -'
    wants_file=''
  fi

  local IFS=$' \t\n'
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  if [[ -n $wants_file ]]; then
    mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -f -- "$current")
    compopt -o filenames 2>/dev/null
  fi
  return 0
}

complete -F _tcamshow tcamshow
