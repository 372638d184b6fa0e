"""The package with the library, its host and the description of the interface, taken from a build tree.

The tree is $SHAREDANALYSIS_BUILD, which counts from these sources, or build/release or build/python of these; where there is none,
one is built.
"""
import os
import pathlib
import shutil
import subprocess

from setuptools import setup
from setuptools.command.build_py import build_py
from wheel.bdist_wheel import bdist_wheel

ROOT = pathlib.Path(__file__).resolve().parent.parent
TARGETS = ["SharedAnalysis", "SharedAnalysisHost", "sa_python"]


def build_tree():
    given = os.environ.get("SHAREDANALYSIS_BUILD")
    for tree in [ROOT / given] if given else [ROOT / "build/release", ROOT / "build/python"]:
        if (tree / "python/sharedanalysis/interface.json").exists() and (tree / "lib/libSharedAnalysisHost.so.1").exists():
            return tree
    if given:
        raise SystemExit(f"{given} holds no built SharedAnalysis")
    if not (ROOT / "CMakeLists.txt").exists():
        raise SystemExit("the package is built in the source tree of SharedAnalysis, or from SHAREDANALYSIS_BUILD=TREE")
    tree = ROOT / "build/python"
    subprocess.run(["cmake", "-S", ROOT, "-B", tree, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DSA_BUILD_TESTS=OFF",
                    "-DSA_BUILD_BENCH=OFF", "-DSA_BUILD_SOLVER=OFF", "-DSA_BUILD_FORTRAN=OFF"], check=True)
    subprocess.run(["cmake", "--build", tree, "--target", *TARGETS], check=True)
    return tree


class WithLibrary(build_py):
    def run(self):
        super().run()
        tree, package = build_tree(), pathlib.Path(self.build_lib) / "sharedanalysis"
        (package / "lib").mkdir(parents=True, exist_ok=True)
        shutil.copy(tree / "python/sharedanalysis/interface.json", package)
        for name in ("libSharedAnalysis.so.1", "libSharedAnalysisHost.so.1"):
            shutil.copy(tree / "lib" / name, package / "lib")


class ForThisPlatform(bdist_wheel):
    """For one kind of machine and any Python 3: the library calls nothing of Python."""

    def finalize_options(self):
        super().finalize_options()
        self.root_is_pure = False

    def get_tag(self):
        return "py3", "none", super().get_tag()[2]


setup(cmdclass={"build_py": WithLibrary, "bdist_wheel": ForThisPlatform})
