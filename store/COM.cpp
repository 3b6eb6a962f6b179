// The one mesh of the process.
#include "store/COM.h"

#include "support/frame.h"

#include <algorithm>
#include <cstring>

// The pointer bears its record's name; in the namespace below the two would hide one another.
static struct Mesh *Mesh = nullptr;

namespace {

void MakeMesh() {
    if (Mesh == nullptr) {
        Mesh = NewMesh();
    }
}

template <class Group> void PushGroup(Group **head, Group *group, int tag, const char *name) {
    group->next = *head;
    group->iTag = tag;
    const std::size_t length = strnlen(name, sizeof group->c1Name - 1);
    std::memcpy(group->c1Name, name, length);
    group->c1Name[length] = '\0';
    *head = group;
}

template <class Group> void ReleaseGroups(Group *group, void (*release)(Group *)) {
    while (group != nullptr) {
        Group *next = group->next;
        release(group);
        group = next;
    }
}

void CopyOrZero(int count, const int *from, int *to) {
    if (from == nullptr) {
        std::fill(to, to + count, 0);
    } else {
        std::copy(from, from + count, to);
    }
}

} // namespace

struct Mesh *GetCOM() {
    return Mesh;
}

void FreeCOM() {
    if (Mesh == nullptr) {
        return;
    }
    if (Mesh->Nodes != nullptr) {
        DelNodes(Mesh->Nodes);
    }
    if (Mesh->Faces != nullptr) {
        DelFaces(Mesh->Faces);
    }
    if (Mesh->Cells != nullptr) {
        DelCells(Mesh->Cells);
    }
    ReleaseGroups(Mesh->GRcell, DelGRcell);
    ReleaseGroups(Mesh->GRface, DelGRface);
    ReleaseGroups(Mesh->GRnode, DelGRnode);
    allocate(Mesh, 0);
    Mesh = nullptr;
}

void COM_ArchnDim(int nDim) {
    MakeMesh();
    Mesh->nDim = nDim;
}

void COM_ArchNode(int number, int tag, double x, double y, double z) {
    COM_ArchNodes(1, &number, &tag, &x, &y, &z);
}

void COM_ArchNodes(int count, const int *numbers, const int *tags, const double *x, const double *y, const double *z) {
    MakeMesh();
    struct Nodes *nodes = Mesh->Nodes;
    const int first = ReserveNodes(nodes, count);
    std::copy(numbers, numbers + count, nodes->i1GID + first);
    std::copy(tags, tags + count, nodes->i1Tag + first);
    std::copy(x, x + count, nodes->d1X + first);
    std::copy(y, y + count, nodes->d1Y + first);
    std::copy(z, z + count, nodes->d1Z + first);
}

void COM_ArchCell(int columns, int type, int tag, int k, const int *conn, const int *faceTags) {
    MakeMesh();
    struct Cells *cells = Mesh->Cells;
    SetNumNodesCells(columns, cells);
    const int cell = GetNextAviableCell(cells);
    cells->i1Type[cell] = type;
    cells->i1Tag[cell] = tag;
    const int kept = std::min(k, cells->nNodesPerCell); // more nodes than columns would lie outside the tables
    cells->i1NumNodes[cell] = kept;
    for (int p = 0; p < kept; ++p) {
        cells->i2Conn[p][cell] = conn[p];
        cells->i2FaceTag[p][cell] = faceTags[p];
    }
}

void COM_ArchCells(int columns, int type, int tag, int k, int count, const int *const *conn,
                   const int *const *faceTags) {
    MakeMesh();
    struct Cells *cells = Mesh->Cells;
    SetNumNodesCells(columns, cells);
    const int first = ReserveCells(cells, count);
    if (count < 1) {
        return;
    }
    std::fill_n(cells->i1Type + first, count, type);
    std::fill_n(cells->i1Tag + first, count, tag);
    const int kept = std::min(k, cells->nNodesPerCell);
    std::fill_n(cells->i1NumNodes + first, count, kept);
    for (int p = 0; p < kept; ++p) {
        std::copy(conn[p], conn[p] + count, cells->i2Conn[p] + first);
        CopyOrZero(count, faceTags == nullptr ? nullptr : faceTags[p], cells->i2FaceTag[p] + first);
    }
}

void COM_ArchGRcell(int tag, const char *name) {
    struct GRcell *group = NewGRcell();
    MakeMesh();
    PushGroup(&Mesh->GRcell, group, tag, name);
}

void COM_ArchGRface(int tag, const char *name) {
    GRface *group = NewGRface();
    MakeMesh();
    PushGroup(&Mesh->GRface, group, tag, name);
}

void COM_ArchGRnode(int tag, const char *name) {
    struct GRnode *group = NewGRnode();
    MakeMesh();
    PushGroup(&Mesh->GRnode, group, tag, name);
}

int COM_GetGRcellTagByName(const char *name) {
    if (Mesh == nullptr) {
        return -1;
    }
    for (const struct GRcell *group = Mesh->GRcell; group != nullptr; group = group->next) {
        if (AreNamesSame(name, group->c1Name) != 0) {
            return group->iTag;
        }
    }
    return -1;
}
