"""Makes the package, installs it in a clean root, runs it there and removes it. Usage: package_test.py BUILD_DIRECTORY

The root holds nothing but the packages that the package says it needs, with what those need, so a dependency that is not
named is one that is not there.
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD = pathlib.Path(sys.argv[1]).resolve()
SKIPPED = 77
# Of the packages beneath, nothing that a program loads or reads.
NOT_NEEDED = re.compile(r"/usr/(share/(doc|man|locale|perl|lintian|bug)|lib/[^/]+/perl|share/zoneinfo/right)")


def output_of(*command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, encoding="utf-8", **options).stdout


def field(deb, name):
    return output_of("dpkg-deb", "-f", str(deb), name).strip()


def files_below(root):
    return sorted(f"{path.relative_to(root)}" for path in root.rglob("*"))


def installed_choice(dependency):
    """The installed package among the alternatives of one dependency; None when there is none."""
    for alternative in dependency.split("|"):
        name = re.match(r"[a-z0-9.+-]+", alternative.strip()).group()
        state = subprocess.run(["dpkg-query", "-W", "-f", "${db:Status-Abbrev}", name], capture_output=True, text=True).stdout
        if state.startswith("ii"):
            return name
    return None


def needed_packages(depends):
    found, waiting = [], [depends]
    while waiting:
        for dependency in filter(None, waiting.pop().split(",")):
            # One that no package of that name fills is a virtual package's: dpkg will say so when it matters.
            name = installed_choice(dependency)
            if name and name not in found:
                found.append(name)
                waiting.append(output_of("dpkg-query", "-W", "-f", "${Pre-Depends},${Depends}", name))
    return found


def make_root(root, packages):
    for directory in ("usr/bin", "usr/lib", "usr/lib64", "usr/sbin", "tmp", "dev", "var/lib/dpkg/info", "var/lib/dpkg/updates"):
        (root / directory).mkdir(parents=True)
    for merged in ("bin", "lib", "lib64", "sbin"):
        (root / merged).symlink_to(f"usr/{merged}")
    status = []
    for package in packages:
        status.append(output_of("dpkg-query", "--status", package))
        for name in output_of("dpkg-query", "--listfiles", package).splitlines():
            source = pathlib.Path(name)
            target = root / name.lstrip("/")
            if NOT_NEEDED.match(name) or target.exists() or source.is_dir() or not source.exists():
                continue
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(source, target, follow_symlinks=False)
    (root / "var/lib/dpkg/status").write_text("\n".join(status), encoding="utf-8")


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory(prefix="tidemark-package-")
        cls.addClassCleanup(scratch.cleanup)
        cls.scratch = pathlib.Path(scratch.name)
        output_of("cpack", "--config", str(BUILD / "CPackConfig.cmake"), "-G", "DEB", "-B", f"{cls.scratch}")
        [cls.deb] = cls.scratch.glob("*.deb")
        cls.root = cls.scratch / "root"
        make_root(cls.root, needed_packages(field(cls.deb, "Depends")))

    def dpkg(self, *arguments):
        return output_of("dpkg", f"--root={self.root}", "--log=/dev/null", *arguments, stderr=subprocess.STDOUT)

    def run_inside(self, *command, lines="", **environment):
        """What the program says to these lines, in the root, with nothing of the machine's environment."""
        inside = subprocess.run([shutil.which("chroot"), self.root, *command], input=lines, capture_output=True, encoding="utf-8",
                                timeout=60, env={"HOME": "/home", **environment})
        self.assertEqual((inside.returncode, inside.stderr), (0, ""))
        return [json.loads(line) for line in inside.stdout.splitlines()]

    def test_names_what_it_is(self):
        self.assertEqual(field(self.deb, "Package"), "tidemark-cal")
        self.assertRegex(field(self.deb, "Version"), r"^\d+\.\d+\.\d+$")
        needed = field(self.deb, "Depends")
        self.assertIn("libc6 (>=", needed)
        self.assertIn("tzdata", needed)

    def test_installs_runs_and_goes(self):
        before = files_below(self.root)
        self.dpkg("--install", f"{self.deb}")
        try:
            self.assertIn("Status: install ok installed", self.dpkg("--status", "tidemark-cal"))
            self.check_bridge()
            self.check_simulator()
            self.check_documents()
        finally:
            self.dpkg("--purge", "tidemark-cal")
        ours = [name for name in files_below(self.root) if "tidemark" in name]
        self.assertEqual(ours, [])
        # dpkg's own notes, and the calendars that the bridge was asked to make: those are the user's.
        gone = [name for name in before if not (self.root / name).is_symlink() and not (self.root / name).exists()]
        self.assertEqual(gone, [])
        new = [name for name in files_below(self.root) if name not in before and not name.startswith(("var/lib/dpkg", "home"))]
        self.assertEqual(new, [])

    def run_bridge(self, *requests):
        lines = "".join(json.dumps({"id": number, **request}) + "\n" for number, request in enumerate(requests))
        answers = self.run_inside("/usr/bin/tidemark-cal", lines=lines, TZ="Europe/Berlin", TIDEMARK_DESKTOP="1")
        return [answer for answer in answers if "id" in answer]

    def check_bridge(self):
        # Its answer may come late, so what needs it goes into another run.
        self.assertEqual(self.run_bridge({"cmd": "auth"}), [{"id": 0, "status": "fullAccess", "granted": True}])
        created, lists = self.run_bridge({"cmd": "create", "start": "2026-03-24"}, {"cmd": "reminder-lists"})
        # The zone is read from tzdata; in March Berlin is one hour ahead.
        self.assertEqual(created["event"]["start"], "2026-03-23T23:00:00Z")
        self.assertEqual(len(lists["lists"]), 1)

    def check_simulator(self):
        scenario = "/usr/share/doc/tidemark-cal/examples/scenarios/big_week.json"
        answers = self.run_inside("/usr/bin/tidemark-cal-sim", scenario, lines='{"id":1,"cmd":"calendars"}\n')
        self.assertIn(20, [len(answer.get("calendars", [])) for answer in answers])

    def check_documents(self):
        share = self.root / "usr/share"
        schema = json.loads((share / "tidemark-cal/protocol.schema.json").read_text(encoding="utf-8"))
        self.assertIn("events.request", schema["$defs"])
        documents = share / "doc/tidemark-cal"
        for page in [documents / "README.md", *documents.glob("docs/*.md"), documents / "examples/README.md"]:
            for link in re.findall(r"\]\((?!https?:)([^)#]+)", page.read_text(encoding="utf-8")):
                if not link.startswith(("../src", "../tests")):
                    self.assertTrue((page.parent / link).exists(), f"{page.name} points to {link}")
        self.assertEqual([f"{path}" for path in documents.rglob("__pycache__")], [])
        # Run from where they were installed.
        example = documents / "examples/python/reminder.py"
        environment = {**os.environ, "PATH": f"{share.parent}/bin:{os.environ['PATH']}", "PYTHONDONTWRITEBYTECODE": "1"}
        self.assertIn("[x] Order cake", output_of(sys.executable, f"{example}", env=environment))

    def test_man_page(self):
        page = BUILD / "tidemark-cal.1"
        if not page.exists() or not shutil.which("man"):
            self.skipTest("no man page was built, or there is no man")
        shown = subprocess.run(["man", "--warnings", "--local-file", page], capture_output=True, encoding="utf-8",
                               env={**os.environ, "MANWIDTH": "100", "LC_ALL": "C.UTF-8"})
        self.assertEqual(shown.stderr, "")
        for heading in ("NAME", "SYNOPSIS", "DESCRIPTION", "ENVIRONMENT", "FILES", "EXIT STATUS", "SEE ALSO"):
            self.assertRegex(shown.stdout, rf"(?m)^{heading}$")
        self.assertIn(field(self.deb, "Version"), shown.stdout)
        self.assertNotIn("@", shown.stdout)


if not all(map(shutil.which, ("cpack", "dpkg", "dpkg-shlibdeps", "file", "chroot"))):
    print("skipped: needs cpack, dpkg, dpkg-shlibdeps and file")
    sys.exit(SKIPPED)
if os.geteuid() != 0:
    # Root of a namespace of its own is enough, where the kernel gives one.
    if os.environ.get("TIDEMARK_IN_NAMESPACE") or subprocess.run(["unshare", "-r", "true"], capture_output=True).returncode:
        print("skipped: needs root, or user namespaces")
        sys.exit(SKIPPED)
    os.environ["TIDEMARK_IN_NAMESPACE"] = "1"
    os.execvp("unshare", ["unshare", "-r", sys.executable, *sys.argv])

unittest.main(argv=[sys.argv[0]])
