# Completion of kivorender's command lines in fish.
complete -c kivorender -l view -x -d 'the direction from the mesh to the eye'
complete -c kivorender -l size -x -d 'width and height in pixels'
complete -c kivorender -l no-sets -d 'leave the node sets out'
complete -c kivorender -l audit -r -d 'show what "kivodeck audit --vtk=FILE" wrote'
complete -c kivorender -s h -l help -d 'show this help message and exit'
complete -c kivorender -l version -d "show program's version number and exit"
