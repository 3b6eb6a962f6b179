// What an account of a deck can find: every code with its level, text, explanation, example and remedy.
#ifndef KIVOM_ACCOUNT_FINDINGS_H
#define KIVOM_ACCOUNT_FINDINGS_H

#include "deck/finding.h"

#include <functional>
#include <string>
#include <vector>

namespace account {

enum class Level : char { error, warning, note };

// ORDER: rows of kKinds in kinds.cpp.
enum class Code : unsigned char {
    // Sections that are left out
    noGenerate,
    noInput,
    noSystem,
    noFile,
    noOffset,
    noSolidElementNumbering,
    noElset,
    noInstance,
    noInternal,
    noUnsorted,
    noCombine,
    noCrop,
    noDefinition,
    noFilletRadius,
    noRegionType,
    noTrim,
    noMaxRatio,
    noNoOffset,
    noNoThick,
    noScaleThick,
    wordInName,
    surfaceType,
    notMesh,
    // Keyword lines
    misspelt,
    misspeltParameter,
    unknownParameter,
    missingParameter,
    abbreviated,
    abbreviatedParameter,
    nameChanged,
    setOnNode,
    allNodesSet,
    // Lines and numbers
    rowEndComma,
    commaEatsKeyword,
    keywordEndComma,
    commentInside,
    longLine,
    dExponent,
    blanksForCommas,
    wholeNumber,
    badNumber,
    numberRange,
    emptyField,
    missingNumber,
    rowBeforeKeyword,
    strayRow,
    // Other files
    include,
    includeMissing,
    includeCycle,
    includeEncrypted,
    includeElsewhere,
    unreadable,
    // Generated mesh
    noNgen,
    noNfill,
    noElgen,
    noNcopy,
    noElcopy,
    noSystemCard,
    generatorEnds,
    uncertain,
    tooMany,
    // Nodes and elements
    sameShape,
    mustBeSplit,
    cannotBeKept,
    noCell,
    unknownType,
    lineElements,
    edgeLines,
    moreNodes,
    missingNode,
    nodeTwice,
    nodeRedefined,
    nodeRepeated,
    elementTwice,
    turned,
    flat,
    tooSmall,
    mixedDimension,
    outOfPlane,
    unusedNodes,
    // Groups
    noGroupName,
    dividedGroup,
    setWithoutGroup,
    cutLoose,
    nameTwice,
    setRepeated,
    // Sets and surfaces
    setByName,
    noSurface,
    instanceMember,
    setLater,
    setCycle,
    overlapNodes,
    overlapFaces,
    emptySet,
    emptySurface,
    missingMember,
    unusedNodeSet,
    noLabel,
    freeFaces,
    unknownLabel,
    shellSide,
    sectionSet,
    // Parts and instances
    instanceMoved,
    instanceCopied,
    partUnused,
    partHeld,
    numberClash,
    unknownPart,
    scopeEnds,
    // The plain deck
    elementRedefined,
    surfacesUnited,
    splitFails,
    isSplit,
    splitSaved,
    strayTriangles,
    mixedOrders,
    skinSurface,
    skinKnown,
    skinSet,
    facesLost,
    overlapDivided,
    nameReplaced,
    tooManyNumbers,
    scaledTooFar,
    plainDeckWrong,
    // The rest
    emptyDeck,
    differs
};
constexpr int kCodes = static_cast<int>(Code::differs) + 1;

struct FindingKind {
    Code code;
    const char *word; // stable: lower case and dashes
    Level level;
    const char *text; // %1, %2 ... are a finding's words, %n its count; of %(one|many) the first where the count is 1
    const char *explanation;
    const char *example; // a deck that causes this finding and no other; null where one file alone cannot
    const char *remedy;
};

struct Finding {
    Code code;
    deck::Place place;
    std::vector<std::string> words;
    long long count = 1;
};

const FindingKind &KindOf(Code code);

// The code of that word, or false.
bool FindCode(const std::string &word, Code *code);

const char *LevelWord(Level level);

// The text of the kind: fill(c) in the place of "%c".
std::string FilledText(const FindingKind &kind, bool one, const std::function<std::string(char)> &fill);

// The text of the finding, its words and its count in their places.
std::string TextOf(const Finding &finding);

// The code and the words that say of a mesh what the deck's own findings say.
Finding FromDeck(const deck::Finding &finding);

} // namespace account

#endif
