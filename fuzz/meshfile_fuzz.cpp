// The reader of "mesh.input": any bytes at all. What it accepts is, printed back the plain way, the very same bytes;
// what it refuses has a line of the text and a reason.
#include "fuzz/oracle.h"

#include "meshfile/meshfile.h"
#include "tests/support/printmesh.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    const meshfile::Result result = meshfile::ReadText(text);
    if (result.Ok()) {
        Require(PrintMesh(result.mesh) == text, "what is accepted prints back as it was");
        return 0;
    }
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    Require(result.error.line >= 1 && result.error.line <= lines, "a departure stands in a line of the text");
    return 0;
}
