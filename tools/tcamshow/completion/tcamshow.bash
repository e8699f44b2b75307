# Completion of tcamshow for bash. Needs nothing of the bash-completion package, which loads it by
# its name; without that package, source it.

_tcamshow() {
  local word command='' format='' file='' dashes=''
  local current=${COMP_WORDS[COMP_CWORD]}

  # What stands before the word: the command, a format of import, a file.
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ -z $dashes && $word == -- ]]; then
      dashes=1
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

  local words='' wants_file=''
  case $command in
    '') words='ip ip6 mac tcam usage summary inspect import' ;;
    import) [[ -n $format ]] && wants_file=1 || words='classbench openconfig' ;;
    ip | ip6 | mac | tcam | usage | summary | inspect) wants_file=1 ;;
    *) return ;;
  esac
  [[ -z $file ]] || wants_file=''

  if [[ -z $dashes && $current == -* ]]; then
    words='--help --trace'
    case $command in
      '') words+=' --json --version' ;;
      ip | ip6 | mac | tcam) words+=' --json' ;;
      usage) words+=' --detail' ;;
      inspect) words+=' --types' ;;
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
