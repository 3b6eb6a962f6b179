# Completion of KIVOm's command lines in fish: a deck and one option.
complete -c KIVOm -l vtk -d 'also write VTK files'
