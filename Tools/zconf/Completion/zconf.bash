# Completion of zconf for bash. The program says what can follow; bash itself completes the names of files.

_zconf()
{
    local -a words=() answer=()
    local word rest=${COMP_LINE:0:COMP_POINT} start text prefix= kept=
    local i

    # Bash takes words apart at "=" and ":", which are parts of ours.
    for ((i = 0; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        start=${rest%%"$word"*}
        rest=${rest#"$start$word"}
        if [[ -z $start && ${#words[@]} -gt 0 ]]; then
            words[-1]+=$word
        else
            words+=("$word")
        fi
    done
    start=${rest%%[![:blank:]]*}
    word=${rest#"$start"}
    if [[ -z $start && ${#words[@]} -gt 1 ]]; then
        words[-1]+=$word
    else
        words+=("$word")
    fi
    word=${words[-1]}

    mapfile -t answer < <(command zconf __complete "${words[@]:1}" 2>/dev/null)
    # Only what follows the last "=" is replaced, unless somebody made "=" a part of words. The answers do not
    # have what stands before that of "--option=value".
    if [[ $word == --*=* ]]; then
        prefix=${word%%=*}=
        word=${word#*=}
    fi
    if [[ $COMP_WORDBREAKS == *=* ]]; then
        prefix=
        [[ $word == *=* ]] && kept=${word%=*}=
    fi
    COMPREPLY=()
    for text in "${answer[@]:1}"; do
        text=${text%%$'\t'*}
        text=${text#"$kept"}
        if [[ $text == *[^[:alnum:]_.,+-]* ]]; then
            printf -v text '%q' "$text"
        fi
        COMPREPLY+=("$prefix$text")
    done
    # Such a word is typed on.
    if [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *[.=] ]]; then
        compopt -o nospace
    fi
    if [[ ${answer[0]-} == files ]]; then
        # Where nothing else fits.
        compopt -o default
    fi
}

complete -F _zconf zconf
