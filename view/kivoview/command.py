"""The command: arguments, what this machine lacks, exit status.

The library draws through X, ends the whole process where it cannot, and takes memory that a damaged file promises: the
picture is drawn by a process of its own, below xvfb-run where that is installed, and this one tells how it ended.
"""
import argparse, importlib.util, math, os, re, shutil, subprocess, sys

DONE, FAILED, UNUSABLE = 0, 1, 2
SMALLEST, LARGEST = 32, 4096  # sides of a picture, in pixels
HERE = "--draw-here"  # the other process is started with this before its arguments

EPILOG = """Cells are coloured by their group, with edges; faces lie on top in stronger
colours, one for each surface; node sets are balls. With --audit the mesh is
pale, and what failed is drawn in front of it.

Exit status: 0 drawn, 1 the picture could not be drawn or written, 2 wrong
usage, or a file is missing, cannot be read, or is of another mesh.
"""


def numbers(text, of, count):
    """The numbers between commas; none where they are not so many."""
    try:
        values = tuple(map(of, text.split(",")))
    except ValueError:
        return ()
    return values if len(values) == count else ()


def direction(text):
    values = numbers(text, float, 3)
    if not any(values) or not all(map(math.isfinite, values)):
        raise argparse.ArgumentTypeError("three numbers that are not all 0 are wanted, such as 1,-2,1.5, not %r" % text)
    return values


def size(text):
    values = numbers(text, int, 2)
    if not values or not all(SMALLEST <= value <= LARGEST for value in values):
        raise argparse.ArgumentTypeError("two whole numbers from %d to %d are wanted, such as 1200,800, not %r"
                                         % (SMALLEST, LARGEST, text))
    return values


def png_name(text):
    if not text.lower().endswith(".png"):
        raise argparse.ArgumentTypeError("a name that ends in .png is wanted, not %r" % text)
    return text


def version():
    """The project's: beside the installed modules, or in the project itself."""
    above = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    for path, form in ((os.path.join(above, "VERSION"), r"^(\S+)"),
                       (os.path.join(above, "..", "CMakeLists.txt"), r"^project\(KIVOm VERSION (\S+)")):
        if os.path.isfile(path):
            with open(path, encoding="utf-8") as stream:
                return re.search(form, stream.read(), re.M)[1]
    return "of unknown version"


def options(arguments):
    parser = argparse.ArgumentParser(prog="kivorender", allow_abbrev=False, epilog=EPILOG,
                                     description="Draws the VTK files of one run of KIVOm as a picture.",
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--view", type=direction, metavar="X,Y,Z",
                        help="the direction from the mesh to the eye, written --view=X,Y,Z when X is negative "
                             "(default: along z in two dimensions, from the front, right and above in three)")
    parser.add_argument("--size", type=size, default=(1200, 800), metavar="W,H",
                        help="width and height in pixels, %d to %d each (default: 1200,800)" % (SMALLEST, LARGEST))
    parser.add_argument("--no-sets", action="store_true", help="leave the node sets out")
    parser.add_argument("--audit", metavar="FILE", help='show what "kivodeck audit --vtk=FILE" wrote')
    parser.add_argument("--version", action="version", version="kivorender " + version())
    parser.add_argument("folder", metavar="FOLDER", help='where "mesh.input" and the VTK files are')
    parser.add_argument("picture", type=png_name, metavar="PICTURE.png", help="the PNG file to write")
    return parser.parse_args(arguments)


def say(text):
    print("kivorender: " + text, file=sys.stderr)


def missing(given):
    """What the run lacks, in words; None when it can begin."""
    for name in ("mesh.input", "_Cells.vtk"):
        path = os.path.join(given.folder, name)
        if not os.path.isfile(path):
            return 'there is no %s: "kivodeck run DECK --vtk" writes it' % path
    if given.audit is not None and not os.path.isfile(given.audit):
        return 'there is no %s: "kivodeck audit --vtk=FILE" writes it' % given.audit
    for module, package in (("vtkmodules", "python3-vtk9"), ("numpy", "python3-numpy")):
        if not importlib.util.find_spec(module):
            return "%s has no %s: apt-get install python3-vtk9 python3-numpy" % (sys.executable, module)
    return None


def draw(given):
    """Draws in this process."""
    from . import files, picture  # here, because what they need may be missing
    try:
        png, words = picture.draw(given.folder, given.audit, given.view, given.size, not given.no_sets)
        with open(given.picture, "wb") as stream:
            stream.write(png)
    except files.Unreadable as error:
        say(str(error))
        return UNUSABLE
    except picture.CannotDraw as error:
        say(str(error))
        return FAILED
    except MemoryError:
        say("there is not enough memory")
        return FAILED
    except OSError as error:
        say("%s cannot be written: %s" % (given.picture, error.strerror))
        return FAILED
    for text in words:
        say(text)
    return DONE


def screen():
    """What the other process is started below, so that it has a screen; None when there is no way."""
    if shutil.which("xvfb-run") and shutil.which("xauth"):
        return ["xvfb-run", "-a"]
    return [] if os.environ.get("DISPLAY") else None


def draw_elsewhere(arguments):
    below = screen()
    if below is None:
        say("there is no screen and no xvfb-run: apt-get install xvfb xauth")
        return UNUSABLE
    run = subprocess.run(below + [sys.executable, sys.argv[0], HERE] + arguments, stderr=subprocess.PIPE, check=False)
    lines = run.stderr.decode(errors="replace").split("\n")
    ours = [line for line in lines if line.startswith("kivorender: ")]
    for line in ours:
        print(line, file=sys.stderr)
    if run.returncode in (DONE, FAILED, UNUSABLE) and (run.returncode == DONE or ours):
        return run.returncode
    said = [line for line in lines if line.strip()]
    say("the VTK library failed: a file that is not what it promises, or no screen" + ("; " + said[-1] if said else ""))
    return FAILED


def main():
    arguments = sys.argv[1:]
    is_here = arguments[:1] == [HERE]
    given = options(arguments[is_here:])
    if is_here:
        return draw(given)
    lack = missing(given)
    if lack:
        say(lack)
        return UNUSABLE
    try:
        return draw_elsewhere(arguments)
    except KeyboardInterrupt:
        return FAILED
