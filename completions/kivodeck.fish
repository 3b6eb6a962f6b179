# Completion of kivodeck's command lines in fish.

set -l none __fish_use_subcommand
set -l flat '__fish_seen_subcommand_from flatten run'
set -l judged '__fish_seen_subcommand_from check flatten run'

complete -c kivodeck -s h -l help -d 'Print this help message and exit'
complete -c kivodeck -n $none -f
complete -c kivodeck -n $none -l version -d 'Display program version information and exit'
complete -c kivodeck -n $none -a check -d 'report what KIVOm alone would lose of a deck'
complete -c kivodeck -n $none -a flatten -d 'write the same mesh as a plain deck'
complete -c kivodeck -n $none -a run -d 'flatten and translate a deck, audit the mesh'
complete -c kivodeck -n $none -a audit -d 'check a mesh.input'
complete -c kivodeck -n $none -a explain -d 'describe a finding, a check or a measure'

complete -c kivodeck -n "$flat" -l groups -x -a 'sections sets' -d 'name cell groups after sections or element sets'
complete -c kivodeck -n "$flat" -l overlaps -x -a 'smallest first split' -d 'who gets a node or face of several sets'
complete -c kivodeck -n "$flat" -l scale -x -d 'factor for all coordinates'
complete -c kivodeck -n "$flat" -l map -r -d 'file that lists every number and name that changed'
complete -c kivodeck -n "$flat" -l no-split -d 'refuse elements that would have to be split'
complete -c kivodeck -n "$flat" -l allow-loss -d 'write what is left when there are errors'
complete -c kivodeck -n "$judged" -l format -x -a 'text json' -d 'text or json'
complete -c kivodeck -n "$judged" -l fail-on -x -a 'error warning' -d 'level that makes the exit status 1: error, warning'
complete -c kivodeck -n "$judged" -l all -d 'all findings, instead of ten for each code'
complete -c kivodeck -n "$flat" -l force -d 'overwrite existing files'
complete -c kivodeck -n '__fish_seen_subcommand_from flatten' -s o -l output -r -d 'the plain deck'
complete -c kivodeck -n '__fish_seen_subcommand_from run' -l vtk -d 'also write VTK files'
complete -c kivodeck -n '__fish_seen_subcommand_from run' -l keep -d 'keep the plain deck, mesh.flat.inp'

complete -c kivodeck -n '__fish_seen_subcommand_from audit' -l format -x -a 'text json' -d 'text or json'
complete -c kivodeck -n '__fish_seen_subcommand_from audit' -l vtk -r -d 'file for the cells, faces and nodes that fail'
complete -c kivodeck -n '__fish_seen_subcommand_from audit' -l limit -x \
    -a '(kivodeck explain 2>/dev/null | string replace -rf "^(\S+) +measure +" "\$1=\t")' \
    -d 'MEASURE=LEAST:MOST: count the cells outside'
complete -c kivodeck -n '__fish_seen_subcommand_from audit' -l counts -d 'only list sizes and groups'

complete -c kivodeck -n '__fish_seen_subcommand_from explain' -f \
    -a '(kivodeck explain 2>/dev/null | string replace -r "^(\S+) +\S+ +" "\$1\t")'
complete -c kivodeck -n '__fish_seen_subcommand_from explain' -l format -x -a 'text json man markdown' \
    -d 'text, json, man or markdown'
