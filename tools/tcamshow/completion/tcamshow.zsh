#compdef tcamshow
# Completion of tcamshow for zsh.

_tcamshow() {
  local curcontext=$curcontext state line
  local -a commands formats all tables from where select list colour classes places
  commands=(
    'list:every entry in match order, with all that it matches on'
    'ip:the IPv4 table'
    'ip6:the IPv6 table'
    'mac:the MAC table'
    'tcam:every entry, in one line'
    'usage:what uses the TCAM: stages, groups and features'
    'summary:the groups by name, each with its features'
    'inspect:the usage tree and the summary, attribute by attribute'
    'explain:which entry a packet hits, and which could hit it'
    'lint:entries that can never be hit, or disagree'
    'cost:what ranges of ports and lengths cost'
    'diff:what differs between two snapshots'
    'capacity:how full each copy of a group is'
    'metrics:the numbers for a metrics system'
    'import:write a snapshot made from another format'
  )
  formats=(
    'snapshot:snapshots of either version'
    'classbench:filter sets of packet-classification research'
    'openconfig:ACL documents of OpenConfig'
    'ovs:flows of a software switch'
    'sonic:databases of a SONiC switch'
  )
  all=(
    '(- *)'{-h,--help}'[show the help and exit]'
    '--trace[trace what the library does, on standard error]'
  )
  tables=('--json[print JSON Lines in place of the table]')
  from=('--from[the format of the file]:format:(snapshot classbench openconfig ovs sonic)')
  where=($from '--where[only entries of which a condition is true]:condition: ')
  select=(
    $where
    '--sort[order by these keys]:keys: '
    '--limit[only the first entries]:number: '
    '--count[print their number alone]'
    '--since[show hits and bytes since an older file]:baseline:_files'
  )
  colour=('--color[colour the text]:when:(auto always never)')
  list=($select '--columns[show these columns]:columns: ' $colour)
  classes=(not-installed empty duplicate shadowed dead-but-hit redundant tie never-hit unknown)
  places=($from '--where[only places of which a condition is true]:condition: ')

  _arguments -C $all $tables '(- *)--version[show the version and exit]' \
    '1: :->command' '*:: :->argument' && return 0

  case $state in
    command) _describe -t commands command commands ;;
    argument)
      case $words[1] in
        list) _arguments $all $tables $list '1:file:_files' ;;
        ip | ip6 | mac | tcam) _arguments $all $tables $select '1:file:_files' ;;
        usage)
          _arguments $all $tables $where '--detail[show the entries of each feature too]' \
            '1:file:_files'
          ;;
        summary) _arguments $all $tables $where '1:file:_files' ;;
        inspect)
          _arguments $all $where "--types[show the library's types; read no file]" '1:file:_files'
          ;;
        explain) _arguments $all $tables $places '1:packet: ' '2:file:_files' ;;
        lint)
          _arguments $all $tables $places \
            "--fail-on[end with status 3 if there is one of these]:classes:_values -s , class any $classes" \
            "--only[show these classes alone]:classes:_values -s , class $classes" \
            '--with[look for these classes too]:classes:_values -s , class redundant never-hit' \
            '1:file:_files'
          ;;
        cost) _arguments $all $tables $places '1:file:_files' ;;
        diff)
          _arguments $all $tables '--by[what the same entry has in both]:what:(match id)' \
            '--ignore-place[take stage and group name for the place]' $from \
            '1:file:_files' '2:file:_files'
          ;;
        capacity)
          _arguments $all $tables $places $colour \
            '--warn[the percent from which on a copy is yellow]:percent: ' \
            '--fail[the percent from which on the exit status is 3]:percent: ' '1:file:_files'
          ;;
        metrics)
          _arguments $all $from '--format[the text format]:format:(openmetrics prometheus)' \
            '--per-entry[the counters of each entry too]' \
            '--lint[the number of findings of lint too]' '1:file:_files'
          ;;
        import)
          _arguments -C $all '1: :->format' '2:file:_files' && return 0
          [[ $state != format ]] || _describe -t formats format formats
          ;;
      esac
      ;;
  esac
}

_tcamshow "$@"
