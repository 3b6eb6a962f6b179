# Completion of KIVOm's command lines in bash: a deck and one option.

_kivom() {
    COMPREPLY=()
    [[ $2 == -* ]] && COMPREPLY=(--vtk)
}
complete -o default -F _kivom KIVOm
