// Decks as texts for the tests of deck/: read from memory, assembled, and asked by name.
#ifndef KIVOM_TESTS_DECKS_H
#define KIVOM_TESTS_DECKS_H

#include "deck/assemble.h"
#include "tests/support/fakesystem.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace decks {

using Files = std::map<std::string, std::string>;
using Ints = std::vector<int>;
using Found = std::vector<std::pair<deck::Code, int>>; // code and line

struct Reading {
    deck::Deck deck;
    deck::Mesh mesh;

    // Codes and lines of all findings, those of the deck first.
    Found Findings() const {
        Found found = Of(deck.findings);
        const Found more = Of(mesh.findings);
        found.insert(found.end(), more.begin(), more.end());
        return found;
    }
    Found Remarks() const {
        return Of(deck.remarks);
    }
    static Found Of(const std::vector<deck::Finding> &list) {
        Found found;
        for (const deck::Finding &finding : list) {
            found.push_back({finding.code, finding.place.line});
        }
        return found;
    }

    // Numbers of a set's members; {-1} where there is no such set.
    Ints Nodes(const std::string &name) const {
        return Members(mesh.nodeSets, mesh.nodeNumber, name);
    }
    Ints Elements(const std::string &name) const {
        return Members(mesh.elementSets, mesh.elementNumber, name);
    }
    static Ints Members(const std::vector<deck::MeshSet> &sets, const Ints &numbers, const std::string &name) {
        for (const deck::MeshSet &set : sets) {
            if (set.name == name) {
                Ints members;
                for (const int member : set.members) {
                    members.push_back(numbers[static_cast<std::size_t>(member)]);
                }
                return members;
            }
        }
        return {-1};
    }

    // Faces as element number * 10 + label number (S1 is 1; SPOS is 9, SNEG 8, a shell without label 7).
    Ints Faces(const std::string &name) const {
        for (const deck::MeshSurface &surface : mesh.surfaces) {
            if (surface.name == name) {
                Ints faces;
                for (const deck::Face &face : surface.faces) {
                    const int side = face.side < 0 ? 10 + face.side : face.side + 1;
                    faces.push_back(10 * mesh.elementNumber[static_cast<std::size_t>(face.element)] + side);
                }
                return faces;
            }
        }
        return {-1};
    }

    // Coordinates of the n-th node of that number.
    std::vector<double> At(int number, int n = 1) const {
        for (std::size_t i = 0; i < mesh.nodeNumber.size(); ++i) {
            if (mesh.nodeNumber[i] == number && --n == 0) {
                return {mesh.x[i], mesh.y[i], mesh.z[i]};
            }
        }
        return {};
    }

    // Node numbers of the element of that number; 0 for a node that is not there.
    Ints Connectivity(int number) const {
        for (std::size_t i = 0; i < mesh.elementNumber.size(); ++i) {
            if (mesh.elementNumber[i] == number) {
                const int element = static_cast<int>(i);
                const deck::ElementRun &run =
                    mesh.elementRuns[static_cast<std::size_t>(deck::RunOfElement(mesh, element))];
                const int *row = deck::NodesOfElement(mesh, run, element);
                Ints nodes;
                for (int k = 0; k < run.width; ++k) {
                    nodes.push_back(row[k] < 0 ? 0 : mesh.nodeNumber[static_cast<std::size_t>(row[k])]);
                }
                return nodes;
            }
        }
        return {-1};
    }

    // The group's name, element by element.
    std::vector<std::string> Groups() const {
        std::vector<std::string> names;
        for (const int group : mesh.group) {
            names.push_back(mesh.groups[static_cast<std::size_t>(group)].name);
        }
        return names;
    }
};

// The deck of that text, in the file "deck.inp" beside the other files.
inline Reading Read(const std::string &text, const Files &files = {}, const std::string &path = "deck.inp") {
    fake::Reset();
    fake::PutFile(path, text);
    for (const auto &file : files) {
        fake::PutFile(file.first, file.second);
    }
    Reading reading;
    reading.deck = deck::ReadDeck(path);
    reading.mesh = deck::Assemble(reading.deck);
    EXPECT_EQ(fake::FilesOpen(), 0);
    return reading;
}

// Nodes 1 ... n on the x axis: node i at (i, 0, 0).
inline std::string NodesTo(int n) {
    std::string text = "*NODE\n";
    for (int i = 1; i <= n; ++i) {
        text += std::to_string(i) + ", " + std::to_string(i) + "., 0., 0.\n";
    }
    return text;
}

} // namespace decks

#endif
