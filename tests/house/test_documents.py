# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: every file and folder of the project that a document names exists, and so does every name from the code that the
architecture page and the glossary use. Code spans, code blocks and links count as naming something."""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
DECISIONS = sorted(page.relative_to(ROOT).as_posix() for page in (ROOT / "docs/decisions").glob("*.md"))
DOCUMENTS = ["README.md", "CONTRIBUTING.md", "SECURITY.md", "docs/architecture.md", "docs/glossary.md", "docs/windows.md", *DECISIONS]
EXPLAIN_NAMES = ["docs/architecture.md", "docs/glossary.md"]
QUOTED = re.compile(r"^```.*?\n(.*?)^```|`([^`\n]+)`|\]\(([^)\s]+)\)", re.DOTALL | re.MULTILINE)
SOURCE = re.compile(r"\.(h|cpp|py|cmake|md|txt|bash|nsi|in|html|css|png|json|yml|tsv)$")
TOPS = {path.name for folder in (ROOT, ROOT / "src") for path in folder.iterdir()} - {".git", "build"}
PLACEHOLDER = re.compile(r"[A-Z]{3,}")  # as in tests/FOLDER/tst_NAME.cpp


def quoted(text):
    """The texts in code spans, code blocks and links."""
    return [next(filter(None, groups), "") for groups in QUOTED.findall(text)]


def paths(text):
    """The words that name files or folders of the project."""
    for quotation in quoted(text):
        for word in re.split(r"[\s,;()\[\]|\"']+", quotation):
            word = word.strip(":.") if word.endswith((":", ".")) else word
            word = word.removeprefix("./")
            known = word.split("/")[0] in TOPS if "/" in word else SOURCE.search(word)
            if known and not re.search(r"[<>$%\\~=]|^-", word):
                yield word


def exists(path, document):
    """Whether a file, a folder or a test has this path, seen from the project, src/, docs/ or the document."""
    pattern = path.rstrip("/")
    for name in (pattern, PLACEHOLDER.sub("*", pattern)):
        bases = [ROOT, ROOT / "src", ROOT / "docs", (ROOT / document).parent]
        if any(any(base.glob(name)) for base in bases):
            return True
        if "/" not in name and any(any((ROOT / folder).rglob(name)) for folder in ("src", "tests", "docs", "packaging", "tools")):
            return True
    folder, _, test = f"./{pattern}".rpartition("/")
    return any(any((ROOT / "tests").glob(f"{folder}/{name}")) for name in (f"tst_{test}.cpp", f"test_{test}.py"))


def names(text):
    """The code spans that are a name from the code, without their scope."""
    for quotation in quoted(text):
        if re.fullmatch(r"(?:\w+::)*[A-Za-z_]\w*(?:\(\))?", quotation):
            yield re.sub(r"\(\)$", "", quotation).split("::")[-1]


def words_of_the_code():
    """The words of the sources, and of their literals without an array's number."""
    words = set()
    for folder in ("src", "tests", "tools", "cmake", "packaging"):
        for path in (ROOT / folder).rglob("*"):
            if path.is_file() and path.suffix in ("", ".h", ".cpp", ".py", ".cmake", ".txt"):
                words.update(re.findall(r"\w+", path.read_text("utf-8", "replace")))
    return words


class TestDocuments(unittest.TestCase):
    def test_every_path_exists(self):
        for document in DOCUMENTS:
            with self.subTest(document=document):
                found = set(paths((ROOT / document).read_text("utf-8")))
                self.assertEqual([], sorted(path for path in found if not exists(path, document)))

    def test_every_name_is_in_the_code(self):
        code = words_of_the_code()
        for document in EXPLAIN_NAMES:
            with self.subTest(document=document):
                found = set(names((ROOT / document).read_text("utf-8")))
                self.assertGreater(len(found), 20)
                self.assertEqual([], sorted(found - code))

    def test_what_is_missing_would_be_found(self):
        text = "`src/main.cpp`, `core/app/nosuch.h` and [a link](docs/nosuch.md).\n```\nuicontrols core/nosuch/\n```\n"
        self.assertEqual([path for path in paths(text) if not exists(path, "README.md")],
                         ["core/app/nosuch.h", "docs/nosuch.md", "core/nosuch/"])
        self.assertEqual(list(names("`Nosuch::value()` `two words` `clsFileFunc`")), ["value", "clsFileFunc"])


if __name__ == "__main__":
    unittest.main()
