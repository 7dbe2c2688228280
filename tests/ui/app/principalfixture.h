// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/settings.h"
#include "support/mp3builder.h"
#include "support/nativepath.h"
#include "ui/app/principal.h"
#include "ui/app/program.h"
#include "ui/files/filelist.h"
#include "ui/files/foldertree.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <tuple>
#include <utility>

namespace ravlin::test {

/// The real main window over a folder of real files, with its own settings, and short names for its controls. Each test
/// begins with init(): empty settings, an empty history and an empty folder.
class PrincipalFixture : public QObject
{
protected:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Program> m_program;
    std::unique_ptr<principal> m_window;

    void startAfresh()
    {
        closeWindow();
        QFile::remove(Settings::defaultPath());
        QDir(QFileInfo(history::History::defaultPath()).path()).removeRecursively();
        m_folder = std::make_unique<QTemporaryDir>();
    }
    /// Fills the settings file before the program starts.
    static void store(const QList<std::pair<QString, QString>> &values)
    {
        Settings settings;
        for (const auto &[key, value] : values)
            settings.write(key, value);
        QVERIFY(settings.save());
    }
    static QString stored(QStringView key) { return Settings().read(key); }

    /// Starts the program with the path from its command line.
    void open(const QString &folder = {}, QSize size = {})
    {
        m_program = std::make_unique<Program>();
        m_window = std::make_unique<principal>(*m_program);
        if (size.isValid())
            m_window->resize(size);
        m_window->show();
        m_window->openAtStart(folder);
        QCoreApplication::processEvents();
    }
    void closeWindow()
    {
        if (m_window)
            m_window->close();
        m_window.reset();
        m_program.reset();
    }

    QString path() const { return native(m_folder->path()); }
    QString at(const QString &name) const { return native(m_folder->path() + u'/' + name); }
    QString addFile(const QString &name, const QByteArray &content = audio()) const
    {
        QDir().mkpath(QFileInfo(at(name)).path());
        return writeFile(m_folder->path(), name, content);
    }
    static QByteArray titled(const QString &title) { return id3v2(3, textFrame(3, "TIT2", title)) + audio(); }
    QString titleOf(const QString &name) const
    {
        TagRecord record;
        std::ignore = m_program->tagStore.ReadTag(at(name), record);
        return record.Title;
    }

    template <typename Control = QWidget>
    Control *control(const QString &name) const
    {
        auto *found = m_window->findChild<Control *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
    FileList *list() const { return control<FileList>(QStringLiteral("ListView1")); }
    FolderTree *tree() const { return control<FolderTree>(QStringLiteral("folder")); }
    QTabWidget *tabs() const { return control<QTabWidget>(QStringLiteral("tabs")); }
    QString panel(int number) const
    {
        // A panel's accessible name is its whole text.
        return control<QLabel>(QStringLiteral("panel%1").arg(number))->accessibleName();
    }
    QString field(const QString &name) const { return control<QLineEdit>(name)->text(); }
    QString cell(int row, int column) const { return list()->model()->index(row, column).data().toString(); }
    int rowOf(const QString &text) const { return static_cast<int>(list()->rowTexts().indexOf(text)); }

    void clickRow(int row, Qt::MouseButton button = Qt::LeftButton) const
    {
        const QModelIndex index = list()->model()->index(row, 0);
        list()->scrollTo(index);
        QTest::mouseClick(list()->viewport(), button, {}, list()->visualRect(index).center());
    }
    void speak(const QString &language) const
    {
        m_program->captions.setLanguageName(language);
        m_program->captions.fill();
        m_window->applyCaptions();
        QCoreApplication::processEvents();
    }
};

} // namespace ravlin::test
