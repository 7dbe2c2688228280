// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/trash.h"
#include "ui/app/filecommands.h"
#include "ui/app/principalfixture.h"

#include <QAction>
#include <QApplication>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QTimer>
#include <QToolButton>

namespace ravlin::test {

using namespace Qt::StringLiterals;

/// The real main window with its commands for files and folders. Presses the buttons of the windows that they open, and
/// replaces the folder dialog and the player.
class CommandsFixture : public PrincipalFixture
{
protected:
    QTimer m_answering;
    QStringList m_answers; ///< buttons still to be pressed, each in the next window that opens
    QStringList m_said;    ///< the texts of the answered windows
    QStringList m_starts;  ///< where each choice of a folder started
    QString m_destination;
    QStringList m_played;

    void answer()
    {
        auto *window = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (window == nullptr || m_answers.isEmpty())
            return;
        QString said;
        if (auto *box = qobject_cast<QMessageBox *>(window))
            said = box->text() + u'\n' + box->informativeText();
        else {
            for (const QLabel *label : window->findChildren<QLabel *>())
                said += label->objectName().isEmpty() ? QString() : u'\n' + label->text();
        }
        for (const QListWidget *list : window->findChildren<QListWidget *>()) {
            for (int row = 0; row < list->count(); ++row)
                said += u'\n' + list->item(row)->text();
        }
        m_said << said;
        QStringList buttons = m_answers.takeFirst().split(u'+');
        for (const QString &name : buttons) {
            QAbstractButton *button = nullptr;
            if (auto *box = qobject_cast<QMessageBox *>(window))
                button = box->button(name == u"yes"_s ? QMessageBox::Yes : QMessageBox::No);
            else
                button = window->findChild<QAbstractButton *>(name);
            if (button == nullptr)
                qFatal("no button %s", qPrintable(name));
            button->click();
        }
    }
    /// The buttons to press in the coming windows, one window each; "a+b" presses two.
    void answerWith(const QStringList &buttons) { m_answers = buttons; }

    void openAt(const QString &folder)
    {
        open(folder);
        auto *commands = m_window->findChild<FileCommands *>();
        commands->setFolderChooser([this](const QString &, const QString &start) {
            m_starts << start;
            return m_destination;
        });
        commands->setOpener([this](const QString &path) { m_played << path; });
    }
    void addThree() const
    {
        for (const QString &name : {u"a"_s, u"b"_s, u"c"_s})
            addFile(u"music/"_s + name + u".mp3"_s, titled(u"title "_s + name));
    }
    void openThree()
    {
        addThree();
        QDir(path()).mkdir(u"target"_s);
        m_destination = at(u"target"_s);
        openAt(at(u"music"_s));
    }
    void addTagged(const QString &name, const QString &artist, const QString &album) const
    {
        QByteArray frames;
        if (!artist.isEmpty())
            frames += textFrame(3, "TPE1", artist);
        if (!album.isEmpty())
            frames += textFrame(3, "TALB", album);
        addFile(name, id3v2(3, frames) + audio());
    }
    bool exists(const QString &name) const { return QFileInfo::exists(at(name)); }
    QByteArray content(const QString &name) const { return contentOf(at(name)); }
    static QByteArray contentOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
    }
    QAction *action(const QString &name) const { return control<QAction>(name); }
    QAction *buttonAction(int position) const
    {
        return control<QToolButton>(u"tb_%1"_s.arg(position))->defaultAction();
    }
    QStringList menuOf(int position) const
    {
        QStringList names;
        for (const QAction *entry : control<QToolButton>(u"tb_%1"_s.arg(position))->menu()->actions())
            names << entry->objectName();
        return names;
    }
    void selectRows(const QStringList &names) const
    {
        list()->selectNone();
        for (const QString &name : names) {
            list()->selectionModel()->select(
                list()->model()->index(rowOf(name), 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
    /// Runs a command by a button, a menu's entry, or a key on the list or tree, as test data names it.
    void run(const QString &way) const
    {
        const QString name = way.section(u' ', 1);
        if (way.startsWith(u"button"_s))
            control<QToolButton>(name)->click();
        else if (way.startsWith(u"menu"_s))
            action(name)->trigger();
        else
            QTest::keySequence(way.startsWith(u"list"_s) ? static_cast<QWidget *>(list()) : tree(), QKeySequence(name));
    }

    void beginTest()
    {
        startAfresh();
        emptyTrash();
        m_answers.clear();
        m_said.clear();
        m_starts.clear();
        m_played.clear();
        m_destination.clear();
        if (m_answering.isActive())
            return;
        QObject::connect(&m_answering, &QTimer::timeout, this, [this] { answer(); });
        m_answering.start(10);
    }
    void endTest()
    {
        closeWindow();
        QVERIFY2(m_answers.isEmpty(), "a window that was to come did not");
    }
    void activate() const
    {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get(), 30000));
        list()->setFocus();
    }
};

} // namespace ravlin::test
