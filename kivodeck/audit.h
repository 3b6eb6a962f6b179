// The verb audit: a mesh file read and judged, and what is told of it.
#ifndef KIVOM_KIVODECK_AUDIT_H
#define KIVOM_KIVODECK_AUDIT_H

#include "audit/audit.h"

#include <string>
#include <utility>
#include <vector>

namespace kivodeck {

struct AuditOptions {
    std::string mesh = "mesh.input";
    std::string format = "text"; // or "json"
    std::string vtk;             // file for what fails; empty: none
    std::vector<std::string> limits;
    bool counts = false; // groups are counted, nothing is judged
};

struct AuditRun {
    int status = 0;        // of the process
    std::string report;    // for standard output
    std::string complaint; // for standard error; empty: none
};

AuditRun RunAudit(const AuditOptions &options);

// Kind and name.
using GroupName = std::pair<audit::Subject, std::string>;

// A mesh file in short.
struct MeshInShort {
    std::vector<std::string> failed; // checks; "unreadable" where it is no mesh file
    audit::Counts counts;
    std::vector<GroupName> empty; // groups without members
};

MeshInShort LookAtMesh(const std::string &path);

// Reports (auditreport.cpp) ------------------------------------------------------------------------------------------

std::string AuditText(const std::string &path, const meshfile::Mesh &mesh, const audit::Verdict &verdict, bool colour);
std::string AuditJson(const std::string &path, const meshfile::Mesh &mesh, const audit::Verdict &verdict);

// Sizes, and one line a group with the number of its entries.
std::string CountsText(const meshfile::Mesh &mesh);
std::string CountsJson(const std::string &path, const meshfile::Mesh &mesh);

// The object of a file that is no mesh file, or of one that cannot be written.
std::string AuditFailure(const std::string &path, const std::string &code, long long line, const std::string &text);

// The failing cells, faces and nodes as legacy VTK text (auditvtk.cpp): tagged with the number of the check, counted
// from 1 in the order of `explain`, and with their index in the mesh. One that fails several checks is there for each.
std::string AuditVtk(const meshfile::Mesh &mesh, const audit::Verdict &verdict);

// Checks and measures, as `explain` shows them. False: there is none of that name. Formats: text, json, man, markdown.
bool ExplainAudit(const std::string &name, const std::string &format, std::string *text);

// All of them, a line each.
std::string AuditNames();

} // namespace kivodeck

#endif
