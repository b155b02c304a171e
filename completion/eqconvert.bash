# Completion of eqconvert and its companions for bash. What options there are is asked of the programs
# themselves, so that nothing here has to follow them.

# Prints the help of a program, or of its verb.
_eqconvert_help() {
    "$@" --help 2>/dev/null
}

# Prints the options that the help tells, one a line.
_eqconvert_options() {
    _eqconvert_help "$@" | sed -nE 's/^  (-[^ ,]+).*/\1/p'
}

_eqconvert_verbs() {
    _eqconvert_help "$1" | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p'
}

# Prints the values that the help tells of option $1, as in "text (default), json or sarif".
_eqconvert_choices() {
    local option=$1
    shift
    _eqconvert_help "$@" | awk -v option="$option" '
        /^  -/ { inside = $1 == option; sub(/^  [^ ]+ +[^ ]+ +/, "") }
        /^$/ { inside = 0 }
        inside { text = text " " $0 }
        END {
            if (text !~ /\(default\)/) exit
            sub(/.*: /, "", text)
            gsub(/ \(default\)|,/, "", text)
            gsub(/ or /, " ", text)
            print text
        }'
}

_eqconvert_rules() {
    "$1" --list-rules 2>/dev/null | grep -oE '^ +EQ[0-9]+'
}

# Prints all values of a member of what is told of the records on the command line, one a line.
_eqconvert_members() {
    local member=$1 word
    for word in "${COMP_WORDS[@]:1}"; do
        word=${word//\\/} # as far as quotes are taken off; nothing of the line is run
        word=${word/#\~\//$HOME/}
        if [ -f "$word" ]; then
            "${COMP_WORDS[0]}" info --format json -- "$word" 2>/dev/null |
                grep -oE "\"$member\": (\"[^\"\\\\]*\"|[0-9]+)" | sed -E "s/^\"$member\": \"?//; s/\"\$//" | sort -u
        fi
    done
}

# Replies with those of the values, one a line, that begin as the current word does; behind a comma
# with those that begin as what follows it.
_eqconvert_reply() {
    local list='' value current=${COMP_WORDS[COMP_CWORD]}
    [ "$1" = list ] && [[ $current == *,* ]] && list=${current%,*},
    COMPREPLY=()
    while IFS= read -r value; do
        [ -n "$value" ] && [[ $list$value == "$current"* ]] && COMPREPLY+=("$list$(printf %q "$value")")
    done
}

_eqconvert() {
    local program=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} verb=''
    local -a command=("$program")
    if [ "${program##*/}" = eqrecord ]; then
        for verb in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
            [[ $verb == -* ]] || break
            verb=''
        done
        command+=(${verb:+"$verb"})
    fi
    case $previous in
        --only | --disable | --explain) _eqconvert_reply list < <(_eqconvert_rules "$program" | tr -d ' ') ;;
        --band) _eqconvert_reply list < <(_eqconvert_members band) ;;
        --configuration) _eqconvert_reply one < <(_eqconvert_members label) ;;
        --kind) _eqconvert_reply list <<<$'A1\nA2\nZS\nD' ;;
        --detector) _eqconvert_reply list < <(seq 12) ;;
        -o | --expect | --against) COMPREPLY=($(compgen -f -- "$current")) ;;
        *)
            if [[ $current == -* ]]; then
                _eqconvert_reply one < <(_eqconvert_options "${command[@]}")
            elif [[ $previous == -* ]] && [ -n "$(_eqconvert_choices "$previous" "${command[@]}")" ]; then
                _eqconvert_reply one < <(_eqconvert_choices "$previous" "${command[@]}" | tr -s ' ' '\n')
            elif [ "${program##*/}" = eqrecord ] && [ -z "$verb" ]; then
                _eqconvert_reply one < <(_eqconvert_verbs "$program")
            fi
            ;;
    esac
}

# Where nothing is replied, names of files are completed. eqconvert has no options to tell.
complete -o default -F _eqconvert eqlint eqrecord eqrecord-netcdf eqrecode vekcat
complete -f -X '!*.@(xml|XML)' -o plusdirs eqconvert
