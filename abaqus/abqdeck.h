// What the reader collects from a deck before it hands it to the store: one record per section, in lists with
// the newest section first. The reader owns all of it and releases it block by block while it hands over.
#ifndef KIVOM_ABAQUS_ABQDECK_H
#define KIVOM_ABAQUS_ABQDECK_H

struct LineSource; // support/lines.h

constexpr int kRecordName = 260;

// One *NODE section.
struct ABQNodeBlock {
    ABQNodeBlock *next;
    long long nLine;        // line of the deck at which the section's keyword line begins, from 1
    char name[kRecordName]; // value of NSET; empty when absent
    int count, capacity;    // nodes read; length of the columns
    int *i1Tag;             // [count] tag of each node; absent until the sets are resolved
    int *i1GID;             // [count] number in the deck
    double *d1X, *d1Y, *d1Z;
};

// One *ELEMENT section.
struct ABQCellBlock {
    ABQCellBlock *next;
    long long nLine;        // likewise
    char name[kRecordName]; // value of ELSET; empty when absent
    int type;               // type code of the store; -1 until known
    int tag;                // -1 until numbered; the tag of every element of the block
    int nNodes;             // nodes per element
    int count, capacity;
    int **i2FaceTag;     // [faces][count] surface tag by face label row; absent while no surface names the block
    int *i1GID;          // [count] number in the deck
    int **i2Conn;        // [nNodes][count] node numbers, in the deck's order
    const int *i1MapC2N; // [nNodes] store node k is deck node i1MapC2N[k]
    const int *i1MapCFT; // [nNodes] deck face label row k is store face slot i1MapCFT[k]
};

// One *NSET or *ELSET section.
struct ABQSet {
    ABQSet *next;
    long long nLine;
    char name[kRecordName];
    int count, capacity;
    int tag;      // node sets: -1 until numbered
    int *numbers; // [count] node or element numbers
};

// One *SURFACE section.
struct ABQSurface {
    ABQSurface *next;
    long long nLine;
    char name[kRecordName];
    int count, capacity;
    int tag;          // -1 until numbered
    char *entryNames; // an element set's name or an element's number each, terminated, one behind the other
    int *faceRows;    // [count] face label's number minus 1
};

// The deck.
struct ABQModel {
    int nDim; // 2 or 3; 0 while no element section is known
    ABQNodeBlock *nodeBlocks;
    ABQSurface *surfaces;
    ABQCellBlock *cellBlocks;
    ABQSet *cellSets;
    ABQSet *nodeSets;
    bool bReadOn; // a deck that cannot be read to its end counts as ended there; else the process ends
};

// The whole way from a deck to its records (LoadABQ.cpp), for LoadABQ and for a caller that reads a deck without making
// a mesh of it. In this order:
//
//     LineSource stream;
//     if (!ABQOpenDeck(&stream, path)) ...       // no deck is in hand then
//     ABQDeck()->bReadOn = true;                 // unless the process may end where reading fails
//     while (ABQFindSection(&stream)) {          // ABQLine, ABQLineNumber, ABQLineOffset tell of its keyword line
//         ABQReadSection(&stream);               // stream.nLines and BytesTaken tell how far the deck is used up
//     }
//     ... stream.bFailed ...                     // true: the deck could not be read to its end
//     CloseLines(&stream);
//     ABQResolveDeck();
//     ... the records of ABQDeck() ...
//     ABQReleaseDeck();
//
// All of it reports on standard output, as the log of a run shows it.

// Makes the deck of that path the one in hand and opens it. False, and nothing held, when it cannot be opened or read.
bool ABQOpenDeck(LineSource *stream, const char *path);

// Makes the next keyword line, whole, the line in hand; data lines before it are passed over. False at the end of the
// deck.
bool ABQFindSection(LineSource *stream);

// Reads the section whose keyword line is in hand. Its record, if it is not refused, is the first of its list then.
// The line in hand is the first that the section did not use: one that ABQFindSection counts with. A keyword of no
// interest is dropped, and its data lines are passed over.
void ABQReadSection(LineSource *stream);

// Orders the records, numbers them, and turns sets and surfaces into tags of nodes and faces.
void ABQResolveDeck();

// The deck in hand (abqdeck.cpp): one per process, made and released with its records; the steps after reading work
// on it.
ABQModel *ABQMakeDeck(const char *filename);
ABQModel *ABQDeck();
const char *ABQDeckName();
void ABQReleaseDeck();

// Releases a block's columns, as soon as the store has them.
void ABQReleaseNodeColumns(ABQNodeBlock *block);
void ABQReleaseCellColumns(ABQCellBlock *block);

// Says that the deck cannot be opened and ends the process. A deck that cannot be read to its end counts as one that
// cannot be opened: half a deck must not become a mesh.
[[noreturn]] void ABQEndUnreadable();
void ABQRequireReadable(const LineSource *stream);

// Faces of an element of that type: a face row from 0 to below it names one of them.
int ABQNumFaces(int type);

// Section readers. The line in hand is the section's keyword line, whole; afterwards it is the first line that
// the section did not use (empty at the end of the deck). What was read is pushed at the head of the list; a
// refused section is reported and leaves the list as it was. A null stream holds no data lines.
void ReadNodes(LineSource *stream, ABQNodeBlock **list);  // abqnodes.cpp
void ReadCells(LineSource *stream, ABQCellBlock **list);  // abqcells.cpp
void ReadNodeSets(LineSource *stream, ABQSet **list);     // abqsets.cpp
void ReadCellSets(LineSource *stream, ABQSet **list);     // abqsets.cpp
void ReadSurfaces(LineSource *stream, ABQSurface **list); // abqsurfaces.cpp

// Ordering (abqorder.cpp): rows by number inside each block, blocks by their first number, numbers inside each set.
void ABQOrderDeck();

// Sorts the rows of one node block by number; the other columns follow. Among equal numbers the order is that of
// SortByFirstArray2. An absent column (null) is passed over.
void ABQ_SortNodesByGID(int count, int *i1GID, int *i1Tag, double *d1X, double *d1Y, double *d1Z);

// The same for a cell block with its tables, both [nNodes][count] (a block's own i2FaceTag is made later, with fewer
// columns).
void ABQ_SortCellsByGID(int count, int nNodes, int *i1GID, int *i1Tag, int **i2Conn, int **i2FaceTag);

// Exchange the contents of two blocks; each keeps its place in the list.
void SwapNodeStructures(ABQNodeBlock *a, ABQNodeBlock *b);
void SwapCellStructures(ABQCellBlock *a, ABQCellBlock *b);

// Numbering and resolving (abqresolve.cpp): tags of sets, surfaces and blocks; each node's tag, each face's tag.
void ABQNumberRecords();
void ABQTagNodes();
void ABQ_SetCellFaceTagByGID();

// Handing over to the store (abqhandover.cpp).
void ABQ_AssignSystDim();
void ABQ_AssignCellMap();
void ABQArchNodes();  // every node; releases the node blocks' columns as it goes
void ABQ2COM_Cell();  // every cell; releases the cell blocks' columns as it goes
void ABQArchGroups(); // one node group, face group, cell group for each node set, surface, cell block

#endif
