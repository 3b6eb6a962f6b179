# Completion of kivorender's command lines in bash.

_kivorender() {
    local word=$2 option=$3
    [[ $word == = ]] && word=
    [[ $option == = ]] && option=${COMP_WORDS[COMP_CWORD - 2]}
    COMPREPLY=()
    case $option:$word in
    --view:* | --size:*) compopt +o default ;;
    --audit:*) ;;
    *:-*) mapfile -t COMPREPLY < <(compgen -W '--view --size --no-sets --audit --help --version' -- "$word") ;;
    esac
}
complete -o default -F _kivorender kivorender
