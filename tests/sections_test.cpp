// Section readers without a stream: a section that holds no data lines.
#include "tests/support/capture.h"

#include "abaqus/abqdeck.h"
#include "abaqus/abqline.h"

#include "support/frame.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// Reads the section of that keyword line without a stream: its record, alone in the list, must be empty, and no line
// be left in hand. Returns what was printed.
template <class Record> std::string ReadNothing(void (*read)(LineSource *, Record **), const char *keywordLine) {
    Record *list = nullptr;
    std::strcpy(ABQLine(), keywordLine);
    const std::string log = Printed([&] { read(nullptr, &list); });
    EXPECT_STREQ(ABQLine(), "");
    if (list == nullptr) {
        ADD_FAILURE() << "nothing was pushed for " << keywordLine;
        return log;
    }
    EXPECT_EQ(list->next, nullptr);
    EXPECT_EQ(list->count, 0);
    allocate(list, 0);
    return log;
}

TEST(WithoutAStream, EverySectionIsEmptyAndItsKeywordLineUsedUp) {
    EXPECT_EQ(ReadNothing(ReadNodes, "*NODE,NSET=ALL"), "  Reading Nodes ALL ... done with 0 nodes.\n");
    EXPECT_EQ(ReadNothing(ReadCells, "*ELEMENT,TYPE=C3D4,ELSET=E"), "  Reading Elements E ... done with 0 C3D4s.\n");
    EXPECT_EQ(ReadNothing(ReadNodeSets, "*NSET,NSET=N"), "  Reading NSET N ... done with 0 nodes.\n");
    EXPECT_EQ(ReadNothing(ReadCellSets, "*ELSET,ELSET=E"), "  Reading ELSET E ... done with 0 cells.\n");
    EXPECT_EQ(ReadNothing(ReadSurfaces, "*SURFACE,NAME=S"), "  Reading Surface S ... done with 0 elsets.\n");
}

} // namespace
