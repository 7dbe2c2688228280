# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: the user guide is complete. Its three languages have the same sections and pictures in the same order. Every link
and picture leads somewhere, and every picture is used. The guide needs no network and no script, and gives a screen reader a
language, headings in order and a text for each picture. tests/ui/app/tst_guidetexts.cpp checks what it quotes from the
program."""

import re
import struct
import unittest
from html.parser import HTMLParser
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
GUIDE = ROOT / "docs" / "guide"
LANGUAGES = ("en", "es", "fr")
LARGEST = 60_000  # bytes of a picture
WIDEST = 1200  # pixels


class Page(HTMLParser):
    """The parts of a page that the tests look at, in the order of the page."""

    def __init__(self, text):
        super().__init__()
        self.elements = []  # (tag, attributes)
        self.ids = []
        self.links = []
        self.pictures = []
        self.headings = []
        self.words = 0
        self.feed(text)

    def handle_starttag(self, tag, attrs):
        attributes = dict(attrs)
        self.elements.append((tag, attributes))
        if "id" in attributes:
            self.ids.append(attributes["id"])
        if tag in ("a", "link"):
            self.links.append(attributes["href"])
        if tag == "img":
            self.pictures.append((attributes["src"], attributes.get("alt", "")))
        if re.fullmatch(r"h[1-6]", tag):
            self.headings.append(int(tag[1]))

    def handle_data(self, data):
        self.words += len(data.split())


def page_of(language):
    return Page((GUIDE / language / "index.html").read_text("utf-8"))


def size_of(picture):
    """Width and height, from the header of a PNG file."""
    data = picture.read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n" and data[12:16] == b"IHDR", picture
    return struct.unpack(">II", data[16:24])


class TestGuide(unittest.TestCase):
    def setUp(self):
        self.pages = {language: page_of(language) for language in LANGUAGES}

    def test_the_languages_have_the_same_sections_and_pictures(self):
        english = self.pages["en"]
        self.assertGreater(len(english.ids), 15)
        for page in self.pages.values():
            self.assertEqual(page.ids, english.ids)
            self.assertEqual([name for name, _ in page.pictures], [name for name, _ in english.pictures])
            self.assertEqual([tag for tag, _ in page.elements if tag in ("li", "dt", "tr", "figure", "pre", "section")],
                             [tag for tag, _ in english.elements if tag in ("li", "dt", "tr", "figure", "pre", "section")])

    def test_the_texts_are_about_as_long(self):
        for language in ("es", "fr"):
            ratio = self.pages[language].words / self.pages["en"].words
            self.assertTrue(0.9 < ratio < 1.25, f"{language}: {ratio}")

    def test_every_link_leads_somewhere(self):
        for language, page in self.pages.items():
            self.assertEqual(len(page.ids), len(set(page.ids)))
            for link in page.links:
                self.assertNotRegex(link, r"^[a-z]+:", "the guide must not need the network")
                path, _, anchor = link.partition("#")
                target = (GUIDE / language / path).resolve() if path else None
                if target is not None:
                    self.assertTrue(target.is_file(), link)
                if anchor:
                    there = page if target is None else Page(target.read_text("utf-8"))
                    self.assertIn(anchor, there.ids)

    def test_the_contents_are_those_of_the_guide(self):
        for page in self.pages.values():
            sections = [attributes["id"] for tag, attributes in page.elements if tag == "section"]
            entries = [link[1:] for link in page.links if link.startswith("#")][:len(sections)]
            self.assertEqual(entries, sections)

    def test_every_picture_is_there_and_none_is_left_over(self):
        for language, page in self.pages.items():
            shown = [name for name, _ in page.pictures]
            self.assertEqual(sorted(shown), sorted(path.name for path in (GUIDE / language).iterdir()
                                                   if path.name != "index.html"))
            self.assertGreater(len(shown), 10)
            for name in shown:
                picture = GUIDE / language / name
                self.assertLess(picture.stat().st_size, LARGEST, picture)
                self.assertLessEqual(size_of(picture)[0], WIDEST, picture)

    def test_every_picture_is_taken_by_the_script(self):
        taken = re.findall(r'take\("([a-z-]+)"', (ROOT / "tools" / "guide-pictures").read_text("utf-8"))
        self.assertEqual(sorted(f"{name}.png" for name in taken),
                         sorted(name for name, _ in self.pages["en"].pictures))

    def test_the_languages_show_pictures_of_their_own(self):
        for name, _ in self.pages["en"].pictures:
            self.assertEqual(len({(GUIDE / language / name).read_bytes() for language in LANGUAGES}), 3, name)

    def test_it_can_be_read_by_everybody(self):
        for language, page in self.pages.items():
            self.assertEqual(dict(page.elements)["html"]["lang"], language)
            self.assertEqual(page.headings.count(1), 1)
            for former, heading in zip(page.headings, page.headings[1:]):
                self.assertLessEqual(heading, former + 1)
            for name, text in page.pictures:
                self.assertGreater(len(text), 20, name)
            for tag in ("main", "nav", "title"):
                self.assertIn(tag, dict(page.elements))

    def test_no_french_mark_begins_a_line(self):
        page = (GUIDE / "fr" / "index.html").read_text("utf-8")
        text = re.sub(r"<(code|pre)>.*?</\1>", "", page, flags=re.DOTALL)
        self.assertNotRegex(text, r" [;:!?»]|« ", "it needs a no-break space")
        self.assertNotIn("\u00a0", "".join(re.findall(r"<code>(.*?)</code>", page)))

    def test_it_runs_nothing_and_fetches_nothing(self):
        for page in self.pages.values():
            for tag, attributes in page.elements:
                self.assertNotIn(tag, ("script", "iframe", "object", "embed"))
                self.assertFalse([name for name in attributes if name.startswith("on") or name == "style"])
        self.assertNotRegex((GUIDE / "guide.css").read_text("utf-8"), r"@import|url\(")


if __name__ == "__main__":
    unittest.main()
