"""The Debian package of a build tree: debian_package_test.py ROOT BUILD_TREE"""

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT, TREE = map(pathlib.Path, sys.argv[1:])
ICON_FOLDERS = [f"{size}x{size}" for size in (16, 22, 24, 32, 48, 64, 128, 256)]
CONTENT = {
    "usr/bin/zemo",
    "usr/bin/zemo-batch",
    "usr/share/applications/zemo.desktop",
    "usr/share/metainfo/org.example.zemo.metainfo.xml",
    "usr/share/mime/packages/zemo.xml",
    "usr/share/icons/hicolor/scalable/apps/zemo.svg",
    *(f"usr/share/icons/hicolor/{folder}/apps/zemo.png" for folder in ICON_FOLDERS),
    "usr/share/man/man1/zemo.1.gz",
    "usr/share/man/man1/zemo-batch.1.gz",
    "usr/share/doc/zemo/README.md",
    "usr/share/doc/zemo/SECURITY.md",
    "usr/share/doc/zemo/LICENSE",
    "usr/share/doc/zemo/copyright",
    "usr/share/doc/zemo/changelog.Debian.gz",
    "usr/share/doc/zemo/examples/bell-44100.caf",
    "usr/share/doc/zemo/examples/harp-48000.caf",
}


def output(*command):
    return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=True).stdout


def pack(folder):
    """Its last line is the package's path."""
    return pathlib.Path(output(ROOT / "packaging/pack", TREE, folder).splitlines()[-1])


def project_version():
    return re.search(r"project\(zemo VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text()).group(1)


class ThePackage(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.package = pack(cls.folder / "first")
        cls.unpacked = cls.folder / "unpacked"
        output("dpkg-deb", "--extract", cls.package, cls.unpacked)

    def field(self, name):
        return output("dpkg-deb", "--field", self.package, name).strip()

    def test_has_nothing_to_complain_of(self):
        result = subprocess.run(["lintian", "--fail-on", "error,warning", self.package],
                                stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                check=False)
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_is_hardened_as_debian_wants_it(self):
        tags = [f"hardening-no-{what}" for what in ("bindnow", "fortify-functions", "pie", "relro")]
        result = subprocess.run(["lintian", "--tags", ",".join(tags), "--display-info", "--pedantic",
                                 "--display-experimental", self.package],
                                stdin=subprocess.DEVNULL, capture_output=True, text=True,
                                check=False)
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def test_holds_what_belongs_to_it_and_documents(self):
        files = {str(path.relative_to(self.unpacked)) for path in self.unpacked.rglob("*")
                 if not path.is_dir()}
        others = {name for name in files - CONTENT
                  if not re.fullmatch(r"usr/share/doc/zemo/docs/.*\.(md|png|flac)", name)}
        self.assertEqual((CONTENT - files, others), (set(), set()))

    def test_has_every_document_of_the_source(self):
        installed = self.unpacked / "usr/share/doc/zemo/docs"
        for document in (ROOT / "docs").glob("*.md"):
            self.assertEqual((installed / document.name).read_bytes(), document.read_bytes())

    def test_has_documents_whose_links_hold(self):
        documents = list((self.unpacked / "usr/share/doc/zemo").rglob("*.md"))
        self.assertGreater(len(documents), 1)
        for document in documents:
            for link in re.findall(r"\]\(([^)#:]+)\)", document.read_text(encoding="utf-8")):
                self.assertTrue((document.parent / link).exists(), f"{document.name}: {link}")

    def test_has_the_version_of_the_program(self):
        self.assertEqual(self.field("Version").partition("-")[0], project_version())
        for program in ("zemo", "zemo-batch"):
            said = output(self.unpacked / "usr/bin" / program, "--version")
            self.assertEqual(said, f"{program} {project_version()}\n")

    def test_has_programs_without_what_only_a_debugger_reads(self):
        for program in ("zemo", "zemo-batch"):
            sections = output("objdump", "--section-headers", self.unpacked / "usr/bin" / program)
            self.assertIn(" .text ", sections)
            self.assertNotRegex(sections, r" \.(debug_\w+|symtab) ")

    def test_depends_on_what_the_programs_are_linked_with(self):
        packages = {word.split(" ")[0] for word in self.field("Depends").split(", ")}
        self.assertLessEqual({"libc6", "libcubeb0", "libqt6widgets6", "libqt6opengl6"}, packages)

    def test_is_the_same_whenever_it_is_made(self):
        self.assertEqual(pack(self.folder / "second").read_bytes(), self.package.read_bytes())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
