# Completion of kivodeck's command lines in bash.

_kivodeck() {
    local program=$1 word=$2 option=$3 i verb=
    # "--format=te" reaches this function as three words.
    [[ $word == = ]] && word=
    [[ $option == = ]] && option=${COMP_WORDS[COMP_CWORD - 2]}
    for ((i = 1; i < COMP_CWORD; ++i)); do
        [[ ${COMP_WORDS[i]} != -* ]] && { verb=${COMP_WORDS[i]}; break; }
    done

    local plain='--groups --overlaps --scale --map --no-split --allow-loss --format --fail-on --all --force'
    local words= # none: files
    case $verb:$option in
    *:--map | audit:--vtk | *:-o | *:--output) ;;
    *:--fail-on) words='error warning' ;;
    *:--groups) words='sections sets' ;;
    *:--overlaps) words='smallest first split' ;;
    explain:--format) words='text json man markdown' ;;
    *:--format) words='text json' ;;
    *:--limit) words=$("$program" explain 2>/dev/null | awk '$2 == "measure" { print $1 "=" }') ;;
    *:--scale) words=' ' ;; # a number
    *)
        case $verb:$word in
        :-*) words='--help --version' ;;
        :*) words='check flatten run audit explain' ;;
        check:-*) words='--format --fail-on --all --help' ;;
        flatten:-*) words="$plain --output --help" ;;
        run:-*) words="$plain --vtk --keep --help" ;;
        audit:-*) words='--format --vtk --limit --counts --help' ;;
        explain:-*) words='--format --help' ;;
        explain:*) words=$("$program" explain 2>/dev/null | awk '{ print $1 }' | sort -u) ;;
        esac
        ;;
    esac
    [[ -z $words ]] || compopt +o default
    [[ $words != *= ]] || compopt -o nospace
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -F _kivodeck kivodeck
