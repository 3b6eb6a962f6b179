// A whole deck: its sections, and the run from one end to the other.
#include "tests/support/plain/deck.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <iterator>

namespace {

struct ElementType {
    const char *name;
    int type;
    std::size_t nNodes;
};

constexpr ElementType kTypes[] = {{"C3D4", 5, 4},  {"C3D10", 6, 10}, {"CPE3", 3, 3}, {"CPS3", 3, 3},
                                  {"STRI3", 3, 3}, {"CPE6", 4, 6},   {"CPS6", 4, 6}, {"STRI65", 4, 6}};

bool Next(PlainDeck *deck) {
    const bool more = PlainNextLogical(&deck->text, &deck->line);
    deck->log += deck->line.log;
    return more;
}

void Join(PlainDeck *deck) {
    const std::size_t reported = deck->line.log.size();
    PlainJoin(&deck->text, &deck->line);
    deck->log += deck->line.log.substr(reported);
}

bool NextData(PlainDeck *deck) {
    return Next(deck) && deck->line.text[0] != '*';
}

std::string Parameter(PlainDeck *deck, const char *name, bool *found = nullptr) {
    std::string value;
    const bool is = PlainParameter(deck->line.text, name, &value);
    if (found != nullptr) {
        *found = is;
    }
    if (value.size() > 256) {
        deck->log += std::string("\n  Error> the value of ") + name + " is longer than 256 characters.\n";
    }
    return value.substr(0, 256);
}

bool Refused(PlainDeck *deck, const std::vector<const char *> &words) {
    for (const char *word : words) {
        if (deck->line.text.find(word) != std::string::npos) {
            deck->log += std::string("\n  Error> Undesirable parameters: ") + word + ".\n";
            Next(deck);
            return true;
        }
    }
    return false;
}

void ReadNodeBlock(PlainDeck *deck) {
    NodeBlock block;
    deck->log += "  Reading Nodes " + Parameter(deck, "NSET") + " ... ";
    if (Refused(deck, {"INPUT", "SYSTEM"})) {
        return;
    }
    while (NextData(deck)) {
        Join(deck);
        const std::string number = PlainGrab(&deck->line.text, ',');
        const std::string x = PlainGrab(&deck->line.text, ',');
        const std::string y = PlainGrab(&deck->line.text, ',');
        const std::string z = PlainGrab(&deck->line.text, ',');
        deck->log += number.empty() ? "\n  Error> needed nodal id.\n" : "";
        deck->log += x.empty() ? "\n  Error> needed nodal x-coordinate.\n" : "";
        deck->log += y.empty() ? "\n  Error> needed nodal y-coordinate.\n" : "";
        block.numbers.push_back(PlainINT(number));
        block.nodes.push_back({PlainDBL(x), PlainDBL(y), PlainDBL(z), 0});
    }
    deck->log += "done with " + std::to_string(block.numbers.size()) + " nodes.\n";
    deck->nodeBlocks.push_back(block);
}

void ReadCellRows(PlainDeck *deck, CellBlock *block) {
    while (NextData(deck)) {
        Join(deck);
        Ints conn;
        for (std::size_t k = 0; k <= block->nNodes; ++k) {
            const std::string field = PlainGrab(&deck->line.text, ',');
            if (field.empty()) {
                deck->log += "\n  Error> Needed to read " + std::to_string(block->nNodes) + " nodes.\n";
            }
            (k == 0 ? block->numbers : conn).push_back(PlainINT(field));
        }
        block->conn.push_back(conn);
    }
}

void ReadCellBlock(PlainDeck *deck) {
    CellBlock block;
    bool named;
    block.name = Parameter(deck, "ELSET", &named);
    deck->log += named ? "" : "  Warning> Cannot find ELSET name for Cells.\n";
    deck->log += "  Reading Elements " + block.name + " ... ";
    if (Refused(deck, {"FILE", "INPUT", "OFFSET", "SOLIDELEMENTNUMBERING"})) {
        return;
    }
    const std::string type = Parameter(deck, "TYPE");
    const auto *known = std::find_if(std::begin(kTypes), std::end(kTypes),
                                     [&type](const ElementType &one) { return type == one.name; });
    if (known == std::end(kTypes)) {
        deck->log += "\n  Error> Unrecognized element type: " + type +
                     ".\n         Supports TETs: C3D4, C3D10;\n"
                     "         Supports TRIs: STRI3, STRI65, CPE3, CPS3, CPE6, CPS6.\n";
        Next(deck);
        return;
    }
    block.type = known->type;
    block.nNodes = known->nNodes;
    ReadCellRows(deck, &block);
    deck->log += "done with " + std::to_string(block.numbers.size()) + " " + type + "s.\n";
    deck->cellBlocks.push_back(block);
}

void ReadSet(PlainDeck *deck, const char *parameter, const char *members, const std::vector<const char *> &words,
             std::vector<NumberSet> *list) {
    NumberSet set;
    set.name = Parameter(deck, parameter);
    deck->log += std::string("  Reading ") + parameter + " " + set.name + " ... ";
    if (Refused(deck, words)) {
        return;
    }
    while (NextData(deck)) {
        for (;;) {
            const std::string field = PlainGrab(&deck->line.text, ',');
            if (field.empty()) {
                break;
            }
            set.numbers.push_back(PlainINT(field));
        }
    }
    deck->log += "done with " + std::to_string(set.numbers.size()) + " " + members + ".\n";
    list->push_back(set);
}

void ReadSurface(PlainDeck *deck) {
    Surface surface;
    surface.name = Parameter(deck, "NAME");
    deck->log += "  Reading Surface " + surface.name + " ... ";
    if (Refused(deck, {"COMBINE", "CROP", "DEFINITION", "FILLETRADIUS", "INTERNAL", "REGIONTYPE", "TRIM", "MAXRATIO",
                       "NOOFFSET", "NOTHICK", "SCALETHICK"})) {
        return;
    }
    bool typed;
    const std::string type = Parameter(deck, "TYPE", &typed);
    if (typed && type != "ELEMENT") {
        deck->log += "\n  Error> only ELEMENT surface type is supported (" + type + ").\n";
        Next(deck);
        return;
    }
    while (NextData(deck)) {
        Join(deck);
        const std::string name = PlainGrab(&deck->line.text, ',');
        const std::string label = PlainGrab(&deck->line.text, ',');
        int number;
        if (name.empty() || label.empty() || std::sscanf(label.c_str(), "%*c%d", &number) != 1) {
            deck->log += "\n  Error> Needed to read both ELSET name & Face/edge id label.\n";
            continue;
        }
        surface.entries.push_back({name, number > INT_MIN ? number - 1 : number});
    }
    deck->log += "done with " + std::to_string(surface.entries.size()) + " elsets.\n";
    deck->surfaces.push_back(surface);
}

bool IsKeyword(const PlainDeck *deck, const char *keyword) {
    return (deck->line.text + ",").find(keyword) != std::string::npos;
}

void ReadSection(PlainDeck *deck) {
    Join(deck);
    if (IsKeyword(deck, "*NODE,")) {
        ReadNodeBlock(deck);
    } else if (IsKeyword(deck, "*ELEMENT,")) {
        ReadCellBlock(deck);
    } else if (IsKeyword(deck, "*NSET,")) {
        ReadSet(deck, "NSET", "nodes", {"ELSET", "GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"}, &deck->nodeSets);
    } else if (IsKeyword(deck, "*ELSET,")) {
        ReadSet(deck, "ELSET", "cells", {"GENERATE", "INSTANCE", "INTERNAL", "UNSORTED"}, &deck->cellSets);
    } else if (IsKeyword(deck, "*SURFACE,")) {
        ReadSurface(deck);
    } else {
        deck->line = PlainLine{};
    }
}

} // namespace

PlainDeck PlainRead(const std::string &text) {
    PlainDeck deck{};
    deck.text = {text, 0, 0};
    while (Next(&deck)) {
        while (deck.line.text[0] == '*') {
            ReadSection(&deck);
        }
    }
    return deck;
}

bool PlainTranslate(const std::string &name, const std::string &deck, bool bVTK, const PlainPut &put,
                    std::string *log) {
    static const char kTime[] = "Elapsed Time: 0.000000 sec.\n";
    PlainDeck read = PlainRead(deck);
    PlainResolve(&read);
    *log += "Reading Abaqus mesh from " + name + " ...\n" + read.log + kTime + "\nTranslating mesh ... \n";
    const PlainMesh mesh = PlainMakeMesh(read, log);
    *log += std::string(kTime) + "\nDumping files ...";
    const bool dumped = PlainDump(read, mesh, bVTK, put, log);
    *log += dumped ? std::string("\n") + kTime : "";
    return dumped;
}
