# fish completion for tallowen
set -l commands panel watch history statusline scan import days summary help

complete -c tallowen -f
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a panel -d 'draw the panel from the store'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a watch -d 'import every 15 s and redraw the panel'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a history -d 'the last days as a bar chart'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a statusline -d 'one short line for a prompt'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a scan -d 'read the logs, store nothing'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a import -d 'one import into the store'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a days -d 'the stored per-day records'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a summary -d 'the panel as JSON'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -a help -d 'the help of a command'

complete -c tallowen -l home -r -a '(__fish_complete_directories)' -d 'where the logs are looked up'
complete -c tallowen -l data -r -a '(__fish_complete_directories)' -d 'where tallowen keeps its files'
complete -c tallowen -l help -d 'the help of the command'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands" -l version -d 'the version'
complete -c tallowen -n "not __fish_seen_subcommand_from $commands; or __fish_seen_subcommand_from import" -l quiet -d 'no progress line'
complete -c tallowen -n "__fish_seen_subcommand_from scan import days history statusline summary" -l json -d 'JSON output'
complete -c tallowen -n "__fish_seen_subcommand_from days" -l csv -d 'the records as CSV'
complete -c tallowen -n "__fish_seen_subcommand_from days history" -l since -x -d 'first day, YYYY-MM-DD'
complete -c tallowen -n "__fish_seen_subcommand_from days history" -l until -x -d 'last day, YYYY-MM-DD'
complete -c tallowen -n "__fish_seen_subcommand_from days" -l tool -x -a 'claude-code codex cursor mac-chatgpt mac-claude mac-perplexity' -d 'one tool'
complete -c tallowen -n "__fish_seen_subcommand_from history" -l days -x -d 'the last N days'
complete -c tallowen -n "__fish_seen_subcommand_from history" -l metric -x -a 'tokens requests water cost' -d 'what to count'
complete -c tallowen -n "__fish_seen_subcommand_from help" -a "$commands"
