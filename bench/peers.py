"""Other programs on the jobs nearest to ours: what they are asked, and what they leave out."""

import collections
import functools
import os
import shutil
import subprocess
import sys

from runs import Job, Wrong, run

PYTHON = "/usr/bin/python3"  # whose modules are those of the packages
PACKAGES = {"gmsh": "gmsh", "meshio": "python3-meshio", "cgx": "calculix-cgx", "ccx": "calculix-ccx",
            "VTK": "python3-vtk9"}
MODULES = {"meshio": "meshio", "VTK": "vtkmodules"}

MESHIO_SCRIPT = """import sys, meshio
mesh = meshio.read(sys.argv[1], file_format="abaqus")
print(sum(len(block.data) for block in mesh.cells), "elements")
if sys.argv[2:] == ["vtk"]:
    meshio.write("result.vtk", mesh, file_format="vtk42", binary=False)
elif sys.argv[2:] == ["abaqus"]:
    meshio.write("result.inp", mesh, file_format="abaqus")
"""

# The library measures no cells of second order: their corners make the cells that it is asked for.
VTK_SCRIPT = """import sys
from vtkmodules.util.numpy_support import numpy_to_vtkIdTypeArray, vtk_to_numpy
from vtkmodules.vtkCommonDataModel import VTK_TETRA, vtkCellArray
from vtkmodules.vtkFiltersVerdict import vtkMeshQuality
from vtkmodules.vtkIOLegacy import vtkUnstructuredGridReader
reader = vtkUnstructuredGridReader()
reader.SetFileName(sys.argv[1])
reader.Update()
grid, corners = reader.GetOutput(), vtkCellArray()
rows = vtk_to_numpy(grid.GetCells().GetConnectivityArray()).reshape(grid.GetNumberOfCells(), -1)
corners.SetData(4, numpy_to_vtkIdTypeArray(rows[:, :4].ravel(), deep=1))
grid.SetCells(VTK_TETRA, corners)
quality = vtkMeshQuality()
quality.SetInputData(grid)
for measure in ("RadiusRatio", "EdgeRatio", "MinAngle", "ScaledJacobian", "AspectGamma"):
    getattr(quality, "SetTetQualityMeasureTo" + measure)()
    quality.Update()
    table = quality.GetOutput().GetFieldData().GetArray("Mesh Tetrahedron Quality")
    least, mean, most, _, count = (table.GetComponent(0, column) for column in range(5))
    print(measure, least, mean, most, "of %d cells" % count)
"""

GMSH_QUALITY = """Merge "mesh.msh";
Plugin(AnalyseMeshQuality).JacobianDeterminant = 1;
Plugin(AnalyseMeshQuality).IGEMeasure = 1;
Plugin(AnalyseMeshQuality).ICNMeasure = 1;
Plugin(AnalyseMeshQuality).Run;
"""

# held: by the key of our job what the peer's leaves out of it; result: the file that the run must leave; count: an
# expression for a line of that file or of the log, from which the number of cells is seen.
Peer = collections.namedtuple("Peer", "program job held argv result count")


def is_installed(program):
    if program in MODULES:
        return os.path.exists(PYTHON) and subprocess.run([PYTHON, "-c", "import " + MODULES[program]],
                                                         capture_output=True).returncode == 0
    return shutil.which(program) is not None


def package_version(program):
    try:
        result = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", PACKAGES[program]], capture_output=True,
                                text=True)
        return result.stdout.strip() or "version unknown"
    except OSError:
        return "version unknown"


def write_inputs(deck, folder):
    """What the peers read beside the deck: the cells as VTK and, made by gmsh itself, as its own kind of file."""
    shutil.copyfile(os.path.join(deck.out(True), "_Cells.vtk"), os.path.join(folder, "mesh.vtk"))
    os.symlink(deck.path, os.path.join(folder, "deck.inp"))
    for name, text in (("read.fbd", "read deck.inp inp\nquit\n"), ("quality.geo", GMSH_QUALITY),
                       ("send.fbd", "read deck.inp inp\nsend all abq\nquit\n")):
        with open(os.path.join(folder, name), "w") as file:
            file.write(text)
    if is_installed("gmsh"):
        run(("gmsh", "-0", "mesh.vtk", "-save_all", "-format", "msh41", "-o", "mesh.msh"), folder,
            os.path.join(folder, "gmsh.log"))


