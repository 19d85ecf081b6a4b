# Bash completion for vexar: commands, each command's options, and the
# values that are names (levels, output formats, files).

_vexar_options() {
    local common="--domain --help"
    case $1 in
    tail) echo "-l --level -a --app -c --category -g --grep --exclude-category --exclude-grep --count --timeout" \
        "--json -o --output --no-color --db -n --since -f --follow $common" ;;
    query) echo "--db -l --level -a --app -c --category -g --grep --exclude-category --exclude-grep --text" \
        "--since --until -n --json -o --output --no-color $common" ;;
    apps) echo "--watch --json -o --output --middleware --timeout $common" ;;
    set-level | set-verbosity | set-format) echo "--all --timeout $common" ;;
    demo) echo "--kind --rate --duration --level --queue --burst --echo --no-remote-administration --every-level" \
        "--config --qos-library --qos-profile --default-qos $common" ;;
    config) echo "--json $common" ;;
    record) echo "--db --keep --max-size --stats --timeout $common" ;;
    web) echo "--listen --db --token $common" ;;
    esac
}

_vexar() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]}
    local commands="tail apps set-level set-verbosity set-format demo config record query web"
    local levels="FATAL SEVERE ERROR WARNING NOTICE INFO DEBUG TRACE"
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "$commands --help --version" -- "$cur")
        return
    fi
    local command=${COMP_WORDS[1]}
    case $prev in
    -l | --level) mapfile -t COMPREPLY < <(compgen -W "$levels" -- "${cur^^}"); return ;;
    -o | --output) mapfile -t COMPREPLY < <(compgen -W "json short" -- "$cur"); return ;;
    --db | --config) mapfile -t COMPREPLY < <(compgen -f -- "$cur"); return ;;
    esac
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_vexar_options "$command")" -- "$cur")
    elif [[ $command == set-level ]] && ((COMP_CWORD >= 3)); then
        mapfile -t COMPREPLY < <(compgen -W "$levels" -- "${cur^^}")
    elif [[ $command == set-format ]] && ((COMP_CWORD >= 3)); then
        mapfile -t COMPREPLY < <(compgen -W "DEFAULT TIMESTAMPED VERBOSE VERBOSE_TIMESTAMPED DEBUG MINIMAL MAXIMAL" \
            -- "${cur^^}")
    fi
}

complete -F _vexar vexar
