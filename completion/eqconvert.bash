# Completion of eqconvert and its companions for bash. What options there are is asked of the programs
# themselves, so that nothing here has to follow them.

# Prints the help of a program, or of its verb.
_eqconvert_help() {
    "$@" --help 2>/dev/null </dev/null
}

# Prints the options that the help tells, one a line.
_eqconvert_options() {
    _eqconvert_help "$@" | sed -nE 's/^  (-[^ ,]+).*/\1/p'
}

_eqconvert_verbs() {
    _eqconvert_help "$1" | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p'
}

# Prints what the help calls the value of option $1; nothing if it has none.
_eqconvert_kind() {
    local option=$1
    shift
    _eqconvert_help "$@" | awk -v option="$option" '/^  -[^ ]+ [A-Z]/ && $1 == option { print $2 }'
}

# Prints the values that option $1 takes, one a line: another one is refused with a list of them.
_eqconvert_choices() {
    local option=$1
    shift
    "$@" "$option" '?' 2>&1 </dev/null | sed -nE 's/.* not in \{(.*)\}$/\1/p' | tr , '\n'
}

_eqconvert_rules() {
    "$1" --list-rules 2>/dev/null | sed -nE 's/^ +(EQ[0-9]+).*/\1/p'
}

# Sets `bare` to what the shell takes a word for, as far as quotes go; nothing of the line is run.
_eqconvert_unquote() {
    local word=$1
    bare=''
    case $word in
        \'*) bare=${word#\'} bare=${bare%\'} && return ;;
        \"*) word=${word#\"} word=${word%\"} ;;
        \~/*) bare=$HOME word=${word#\~} ;;
    esac
    while [[ $word == *\\?* ]]; do
        bare+=${word%%\\*} word=${word#*\\}
        bare+=${word:0:1} word=${word:1}
    done
    bare+=$word
}

# Sets `words` and `at` to COMP_WORDS and COMP_CWORD without the splitting at colons and the like.
_eqconvert_join() {
    local rest=$COMP_LINE i
    words=()
    for ((i = 0; i < ${#COMP_WORDS[@]}; i++)); do
        if ((i > 0)) && [[ $rest == [![:space:]]* ]]; then
            words[-1]+=${COMP_WORDS[i]}
        else
            words+=("${COMP_WORDS[i]}")
        fi
        rest=${rest#"${rest%%[![:space:]]*}"}
        rest=${rest#"${COMP_WORDS[i]}"}
        ((i > COMP_CWORD)) || at=$((${#words[@]} - 1))
    done
}

# Prints all values of a member of what is told of the records on the command line, one a line.
_eqconvert_members() {
    local member=$1 word bare
    local -a records=()
    for word in "${words[@]:1}"; do
        _eqconvert_unquote "$word"
        [ ! -f "$bare" ] || records+=("$bare")
    done
    [ ${#records[@]} = 0 ] || "$program" info --format json -- "${records[@]}" 2>/dev/null |
        grep -oE "\"$member\": (\"[^\"\\\\]*\"|[0-9]+)" | sed -E "s/^\"$member\": \"?//; s/\"\$//" | sort -u
}

# Replies with those of the values, one a line, that begin as the current word does, in its quotes;
# behind a comma with those that begin as what follows it.
_eqconvert_reply() {
    local list='' value bare piece=${COMP_WORDS[COMP_CWORD]}
    _eqconvert_unquote "$current"
    [ "$1" = list ] && [[ $bare == *,* ]] && list=${bare%,*},
    while IFS= read -r value; do
        [ -n "$value" ] && [[ $list$value == "$bare"* ]] || continue
        case $current in
            \'*) [[ $value == *\'* ]] || COMPREPLY+=("$list$value") ;;
            \"*) [[ $value == *!* ]] || COMPREPLY+=("$list$(sed 's/[\\"$`]/\\&/g' <<<"$value")") ;;
            *) COMPREPLY+=("$list$(printf %q "$value")") ;;
        esac
    done
    # What comes before the place where bash split the word stays as it is.
    [[ $piece == [:=@]* ]] && piece=''
    COMPREPLY=("${COMPREPLY[@]#"${current%"$piece"}"}")
}

_eqconvert() {
    local program previous current verb='' bare at kind=''
    local -a words command
    _eqconvert_join
    _eqconvert_unquote "${words[0]}"
    program=$bare command=("$program") previous=${words[at - 1]} current=${words[at]} COMPREPLY=()
    if [ "${program##*/}" = eqrecord ]; then
        for verb in "${words[@]:1:at-1}"; do
            [[ $verb == -* ]] || break
            verb=''
        done
        command+=(${verb:+"$verb"})
    fi
    [[ $previous == -* ]] && kind=$(_eqconvert_kind "$previous" "${command[@]}")
    # Where nothing is replied names of files are completed; not for what is no file.
    [[ $kind == @(|FILE|PATH|RECORD) ]] || compopt +o default 2>/dev/null
    case $previous$kind in
        *FILE | *PATH | *RECORD) ;;
        --only* | --disable*) _eqconvert_reply list < <(_eqconvert_rules "$program") ;;
        --explain*) _eqconvert_reply one < <(_eqconvert_rules "$program") ;;
        --band*) _eqconvert_reply list < <(_eqconvert_members band) ;;
        --configuration*) _eqconvert_reply one < <(_eqconvert_members label) ;;
        --kind*) _eqconvert_reply list <<<$'A1\nA2\nZS\nD' ;;
        --detector*) _eqconvert_reply list < <(seq 12) ;;
        *)
            if [ -n "$kind" ]; then
                _eqconvert_reply one < <(_eqconvert_choices "$previous" "${command[@]}")
            elif [[ $current == -* ]]; then
                _eqconvert_reply one < <(_eqconvert_options "${command[@]}")
            elif [ "${program##*/}" = eqrecord ] && [ -z "$verb" ]; then
                _eqconvert_reply one < <(_eqconvert_verbs "$program")
            fi
            ;;
    esac
}

# eqconvert has no options to tell.
complete -o default -F _eqconvert eqlint eqrecord eqrecord-netcdf eqrecode vekcat
complete -f -X '!*.[xX][mM][lL]' -o plusdirs eqconvert
