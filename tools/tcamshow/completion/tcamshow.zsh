#compdef tcamshow
# Completion of tcamshow for zsh.

_tcamshow() {
  local curcontext=$curcontext state line
  local -a commands formats all tables
  commands=(
    'ip:the IPv4 table'
    'ip6:the IPv6 table'
    'mac:the MAC table'
    'tcam:every entry, in one line'
    'usage:what uses the TCAM: stages, groups and features'
    'summary:the groups by name, each with its features'
    'inspect:the usage tree and the summary, attribute by attribute'
    'import:write a snapshot made from another format'
  )
  formats=(
    'classbench:filter sets of packet-classification research'
    'openconfig:ACL documents of OpenConfig'
  )
  all=(
    '(- *)'{-h,--help}'[show the help and exit]'
    '--trace[trace what the library does, on standard error]'
  )
  tables=('--json[print JSON Lines in place of the table]')

  _arguments -C $all $tables '(- *)--version[show the version and exit]' \
    '1: :->command' '*:: :->argument' && return 0

  case $state in
    command) _describe -t commands command commands ;;
    argument)
      case $words[1] in
        ip | ip6 | mac | tcam) _arguments $all $tables '1:file:_files' ;;
        usage) _arguments $all '--detail[show the entries of each feature too]' '1:file:_files' ;;
        summary) _arguments $all '1:file:_files' ;;
        inspect) _arguments $all "--types[show the library's types; read no file]" '1:file:_files' ;;
        import)
          _arguments -C $all '1: :->format' '2:file:_files' && return 0
          [[ $state != format ]] || _describe -t formats format formats
          ;;
      esac
      ;;
  esac
}

_tcamshow "$@"
