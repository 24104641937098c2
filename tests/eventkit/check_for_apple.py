"""Checks the sources of the Mac with clang: types and availability against an Apple target, and the static analyzer.

    check_for_apple.py TESTS CLANGXX GNUSTEP_INCLUDE SOURCE...

TESTS chooses by name: "types" or "analyzer".

The headers are the stand-in's and GNUstep's, so what it proves is limited to what those declare.
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

TESTS, CLANGXX, GNUSTEP, *SOURCES = sys.argv[1:]
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
OLDEST = 14  # the oldest macOS that the program runs on
DEADLINE = 240

HEADERS = [
    f"-I{ROOT}/src", f"-I{ROOT}/tests/eventkit/apple",
    "-isystem", f"{ROOT}/tests/eventkit/objective_c/include", "-isystem", GNUSTEP]
LANGUAGE = ["-x", "objective-c++", "-std=c++20", "-fobjc-arc", "-fblocks"]
FOUNDATION = ["-DGNUSTEP", "-DGNUSTEP_BASE_LIBRARY=1", "-D_NATIVE_OBJC_EXCEPTIONS"]


def run(*arguments):
    """What clang said."""
    return subprocess.run(
        [CLANGXX, *arguments], capture_output=True, text=True, timeout=DEADLINE, cwd=ROOT)


def include_folders():
    """Where this system's clang finds the headers of C++ and C, in its own order."""
    told = run("-E", "-v", "-x", "c++", "/dev/null").stderr
    listed = told.split("#include <...> search starts here:")[1].split("End of search list.")[0]
    return [line.strip() for line in listed.strip().split("\n")]


def target(version):
    """Arguments for that macOS, with Linux's headers in the place of an SDK."""
    system = ["-isystem", f"{ROOT}/tests/eventkit/without_float128"]
    for folder in include_folders():
        system += ["-isystem" if "c++" in folder else "-idirafter", folder]
    return [
        "-target", f"x86_64-apple-macos{version}", "-U__APPLE__", "-U__nonnull", "-D_GNU_SOURCE",
        "-DAPI_AVAILABLE(...)=__attribute__((availability(macos,introduced=14.0)))", "-nostdinc++", *system]


WARNINGS = [
    "-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Wno-sign-conversion", "-Wnon-virtual-dtor",
    "-Werror", "-Wunguarded-availability", "-Wnullable-to-nonnull-conversion",
    "-Wobjc-missing-super-calls", "-Wimplicit-retain-self", "-Warc-repeated-use-of-weak"]


class Sources(unittest.TestCase):
    def check(self, version, source):
        return run("-fsyntax-only", *target(version), *LANGUAGE, *FOUNDATION, *HEADERS, *WARNINGS, source)

    def test_types(self):
        for source in SOURCES:
            with self.subTest(source=source):
                checked = self.check(OLDEST, source)
                self.assertEqual((checked.returncode, checked.stderr), (0, ""))

    def test_types_and_availability_are_looked_at(self):
        store = next(source for source in SOURCES if source.endswith("eventkit_store.mm"))
        self.assertIn("only available on macOS 14", self.check(OLDEST - 1, store).stderr)

    @staticmethod
    def analyze(source):
        return run(
            "--analyze", "-Xclang", "-analyzer-checker=core,cplusplus,deadcode,nullability,osx",
            "-Xclang", "-analyzer-output=text", "-fobjc-runtime=gnustep-1.9",
            *LANGUAGE, *FOUNDATION, *HEADERS, str(source))

    def test_analyzer(self):
        for source in SOURCES:
            with self.subTest(source=source):
                analyzed = self.analyze(source)
                self.assertEqual((analyzed.returncode, analyzed.stderr), (0, ""))

    def test_analyzer_is_at_work(self):
        with tempfile.TemporaryDirectory() as scratch:
            faulty = pathlib.Path(scratch, "faulty.mm")
            faulty.write_text("int fault() { int* nothing = nullptr; return *nothing; }\n", "utf-8")
            self.assertIn("Dereference of null pointer", self.analyze(faulty).stderr)


unittest.main(argv=[sys.argv[0], "-k", TESTS])
