# bash completion for tallowen
_tallowen() {
    local cur prev command words_before
    cur=${COMP_WORDS[COMP_CWORD]}
    prev=${COMP_WORDS[COMP_CWORD-1]}
    local commands="panel watch history statusline scan import days summary help"
    command=""
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in -*) ;; *) [ -z "$command" ] && [[ " $commands " == *" $word "* ]] && command=$word ;; esac
    done

    case $prev in
        --home|--data) COMPREPLY=($(compgen -d -- "$cur")); return ;;
        --metric) COMPREPLY=($(compgen -W "tokens requests water cost" -- "$cur")); return ;;
        --tool) COMPREPLY=($(compgen -W "claude-code codex cursor mac-chatgpt mac-claude mac-perplexity" -- "$cur")); return ;;
        --days|--since|--until) return ;;
    esac

    local options="--home --data --help"
    case $command in
        "") options="$options --quiet --version" ;;
        import) options="$options --json --quiet" ;;
        scan|summary|statusline) options="$options --json" ;;
        days) options="$options --since --until --tool --json --csv" ;;
        history) options="$options --days --since --until --metric --json" ;;
        help) COMPREPLY=($(compgen -W "$commands" -- "$cur")); return ;;
    esac
    if [[ -z $command && $cur != -* ]]; then
        COMPREPLY=($(compgen -W "$commands" -- "$cur"))
    else
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
    fi
}
complete -F _tallowen tallowen
