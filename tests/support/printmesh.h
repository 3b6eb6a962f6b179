// The plain way to write a mesh as "mesh.input".
#ifndef KIVOM_TESTS_SUPPORT_PRINTMESH_H
#define KIVOM_TESTS_SUPPORT_PRINTMESH_H

#include "meshfile/meshfile.h"

#include <string>

std::string PrintMesh(const meshfile::Mesh &mesh);

#endif
