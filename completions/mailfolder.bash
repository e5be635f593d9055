# bash completion for mailfolder
_mailfolder() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
    local words="${COMP_WORDS[*]:1:COMP_CWORD-1} " commands options values
    [[ $words == 'check '* ]] && options='--type -r --recursive --json'
    [[ $words == 'compress '* ]] && options='--type --yes --replace-backup --drop-damaged'
    [[ $words == 'extract '* && $prev == --format ]] && values='mbox maildir eml'
    [[ $words == 'extract '* && $prev == --charset ]] && values='windows-1252 macintosh utf-8'
    [[ $words == 'extract '* && $prev == --flag-separator ]] && values='! ; - + ='
    [[ $words == 'extract '* ]] && options='--format --recursive --append --charset --orphans --no-orphans --deleted --flag-separator --manifest --unprocessed --since --until --from --subject --kind'
    [[ $words == 'info '* ]] && options='--type -r --recursive --json'
    [[ $words == 'list '* && $prev == --format ]] && values='text json jsonl csv'
    [[ $words == 'list '* && $prev == --sort ]] && values='from subject date kind file'
    [[ $words == 'list '* ]] && options='--type --format --json --sort --unprocessed --since --until --from --subject --kind'
    [[ $words == 'prefs show '* ]] && options='--json'
    [[ $words == 'rebuild '* ]] && options='--type --yes --replace-backup --keep-missing'
    [[ $words == 'recover '* ]] && options='--yes'
    [[ $words == 'show '* && $prev == --charset ]] && values='windows-1252 macintosh utf-8'
    [[ $words == 'show '* ]] && options='--raw --charset'
    [[ $words == 'undelete '* ]] && options='--type --yes --replace-backup --slot'
    [[ $words == 'user show '* ]] && options='--json'
    [[ $words == 'users export '* ]] && options='--replace --yes --replace-backup --json'
    [[ $words == 'users import '* ]] && options='--append --replace --yes --replace-backup'
    commands=$(tr '|' '\n' <<<'check|compress|extract|info|list|prefs show|rebuild|recover|show|undelete|user show|users export|users import' | grep "^$words" | cut -c$((${#words} + 1))- |
        cut -d' ' -f1)
    [ $COMP_CWORD = 1 ] && commands=$(tr '|' '\n' <<<'check|compress|extract|info|list|prefs show|rebuild|recover|show|undelete|user show|users export|users import' | cut -d' ' -f1 | sort -u)
    if [ -n "$values" ]; then COMPREPLY=($(compgen -W "$values" -- "$cur"))
    elif [[ $cur == -* ]]; then COMPREPLY=($(compgen -W "$options" -- "$cur"))
    elif [ -n "$commands" ]; then COMPREPLY=($(compgen -W "$commands" -- "$cur"))
    else COMPREPLY=($(compgen -f -- "$cur"))
    fi
}
complete -o filenames -F _mailfolder mailfolder mailfolder.exe
