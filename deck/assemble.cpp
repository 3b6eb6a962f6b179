// The steps of assembling, and those that concern nodes and elements.
#include "deck/assembling.h"

#include "deck/placement.h"

#include <algorithm>
#include <charconv>

namespace deck {

namespace {

// Rows, in table order, whose number is given again behind them.
std::vector<char> RepeatedRows(const std::vector<int> &number) {
    std::vector<char> repeated;
    const std::vector<int> order = AscendingOrder(number);
    for (std::size_t i = 1; i < order.size(); ++i) {
        const auto before = static_cast<std::size_t>(order[i - 1]);
        if (number[before] == number[static_cast<std::size_t>(order[i])]) {
            repeated.resize(number.size(), 0);
            repeated[before] = 1;
        }
    }
    return repeated;
}

bool AreAlike(const NodeTable &nodes, std::size_t i, std::size_t j) {
    return nodes.x[i] == nodes.x[j] && nodes.y[i] == nodes.y[j] && nodes.z[i] == nodes.z[j];
}

template <class Section> int FileOfRow(const std::vector<Section> &sections, std::size_t row) {
    auto behind = std::upper_bound(sections.begin(), sections.end(), row,
                                   [](std::size_t at, const Section &s) { return at < s.first; });
    do { // empty sections begin where the one before them ends
        --behind;
    } while (behind->count == 0);
    return behind->file;
}

void FindRepeatedNodes(Assembling *a, const NodeTable &nodes) {
    const std::vector<int> order = AscendingOrder(nodes.number);
    for (std::size_t i = 1; i < order.size(); ++i) {
        const auto before = static_cast<std::size_t>(order[i - 1]);
        const auto again = static_cast<std::size_t>(order[i]);
        if (nodes.number[before] == nodes.number[again]) {
            a->Find(AreAlike(nodes, before, again) ? Code::nodeAgain : Code::nodeTwice,
                    {FileOfRow(nodes.sections, again), nodes.line[again], 1}, {std::to_string(nodes.number[again])});
        }
    }
}

void FindRepeatedElements(Assembling *a, const ElementTable &elements) {
    const std::vector<int> order = AscendingOrder(elements.number);
    for (std::size_t i = 1; i < order.size(); ++i) {
        const auto again = static_cast<std::size_t>(order[i]);
        if (elements.number[static_cast<std::size_t>(order[i - 1])] == elements.number[again]) {
            a->Find(Code::elementTwice, {FileOfRow(elements.sections, again), elements.line[again], 1},
                    {std::to_string(elements.number[again])});
        }
    }
}

template <class T> void Keep(std::vector<T> *column, const std::vector<char> &repeated) {
    std::size_t to = 0;
    for (std::size_t i = 0; i < column->size(); ++i) {
        if (repeated[i] == 0) {
            (*column)[to++] = (*column)[i];
        }
    }
    column->resize(to);
}

// Counts the rows of each section anew and lists those that go.
template <class Section>
void KeepSections(std::vector<Section> *sections, const std::vector<int> &number, const std::vector<char> &repeated,
                  std::vector<Dropped> *dropped) {
    std::size_t kept = 0;
    for (std::size_t s = 0; s < sections->size(); ++s) {
        Section &section = (*sections)[s];
        const std::size_t first = section.first;
        const std::size_t end = first + section.count;
        section.first = kept;
        for (std::size_t i = first; i < end; ++i) {
            if (repeated[i] != 0) {
                dropped->push_back({static_cast<int>(s), number[i]});
            } else {
                ++kept;
            }
        }
        section.count = kept - section.first;
    }
}

void DropNodes(Assembling *a, NodeTable *nodes, std::vector<Dropped> *dropped) {
    const std::vector<char> repeated = RepeatedRows(nodes->number);
    if (repeated.empty()) {
        return;
    }
    FindRepeatedNodes(a, *nodes);
    KeepSections(&nodes->sections, nodes->number, repeated, dropped);
    Keep(&nodes->number, repeated);
    Keep(&nodes->x, repeated);
    Keep(&nodes->y, repeated);
    Keep(&nodes->z, repeated);
    Keep(&nodes->line, repeated);
}

void KeepConnectivity(ElementTable *elements, const std::vector<char> &repeated) {
    std::size_t to = 0;
    for (ElementSection &section : elements->sections) {
        const auto width = static_cast<std::size_t>(section.width);
        const std::size_t from = section.firstNode;
        section.firstNode = to;
        for (std::size_t r = 0; r < section.count; ++r) {
            for (std::size_t i = 0; repeated[section.first + r] == 0 && i < width; ++i) {
                elements->nodes[to++] = elements->nodes[from + r * width + i];
            }
        }
    }
    elements->nodes.resize(to);
}

void DropElements(Assembling *a, ElementTable *elements, std::vector<Dropped> *dropped) {
    const std::vector<char> repeated = RepeatedRows(elements->number);
    if (repeated.empty()) {
        return;
    }
    FindRepeatedElements(a, *elements);
    KeepConnectivity(elements, repeated);
    KeepSections(&elements->sections, elements->number, repeated, dropped);
    Keep(&elements->number, repeated);
    Keep(&elements->line, repeated);
}

// Who stands where: instances, or parts for themselves, and the root last.
void ListPlaced(Assembling *a) {
    const Deck &deck = *a->deck;
    std::vector<Placed> &placed = a->mesh->placed;
    std::vector<char> used(deck.scopes.size(), 0);
    for (std::size_t i = 0; i < deck.instances.size(); ++i) {
        const Instance &instance = deck.instances[i];
        placed.push_back({instance.name, static_cast<int>(i), instance.part, instance.own});
        if (instance.part >= 0) {
            used[static_cast<std::size_t>(instance.part)] = 1;
        }
    }
    for (std::size_t s = 1; s < deck.scopes.size(); ++s) {
        const Scope &scope = deck.scopes[s];
        if (scope.kind != ScopeKind::part || used[s] != 0) {
            continue;
        }
        if (deck.instances.empty()) {
            placed.push_back({scope.name, -1, static_cast<int>(s), -1});
        } else {
            a->Find(Code::partUnused, deck.cards[static_cast<std::size_t>(scope.card)].place, {Clip(scope.written)});
        }
    }
    a->nNamed = placed.size();
    placed.push_back({"", -1, 0, -1});
    a->names.resize(placed.size());
    a->slots.resize(placed.size());
    for (std::size_t i = 0; i < a->nNamed; ++i) {
        a->placedByName.emplace(placed[i].name, static_cast<int>(i));
    }
}

// The column of the only table that has rows moves; of several each is copied.
template <class T> void Put(std::vector<T> *to, std::vector<T> *from, bool move) {
    if (move && to->empty()) {
        to->swap(*from);
    } else {
        to->insert(to->end(), from->begin(), from->end());
    }
}

void Move(const Instance &instance, Mesh *mesh, std::size_t first) {
    Turn turn;
    const bool turned = instance.turned && MakeTurn(instance.a, instance.b, instance.degrees, &turn);
    for (std::size_t i = first; i < mesh->x.size() && (instance.moved || turned); ++i) {
        Point p{mesh->x[i], mesh->y[i], mesh->z[i]};
        for (std::size_t d = 0; d < 3; ++d) {
            p[d] += instance.shift[d];
        }
        p = turned ? Turned(turn, p) : p;
        mesh->x[i] = p[0];
        mesh->y[i] = p[1];
        mesh->z[i] = p[2];
    }
}

void PlaceNodes(Assembling *a, int placed, int scope, bool move) {
    NodeTable &nodes = a->At(scope).nodes;
    Mesh &mesh = *a->mesh;
    const std::size_t first = mesh.nodeNumber.size();
    for (std::size_t s = 0; s < nodes.sections.size(); ++s) {
        const NodeSection &section = nodes.sections[s];
        if (section.count > 0) {
            mesh.nodeRuns.push_back({placed, scope, static_cast<int>(s), first + section.first, section.count});
        }
    }
    Put(&mesh.nodeNumber, &nodes.number, move);
    Put(&mesh.x, &nodes.x, move);
    Put(&mesh.y, &nodes.y, move);
    Put(&mesh.z, &nodes.z, move);
    Put(&mesh.nodeLine, &nodes.line, move);
    const int instance = mesh.placed[static_cast<std::size_t>(placed)].instance;
    if (instance >= 0) {
        Move(a->deck->instances[static_cast<std::size_t>(instance)], &mesh, first);
    }
}

void PlaceElements(Assembling *a, int placed, int scope, bool move) {
    ElementTable &elements = a->At(scope).elements;
    Mesh &mesh = *a->mesh;
    const std::size_t first = mesh.elementNumber.size();
    const std::size_t firstNode = mesh.nodes.size();
    for (std::size_t s = 0; s < elements.sections.size(); ++s) {
        const ElementSection &section = elements.sections[s];
        if (section.count > 0) {
            mesh.elementRuns.push_back({placed, scope, static_cast<int>(s), section.type, section.width,
                                        first + section.first, section.count, firstNode + section.firstNode});
        }
    }
    Put(&mesh.elementNumber, &elements.number, move);
    Put(&mesh.elementLine, &elements.line, move);
    Put(&mesh.nodes, &elements.nodes, move);
}

// Tables that have rows, each as often as it is placed.
std::size_t CountChunks(const Assembling &a, bool ofNodes) {
    std::size_t n = 0;
    for (const Placed &placed : a.mesh->placed) {
        for (const int scope : {placed.part, placed.own}) {
            const bool some = scope >= 0 && !(ofNodes ? a.deck->scopes[static_cast<std::size_t>(scope)].nodes.number
                                                      : a.deck->scopes[static_cast<std::size_t>(scope)].elements.number)
                                                 .empty();
            n += some ? 1 : 0;
        }
    }
    return n;
}

void PlaceOne(Assembling *a, int at, bool moveNodes, bool moveElements) {
    Mesh &mesh = *a->mesh;
    Placed &placed = mesh.placed[static_cast<std::size_t>(at)];
    placed.firstNode = mesh.nodeNumber.size();
    placed.firstElement = mesh.elementNumber.size();
    for (const int scope : {placed.part, placed.own}) {
        if (scope >= 0) {
            a->slots[static_cast<std::size_t>(at)].push_back(
                {scope, mesh.nodeNumber.size(), mesh.elementNumber.size()});
            PlaceNodes(a, at, scope, moveNodes);
            PlaceElements(a, at, scope, moveElements);
        }
    }
    placed.nNodes = mesh.nodeNumber.size() - placed.firstNode;
    placed.nElements = mesh.elementNumber.size() - placed.firstElement;
}

// What a scope brings to each place where it is put.
struct Load {
    std::size_t nodes = 0;
    std::size_t elements = 0;
    std::size_t entries = 0; // rows of sets and surfaces
    std::size_t records = 0; // sections, sets, surfaces, assignments, and their names
};

template <class List> std::size_t CountRecords(const List &named) {
    constexpr std::size_t kNameOfRecord = 100; // characters that weigh as much
    std::size_t n = named.size();
    for (const auto &one : named) {
        n += one.name.size() / kNameOfRecord;
    }
    return n;
}

Load LoadOf(const Scope &scope) {
    const std::size_t entries =
        scope.nodeSets.entries.size() + scope.elementSets.entries.size() + scope.surfaces.rows.size();
    const std::size_t sections = scope.nodes.sections.size() + scope.elements.sections.size() +
                                 scope.nodeSets.sections.size() + scope.elementSets.sections.size() +
                                 scope.surfaces.sections.size() + scope.assignments.size();
    const std::size_t named = CountRecords(scope.nodeSets.sets) + CountRecords(scope.elementSets.sets) +
                              CountRecords(scope.surfaces.surfaces);
    return {scope.nodes.number.size(), scope.elements.number.size(), entries, sections + named};
}

// Instances that would make a mesh out of proportion to the deck, whose own mesh is always taken.
bool IsTooMuch(const Assembling &a) {
    constexpr std::size_t kMost = kMostInRange;
    constexpr std::size_t kMostRecords = kMost / 25; // each is some hundred bytes
    if (a.nNamed < 2) {
        return false;
    }
    std::vector<Load> loads;
    for (const Scope &scope : a.deck->scopes) {
        loads.push_back(LoadOf(scope));
    }
    Load all;
    for (const Placed &placed : a.mesh->placed) {
        for (const int scope : {placed.part, placed.own}) {
            const Load load = scope < 0 ? Load{} : loads[static_cast<std::size_t>(scope)];
            all.nodes += load.nodes;
            all.elements += load.elements;
            all.entries += load.entries;
            all.records += load.records;
        }
    }
    return all.nodes > kMost || all.elements > kMost || all.entries > kMost || all.records > kMostRecords;
}

void ConnectRun(Assembling *a, const ElementRun &run) {
    Mesh &mesh = *a->mesh;
    const auto width = static_cast<std::size_t>(run.width);
    const std::vector<Slot> &slots = a->slots[static_cast<std::size_t>(run.placed)];
    const NumberIndex &index = a->nodeIndex[static_cast<std::size_t>(slots[0].scope)];
    const int first = slots.size() == 1 ? static_cast<int>(slots[0].firstNode) : -1; // the ordinary case: one table
    long long nMissing = 0;
    std::size_t firstMissing = 0;
    int missingNode = 0;
    for (std::size_t r = 0; r < run.count; ++r) {
        int *row = mesh.nodes.data() + run.firstNode + r * width;
        int missing = 0;
        for (std::size_t i = 0; i < width; ++i) {
            const int number = row[i];
            const int at = number == 0 ? -1 : first < 0 ? FindNode(*a, run.placed, number) : index.Find(number);
            row[i] = at < 0 || first < 0 ? at : first + at;
            missing = row[i] < 0 && number != 0 && missing == 0 ? number : missing;
        }
        if (missing != 0 && nMissing++ == 0) {
            firstMissing = run.first + r;
            missingNode = missing;
        }
    }
    if (nMissing > 0) {
        const int element = static_cast<int>(firstMissing);
        a->Find(Code::missingNode, PlaceOfElement(*a->deck, mesh, element),
                {std::to_string(mesh.elementNumber[firstMissing]), std::to_string(missingNode)}, nMissing);
    }
}

void FindDimension(Assembling *a) {
    Mesh &mesh = *a->mesh;
    for (const ElementRun &run : mesh.elementRuns) {
        const int d = DimensionOf(a->deck->types[static_cast<std::size_t>(run.type)].type.shape);
        mesh.dimension = d > 1 ? std::max(mesh.dimension, d) : mesh.dimension;
    }
    if (mesh.nodeNumber.empty() && mesh.elementNumber.empty() && a->deck->readable) {
        a->Find(Code::emptyDeck, {0, 0, 0}, {});
    }
}

} // namespace

void SortOnce(std::vector<int> *list) {
    if (std::adjacent_find(list->begin(), list->end(), [](int p, int q) { return p >= q; }) != list->end()) {
        std::sort(list->begin(), list->end());
        list->erase(std::unique(list->begin(), list->end()), list->end());
    }
}

void AddNodesOfElement(const Mesh &mesh, int element, std::vector<int> *nodes) {
    const ElementRun &run = mesh.elementRuns[static_cast<std::size_t>(RunOfElement(mesh, element))];
    const int *row = NodesOfElement(mesh, run, element);
    for (int i = 0; i < run.width; ++i) {
        if (row[i] >= 0) {
            nodes->push_back(row[i]);
        }
    }
}

int FindNode(const Assembling &a, int placed, int number) {
    const std::vector<Slot> &slots = a.slots[static_cast<std::size_t>(placed)];
    for (auto slot = slots.rbegin(); slot != slots.rend(); ++slot) { // an instance's own come before its part's
        const int at = a.nodeIndex[static_cast<std::size_t>(slot->scope)].Find(number);
        if (at >= 0) {
            return static_cast<int>(slot->firstNode) + at;
        }
    }
    return -1;
}

int FindElement(const Assembling &a, int placed, int number) {
    const std::vector<Slot> &slots = a.slots[static_cast<std::size_t>(placed)];
    for (auto slot = slots.rbegin(); slot != slots.rend(); ++slot) {
        const int at = a.elementIndex[static_cast<std::size_t>(slot->scope)].Find(number);
        if (at >= 0) {
            return static_cast<int>(slot->firstElement) + at;
        }
    }
    return -1;
}

Named FindNamed(const Assembling &a, int placed, NameMap PlacedNames::*kind, const std::string &name) {
    const NameMap &own = a.names[static_cast<std::size_t>(placed)].*kind;
    const auto found = own.find(name);
    if (found != own.end()) {
        return {placed, found->second, 0};
    }
    constexpr std::size_t kMostDots = 16; // places where a name is cut; no instance's name has as many
    std::size_t dot = placed == a.Root() ? name.find('.') : std::string::npos;
    for (std::size_t i = 0; dot != std::string::npos && i < kMostDots; ++i, dot = name.find('.', dot + 1)) {
        const std::string before = name.substr(0, dot);
        const std::string behind = name.substr(dot + 1);
        const auto instance = a.placedByName.find(before);
        if (instance == a.placedByName.end()) {
            if (before == "ASSEMBLY" && behind.compare(0, dot + 1, "ASSEMBLY.") != 0) { // as reports write it
                return FindNamed(a, placed, kind, behind);
            }
            continue;
        }
        const NameMap &names = a.names[static_cast<std::size_t>(instance->second)].*kind;
        const auto inside = names.find(behind);
        if (inside != names.end()) {
            return {instance->second, inside->second, 0};
        }
        int number = 0;
        const char *end = behind.data() + behind.size();
        if (std::from_chars(behind.data(), end, number).ptr == end && number > 0) {
            return {instance->second, -1, number};
        }
    }
    return {};
}

std::string FullName(const Assembling &a, int placed, const std::string &plain, NameMap PlacedNames::*kind) {
    if (placed == a.Root()) {
        return plain;
    }
    if (a.nNamed == 1 && (a.names.back().*kind).count(plain) == 0) {
        return plain;
    }
    constexpr const char *kLoose = "C_"; // cuts a group loose, so it may neither come nor go with the instance's name
    const std::string &instance = a.mesh->placed[static_cast<std::size_t>(placed)].name;
    if (plain.compare(0, 2, kLoose) == 0) {
        return kLoose + instance + "." + plain.substr(2);
    }
    return (instance.compare(0, 2, kLoose) == 0 ? "_" : "") + instance + "." + plain;
}

void DropRepeated(Assembling *a) {
    const std::size_t n = a->deck->scopes.size();
    a->droppedNodes.resize(n);
    a->droppedElements.resize(n);
    for (std::size_t s = 0; s < n; ++s) {
        DropNodes(a, &a->deck->scopes[s].nodes, &a->droppedNodes[s]);
        DropElements(a, &a->deck->scopes[s].elements, &a->droppedElements[s]);
        a->nodeIndex.emplace_back();
        a->nodeIndex.back().Build(a->deck->scopes[s].nodes.number);
        a->elementIndex.emplace_back();
        a->elementIndex.back().Build(a->deck->scopes[s].elements.number);
    }
}

void PlaceParts(Assembling *a) {
    ListPlaced(a);
    if (IsTooMuch(*a)) {
        a->Find(Code::tooMany, {0, 0, 0}, {"INSTANCE", std::to_string(kMostInRange)});
        a->mesh->placed.erase(a->mesh->placed.begin(), a->mesh->placed.end() - 1);
        a->names.resize(1);
        a->slots.resize(1);
        a->placedByName.clear();
        a->nNamed = 0;
    }
    const bool moveNodes = CountChunks(*a, true) == 1;
    const bool moveElements = CountChunks(*a, false) == 1;
    for (int p = 0; p <= a->Root(); ++p) {
        PlaceOne(a, p, moveNodes, moveElements);
    }
}

void ConnectElements(Assembling *a) {
    for (const ElementRun &run : a->mesh->elementRuns) {
        ConnectRun(a, run);
    }
    FindDimension(a);
}

int RunOfNode(const Mesh &mesh, int node) {
    const auto behind = std::upper_bound(mesh.nodeRuns.begin(), mesh.nodeRuns.end(), static_cast<std::size_t>(node),
                                         [](std::size_t at, const NodeRun &run) { return at < run.first; });
    return static_cast<int>(behind - mesh.nodeRuns.begin()) - 1;
}

int RunOfElement(const Mesh &mesh, int element) {
    const auto behind =
        std::upper_bound(mesh.elementRuns.begin(), mesh.elementRuns.end(), static_cast<std::size_t>(element),
                         [](std::size_t at, const ElementRun &run) { return at < run.first; });
    return static_cast<int>(behind - mesh.elementRuns.begin()) - 1;
}

const int *NodesOfElement(const Mesh &mesh, const ElementRun &run, int element) {
    return mesh.nodes.data() + run.firstNode +
           (static_cast<std::size_t>(element) - run.first) * static_cast<std::size_t>(run.width);
}

Place PlaceOfNode(const Deck &deck, const Mesh &mesh, int node) {
    const NodeRun &run = mesh.nodeRuns[static_cast<std::size_t>(RunOfNode(mesh, node))];
    const NodeTable &nodes = deck.scopes[static_cast<std::size_t>(run.scope)].nodes;
    return {nodes.sections[static_cast<std::size_t>(run.section)].file, mesh.nodeLine[static_cast<std::size_t>(node)],
            1};
}

Place PlaceOfElement(const Deck &deck, const Mesh &mesh, int element) {
    const ElementRun &run = mesh.elementRuns[static_cast<std::size_t>(RunOfElement(mesh, element))];
    const ElementTable &elements = deck.scopes[static_cast<std::size_t>(run.scope)].elements;
    return {elements.sections[static_cast<std::size_t>(run.section)].file,
            mesh.elementLine[static_cast<std::size_t>(element)], 1};
}

Mesh Assemble(Deck &deck) {
    Mesh mesh;
    Assembling assembling(&deck, &mesh);
    DropRepeated(&assembling);
    PlaceParts(&assembling);
    ConnectElements(&assembling);
    AssembleElementSets(&assembling);
    AssembleSurfaces(&assembling);
    AssembleNodeSets(&assembling);
    AssembleGroups(&assembling);
    for (Scope &scope : deck.scopes) { // the mesh holds them now
        scope.nodes = {{}, {}, {}, {}, {}, std::move(scope.nodes.sections)};
        scope.elements = {{}, {}, {}, std::move(scope.elements.sections)};
    }
    return mesh;
}

} // namespace deck
