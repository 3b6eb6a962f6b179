// The order of the translation's steps, and the mesh summary.
#include "translate/MeshAll.h"

#include "translate/steps.h"

#include "store/COM.h"
#include "support/frame.h"
#include "support/lists.h"

#include <cstdio>

namespace {

// Makes the arrays that whoever filled the store by hand has left absent.
void CompleteArrays(Mesh *mesh) {
    ReserveNodes(mesh->Nodes, 0);
    ReserveFaces(mesh->Faces, 0);
    ReserveCells(mesh->Cells, 0);
}

void PrintSummary(const Mesh *mesh) {
    std::printf("  Mesh summary:\n");
    std::printf("    Number of dimensions  = %d\n", mesh->nDim);
    std::printf("    Number of nodes       = %d\n", mesh->Nodes->nNum);
    std::printf("    Number of elements    = %d\n", mesh->Cells->nNum);
    std::printf("    Number of node groups = %d\n", ListLength(mesh->GRnode));
    std::printf("    Number of face groups = %d\n", ListLength(mesh->GRface));
    std::printf("    Number of cell groups = %d\n", ListLength(mesh->GRcell));
    std::printf("    Maximum edge length   = %e\n", mesh->Nodes->dMaxEdge);
    std::printf("    Minimum edge length   = %e\n", mesh->Nodes->dMinEdge);
    std::printf("    Characteristic length = %e\n", mesh->Nodes->dCharLen);
}

} // namespace

void MeshAll() {
    Mesh *mesh = GetCOM();
    if (mesh == nullptr) {
        return;
    }
    std::printf("\nTranslating mesh ... \n");
    const double start = ProcessorSeconds();

    CompleteArrays(mesh);
    NumberNodes(mesh);
    ChckCellsOrde(mesh);
    CalLength(mesh);
    CalCharac(mesh);
    SplitCohesiveCells(mesh);
    ApFaces(mesh);
    DropUnusedNodes(mesh);
    FlagBoundaryNodes(mesh);

    PrintSummary(mesh);
    std::printf("Elapsed Time: %f sec.\n", ProcessorSeconds() - start);
}
