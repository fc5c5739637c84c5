#compdef tovu
# Completion of tovu in zsh. Uses the completion for bash.
autoload -U +X bashcompinit && bashcompinit
source /usr/share/bash-completion/completions/tovu
_bash_complete -o default -F _tovu_complete
