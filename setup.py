"""The Python package ediprot (python/ediprot), its extension built with
the project's CMake build: `pip install .` at the repository's root.

The project (this folder, or $EDIPROT_SOURCE_DIR) is built and installed
into a staging prefix; python/CMakeLists.txt builds the extension against
that install; libedi, its host layer, the module and the data
(configurations, directory data) are copied into the package beside the
extension, in the install's layout, so that libedi finds them relative to
itself wherever the package is installed.

$EDIPROT_CMAKE_BUILD_DIR names an existing CMake build folder of the project
(absolute, or relative to the project folder) to reuse instead of a fresh
one.  setuptools' own build folder is build/python of the repository
(inside the folder the project's builds already use), or
$EDIPROT_PY_BUILD_DIR.
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

HERE = Path(__file__).resolve().parent
LIBS = ("libedi.so.1", "libedihost.so.1", "libediprot.so.1")


def run(*args):
    subprocess.run([str(a) for a in args], check=True)


class CMakeBuild(build_ext):
    """build_ext through CMake: project, staging install, extension."""

    def build_extension(self, ext):
        import pybind11

        source = Path(os.environ.get("EDIPROT_SOURCE_DIR", HERE)).resolve()
        if not (source / "src" / "lib" / "edi.h").is_file():
            sys.exit(f"ediprot: the project is not found in {source} "
                     "(install from the repository's root, or set EDIPROT_SOURCE_DIR)")
        temp = Path(self.build_temp).resolve()
        jobs = str(os.cpu_count() or 1)

        core = os.environ.get("EDIPROT_CMAKE_BUILD_DIR")
        if core:
            core = (source / core).resolve()  # relative: to the project folder
        else:
            core = temp / "core"
            run("cmake", "-S", source, "-B", core, "-DCMAKE_BUILD_TYPE=Release",
                "-DEDIPROT_BUILD_TESTS=OFF", "-DEDIPROT_BUILD_BENCH=OFF",
                "-DEDIPROT_MIMALLOC=OFF", "-DCMAKE_INSTALL_LIBDIR=lib")
        run("cmake", "--build", core, "-j", jobs, "--target", "edi", "edilib", "ediprot",
            "edihost")
        stage = temp / "stage"
        shutil.rmtree(stage, ignore_errors=True)
        run("cmake", "--install", core, "--prefix", stage, "--strip")

        # The layout of the install: libedi's folder, and the data it finds
        # relative to it (share/ediprot of the prefix).
        found = sorted(stage.glob("**/libedi.so.1"))
        if not found:
            sys.exit(f"ediprot: libedi.so.1 is not in the install at {stage}")
        libdir = found[0].parent.relative_to(stage)

        ext_build = temp / "ext"
        run("cmake", "-S", HERE / "python", "-B", ext_build, "-DCMAKE_BUILD_TYPE=Release",
            f"-DCMAKE_PREFIX_PATH={stage}", f"-Dpybind11_DIR={pybind11.get_cmake_dir()}",
            f"-DPython_EXECUTABLE={sys.executable}", f"-DEDIPROT_PY_LIBDIR={libdir}")
        run("cmake", "--build", ext_build, "-j", jobs)

        target = Path(self.get_ext_fullpath(ext.name)).resolve()
        package = target.parent
        package.mkdir(parents=True, exist_ok=True)
        built = sorted(ext_build.glob("_ediprot*.so"))
        if not built:
            sys.exit(f"ediprot: the extension was not built in {ext_build}")
        shutil.copyfile(built[0], target)

        # Real files under their sonames (wheels keep no links).
        (package / libdir).mkdir(parents=True, exist_ok=True)
        for lib in LIBS:
            shutil.copyfile(stage / libdir / lib, package / libdir / lib)
        data = package / "share" / "ediprot"
        shutil.rmtree(data, ignore_errors=True)
        for part in ("configs", "directories"):
            shutil.copytree(stage / "share" / "ediprot" / part, data / part)


setup(
    packages=["ediprot"],
    package_dir={"": "python"},
    options={"build": {"build_base": os.environ.get("EDIPROT_PY_BUILD_DIR",
                                                    str(HERE / "build" / "python"))}},
    package_data={"ediprot": ["py.typed", "*.pyi"]},
    ext_modules=[Extension("ediprot._ediprot", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
)
