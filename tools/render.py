#!/usr/bin/python3
"""Draws the VTK files of one run as a picture.

FOLDER holds "mesh.input" and the "_*.vtk" files of a run with "--vtk". Cells are coloured by their group, with edges;
faces lie on top in stronger colours, one for each surface; node sets are balls. Run it as "tools/render.py": it needs
/usr/bin/python3 with VTK (apt-get install python3-vtk9) and, without a screen, xvfb-run (apt-get install xvfb xauth).
"""
import argparse, os, re, shutil, sys, types

CELL_COLOURS = ((0.68, 0.80, 0.92), (0.98, 0.86, 0.60), (0.75, 0.88, 0.70), (0.86, 0.80, 0.92), (0.93, 0.82, 0.76))
FACE_COLOURS = ((0.84, 0.15, 0.16), (0.70, 0.38, 0.80), (0.95, 0.45, 0.00), (0.75, 0.10, 0.42), (0.45, 0.25, 0.10))
NODE_COLOURS = ((0.05, 0.25, 0.65), (0.00, 0.50, 0.30), (0.10, 0.10, 0.10), (0.00, 0.55, 0.65), (0.35, 0.35, 0.75))
EDGE_COLOUR, TEXT_COLOUR, WHITE = (0.25, 0.28, 0.32), (0.1, 0.1, 0.1), (1, 1, 1)
# Edges of each VTK type; those of quadratic cells run through the mid-side node.
EDGES = {3: ((0, 1),), 5: ((0, 1), (1, 2), (2, 0)), 22: ((0, 3, 1), (1, 4, 2), (2, 5, 0)),
         10: ((0, 1), (1, 2), (2, 0), (0, 3), (1, 3), (2, 3)),
         24: ((0, 4, 1), (1, 5, 2), (2, 6, 0), (0, 7, 3), (1, 8, 3), (2, 9, 3))}
LEGEND_WIDTH, LEGEND_LETTERS = 0.24, 20  # share of the picture, and letters of a name that it shows
BALL, LAYER, MARGIN = 0.008, 0.001, 1.1  # radius of balls and step of layers by the mesh's size; room around the mesh


def with_a_screen():
    """VTK draws through X here: without a screen the script starts again below xvfb-run."""
    if not os.environ.get("DISPLAY"):
        if not shutil.which("xvfb-run"):
            sys.exit("render.py: there is no screen and no xvfb-run (apt-get install xvfb xauth)")
        os.execvp("xvfb-run", ["xvfb-run", "-a", sys.executable] + sys.argv)


def read(path):
    """The grid of a file, or None where the run wrote none."""
    if not os.path.exists(path):
        return None
    reader = vtk.vtkUnstructuredGridReader()
    reader.SetFileName(path)
    reader.Update()
    return reader.GetOutput()


def rows(grid):
    """(VTK type, node numbers, tag) of every cell that misses no node."""
    tags, ids = grid.GetCellData().GetArray("CellTag"), vtk.vtkIdList()
    for i in range(grid.GetNumberOfCells()):
        grid.GetCellPoints(i, ids)
        nodes = [ids.GetId(k) for k in range(ids.GetNumberOfIds())]
        if all(0 <= node < grid.GetNumberOfPoints() for node in nodes):
            yield grid.GetCellType(i), nodes, int(tags.GetTuple1(i)) if tags else 0


def part(grid, tag):
    """The cells that carry a tag, as a grid of their own."""
    chosen = vtk.vtkUnstructuredGrid()
    chosen.SetPoints(grid.GetPoints())
    for kind, nodes, its in rows(grid):
        if its == tag:
            chosen.InsertNextCell(kind, len(nodes), nodes)
    return chosen


def edge_lines(grid):
    lines = vtk.vtkCellArray()
    for kind, nodes, _ in rows(grid):
        for edge in EDGES.get(kind, ()):
            lines.InsertNextCell(len(edge))
            for k in edge:
                lines.InsertCellPoint(nodes[k])
    drawn = vtk.vtkPolyData()
    drawn.SetPoints(grid.GetPoints())
    drawn.SetLines(lines)
    return drawn


