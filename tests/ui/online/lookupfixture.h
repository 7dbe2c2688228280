// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/idiomas.h"
#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "core/online/cddb/ufreedb.h"
#include "support/cddbserver.h"
#include "support/cddbtest.h"
#include "support/nativepath.h"
#include "support/tagfixture.h"
#include "ui/online/freedb.h"
#include "ui/online/rowlist.h"
#include "ui/tags/fakepageowner.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>
#include <vector>

namespace ravlin::test {

using namespace Qt::StringLiterals;

enum Discs
{
    Gaviotas,
    Hiver,
    FirstTake,
    Reissue,
    Almost,
    Harbour,
    Japanese
};

inline const ServedDisc &disc(int index)
{
    return CddbServer::discs().at(static_cast<std::size_t>(index));
}

/// The window with the tests' server, real files in a folder, and helpers for its controls.
class LookupFixture : public QObject
{
protected:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<CddbServer> m_server;
    std::unique_ptr<Settings> m_settings;
    ProgramState m_state;
    std::unique_ptr<TagStore> m_store;
    Captions m_captions;
    FakePageOwner m_owner;
    QString m_firstArtist;
    platform::FileSystem *m_fileSystem = &platform::FileSystem::native(); ///< that measures files
    std::unique_ptr<freedb> m_form;

    void startAfresh()
    {
        closeForm();
        leaveProxiesOut();
        m_folder = std::make_unique<QTemporaryDir>();
        m_server = std::make_unique<CddbServer>();
        m_settings = std::make_unique<Settings>(m_folder->filePath(u"ravlin.ini"_s));
        m_settings->write(settingskey::Servidor, m_server->hostAndPort());
        m_settings->write(settingskey::Correo, u"ana@mail.example"_s);
        m_state = roomyState();
        QDir(m_folder->path()).mkdir(u"music"_s);
        m_state.currentFolder = native(m_folder->filePath(u"music/"_s));
        m_store = std::make_unique<TagStore>(m_state, platform::FileSystem::native());
        speak(u"english"_s);
        m_owner = FakePageOwner();
        m_firstArtist.clear();
        m_fileSystem = &platform::FileSystem::native();
    }
    void closeForm()
    {
        if (m_form)
            m_form->close();
        m_form.reset();
    }
    void speak(const QString &language)
    {
        m_captions.setLanguageName(language);
        m_captions.fill();
    }

    QString at(const QString &name) const { return m_state.currentFolder + name; }
    QString addFile(const QString &name, const QByteArray &content)
    {
        const QString path = writeFile(m_folder->filePath(u"music"_s), name, content);
        m_owner.selected.insert(m_owner.rows.size());
        m_owner.rows << path;
        return path;
    }
    /// Files that play as long as the tracks between those marks: 1.mp3, 2.mp3 and so on.
    void addTracks(const std::vector<qint64> &marks)
    {
        for (std::size_t i = 1; i < marks.size(); ++i)
            addFile(QString::number(m_owner.rows.size() + 1) + u".mp3"_s, cdTrack(marks[i] - marks[i - 1]));
    }
    void tag(const QString &name, const TagRecord &record) const { writeRecord(at(name), record); }
    TagRecord tagOf(const QString &name) const { return readRecord(at(name)); }

    void makeForm()
    {
        m_form =
            std::make_unique<freedb>(PageContext{m_owner, m_state, *m_store, m_captions, *m_settings, *m_fileSystem},
                [this] { return m_firstArtist; });
    }
    void openForm()
    {
        makeForm();
        m_form->show();
    }
    /// Opens the window with files for that disc and waits until it is found.
    void openFound(int index)
    {
        addTracks(disc(index).marks);
        openForm();
        waitForTracks(static_cast<int>(disc(index).titles.size()));
    }
    void waitForTracks(int count)
    {
        waitUntil([&] { return tracks()->rows().rowCount() == count; });
        QCOMPARE(tracks()->rows().rowCount(), count);
    }
    void waitUntilIdle()
    {
        QVERIFY(waitUntil([this] { return !timer()->isActive(); }));
    }

    template <typename Control = QWidget>
    Control *control(const QString &name) const
    {
        auto *found = m_form->findChild<Control *>(name);
        if (found == nullptr)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    RowList *files() const { return control<RowList>(u"archivo"_s); }
    RowList *tracks() const { return control<RowList>(u"correlacion"_s); }
    QPushButton *saveButton() const { return control<QPushButton>(u"Command2"_s); }
    QProgressBar *bar() const { return control<QProgressBar>(u"pb"_s); }
    QTimer *timer() const { return control<QTimer>(u"timer1"_s); }
    uFREEDB *database() const { return control<uFREEDB>(u"uFREEDB1"_s); }
    QLineEdit *field(const QString &name) const { return control<QLineEdit>(name); }
    QString status() const { return control<QLabel>(u"status"_s)->text(); }
    QStringList fields() const
    {
        QStringList texts;
        for (const QString &name : {u"tartista"_s, u"talbum"_s, u"ta_o"_s, u"testilo"_s})
            texts << field(name)->text();
        return texts;
    }
    static QStringList column(const RowList *list, int column)
    {
        QStringList texts;
        for (const ListedLine &line : list->rows().lines())
            texts << line.cells[column];
        return texts;
    }
    QStringList fileNames() const { return column(files(), 0); }
    QStringList titles() const { return column(tracks(), 1); }

    /// The visible window of that name over the form, or nullptr.
    template <typename Window = QDialog>
    Window *window(const QString &name) const
    {
        auto *found = m_form->findChild<Window *>(name);
        return found != nullptr && found->isVisible() ? found : nullptr;
    }
    template <typename Window = QDialog>
    Window *waitForWindow(const QString &name)
    {
        [&] { QVERIFY(waitUntil([&] { return window<Window>(name) != nullptr; })); }();
        auto *found = window<Window>(name);
        if (found == nullptr)
            qFatal("no window %s", qPrintable(name));
        return found;
    }
    /// Closes the message box of that name and returns its text.
    QString answerBox(const QString &name)
    {
        auto *box = waitForWindow<QMessageBox>(name);
        const QString text = box->windowTitle() + u": "_s + box->text();
        box->button(QMessageBox::Ok)->click();
        return text;
    }
    void searchFor(const QString &text)
    {
        control<QPushButton>(u"Pic"_s)->click();
        auto *asking = waitForWindow(u"buscaweb"_s);
        auto *box = asking->findChild<QLineEdit *>(u"busca"_s);
        box->setText(text);
        QTest::keyClick(box, Qt::Key_Return);
    }
    QPoint pointOf(const RowList *list, int row) const
    {
        return list->visualRect(list->model()->index(row, 0)).center();
    }
    void clickRow(RowList *list, int row, Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, pointOf(list, row));
    }
    /// Drags a row onto another, or, beyond the last, below it.
    void dragRow(RowList *list, int row, int onto) const
    {
        const QPoint from = pointOf(list, row);
        const int height = list->visualRect(list->model()->index(0, 0)).height();
        const QPoint to = pointOf(list, 0) + QPoint(0, onto * height);
        QTest::mousePress(list->viewport(), Qt::LeftButton, {}, from);
        move(list, (from + to) / 2);
        move(list, to);
        QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, to);
    }
    /// A move with the left button down, which QTest::mouseMove does not send.
    static void move(RowList *list, const QPoint &to)
    {
        QMouseEvent event(QEvent::MouseMove, to, list->viewport()->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(list->viewport(), &event);
    }
};

} // namespace ravlin::test
