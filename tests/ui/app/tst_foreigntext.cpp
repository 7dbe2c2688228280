// SPDX-License-Identifier: GPL-3.0-or-later
// Text from files, folders, servers and settings is text and nothing else. Whatever it says, no widget, tooltip, dialog
// or message box opens a file that it names, and none takes long over a text of many megabytes.

#include "core/app/showntext.h"
#include "support/cddbtest.h"
#include "support/updateserver.h"
#include "ui/app/commandsfixture.h"
#include "ui/app/frmabout.h"
#include "ui/app/opciones.h"
#include "ui/online/freedb.h"
#include "ui/online/mainform.h"
#include "ui/online/matchdialog.h"
#include "ui/online/rowlist.h"

#include <QElapsedTimer>
#include <QHeaderView>
#include <QHelpEvent>
#include <QTabBar>
#include <QToolTip>
#include <QTreeWidget>

#include <atomic>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace ravlin;
using namespace ravlin::test;

namespace {

/// A FIFO that knows whether somebody has opened it. Opening it for writing succeeds only while a reader holds it; the
/// reader, who waits for that, then finds its end and goes on.
class Fifo
{
    Q_DISABLE_COPY_MOVE(Fifo)

public:
    explicit Fifo(const QString &path) : m_path(QFile::encodeName(path))
    {
        if (::mkfifo(m_path.constData(), 0600) != 0)
            qFatal("no FIFO");
        m_watcher = std::jthread([this](const std::stop_token &stop) { watch(stop); });
    }
    ~Fifo() = default;

