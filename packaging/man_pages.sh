#!/bin/sh
# Makes manual pages of a command and its subcommands from their help texts, with help2man. man_pages.sh COMMAND FOLDER
set -eu
command=$(realpath "$1")
folder=$2
version=$("$command" --version | cut -d ' ' -f 2)
COLUMNS=200  # options and their texts on one line
export COLUMNS
mkdir -p "$folder"

# The subcommands that a help text lists, a line each: name, tab, sentence.
subcommands() {
    "$command" "$@" --help | awk '
        /^(Subcommands|positional arguments):$/ { inside = 1; next }
        /^$/ { inside = 0 }
        inside && NF > 1 && $1 != "help" { word = $1; sub(/^ *[^ ]+ +/, ""); print word "\t" $0 }'
}

# page SENTENCE WORD...: makes the page of the subcommand WORD... help2man takes the page's name from the file that it
# runs, so it runs a script of that name, which prints the help text in the form that help2man expects.
page() {
    sentence=$1
    shift
    script=$folder/$(echo "$(basename "$command")" "$@" | tr ' ' -)
    cat >"$script" <<END
#!/bin/sh
"$command" $* --help | sed -e 's/^usage:/Usage:/; s/^options:/Options:/; s/^  -\(.\),--/  -\1, --/'
END
    chmod +x "$script"
    help2man --no-info --version-string "$version" --name "$sentence" --output "$script.1" "$script"
    rm "$script"
}

page "$("$command" --help | head -n 1)"
subcommands | while read -r word sentence; do
    page "$sentence" "$word"
    # Options of a script's subcommand are listed like subcommands, so this goes no deeper.
    subcommands "$word" | while read -r inner sentence; do page "$sentence" "$word" "$inner"; done
done
