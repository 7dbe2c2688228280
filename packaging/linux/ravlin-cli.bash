# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of ravlin-cli for bash. Takes the commands and options from the program's own help.

_ravlin_cli()
{
    local program=$1 current=$2 previous=$3 words=
    if ((COMP_CWORD == 1)); then
        words="$("$program" --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\)  .*/\1/p') --help --version"
    elif [[ $previous == --mode ]]; then
        case ${COMP_WORDS[1]} in
        tag | extract | multi | lookup) words="1 2 3 4 5" ;;
        case) words="upper lower capitalize" ;;
        esac
    elif [[ $previous == --case ]]; then
        words="upper lower capitalize"
    elif [[ $previous == --replace ]]; then
        words="underscores blanks"
    elif [[ $previous == --rule ]]; then
        words="artist-title track-title"
    elif [[ $previous == --clash ]]; then
        case ${COMP_WORDS[1]} in
        copy | move) words="skip number replace" ;;
        *) words="skip number stop" ;;
        esac
    elif [[ $current == -* && " ${COMP_WORDS[*]:1:COMP_CWORD-1} " != *" -- "* ]]; then
        words=$("$program" "${COMP_WORDS[1]}" --help 2>/dev/null | sed -n 's/^  \(--[a-z][a-z0-9-]*\) .*/\1/p')
    fi
    # Without a match "-o default" completes names of files and folders.
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -o default -F _ravlin_cli ravlin-cli
