# Completion of tovu in fish: subcommands and options, with their sentences, are read from the help texts.

# The subcommands and long options of a command, a line each: word, tab, sentence. __tovu_words COMMAND...
function __tovu_words
    $argv --help 2>/dev/null | awk '
        /^(Subcommands|positional arguments):$/ { inside = 1; next }
        /^$/ { inside = 0 }
        inside && NF > 1 { word = $1; sub(/^ *[^ ]+ +/, ""); print word "\t" $0 }
        /^ +-/ && match($0, /--[a-z][a-z-]*/) { word = substr($0, RSTART, RLENGTH); sub(/^ *[^ ]+( [^ ]+)*  +/, ""); print word "\t" $0 }'
end

function __tovu_complete
    set -l command tovu
    for word in (commandline -opc)[2..]
        string match -qr '^-' -- $word; and break
        __tovu_words $command | string match -q -- $word\t'*'; or break
        set -a command $word
    end
    __tovu_words $command
end

complete -c tovu -a '(__tovu_complete)'
