from spack.package import *


class Sharedanalysis(CMakePackage):
    """Block-vectorised numerical kernels for finite-element structural analysis, with a reference host and an explicit-dynamics
    program."""

    # The sources are those of a working copy:  spack dev-build sharedanalysis@1.0.0
    version("1.0.0")
    # The owner has chosen no licence.

    variant("host", default=True, description="The reference host and sharedanalysis-diagnostics")
    variant("solver", default=False, description="The explicit-dynamics program and its companions", when="+host")
    variant("fortran", default=True, description="The Fortran module")
    variant("mpi", default=False, description="Ranks of the reference host", when="+host")
    variant("hwcaps", default=False, description="Also the library for x86-64-v3 and v4, which the loader chooses")

    requires("target=x86_64:", msg="kernels are compiled for x86-64")
    conflicts("%gcc@:11")
    conflicts("%clang@:13")

    depends_on("c", type="build")
    depends_on("cxx", type="build")
    depends_on("fortran", type="build", when="+fortran")
    depends_on("cmake@3.25:", type="build")
    depends_on("ninja", type="build")
    depends_on("sqlite", when="+host")
    depends_on("cli11@2:", when="+host")
    depends_on("nlohmann-json@3.10:", when="+host")
    depends_on("mpi", when="+mpi")
    depends_on("gmsh+shared", when="+solver")
    depends_on("seacas", when="+solver")
    depends_on("tomlplusplus", when="+solver")
    depends_on("zoltan", when="+mpi")
    depends_on("cminpack", when="+solver")

    generator("ninja")

    def cmake_args(self):
        return [
            self.define("SA_BUILD_TESTS", False),
            self.define("SA_BUILD_BENCH", False),
            self.define_from_variant("SA_BUILD_HOST", "host"),
            self.define_from_variant("SA_BUILD_SOLVER", "solver"),
            self.define_from_variant("SA_BUILD_FORTRAN", "fortran"),
            self.define_from_variant("SA_HWCAPS", "hwcaps"),
            self.define("CMAKE_DISABLE_FIND_PACKAGE_MPI", self.spec.satisfies("~mpi")),
        ]
