# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: tools/check-structure accepts the project's own sources and refuses every breach of the include rules of
docs/architecture.md, naming the file, the line and the rule."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CHECK = ROOT / "tools" / "check-structure"


class TestStructure(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source = Path(folder.name) / "src"
        self.qt = Path(folder.name) / "qt6"
        for header in ("QtCore/QString", "QtNetwork/QUrlQuery", "QtConcurrent/QtConcurrent", "QtGui/QColor",
                       "QtGui/qcolor.h", "QtWidgets/QWidget", "QtTest/QSignalSpy"):
            self.put(self.qt / header, "")
        # A correct tree. Each test breaks it in one place.
        self.put(self.source / "core/platform/error.h", "#pragma once\n#include <QString>\n")
        self.put(self.source / "core/platform/posix/path.cpp", '#include "../error.h"\n#ifdef _WIN32\n#endif\n')
        self.put(self.source / "core/storage/write.h", '#include "core/platform/error.h"\n')
        self.put(self.source / "core/app/settings.h", '#include "core/storage/write.h"\n')
        self.put(self.source / "core/tags/record/record.h", '#include "core/app/settings.h"\n')
        self.put(self.source / "core/tags/record/record.cpp",
                 '#include "core/tags/record/record.h"\n#include "record.moc"\n')
        self.put(self.source / "core/tags/store/store.h", '#include "core/tags/record/record.h"\n')
        self.put(self.source / "core/naming/pattern.h", '#include "core/tags/record/record.h"\n')
        self.put(self.source / "core/files/list/model.h", '#include "core/naming/pattern.h"\n#include <QtConcurrent>\n')
        self.put(self.source / "core/online/web/client.h",
                 '#include "core/files/list/model.h"\n#include <QtNetwork/QUrlQuery>\n')
        self.put(self.source / "core/controls/split.h", '#include "core/platform/error.h"\n')
        self.put(self.source / "ui/controls/panel.h", '#include "core/controls/split.h"\n#include <QWidget>\n')
        self.put(self.source / "ui/tags/page.h",
                 '#include "core/tags/record/record.h"\n#include "ui/controls/panel.h"\n')
        self.put(self.source / "ui/app/principal.h", '#include "ui/tags/page.h"\n#include <QtWidgets/QWidget>\n')
        self.put(self.source / "cli/main.cpp", '#include "core/online/web/client.h"\n')
        self.put(self.source / "main.cpp", '#include "ui/app/principal.h"\n#include <QColor>\n')

    @staticmethod
    def put(path, text):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, "utf-8")

    def run_check(self, *options):
        return subprocess.run([sys.executable, str(CHECK), *options, str(self.source)], capture_output=True, text=True,
                              check=False)

    def check(self):
        return self.run_check("--qt-headers", str(self.qt))

    def assert_accepted(self):
        result = self.check()
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def assert_refused(self, file, line, rule):
        result = self.check()
        self.assertEqual(result.returncode, 1, result.stderr)
        lines = result.stderr.splitlines()
        self.assertEqual(len(lines), 1, result.stderr)
        self.assertTrue(lines[0].startswith("%s:%d: error: " % (self.source / file, line)), lines[0])
        self.assertTrue(lines[0].endswith("[%s]" % rule), lines[0])

    def test_a_tree_as_it_should_be_is_accepted(self):
        self.assert_accepted()

    def test_our_own_sources_are_accepted(self):
        command = [sys.executable, str(CHECK)]
        if os.environ.get("RAVLIN_QT_HEADERS"):
            command += ["--qt-headers", os.environ["RAVLIN_QT_HEADERS"]]
        result = subprocess.run(command + [str(ROOT / "src")], capture_output=True, text=True, check=False)
        self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_an_include_against_the_order_of_the_core_is_refused(self):
        order = ["platform", "storage", "app", "tags", "naming", "files", "online"]
        for rank, folder in enumerate(order):
            above = ["core/" + name for name in order[rank + 1:]]
            for used in above + ["cli", "core/controls", "ui/tags", "ui/controls"]:
                with self.subTest(folder=folder, used=used):
                    self.put(self.source / used / "victim.h", "")
                    self.put(self.source / "core" / folder / "guilty.h", '\n#include "%s/victim.h"\n' % used)
                    self.assert_refused("core/%s/guilty.h" % folder, 2, "layer")
                    (self.source / "core" / folder / "guilty.h").unlink()
                    (self.source / used / "victim.h").unlink()

    def test_every_include_in_the_order_of_the_core_is_accepted(self):
        order = ["platform", "storage", "app", "tags", "naming", "files", "online"]
        for rank, folder in enumerate(order):
            for below in order[:rank]:
                self.put(self.source / "core" / below / ("low_%s.h" % folder), "")
                self.put(self.source / "core" / folder / ("uses_%s.h" % below),
                         '#include "core/%s/low_%s.h"\n' % (below, folder))
        self.assert_accepted()

    def test_the_command_line_must_not_use_the_window(self):
        self.put(self.source / "cli/guilty.cpp", '#include "ui/tags/page.h"\n')
        self.assert_refused("cli/guilty.cpp", 1, "layer")

    def test_the_window_must_not_use_the_command_line(self):
        self.put(self.source / "cli/output.h", "")
        for folder in ("ui/tags", "ui/app"):
            with self.subTest(folder=folder):
                self.put(self.source / folder / "guilty.h", '#include "cli/output.h"\n')
                self.assert_refused(folder + "/guilty.h", 1, "layer")
                (self.source / folder / "guilty.h").unlink()

    def test_one_page_must_not_use_another_page(self):
        self.put(self.source / "ui/files/guilty.h", '#include "ui/tags/page.h"\n')
        self.assert_refused("ui/files/guilty.h", 1, "layer")

    def test_a_page_must_not_use_the_main_window(self):
        self.put(self.source / "ui/files/guilty.h", '#include "ui/app/principal.h"\n')
        self.assert_refused("ui/files/guilty.h", 1, "layer")

    def test_a_shared_control_must_not_use_a_page(self):
        self.put(self.source / "ui/controls/guilty.h", '#include "ui/tags/page.h"\n')
        self.assert_refused("ui/controls/guilty.h", 1, "layer")

    def test_nobody_uses_main(self):
        self.put(self.source / "ui/app/guilty.cpp", '#include "main.cpp"\n')
        self.assert_refused("ui/app/guilty.cpp", 1, "layer")

    def test_two_folders_that_include_each_other_are_refused(self):
        self.put(self.source / "core/tags/record/guilty.cpp", '\n#include "core/tags/store/store.h"\n')
        result = self.check()
        self.assertEqual(result.returncode, 1)
        self.assertIn("core/tags/record/guilty.cpp:2: error: core/tags/record and core/tags/store", result.stderr)
        self.assertEqual(result.stderr.count("[ring]"), 2, result.stderr)  # both ends are named

    def test_a_folder_and_one_in_it_that_include_each_other_are_refused(self):
        self.put(self.source / "core/platform/posix/call.h", "")
        self.put(self.source / "core/platform/guilty.cpp", '#include "core/platform/posix/call.h"\n')
        result = self.check()
        self.assertEqual(result.returncode, 1)
        self.assertIn("core/platform/guilty.cpp:1: error:", result.stderr)

    def test_a_ring_of_three_folders_is_refused(self):
        for folder, used in (("id3", "mpeg"), ("mpeg", "record"), ("record", "id3")):
            self.put(self.source / "core/tags" / folder / "ring.h", "")
            self.put(self.source / "core/tags" / folder / "ring.cpp", '#include "core/tags/%s/ring.h"\n' % used)
        result = self.check()
        self.assertEqual(result.returncode, 1)
        self.assertEqual(result.stderr.count("[ring]"), 3, result.stderr)

    def test_the_graph_shows_each_folder_and_leaves_out_what_follows(self):
        result = self.run_check("--graph")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        lines = [line.strip() for line in result.stdout.splitlines()]
        self.assertEqual(lines[0], "graph BT")
        self.assertIn("core_tags_store[core/tags/store]", lines)
        self.assertIn("core_tags_store --> core_tags_record", lines)
        self.assertIn("ui_tags --> ui_controls", lines)
        self.put(self.source / "core/tags/store/store.cpp", '#include "core/platform/error.h"\n')
        self.assertEqual(self.run_check("--graph").stdout, result.stdout)

    def test_the_architecture_page_shows_the_graph_of_today(self):
        graph = subprocess.run([sys.executable, str(CHECK), "--graph", str(ROOT / "src")], capture_output=True, text=True,
                               check=True).stdout
        self.assertIn("```mermaid\n%s```" % graph, (ROOT / "docs/architecture.md").read_text("utf-8"))

    def test_a_relative_or_angle_include_is_seen_too(self):
        for include in ('"../../online/web/client.h"', "<core/online/web/client.h>"):
            with self.subTest(include=include):
                self.put(self.source / "core/tags/record/guilty.cpp", "  #  include %s // needed\n" % include)
                self.assert_refused("core/tags/record/guilty.cpp", 1, "layer")

    def test_a_core_file_that_includes_gui_or_widgets_is_refused(self):
        for include in ("<QColor>", "<qcolor.h>", "<QWidget>", "<QtWidgets/QWidget>", "<QtGui/qcolor.h>", "<QtGui>",
                        "<QtWidgets/private/qwidget_p.h>", '"QWidget"', "<QSignalSpy>"):
            if include == "<QtGui>":
                self.put(self.qt / "QtGui/QtGui", "")
            for folder in ("core/tags", "core/controls", "cli"):
                with self.subTest(include=include, folder=folder):
                    guilty = self.source / folder / "guilty.h"
                    self.put(guilty, "#pragma once\n\n#include %s\n" % include)
                    self.assert_refused(folder + "/guilty.h", 3, "qt")
                    guilty.unlink()

    def test_a_cycle_between_files_is_refused(self):
        self.put(self.source / "core/tags/record/one.h", '#include "core/tags/record/two.h"\n')
        self.put(self.source / "core/tags/record/two.h", '\n#include "three.h"\n')
        self.put(self.source / "core/tags/record/three.h", '\n\n#include "core/tags/record/one.h"\n')
        result = self.check()
        self.assertEqual(result.returncode, 1)
        self.assertIn("core/tags/record/one.h", result.stderr)
        self.assertIn("core/tags/record/two.h", result.stderr)
        self.assertIn("core/tags/record/three.h", result.stderr)
        self.assertEqual(result.stderr.count("[cycle]"), 1, result.stderr)

    def test_a_file_that_includes_itself_is_refused(self):
        self.put(self.source / "core/tags/record/self.h", '#include "self.h"\n')
        self.assert_refused("core/tags/record/self.h", 1, "cycle")

    def test_a_chain_of_a_thousand_includes_is_no_cycle(self):
        for number in range(1000):
            self.put(self.source / ("core/tags/record/c%04d.h" % number), '#include "c%04d.h"\n' % (number + 1))
        self.put(self.source / "core/tags/record/c1000.h", "")
        self.assert_accepted()

    def test_asking_for_the_operating_system_outside_platform_is_refused(self):
        for condition in ("#ifdef Q_OS_WIN", "#ifndef _WIN32", "#if defined(Q_OS_LINUX)", "#elif defined(__APPLE__)",
                          "  # if A || \\\n defined(_WIN32)", "#if __linux__"):
            for folder in ("core/tags", "core/storage", "ui/app", "cli"):
                with self.subTest(condition=condition, folder=folder):
                    guilty = self.source / folder / "guilty.cpp"
                    self.put(guilty, "int a;\n%s\n#endif\n" % condition)
                    self.assert_refused(folder + "/guilty.cpp", 2, "system")
                    guilty.unlink()

    def test_what_can_show_html_is_refused_outside_its_folder(self):
        for code in ("#include <QLabel>", "class QLabel;", "QMessageBox::question(a, b, c);", "QToolTip::showText(a, b);",
                     "QWhatsThis::showText(a, b);", "QErrorMessage *e;", "new QTextBrowser;", "QTextEdit *edit;",
                     "QTextDocument document;", "QStaticText text;", "QInputDialog::getText(a, b, c);",
                     "box.setInformativeText(text);", "label->setTextFormat(Qt::PlainText);", "a.setWhatsThis(text);",
                     "edit.setHtml(text);", "edit.appendHtml(text);", "text.toHtmlEscaped();", "f(Qt::RichText);",
                     "f(Qt::AutoText);", 'f(u"<qt>%1"_s);', 'f("</qt>");', 'f("<qt style=\'x\'>");',
                     'f(R"(<html>)");'):
            with self.subTest(code=code):
                self.put(self.source / "ui/app/guilty.cpp", "int a;\n%s\n" % code)
                self.assert_refused("ui/app/guilty.cpp", 2, "text")
        (self.source / "ui/app/guilty.cpp").unlink()
        for file in ("ui/controls/guilty.h", "ui/online/guilty.h", "ui/controls/plainer/guilty.h", "core/files/guilty.h"):
            with self.subTest(file=file):
                self.put(self.source / file, "class QLabel;\n")
                self.assert_refused(file, 1, "text")
                (self.source / file).unlink()

    def test_what_can_show_html_is_accepted_in_its_folder_and_in_comments(self):
        self.put(self.source / "ui/controls/plain/label.h", "#include <QLabel>\nclass PlainLabel : public QLabel {};\n")
        self.put(self.source / "ui/app/innocent.cpp",
                 "// a QLabel takes <qt> for HTML\n/* toHtmlEscaped */\nPlainLabel *a; MessageBox *b; ToolTips c; int MyQLabel;\n")
        self.assert_accepted()

    def test_comments_and_literals_are_no_code(self):
        self.put(self.source / "core/tags/record/innocent.cpp", r'''
// #include <QWidget>
/* #include "core/online/web/client.h"
#ifdef _WIN32
#endif */
const char *a = "/*"; const char quote = '"'; // a literal opens no comment
const int million = 1'000'000; // nor does a digit separator open a literal
const char *b = R"x(
#include <QWidget>
#ifdef Q_OS_WIN
)x";
#ifdef WIN32_IS_ONLY_PART_OF_THE_NAME
#endif
''')
        self.assert_accepted()

    def test_code_after_a_comment_is_still_code(self):
        self.put(self.source / "core/tags/record/guilty.cpp", '/* a\n*/ // b\nconst char *c = "*/ //";\n#include <QWidget>\n')
        self.assert_refused("core/tags/record/guilty.cpp", 4, "qt")

    def test_a_file_outside_the_layout_is_refused(self):
        for file in ("helpers/misc.h", "misc.cpp", "core/misc.h", "ui/window.h", "core/helpers/misc.h"):
            with self.subTest(file=file):
                self.put(self.source / file, "")
                self.assert_refused(file, 1, "folder")
                (self.source / file).unlink()

    def test_a_folder_that_is_not_there_is_an_error(self):
        result = subprocess.run([sys.executable, str(CHECK), str(self.source / "nowhere")], capture_output=True,
                                text=True, check=False)
        self.assertEqual(result.returncode, 2)

    def test_acting_by_a_path_is_for_the_files_that_implement_it(self):
        calls = ["::chmod(p, 0600);", "chown(p, 1, 1);", "::lchown(p, 1, 1);", "::utimensat(AT_FDCWD, p, t, 0);", "utimes(p, t);",
                 "auto *d = ::opendir(p);", "::unlink(p);", "::rmdir(p);", "::remove(p);", "::rename(p, q);", "std::rename(p, q);",
                 "std::remove(p);", "std::filesystem::remove_all(p);", "QFile::remove(p);", "QFile::rename(p, q);",
                 "QFile file(p);", "QFile::setPermissions(p, x);", "QFile::copy(p, q);", "QSaveFile file(p);", "QDir(p).rmdir(q);",
                 "QDir().remove(q);", "QDir().rename(p, q);", "folder.removeRecursively();", "folder.rmpath(p);",
                 "QTemporaryDir dir;", "DeleteFileW(p);", "MoveFileExW(p, q, 0);", "SetFileAttributesW(p, 0);"]
        text = "\n".join(calls) + "\n"
        refused = self.source / "core/storage/write.cpp"
        self.put(refused, text)
        lines = self.check().stderr.splitlines()
        self.assertEqual(list(dict.fromkeys(line.split(": error:")[0] for line in lines)),
                         ["%s:%d" % (refused, number) for number in range(1, len(calls) + 1)])
        self.assertTrue(all(line.endswith("[path]") for line in lines), lines)
        refused.unlink()
        self.put(self.source / "core/platform/posix/heldfolder.cpp", text)
        self.assert_accepted()

    def test_steps_of_a_held_folder_and_reading_are_accepted(self):
        self.put(self.source / "core/storage/write.cpp",
                 "#include <QFile>\n// ::unlink(p) would go by a path\nvoid f()\n{\n    folder->remove(name);\n    list.remove(1);\n"
                 "    file->setPermissions(0600);\n    rename(row, path);\n    Runner::rename(item);\n    ::unlinkat(d, n, 0);\n"
                 "    ::fchmod(d, 0600);\n    QFile::exists(path);\n    QDir(path).exists();\n    m_files.removeFolder(name);\n}\n")
        self.assert_accepted()


if __name__ == "__main__":
    unittest.main()
