"""A small host that is built with the library in each way that there is, and shares a file with it."""

import os
import shlex
import subprocess
import unittest
import urllib.request

import programs
from installed import BUILD, SOURCE, InstalledTest, cached, run

CONSUMER = SOURCE / "tests/install/consumer"


class Consumers(InstalledTest):
    def setUp(self):
        # Where the service and the host, which trust each other as one user's, have their files.
        self.environment = os.environ | {"HOME": str(self.work), "QT_QPA_PLATFORM": "offscreen"}
        for name in ("XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"):
            self.environment.pop(name, None)

    def configure(self, build, *settings):
        return subprocess.run(
            ["cmake", "--fresh", "-G", "Ninja", "-S", CONSUMER, "-B", build, *settings,
             f"-DCMAKE_CXX_COMPILER={cached('CMAKE_CXX_COMPILER')}"],
            text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)

    def build(self, build, *settings):
        configured = self.configure(build, *settings)
        self.assertEqual(configured.returncode, 0, configured.stdout)
        run("cmake", "--build", build, "--target", "consumer", "minimal")
        return build / "consumer"

    def check_share(self, program):
        """The link that the program prints gives the very file that it was told to share."""
        movie = self.work / "clip.mp4"
        movie.write_bytes(os.urandom(100_000))
        service = programs.Service(self.work / "service", environment=self.environment)
        self.addCleanup(service.abandon)
        shared = subprocess.run(
            [program, movie], text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False,
            timeout=programs.PATIENCE, env=self.environment | {"QUILLO_SERVICE_URL": service.url})
        self.assertEqual(shared.returncode, 0, shared.stderr)
        with urllib.request.urlopen(shared.stdout.strip() + "/movie") as fetched:
            self.assertEqual(fetched.read(), movie.read_bytes())

    def test_find_package(self):
        self.check_share(self.build(self.work / "find_package", f"-DCMAKE_PREFIX_PATH={self.prefix}"))

    def test_pkg_config(self):
        def compiled(package, source):
            flags = run("pkg-config", "--cflags", "--libs", package, env=os.environ | {
                "PKG_CONFIG_PATH": str(self.prefix / "lib/pkgconfig")})
            program = self.work / f"pkg_config_{package}"
            run(cached("CMAKE_CXX_COMPILER"), "-fPIC", source, "-o", program,
                *shlex.split(flags), f"-Wl,-rpath,{self.prefix / 'lib'}")
            return program

        self.check_share(compiled("quillomoxui", CONSUMER / "main.cpp"))
        compiled("quillohostkit", SOURCE / "examples/minimal/main.cpp")

    def test_add_subdirectory(self):
        # Beside the build that is under test, with its flags: to ccache the library is compiled already.
        flags = ["CMAKE_BUILD_TYPE", "CMAKE_CXX_FLAGS", "CMAKE_CXX_FLAGS_RELEASE", "QUILLO_WERROR"]
        self.check_share(self.build(
            BUILD.with_name(BUILD.name + "-subdirectory"), f"-DQUILLO_SOURCE={SOURCE}",
            *[f"-D{flag}={cached(flag)}" for flag in flags]))

    def test_a_component_that_is_not_installed(self):
        configured = self.configure(self.work / "no_component", f"-DCMAKE_PREFIX_PATH={self.prefix}",
                                    "-DQUILLO_COMPONENTS=no-such-part")
        self.assertNotEqual(configured.returncode, 0)
        self.assertIn("no-such-part", configured.stdout)


if __name__ == "__main__":
    unittest.main()
