# Completion of tovu in bash and zsh: subcommands and options are read from the help texts.

# The subcommands that the help text of a command lists. _tovu_subcommands COMMAND...
_tovu_subcommands() {
    "$@" --help 2>/dev/null | awk '
        /^(Subcommands|positional arguments):$/ { inside = 1; next }
        /^$/ { inside = 0 }
        inside && NF > 1 { print $1 }'
}

# The long options of a command.
_tovu_options() {
    "$@" --help 2>/dev/null | awk '/^ +-/ && match($0, /--[a-z][a-z-]*/) { print substr($0, RSTART, RLENGTH) }'
}

_tovu_complete() {
    local current=${COMP_WORDS[COMP_CWORD]} word
    local command=("$1")
    for word in "${COMP_WORDS[@]:1:$((COMP_CWORD - 1))}"; do
        _tovu_subcommands "${command[@]}" | grep -qxF -e "$word" || break
        command+=("$word")
    done
    if [[ $current == -* ]]; then
        COMPREPLY=($(compgen -W "$(_tovu_options "${command[@]}")" -- "$current"))
    elif [[ ${#command[@]} -eq $COMP_CWORD ]]; then
        COMPREPLY=($(compgen -W "$(_tovu_subcommands "${command[@]}")" -- "$current"))
    fi
}

# Completes file names if there are no subcommands or options to list.
complete -o default -F _tovu_complete tovu
