// *SURFACE sections: which faces of which elements.
#include "abaqus/RefusedWords.h"
#include "abaqus/abqcolumns.h"
#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"
#include "abaqus/abqrecord.h"

#include <climits>
#include <cstdio>
#include <cstring>

namespace {

// True when the keyword line names another type than ELEMENT: reported, and the next line is in hand.
bool RefuseType(LineSource *stream) {
    char type[kNameBuffer];
    if (ABQParseLabel(type, "TYPE") == 0 || std::strcmp(type, "ELEMENT") == 0) {
        return false;
    }
    std::printf("\n  Error> only ELEMENT surface type is supported (%s).\n", type);
    ABQNextLine(stream);
    return true;
}

// The face row of a label, its number minus 1: one character of any kind, then a whole number ("S3" is row 2).
bool ScanFaceRow(const char *label, int *row) {
    int number;
    if (std::sscanf(label, "%*c%d", &number) != 1) {
        return false;
    }
    *row = number == INT_MIN ? INT_MIN : number - 1; // both are below any face
    return true;
}

// The entry on the line in hand: set or element, face row. False after reporting that one is missing.
bool ScanEntry(char *name, int *row) {
    char *cursor = ABQLine();
    char label[kNameBuffer];
    const bool hasName = NextCHR(name, &cursor, ',') != 0;
    const bool hasLabel = NextCHR(label, &cursor, ',') != 0;
    if (!hasName || !hasLabel || !ScanFaceRow(label, row)) {
        std::printf("\n  Error> Needed to read both ELSET name & Face/edge id label.\n");
        return false;
    }
    return true;
}

// Names take the room they need: a surface may list a million elements one by one.
void AppendName(ABQColumns *names, const char *name) {
    do {
        const int at = ABQAddRow(names);
        names->columns[0].data[at] = *name;
    } while (*name++ != '\0');
}

void ReadRows(LineSource *stream, ABQColumns *names, ABQColumns *faceRows) {
    while (ABQNextLine(stream) && !ABQAtKeyword()) {
        ABQLinkContLines(stream);
        char name[kNameBuffer];
        int faceRow;
        if (ScanEntry(name, &faceRow)) {
            AppendName(names, name);
            const int row = ABQAddRow(faceRows);
            ABQIntColumn(faceRows, 0)[row] = faceRow;
        }
    }
}

} // namespace

void ReadSurfaces(LineSource *stream, ABQSurface **list) {
    auto *surface = ABQNewRecord<ABQSurface>();
    surface->nLine = ABQLineNumber();
    ABQParseLabel(surface->name, "NAME");
    std::printf("  Reading Surface %s ... ", surface->name);
    if (ABQRefuse(stream, kRefusedSurface) || RefuseType(stream)) {
        allocate(surface, 0);
        return;
    }
    ABQColumns names{};
    ABQAddColumns(&names, 1, 1);
    ABQColumns faceRows{};
    ABQAddColumns(&faceRows, 1, sizeof(int));
    ReadRows(stream, &names, &faceRows);
    std::printf("done with %d elsets.\n", faceRows.count);
    surface->tag = -1;
    surface->count = surface->capacity = faceRows.count;
    surface->entryNames = static_cast<char *>(ABQTakeColumn(&names, 0));
    surface->faceRows = static_cast<int *>(ABQTakeColumn(&faceRows, 0));
    ABQPush(list, surface);
}
