# Completion of kivorender's command lines in fish.
complete -c kivorender -l view -x -d 'direction from which the mesh is seen, X,Y,Z'
complete -c kivorender -l size -x -d 'width and height of the picture, W,H'
complete -c kivorender -l no-sets -d 'without node sets'
complete -c kivorender -l audit -r -d 'what kivodeck audit --vtk=FILE wrote'
complete -c kivorender -s h -l help -d 'show this help message and exit'
complete -c kivorender -l version -d "show program's version number and exit"
