# bash completion for mailfolder
_mailfolder() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
    local words="${COMP_WORDS[*]:1:COMP_CWORD-1} " commands options values
    [[ $words == 'check '* ]] && options='--type --json'
    [[ $words == 'compress '* ]] && options='--type --yes --replace-backup --drop-damaged'
    [[ $words == 'export '* ]] && options='--replace --json'
    [[ $words == 'extract '* && $prev == --format ]] && values='mbox maildir eml'
    [[ $words == 'extract '* && $prev == --charset ]] && values='windows-1252 macintosh utf-8'
    [[ $words == 'extract '* && $prev == --flag-separator ]] && values='! ; - + ='
    [[ $words == 'extract '* ]] && options='--format --recursive --append --charset --orphans --no-orphans --deleted --flag-separator --manifest --unprocessed --since --until --from --subject --kind'
    [[ $words == 'import '* ]] && options='--append --replace'
    [[ $words == 'info '* ]] && options='--type --json'
    [[ $words == 'list '* ]] && options='--type --json'
    [[ $words == 'prefs show '* ]] && options='--json'
    [[ $words == 'rebuild '* ]] && options='--type --yes --replace-backup'
    [[ $words == 'show '* && $prev == --charset ]] && values='windows-1252 macintosh utf-8'
    [[ $words == 'show '* ]] && options='--raw --charset'
    [[ $words == 'user show '* ]] && options='--json'
    commands=$(tr '|' '\n' <<<'check|compress|export|extract|import|info|list|prefs show|rebuild|show|user show' | grep "^$words" | cut -c$((${#words} + 1))- |
        cut -d' ' -f1)
    [ $COMP_CWORD = 1 ] && commands=$(tr '|' '\n' <<<'check|compress|export|extract|import|info|list|prefs show|rebuild|show|user show' | cut -d' ' -f1 | sort -u)
    if [ -n "$values" ]; then COMPREPLY=($(compgen -W "$values" -- "$cur"))
    elif [[ $cur == -* ]]; then COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [ -n "$commands" ]; then COMPREPLY=($(compgen -W "$commands" -- "$cur"))
    else COMPREPLY=($(compgen -f -- "$cur"))
    fi
}
complete -o filenames -F _mailfolder mailfolder mailfolder.exe
