# Completion of kivodeck's command lines in fish.

set -l none __fish_use_subcommand
set -l flat '__fish_seen_subcommand_from flatten run'
set -l judged '__fish_seen_subcommand_from check flatten run'

complete -c kivodeck -s h -l help -d 'Print this help message and exit'
complete -c kivodeck -n $none -f
complete -c kivodeck -n $none -l version -d 'Display program version information and exit'
complete -c kivodeck -n $none -a check -d 'what the translator will not hold of a deck'
complete -c kivodeck -n $none -a flatten -d 'the same mesh as a plain deck'
complete -c kivodeck -n $none -a run -d 'any deck to a judged mesh.input'
complete -c kivodeck -n $none -a audit -d 'a mesh.input judged'
complete -c kivodeck -n $none -a explain -d 'what a finding means, and what to do'

complete -c kivodeck -n "$flat" -l groups -x -a 'sections sets' -d 'cell groups of sections, of sets'
complete -c kivodeck -n "$flat" -l overlaps -x -a 'smallest first split' -d 'who keeps a node or face of several sets'
complete -c kivodeck -n "$flat" -l scale -x -d 'factor of all coordinates'
complete -c kivodeck -n "$flat" -l map -r -d 'file that lists every number and name that changed'
complete -c kivodeck -n "$flat" -l no-split -d 'refuse elements that would have to be split'
complete -c kivodeck -n "$flat" -l allow-loss -d 'write what is left where errors remain'
complete -c kivodeck -n "$judged" -l format -x -a 'text json' -d 'text or json'
complete -c kivodeck -n "$judged" -l fail-on -x -a 'error warning' -d 'level that makes the exit status 1: error, warning'
complete -c kivodeck -n "$judged" -l all -d 'all findings, not ten of a code'
complete -c kivodeck -n "$flat" -l force -d 'overwrite files that are there'
complete -c kivodeck -n '__fish_seen_subcommand_from flatten' -s o -l output -r -d 'the plain deck'
complete -c kivodeck -n '__fish_seen_subcommand_from run' -l vtk -d 'write VTK files, too'
complete -c kivodeck -n '__fish_seen_subcommand_from run' -l keep -d 'keep the plain deck, mesh.flat.inp'

complete -c kivodeck -n '__fish_seen_subcommand_from audit' -l format -x -a 'text json' -d 'text or json'
complete -c kivodeck -n '__fish_seen_subcommand_from audit' -l vtk -r -d 'file for the cells, faces and nodes that fail'
complete -c kivodeck -n '__fish_seen_subcommand_from audit' -l limit -x \
    -a '(kivodeck explain 2>/dev/null | string replace -rf "^(\S+) +measure +" "\$1=\t")' \
    -d 'MEASURE=LEAST:MOST, beyond which cells are counted'
complete -c kivodeck -n '__fish_seen_subcommand_from audit' -l counts -d 'only sizes and groups, without judging'

complete -c kivodeck -n '__fish_seen_subcommand_from explain' -f \
    -a '(kivodeck explain 2>/dev/null | string replace -r "^(\S+) +\S+ +" "\$1\t")'
complete -c kivodeck -n '__fish_seen_subcommand_from explain' -l format -x -a 'text json man markdown' \
    -d 'text, json, man or markdown'
