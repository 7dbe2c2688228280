// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/idiomas.h"
#include "core/app/settings.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"
#include "ui/controls/pagecontext.h"
#include "ui/tags/fakepageowner.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>

#include <memory>
#include <tuple>

namespace ravlin::test {

/// A picture that somebody named like a song.
inline QByteArray picture()
{
    return QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16) + QByteArray(1000, '\0');
}

/// What every page of a working mode needs: a folder for real files, a list that starts empty, and settings of its own.
class PageFixture : public QObject
{
protected:
    std::unique_ptr<QTemporaryDir> m_folder;
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};
    Captions m_captions;
    std::unique_ptr<Settings> m_settings;
    FakePageOwner m_owner;

    void startAfresh()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_state = ProgramState{};
        m_state.freeMegabytes = 100000;
        m_captions = Captions();
        m_captions.fill();
        m_owner = FakePageOwner();
        reopenSettings();
    }
    /// Reads the settings as a later start of the program does.
    void reopenSettings() { m_settings = std::make_unique<Settings>(m_folder->filePath(QStringLiteral("ravlin.ini"))); }

    PageContext context(platform::FileSystem &fileSystem = platform::FileSystem::native())
    {
        return {m_owner, m_state, m_store, m_captions, *m_settings, fileSystem};
    }

    TagRecord read(const QString &path) const
    {
        TagRecord record;
        std::ignore = m_store.ReadTag(path, record);
        return record;
    }
    void speak(const QString &language)
    {
        m_captions.setLanguageName(language);
        m_captions.fill();
    }

    /// What the box says that tells of refused files: its headline and its lines. Empty if there is no such box. Closes
    /// it.
    static QStringList toldRefusals(const QWidget *page)
    {
        auto *box = page->window()->findChild<QDialog *>(QStringLiteral("outcome"));
        if (!box || !box->isVisible())
            return {};
        QStringList texts{box->findChild<QLabel *>(QStringLiteral("outcomeHeadline"))->text()};
        const auto *lines = box->findChild<QListWidget *>(QStringLiteral("outcomeLines"));
        for (int row = 0; row < lines->count(); ++row)
            texts << lines->item(row)->text();
        delete box;
        return texts;
    }

    template <typename Control = QWidget>
    static Control *control(const QWidget *window, const QString &name)
    {
        auto *found = window->findChild<Control *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }
};

} // namespace ravlin::test