def actor(mapper, colour, height):
    """Flat colour. `height` is the layer: add_mesh lifts it towards the eye, in front of what lies at the same place."""
    mapper.ScalarVisibilityOff()
    drawn = vtk.vtkActor()
    drawn.SetMapper(mapper)
    drawn.SetPosition(0, 0, height)
    drawn.GetProperty().SetColor(colour)
    drawn.GetProperty().SetAmbient(0.6)
    drawn.GetProperty().SetDiffuse(0.45)
    return drawn


def surface_actor(grid, colour, height):
    surface = vtk.vtkDataSetSurfaceFilter()
    surface.SetInputData(grid)
    surface.SetNonlinearSubdivisionLevel(2)  # quadratic cells are drawn round
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputConnection(surface.GetOutputPort())
    drawn = actor(mapper, colour, height)
    drawn.GetProperty().SetInterpolationToFlat()
    return drawn


def lines_actor(grid, colour, width, height):
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputData(edge_lines(grid))
    drawn = actor(mapper, colour, height)
    drawn.GetProperty().SetLineWidth(width)
    drawn.GetProperty().LightingOff()
    return drawn


def balls_actor(grid, colour, radius):
    ball = vtk.vtkSphereSource()
    ball.SetRadius(radius)
    ball.SetThetaResolution(20)
    ball.SetPhiResolution(20)
    points = vtk.vtkPolyData()
    points.SetPoints(grid.GetPoints())
    glyph = vtk.vtkGlyph3DMapper()
    glyph.SetInputData(points)
    glyph.SetSourceConnection(ball.GetOutputPort())
    return actor(glyph, colour, 0)


def lift(renderer, view, extent):
    """Layers of the picture: without perspective a small step towards the eye moves nothing sideways."""
    step = LAYER * extent / sum(c * c for c in view) ** 0.5
    for drawn in renderer.GetActors():
        height = drawn.GetPosition()[2]
        drawn.SetPosition(*(height * step * c for c in view))


def read_mesh(path):
    """Dimension and groups of "mesh.input"; positions and tags are in the VTK files, too, and are taken from there."""
    with open(path, encoding="latin-1") as stream:
        text = stream.read()
    dimension = re.match(r"<Dimension>\n    Dimension = ([23])D\n", text)
    groups = re.findall(r"^  <(Node|Face|Cell) Group> (.*)\n    \1Tag = +(-?\d+)$", text[text.rfind("\n<Groups>"):], re.M)
    mesh = types.SimpleNamespace(dimension=int(dimension[1]) if dimension else None, node_groups=[], face_groups=[],
                                 cell_groups=[])
    for kind, name, tag in groups:
        getattr(mesh, kind.lower() + "_groups").append(types.SimpleNamespace(name=name, tag=int(tag)))
    return mesh


def tags_of(grid):
    return {int(tag) for tag in vtk_to_numpy(grid.GetCellData().GetArray("CellTag"))} if grid else set()


def fill_mesh(mesh, folder):
    cells, faces = read(os.path.join(folder, "_Cells.vtk")), read(os.path.join(folder, "_Faces.vtk"))
    mesh.current = [tuple(p[:mesh.dimension]) for p in vtk_to_numpy(cells.GetPoints().GetData())]
    mesh.cell_tags, mesh.face_tags = tags_of(cells), tags_of(faces)


def size_of(mesh):
    sides = ([p[k] for p in mesh.current] for k in range(mesh.dimension))
    return sum((max(side) - min(side)) ** 2 for side in sides) ** 0.5


