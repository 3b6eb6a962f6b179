// The deck from its first card to its last: scopes, and which reader takes which section.
#include "deck/building.h"

namespace deck {

namespace {

// Which scopes are open: a part or an instance, and the assembly around the latter.
struct Open {
    int outer = -1; // card that began the part or instance; -1 at the root
    int assembly = -1;
};

void EndScope(Building *b, Open *open) {
    std::vector<Scope> &scopes = b->deck->scopes;
    const Scope &scope = b->Here();
    if (scope.kind == ScopeKind::instance && scope.nodes.sections.empty() && scope.elements.sections.empty() &&
        scope.nodeSets.sets.empty() && scope.elementSets.sets.empty() && scope.surfaces.surfaces.empty() &&
        scope.assignments.empty()) { // nothing of its own
        b->deck->instances.back().own = -1;
        scopes.pop_back();
    }
    b->scope = 0;
    b->hasSystem = false; // it ends with the part
    open->outer = -1;
}

// A scope may not begin in another: that one is taken to end here.
void RefuseInside(Building *b, const Card &card, Open *open) {
    if (open->outer >= 0) {
        b->cards.Find(Code::scopeEnd, card.place, {card.name, b->At(open->outer).name});
        EndScope(b, open);
    }
}

void EndOf(Building *b, const Card &card, ScopeKind kind, Open *open) {
    if (open->outer < 0 || b->Here().kind != kind) {
        b->cards.Find(Code::scopeEnd, card.place, {card.name, open->outer < 0 ? "" : b->At(open->outer).name});
        return;
    }
    EndScope(b, open);
}

void TakeScope(Building *b, int at, Open *open) {
    const Card card = b->At(at);
    switch (card.keyword) {
    case Keyword::part:
        RefuseInside(b, card, open);
        BeginPart(b, at);
        open->outer = b->scope == 0 ? -1 : at;
        break;
    case Keyword::instance:
        RefuseInside(b, card, open);
        BeginInstance(b, at);
        open->outer = b->scope == 0 ? -1 : at;
        break;
    case Keyword::endPart:
        EndOf(b, card, ScopeKind::part, open);
        break;
    case Keyword::endInstance:
        EndOf(b, card, ScopeKind::instance, open);
        break;
    case Keyword::assembly:
        RefuseInside(b, card, open);
        open->assembly = at;
        break;
    default:
        if (open->assembly < 0) {
            b->cards.Find(Code::scopeEnd, card.place, {card.name, ""});
        }
        RefuseInside(b, card, open);
        open->assembly = -1;
    }
}

void ReadAssignment(Building *b, int card) {
    b->Here().assignments.push_back({card, ValueOf(b->At(card), "ELSET")});
}

void TakeSection(Building *b, int card) {
    switch (b->At(card).keyword) {
    case Keyword::node:
        return ReadNodes(b, card);
    case Keyword::element:
        return ReadElements(b, card);
    case Keyword::nset:
        return ReadSet(b, card, true);
    case Keyword::elset:
        return ReadSet(b, card, false);
    case Keyword::surface:
        return ReadSurface(b, card);
    case Keyword::system:
        return ReadSystem(b, card);
    case Keyword::ngen:
        return GenerateLine(b, card);
    case Keyword::nfill:
        return GenerateFill(b, card);
    case Keyword::ncopy:
        return CopyNodes(b, card);
    case Keyword::elgen:
        return GenerateElements(b, card);
    case Keyword::elcopy:
        return CopyElements(b, card);
    case Keyword::section:
        return ReadAssignment(b, card);
    case Keyword::nmap:
    case Keyword::parameter:
        return b->cards.Find(Code::uncertain, b->At(card).place, {b->At(card).name});
    default: // TRANSFORM leaves coordinates alone
        return;
    }
}

void TakeCard(Building *b, Card *card, Open *open) {
    const Keyword keyword = card->keyword;
    if (keyword == Keyword::other || (keyword == Keyword::section && FindParameter(*card, "ELSET") == nullptr)) {
        if (!card->misspelt) {
            ++b->deck->otherKeywords[Clip(card->name)];
        }
        return;
    }
    const int at = static_cast<int>(b->deck->cards.size());
    b->deck->cards.push_back(std::move(*card));
    if (keyword >= Keyword::part && keyword <= Keyword::endAssembly) {
        TakeScope(b, at, open);
    } else {
        TakeSection(b, at);
    }
}

void FindOpenScopes(Building *b, const Open &open) {
    for (const int card : {open.outer, open.assembly}) {
        if (card >= 0) {
            b->cards.Find(Code::scopeOpen, b->At(card).place, {b->At(card).name});
        }
    }
}

bool MayAddScope(Building *b, int card) {
    const std::size_t parts = b->deck->scopes.size() - 1;
    const std::size_t instances = b->deck->instances.size();
    const std::size_t count = b->At(card).keyword == Keyword::part ? parts : instances;
    const std::size_t most = b->At(card).keyword == Keyword::part ? 2 * kMostInstances : kMostInstances;
    if (count >= most) {
        b->cards.Find(Code::tooMany, b->At(card).place, {b->At(card).name, std::to_string(count + 1)});
    }
    return count < most;
}

int AddScope(Building *b, ScopeKind kind, int card, const Parameter &name) {
    Scope scope;
    scope.kind = kind;
    scope.name = name.value;
    scope.written = name.text;
    scope.card = card;
    b->deck->scopes.push_back(std::move(scope));
    b->scope = static_cast<int>(b->deck->scopes.size()) - 1;
    b->hasSystem = false;
    return b->scope;
}

// NAME= of a part or instance; one without it has an empty name, and a finding.
Parameter NameOf(Building *b, int card) {
    const Parameter *name = FindParameter(b->At(card), "NAME");
    if (name == nullptr || name->value.empty()) {
        b->cards.Find(Code::missingParameter, b->At(card).place, {"NAME", b->At(card).name});
        return {};
    }
    return *name;
}

// Up to two rows of an instance: the shift; two points of an axis and an angle.
void ReadPlacing(Building *b, Instance *instance) {
    Line line;
    double values[2][7] = {};
    for (int row = 0; b->cards.NextRow(&line); ++row) {
        const std::vector<Field> fields = b->cards.Fields(line);
        const std::size_t most = row == 0 ? 3 : 7;
        if (row > 1 || fields.size() > most) {
            b->cards.Find(Code::strayRow, {line.file, line.number, 1}, {"INSTANCE"});
            continue;
        }
        for (std::size_t i = 0; i < most; ++i) {
            RealField(b, line, fields, i, &values[row][i]);
        }
    }
    for (std::size_t i = 0; i < 3; ++i) {
        instance->shift[i] = values[0][i];
        instance->a[i] = values[1][i];
        instance->b[i] = values[1][3 + i];
        instance->moved = instance->moved || values[0][i] != 0;
    }
    instance->degrees = values[1][6];
    Turn turn;
    instance->turned = instance->degrees != 0;
    if (instance->turned && !MakeTurn(instance->a, instance->b, instance->degrees, &turn)) {
        b->cards.Find(Code::uncertain, b->At(instance->card).place, {"INSTANCE turned about an axis of no length"});
        instance->turned = false;
    }
}

} // namespace

void BeginPart(Building *b, int card) {
    if (!MayAddScope(b, card)) {
        return;
    }
    const Parameter name = NameOf(b, card);
    AddScope(b, ScopeKind::part, card, name);
    if (!b->partByName.emplace(name.value, b->scope).second) {
        b->cards.Find(Code::instanceTwice, b->At(card).place, {Clip(name.text)});
    }
}

void BeginInstance(Building *b, int card) {
    if (FindParameter(b->At(card), "LIBRARY") != nullptr || FindParameter(b->At(card), "INSTANCE") != nullptr) {
        b->cards.Find(Code::notMesh, b->At(card).place, {"INSTANCE, LIBRARY"});
    }
    if (!MayAddScope(b, card)) {
        return;
    }
    const Parameter name = NameOf(b, card);
    Instance instance;
    instance.name = name.value;
    instance.written = name.text;
    instance.card = card;
    const Parameter *part = FindParameter(b->At(card), "PART");
    const auto found = b->partByName.find(part == nullptr ? "" : part->value);
    if (part != nullptr && found == b->partByName.end()) {
        b->cards.Find(Code::unknownPart, {b->At(card).place.file, part->line, part->column},
                      {Clip(part->text), Clip(name.text)});
    } else if (part != nullptr) {
        instance.part = found->second;
    }
    if (!b->instanceByName.emplace(name.value, static_cast<int>(b->deck->instances.size())).second) {
        b->cards.Find(Code::instanceTwice, b->At(card).place, {Clip(name.text)});
    }
    ReadPlacing(b, &instance);
    instance.own = AddScope(b, ScopeKind::instance, card, name);
    b->deck->instances.push_back(std::move(instance));
}

Deck ReadDeck(const std::string &path, const Limits &limits) {
    Deck deck;
    deck.scopes.emplace_back();
    Building building(&deck, limits);
    if (!building.cards.Open(path)) {
        return deck;
    }
    Open open;
    Card card;
    while (building.cards.NextCard(&card)) {
        TakeCard(&building, &card, &open);
    }
    FindOpenScopes(&building, open);
    if (open.outer >= 0) {
        EndScope(&building, &open);
    }
    return deck;
}

} // namespace deck