def peers_of(cells):
    meshio, gmsh = (PYTHON, "-c", MESHIO_SCRIPT, "deck.inp"), ("gmsh", "-0")
    vtk_count, told, row = f"^CELL_TYPES {cells}$", f"(^| ){cells} elements", rf"^ *{cells}(, *[0-9]+){{4}}"
    return [
        Peer("gmsh", "VTK to VTK", {"run --vtk": "the deck, faces, groups, mesh.input"},
             (*gmsh, "mesh.vtk", "-save_all", "-format", "vtk", "-o", "result.vtk"), "result.vtk", vtk_count),
        Peer("meshio", "deck to VTK", {"run --vtk": "faces, groups, mesh.input"}, (*meshio, "vtk"), "result.vtk",
             vtk_count),
        Peer("cgx", "deck to deck", {"run --vtk": "sets, surfaces, mesh.input, VTK",
                                     "flatten": "sets, surfaces, and a check of the result"},
             ("cgx", "-bg", "send.fbd"), "all.msh", row),
        Peer("meshio", "deck to deck", {"flatten": "surfaces, and a check of the result"}, (*meshio, "abaqus"),
             "result.inp", row),
        Peer("gmsh", ".msh to deck", {"flatten": "the deck, sets, surfaces, and a check of the result"},
             (*gmsh, "mesh.msh", "-save_all", "-format", "inp", "-o", "result.inp"), "result.inp", row),
        Peer("meshio", "reads the deck", {"check": "surfaces, and every finding"}, meshio, None, told),
        Peer("cgx", "reads the deck", {"check": "every finding"}, ("cgx", "-bg", "read.fbd"), None, told),
        Peer("ccx", "reads the deck, no step", {"check": "every finding but its own errors"}, ("ccx", "-i", "deck"),
             None, f"^ *elements: +{cells}$"),
        Peer("gmsh", "reads .msh", {"check": "the deck, sets, surfaces, and every finding"},
             ("gmsh", "mesh.msh", "-parse_and_exit"), None, told),
        Peer("gmsh", "-check of .msh", {"audit": "all but nodes and cells that are double or unused"},
             ("gmsh", "-check", "mesh.msh"), None, rf"coherence \({cells} elements\)"),
        Peer("gmsh", "AnalyseMeshQuality of .msh", {"audit": "all but three measures of shape"},
             ("gmsh", "quality.geo", "-parse_and_exit"), None, f"Jacobian of {cells} elements"),
        Peer("VTK", "vtkMeshQuality of VTK", {"audit": "all but five measures of shape, of the corners"},
             (PYTHON, "-c", VTK_SCRIPT, "mesh.vtk"), None, f"^AspectGamma .* of {cells} cells"),
    ]


def result_path(peer, folder):
    return os.path.join(folder, peer.result or "peer.log")


def run_peer(peer, folder):
    """Usage of the run. The count of cells must stand in what it wrote, or in its log."""
    log, result = os.path.join(folder, "peer.log"), result_path(peer, folder)
    if os.path.exists(result):
        os.remove(result)
    usage = run(peer.argv, folder, log, log + ".errors")
    if usage.status != 0 or not os.path.exists(result):
        raise Wrong(f"{peer.program} ({peer.job}) ended with status {usage.status}")
    if subprocess.run(["grep", "-q", "-a", "-E", peer.count, result]).returncode != 0:
        raise Wrong(f"{peer.program} ({peer.job}) tells of other cells")
    return usage


def plan_peers(deck, folder):
    """The peers of a deck's jobs: pairs of the peer and its job, and rows of the table for those that cannot run."""
    os.mkdir(folder)
    write_inputs(deck, folder)
    planned, rows = [], []
    installed = {program: is_installed(program) for program in PACKAGES}
    rows += [(program, deck.title, "not measured", "", "", f"{package} is not installed")
             for program, package in PACKAGES.items() if not installed[program]]
    for peer in peers_of(deck.summary["elements"]):
        if not installed[peer.program] or not deck.jobs.keys() & peer.held.keys():
            continue
        print(f"trying {peer.program}: {peer.job}", file=sys.stderr)
        try:
            run_peer(peer, folder)
        except Wrong as wrong:
            rows.append((peer.program, f"{deck.title}: {peer.job}", "failed", "", "", str(wrong)))
            continue
        title = f"{deck.title}: {peer.program} ({peer.job})"
        planned.append((peer, Job(title, functools.partial(run_peer, peer, folder),
                                  os.path.getsize(result_path(peer, folder)))))
    return planned, rows
