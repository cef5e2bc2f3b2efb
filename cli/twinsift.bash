# bash completion for twinsift: the commands, their options and option values, and paths.

_twinsift() {
    local cur prev words cword
    _init_completion -s || return

    if [[ $cword -eq 1 ]]; then
        COMPREPLY=($(compgen -W 'scan photos journal undo --help --version' -- "$cur"))
        return
    fi
    case ${words[1]} in
        journal)
            [[ $prev == --format ]] && COMPREPLY=($(compgen -W 'text json' -- "$cur")) ||
                COMPREPLY=($(compgen -W '--format' -- "$cur"))
            return
            ;;
        undo)
            COMPREPLY=($(compgen -W '--list --yes' -- "$cur"))
            return
            ;;
    esac

    local command=${words[1]} i
    for ((i = 2; i < cword; i++)); do
        if [[ ${words[i]} == -- ]]; then
            _filedir
            return
        fi
    done

    case $prev in
        --subdirs | --hidden | --packages)
            COMPREPLY=($(compgen -W 'y n' -- "$cur"))
            return
            ;;
        --format)
            COMPREPLY=($(compgen -W 'text json csv' -- "$cur"))
            return
            ;;
        --keep)
            COMPREPLY=($(compgen -W 'newest oldest' -- "$cur"))
            return
            ;;
        --action)
            COMPREPLY=($(compgen -W 'trash delete alias symlink hardlink' -- "$cur"))
            return
            ;;
        --ignore-folder | --protect)
            _filedir -d
            return
            ;;
        --min-size | --ignore-types)
            return
            ;;
    esac

    if [[ $cur == -* ]]; then
        local options='--subdirs --hidden --packages --min-size --ignore-types --ignore-folder --protect --format
            --progress --no-progress --verbose --help'
        [[ $command == scan ]] && options+=' --keep --action --yes'
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    _filedir
} &&
    complete -F _twinsift twinsift
