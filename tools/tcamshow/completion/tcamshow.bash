# Completion of tcamshow for bash. Needs nothing of the bash-completion package, which loads it by
# its name; without that package, source it.

# The options that are followed by a value.
_tcamshow_valued='--from --where --sort --limit --columns --color'

_tcamshow() {
  local word command='' format='' file='' dashes='' wants_value=''
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
    else
      file=$word
    fi
  done

  local words='' wants_file='' formats='snapshot classbench openconfig'
  if [[ -n $wants_value ]]; then
    case $wants_value in
      --from) words=$formats ;;
      --color) words='auto always never' ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    return 0
  fi
  case $command in
    '') words='list ip ip6 mac tcam usage summary inspect import' ;;
    import)
      # One word alone is a format or a file; files come once a letter is there.
      [[ -z $format ]] && words=$formats
      [[ -z $format && -z $current ]] || wants_file=1
      ;;
    list | ip | ip6 | mac | tcam | usage | summary | inspect) wants_file=1 ;;
    *) return ;;
  esac
  [[ -z $file ]] || wants_file=''

  if [[ -z $dashes && $current == -* ]]; then
    words='--help --trace'
    case $command in
      '') words+=' --json --version' ;;
      list) words+=' --json --where --sort --limit --count --columns --color --from' ;;
      ip | ip6 | mac | tcam) words+=' --json --where --sort --limit --count --from' ;;
      usage) words+=' --detail --where --from' ;;
      summary) words+=' --where --from' ;;
      inspect) words+=' --types --where --from' ;;
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
