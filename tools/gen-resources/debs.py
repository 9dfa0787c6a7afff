"""Fetches the Debian packages whose published data the program is built from.

Each package is downloaded once with `apt-get download` into a cache folder and unpacked there
with `dpkg-deb -x`; later runs reuse what the cache holds, so a build needs the network only the
first time. Nothing is installed, and no Java is needed for the jar.
"""
import glob
import os
import subprocess
import zipfile

PACKAGES = ("libpdfbox2-java", "poppler-data", "fonts-urw-base35")


def _deb_in(cache, package):
    found = sorted(glob.glob(os.path.join(cache, package + "_*.deb")))
    return found[-1] if found else None


def unpacked(cache, package):
    """Answers the folder into which `package` is unpacked, fetching it first if need be."""
    os.makedirs(cache, exist_ok=True)
    deb = _deb_in(cache, package)
    if deb is None:
        subprocess.run(["apt-get", "download", "-q", package], cwd=cache, check=True,
                       stdout=subprocess.DEVNULL)
        deb = _deb_in(cache, package)
        if deb is None:
            raise SystemExit("apt-get download %s left no .deb in %s" % (package, cache))
    root = deb[:-4] + ".root"
    stamp = os.path.join(root, ".unpacked")
    if not os.path.exists(stamp):
        subprocess.run(["dpkg-deb", "-x", deb, root], check=True)
        open(stamp, "w").close()
    return root


def version(cache, package):
    deb = _deb_in(cache, package)
    return os.path.basename(deb)[len(package) + 1:-4] if deb else "?"


class PdfboxResources:
    """The AFM files and glyph lists inside the jar of libpdfbox2-java."""

    PREFIX = "org/apache/pdfbox/resources/"

    def __init__(self, cache):
        root = unpacked(cache, "libpdfbox2-java")
        jars = sorted(glob.glob(os.path.join(root, "usr/share/java/pdfbox2-*.jar")))
        jars = [j for j in jars if "tools" not in os.path.basename(j)]
        if not jars:
            raise SystemExit("no pdfbox2 jar in " + root)
        self._zip = zipfile.ZipFile(jars[0])

    def text(self, path):
        return self._zip.read(self.PREFIX + path).decode("latin-1")


def poppler_cmap_files(cache):
    """Map from CMap name to its file in poppler-data."""
    root = os.path.join(unpacked(cache, "poppler-data"), "usr/share/poppler/cMap")
    files = {}
    for path in glob.glob(os.path.join(root, "**"), recursive=True):
        if os.path.isfile(path):
            files.setdefault(os.path.basename(path), path)
    return files


def urw_font_folder(cache):
    return os.path.join(unpacked(cache, "fonts-urw-base35"), "usr/share/fonts/type1/urw-base35")
