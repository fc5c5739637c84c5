#!/bin/sh
# Prints the commit of this source tree: 12 digits, with "-dirty" behind them where files differ from it; "unknown" for a
# copy of the files that has no history. `git archive` replaces the text between the dollar signs by the commit.
set -eu
# shellcheck disable=SC2016  # git replaces it, not the shell
archived='$Format:%H$'
case $archived in
    *Format*) git -C "$(dirname "$0")" describe --always --dirty --exclude '*' --abbrev=12 2>/dev/null || echo unknown ;;
    *) printf '%.12s\n' "$archived" ;;
esac