def add_mesh(renderer, folder, mesh, with_sets):
    """Draws everything; gives the legend: (word, name, colour) by line."""
    legend = []
    cells, faces = read(os.path.join(folder, "_Cells.vtk")), read(os.path.join(folder, "_Faces.vtk"))
    for group in reversed(mesh.cell_groups):
        if cells and group.tag in mesh.cell_tags:
            colour = CELL_COLOURS[(group.tag - 1) % len(CELL_COLOURS)]
            chosen = part(cells, group.tag)
            # Triangles on the skin of tetrahedra lie over them.
            sheet = any(kind in (5, 22) for kind, _, _ in rows(chosen))
            renderer.AddActor(surface_actor(chosen, colour, 1 if sheet else 0))
            legend.append(("cells", group.name, colour))
    if cells:
        renderer.AddActor(lines_actor(cells, EDGE_COLOUR, 1.5, 4))
    for group in mesh.face_groups:
        if faces and group.tag in mesh.face_tags:
            colour = FACE_COLOURS[(group.tag - 1) % len(FACE_COLOURS)]
            chosen = part(faces, group.tag)
            if mesh.dimension == 2:
                renderer.AddActor(lines_actor(chosen, colour, 7, 6))
            else:
                renderer.AddActor(surface_actor(chosen, colour, 2))
            legend.append(("faces", group.name, colour))
    # A node-set file holds its own points; of equal names only one file is there, so each is drawn once.
    drawn = set()
    for group in reversed(mesh.node_groups if with_sets else []):
        grid = None if group.name in drawn else read(os.path.join(folder, "_NSET_" + group.name + ".vtk"))
        drawn.add(group.name)
        if grid and grid.GetNumberOfPoints():
            colour = NODE_COLOURS[(group.tag - 1) % len(NODE_COLOURS)]
            renderer.AddActor(balls_actor(grid, colour, BALL * size_of(mesh)))
            legend.append(("nodes", group.name, colour))
    return legend