    bool takeWasOpened() { return m_wasOpened.exchange(false); }

private:
    void watch(const std::stop_token &stop)
    {
        while (!stop.stop_requested()) {
            const int file = ::open(m_path.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            if (file >= 0) {
                m_wasOpened = true;
                ::close(file);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    const QByteArray m_path;
    std::atomic<bool> m_wasOpened = false;
    std::jthread m_watcher;
};

/// Answers every question with the same hostile words.
class HostileDatabase final : public WebServer
{
public:
    explicit HostileDatabase(const QString &text) : WebServer(Security::Plain), m_text(text.toUtf8()) {}

protected:
    void answer(QSslSocket &socket, const QByteArray &head) override
    {
        QByteArray body = "200 Found matches, list follows\r\nrock 0a0b0c0d " + m_text + " / " + m_text +
                          "\r\nrock 0a0b0c0e " + m_text + " / other\r\n.\r\n";
        if (head.contains("cddb+read") || head.contains("cddb%20read"))
            body = "210 rock 0a0b0c0d\r\n# Track frame offsets:\r\n#\t150\r\n#\t9000\r\n# Disc length: 300 seconds\r\n"
                   "DISCID=0a0b0c0d\r\nDTITLE=" +
                   m_text + " / " + m_text + "\r\nDYEAR=1999\r\nDGENRE=" + m_text + "\r\nTTITLE0=" + m_text +
                   "\r\nTTITLE1=" + m_text + "\r\nEXTD=" + m_text + "\r\n.\r\n";
        else if (m_refuses)
            body = "500 " + m_text + "\r\n";
        socket.write(httpAnswer(body));
        socket.disconnectFromHost();
    }

public:
    bool m_refuses = false;

private:
    const QByteArray m_text;
};

} // namespace

class TestForeignText : public CommandsFixture
{
    Q_OBJECT

private:
    std::unique_ptr<Fifo> m_fifo;
    QTimer m_looking;
    QStringList m_tips; ///< the tooltips seen

    /// Markup that makes a rich text open the file: as a picture, a style sheet, a background.
    static QString markupFor(const QString &file)
    {
        return u"<img src=\"%1\"><a href=\"%1\">x</a><table background=\"%1\"><tr><td>y</td></tr></table>"
               "<link rel=\"stylesheet\" href=\"%1\"><style>@import url(\"%1\");</style>"_s.arg(file);
    }
    QString hostile() const
    {
        return markupFor(m_folder->filePath(u"f"_s)) + u"\u202E"_s + QString(2 * MostLetters, u'w');
    }
    /// The same for a name, which can't hold a separator: the FIFO lies in the current folder.
    static QString hostileName(const QString &begin) { return begin + u"<img src=f><link rel=stylesheet href=f>"_s; }
    QByteArray hostileFile() const
    {
        const QString text = hostile();
        QByteArray frames;
        for (const char *id : {"TIT2", "TPE1", "TALB", "TCON", "TRCK", "TYER"})
            frames += textFrame(3, id, text + u'\n', 1);
        frames += commentFrame(3, text, {}, "eng", 1);
        return id3v2(3, frames) + audio() +
               id3v1({"<img src=f>", "<img src=f>", "<img src=f>", "<b>9", "<img src=f>", 1});
    }
    void addHostileFiles() const
    {
        addFile(hostileName(u"music/a"_s) + u"/b.mp3"_s, hostileFile());
        addFile(u"music/"_s + hostileName(u"1"_s) + u".mp3"_s, hostileFile());
        addFile(u"music/"_s + hostileName(u"2"_s) + u".mp3"_s, hostileFile());
    }

    // Looking at everything

    void hover(QWidget *widget, const QPoint &place)
    {
        QHelpEvent event(QEvent::ToolTip, place, widget->mapToGlobal(place));
        QApplication::sendEvent(widget, &event);
        if (!QToolTip::isVisible())
            return;
        m_tips << QToolTip::text();
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->inherits("QTipLabel"))
                window->grab();
        }
    }
    void hoverRows(QAbstractItemView *view, const QModelIndex &parent)
    {
        const QAbstractItemModel &model = *view->model();
        constexpr int Enough = 20; // of a long list
        for (int row = 0; row < std::min(model.rowCount(parent), Enough); ++row) {
            for (int column = 0; column < model.columnCount(parent); ++column) {
                const QModelIndex index = model.index(row, column, parent);
                const QString shown = index.data().toString();
                QVERIFY2(shown == shownLine(shown), qPrintable(shown));
                view->scrollTo(index);
                const QRect place = view->visualRect(index);
                if (!place.isEmpty())
                    hover(view->viewport(), place.topLeft() + QPoint(2, place.height() / 2));
            }
            if (auto *tree = qobject_cast<QTreeView *>(view); tree && tree->isExpanded(model.index(row, 0, parent)))
                hoverRows(view, model.index(row, 0, parent));
        }
    }
    void hoverHeader(QHeaderView *header)
    {
        for (int section = 0; section < header->count(); ++section)
            hover(header->viewport(), QPoint(header->sectionViewportPosition(section) + 2, header->height() / 2));
    }
    /// Paints a window and holds the pointer over each of its parts.
    void lookAt(QWidget *window)
    {
        window->grab();
        const QList<QWidget *> children = window->findChildren<QWidget *>();
        for (const QPointer<QWidget> &widget : QList<QPointer<QWidget>>(children.begin(), children.end())) {
            if (!widget || !widget->isVisible() || widget->inherits("QTipLabel"))
                continue;
            if (auto *header = qobject_cast<QHeaderView *>(widget.data()))
                hoverHeader(header);
            else if (auto *view = qobject_cast<QAbstractItemView *>(widget.data()))
                hoverRows(view, view->rootIndex());
            else
                hover(widget, widget->rect().center());
            if (auto *tabs = qobject_cast<QTabBar *>(widget.data())) {
                for (int tab = 0; tab < tabs->count(); ++tab)
                    hover(tabs, tabs->tabRect(tab).center());
            }
        }
        QToolTip::hideText();
    }
    void lookAtEverything()
    {
        QCoreApplication::processEvents();
        const QWidgetList open = QApplication::topLevelWidgets();
        for (const QPointer<QWidget> &window : QList<QPointer<QWidget>>(open.begin(), open.end())) {
            if (window && window->isVisible() && window->windowType() != Qt::ToolTip)
                lookAt(window);
        }
        QCoreApplication::processEvents();
    }
    qsizetype hostileTips() const
    {
        return std::ranges::count_if(m_tips, [](const QString &tip) { return tip.contains(u"img src"_s); });
    }

    void openHostileFolder()
    {
        addHostileFiles();
        openAt(at(u"music"_s));
        for (int column = 0; column < list()->model()->columnCount(); ++column)
            list()->header()->resizeSection(column, 30); // so that each cell is cut
        tree()->expand(tree()->currentIndex());
    }
    /// Answers windows that wait for it, after a look at them.
    void lookAndAnswer(const QStringList &buttons)
    {
        answerWith(buttons);
        m_looking.start(10);
    }

private Q_SLOTS:
    void initTestCase()
    {
        connect(&m_looking, &QTimer::timeout, this, [this] {
            if (QWidget *window = QApplication::activeModalWidget(); window && !m_answers.isEmpty()) {
                m_looking.stop();
                lookAt(window);
                answer();
                m_looking.start(10);
            }
        });
    }
    void init()
    {
        beginTest();
        m_answering.stop(); // a look comes first
        store({{u"tags"_s, u"3"_s}});
        m_tips.clear();
        m_fifo = std::make_unique<Fifo>(m_folder->filePath(u"f"_s));
        QVERIFY(QDir::setCurrent(m_folder->path()));
    }
    void cleanup()
    {
        m_looking.stop();
        endTest();
        QDir::setCurrent(QDir::rootPath());
        QVERIFY2(!m_fifo->takeWasOpened(), "a text made the program open a file");
        m_fifo.reset();
    }

    void theWatchedFileTellsThatItWasOpened()
    {
        QFile file(m_folder->filePath(u"f"_s));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(waitUntil([this] { return m_fifo->takeWasOpened(); }));
    }

    void listTreeAndPages()
    {
        openHostileFolder();
        QCOMPARE(list()->rowCount(), 2);
        clickRow(0);
        list()->selectAllRows();
        for (int tab = 0; tab < tabs()->count(); ++tab) {
            tabs()->setCurrentIndex(tab);
            lookAtEverything();
        }
        QVERIFY2(hostileTips() >= 10, qPrintable(m_tips.join(u'\n')));
    }

    void previews()
    {
        openHostileFolder();
        for (const QString &button : {u"renamePreview"_s, u"extractPreview"_s}) {
            list()->selectAllRows();
            control<QPushButton>(button)->click();
            auto *window = m_window->findChild<QDialog *>(u"preview"_s);
            QVERIFY(window != nullptr);
            lookAtEverything();
            window->close();
            QTRY_VERIFY(m_window->findChild<QDialog *>(u"preview"_s) == nullptr);
        }
        QVERIFY(hostileTips() >= 10);
    }

    void questionsAboutFilesAndFolders()
    {
        addFile(u"target/"_s + hostileName(u"1"_s) + u".mp3"_s);
        addFile(u"target/"_s + hostileName(u"music"_s) + u"/x.mp3"_s);
        openHostileFolder();
        m_destination = at(u"target"_s);
        lookAndAnswer({u"no"_s, u"no"_s, u"takenNameCancel"_s, u"takenNameSkip"_s, u"outcomeOk"_s});
        list()->selectAllRows();
        run(u"list Del"_s); // many files
        clickRow(0);
        run(u"list Del"_s); // one file
        action(u"tb_copiar"_s)->trigger();
        list()->selectAllRows();
        QVERIFY(QFile::remove(at(u"music/"_s + hostileName(u"2"_s) + u".mp3"_s))); // can't be moved any more
        action(u"tb_mover"_s)->trigger();
        m_looking.stop();
        QVERIFY2(m_said.join(u'\n').count(u"<img src=f>"_s) >= 6, qPrintable(m_said.join(u'\n')));
    }

    void folderCommands()
    {
        addHostileFiles();
        openAt(at(hostileName(u"music/a"_s)));
        QCOMPARE(list()->rowCount(), 1);
        lookAndAnswer({u"no"_s, u"CancelButton"_s});
        run(u"tree Del"_s);
        buttonAction(7)->trigger();
        m_looking.stop();
        auto *dialog = m_window->findChild<QDialog *>(u"Dialog"_s);
        if (dialog != nullptr) {
            lookAtEverything();
            dialog->findChild<QAbstractButton *>(u"CancelButton"_s)->click();
            m_answers.removeOne(u"CancelButton"_s);
        }
        QVERIFY(m_said.join(u'\n').contains(u"<img src=f>"_s));
    }

    void answersOfTheDatabase()
    {
        leaveProxiesOut();
        HostileDatabase server(hostile());
        store({{u"tags"_s, u"3"_s}, {u"servidor"_s, server.hostAndPort()}});
        openHostileFolder();
        list()->selectAllRows();
        buttonAction(1)->trigger();
        auto *form = m_window->findChild<freedb *>();
        QVERIFY(form != nullptr);
        lookAtEverything();
        const auto search = [form] {
            form->findChild<QPushButton *>(u"Pic"_s)->click();
            form->findChild<QLineEdit *>(u"busca"_s)->setText(u"any"_s);
            form->findChild<QPushButton *>(u"buscar"_s)->click();
        };
        search();
        QTRY_VERIFY_WITH_TIMEOUT(form->findChild<MatchDialog *>() != nullptr, PatientWait);
        auto *choice = form->findChild<MatchDialog *>();
        QTRY_VERIFY_WITH_TIMEOUT(choice->findChild<QPushButton *>(u"matchOk"_s)->isEnabled(), PatientWait);
        lookAtEverything();
        choice->findChild<QPushButton *>(u"matchOk"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(form->findChild<RowList *>(u"correlacion"_s)->rows().rowCount(), 2, PatientWait);
        lookAtEverything();
        server.m_refuses = true;
        search();
        lookAtEverything();
        QVERIFY(hostileTips() >= 4);
    }

    void versionFile()
    {
        leaveProxiesOut();
        openAt(path());
        UpdateServer server;
        QByteArray text = hostile().toUtf8();
        text.replace('"', '\'');
        server.serveVersionFile(
            "\"9.0.0\",\"\"\r\n\"<img src=f>\",\"" + text + "\",\"" + text + "\",\"f/" + text + "\",\"\"\r\n");
        mainform window(
            m_program->settings, m_program->captions, m_program->fileSystem, m_window.get(), server.origin());
        window.setChooseFolder([this](const QString &, const QString &) { return path(); });
        window.show();
        auto *files = window.findChild<QTreeWidget *>(u"filelist"_s);
        QTRY_COMPARE_WITH_TIMEOUT(files->topLevelItemCount(), 1, PatientWait);
        files->setColumnWidth(0, 30);
        lookAtEverything();
        for (auto *box : window.findChildren<QMessageBox *>())
            box->button(QMessageBox::Ok)->click();
        files->setCurrentItem(files->topLevelItem(0));
        files->selectAll();
        window.findChild<QPushButton *>(u"cmdget"_s)->click();
        QTRY_VERIFY_WITH_TIMEOUT(window.findChild<QMessageBox *>() != nullptr, PatientWait);
        lookAtEverything();
        window.close();
        QVERIFY(hostileTips() >= 2);
    }

    void settings()
    {
        const QString text = hostile();
        store({{u"tags"_s, u"3"_s}, {u"servidor"_s, text}, {u"correo"_s, text}, {u"idioma"_s, text}, {u"ruta"_s, text},
            {u"recuerda"_s, u"si"_s}, {u"destination"_s, text}, {u"update folder"_s, text}, {u"avanzado"_s, text},
            {u"mascara"_s, text}});
        openAt({});
        lookAtEverything();
        opciones options(*m_program, m_window.get());
        frmAbout about(m_program->captions, m_window.get());
        options.show();
        about.show();
        lookAtEverything();
        m_answering.stop();
    }

    /// Qt's own dialogs ask about names, too.
    void boxesThatAreNotOurs()
    {
        openAt(path());
        QMessageBox box(m_window.get());
        box.setText(hostile());
        box.setInformativeText(hostile());
        box.show();
        lookAtEverything();
        QToolTip::showText({}, hostile(), m_window.get());
        QVERIFY(QToolTip::isVisible());
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->inherits("QTipLabel"))
                window->grab();
        }
    }

    void aTextOfManyMegabytes()
    {
        constexpr qsizetype Huge = 1'000'000; // about the most that one frame may have
        const QString words = u"<b>word</b> and\nmore "_s;
        addFile(u"music/a.mp3"_s, titled(words.repeated(Huge / words.size())));
        openAt(at(u"music"_s));
        QCOMPARE(list()->rowCount(), 1);
        QVERIFY(cell(0, 2).startsWith(u"<b>word</b> and"_s));
        QVERIFY(cell(0, 2).size() <= 1'000);
        QVERIFY(list()->sizeHintForRow(0) < 100);
        QElapsedTimer clock;
        clock.start();
        list()->header()->resizeSection(2, 30); // so that header and cell are cut
        lookAt(list());
        hoverRows(list(), list()->rootIndex());
        const qint64 looking = clock.elapsed();
        QVERIFY(!m_tips.isEmpty());
        for (const QString &tip : m_tips)
            QVERIFY(tip.size() < 5'000);
        QVERIFY2(looking < 10'000, qPrintable(QString::number(looking)));
    }
};

QTEST_MAIN(TestForeignText)
#include "tst_foreigntext.moc"