def add_legend(renderer, legend, width, height):
    """One line each, from the top: a square of the colour, then the words; sizes in pixels."""
    line = min(34, (height - 20) // max(1, len(legend)))
    for at, (word, name, colour) in enumerate(legend):
        short = name if len(name) <= LEGEND_LETTERS else name[:LEGEND_LETTERS - 3] + "..."
        bottom, side = height - 14 - (at + 1) * line, line // 2
        points, quad = vtk.vtkPoints(), vtk.vtkCellArray()
        quad.InsertNextCell(4)
        for k, (x, y) in enumerate(((0, 0), (side, 0), (side, side), (0, side))):
            points.InsertNextPoint(10 + x, bottom + y, 0)
            quad.InsertCellPoint(k)
        square = vtk.vtkPolyData()
        square.SetPoints(points)
        square.SetPolys(quad)
        mapper = vtk.vtkPolyDataMapper2D()
        mapper.SetInputData(square)
        drawn = vtk.vtkActor2D()
        drawn.SetMapper(mapper)
        drawn.GetProperty().SetColor(colour)
        renderer.AddActor2D(drawn)
        text = vtk.vtkTextActor()
        text.SetInput("%s %s" % (word, short))
        text.SetPosition(20 + side, bottom)
        text.GetTextProperty().SetColor(TEXT_COLOUR)
        text.GetTextProperty().SetFontSize(min(line * 6 // 10, width // 14))
        renderer.AddActor2D(text)


def aim(renderer, view, dimension, points, aspect):
    """Looks along `view` at the middle of what there is, as near as it fits."""
    camera = renderer.GetActiveCamera()
    camera.ParallelProjectionOn()
    camera.SetFocalPoint(0, 0, 0)
    camera.SetPosition(*view)
    upright = dimension == 2 or abs(view[0]) + abs(view[1]) < 1e-6 * abs(view[2])
    camera.SetViewUp(*((0, 1, 0) if upright else (0, 0, 1)))
    renderer.ResetCamera()
    to_view = camera.GetViewTransformMatrix()
    seen = [to_view.MultiplyPoint(tuple(p) + (0,) * (3 - len(p)) + (1,)) for p in points]
    low, high = ([pick(p[k] for p in seen) for k in (0, 1)] for pick in (min, max))
    right, up = ([to_view.GetElement(row, k) for k in range(3)] for row in (0, 1))
    # The middle of the seen rectangle becomes the middle of the picture.
    x, y = 0.5 * (low[0] + high[0]), 0.5 * (low[1] + high[1])
    for get, put in ((camera.GetFocalPoint, camera.SetFocalPoint), (camera.GetPosition, camera.SetPosition)):
        put(*(c + x * r + y * u for c, r, u in zip(get(), right, up)))
    camera.SetParallelScale(0.5 * MARGIN * max(high[1] - low[1], (high[0] - low[0]) / aspect))
    renderer.ResetCameraClippingRange()


def numbers(count):
    def convert(text):
        values = tuple(float(field) for field in text.split(","))
        if len(values) != count or not any(values):
            raise argparse.ArgumentTypeError("%d numbers, separated by commas" % count)
        return values
    return convert


def main():
    what, _, more = __doc__.partition("\n\n")
    parser = argparse.ArgumentParser(description=what, epilog=more,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--view", type=numbers(3), metavar="X,Y,Z",
                         help="the direction from the mesh to the eye, written --view=X,Y,Z when X is negative (standard: "
                              "along z in two dimensions, from the front, right and above in three)")
    parser.add_argument("--size", type=numbers(2), default=(1200, 800), metavar="W,H",
                         help="width and height in pixels (standard: 1200,800)")
    parser.add_argument("--no-sets", action="store_true", help="leave the node sets out")
    parser.add_argument("folder", help='where "mesh.input" and the VTK files are')
    parser.add_argument("picture", help="the PNG file to write")
    given = parser.parse_args()
    try:
        mesh = read_mesh(os.path.join(given.folder, "mesh.input"))
    except OSError as error:
        sys.exit("render.py: %s" % error)
    if not os.path.exists(os.path.join(given.folder, "_Cells.vtk")):
        sys.exit("render.py: there is no _Cells.vtk in %s: run KIVOm with --vtk" % given.folder)
    global vtk, vtk_to_numpy
    try:
        import vtk
        from vtk.util.numpy_support import vtk_to_numpy
    except ImportError:
        sys.exit("render.py: %s has no VTK: apt-get install python3-vtk9, and run it with /usr/bin/python3"
                 % sys.executable)
    with_a_screen()
    if not mesh.dimension:
        sys.exit("render.py: there is nothing to draw")
    fill_mesh(mesh, given.folder)
    picture, side = vtk.vtkRenderer(), vtk.vtkRenderer()
    picture.SetViewport(0, 0, 1 - LEGEND_WIDTH, 1)
    side.SetViewport(1 - LEGEND_WIDTH, 0, 1, 1)
    window = vtk.vtkRenderWindow()
    window.SetOffScreenRendering(1)
    window.SetMultiSamples(8)
    width, height = map(int, given.size)
    window.SetSize(width, height)
    for renderer in (picture, side):
        renderer.SetBackground(*WHITE)
        window.AddRenderer(renderer)
    legend = add_mesh(picture, given.folder, mesh, not given.no_sets)
    add_legend(side, legend, int(width * LEGEND_WIDTH), height)
    view = given.view or ((0, 0, 1) if mesh.dimension == 2 else (1, -2, 1.1))
    lift(picture, view, size_of(mesh))
    aim(picture, view, mesh.dimension, mesh.current, width * (1 - LEGEND_WIDTH) / height)
    window.Render()
    image = vtk.vtkWindowToImageFilter()
    image.SetInput(window)
    image.ReadFrontBufferOff()
    writer = vtk.vtkPNGWriter()
    writer.SetFileName(given.picture)
    writer.SetInputConnection(image.GetOutputPort())
    writer.Write()


if __name__ == "__main__":
    main()
