// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/idiomas.h"
#include "core/app/settings.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"
#include "ui/naming/namingcontext.h"
#include "ui/tags/fakepageowner.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>
#include <memory>
#include <tuple>

namespace ravlin::test {

/// A tag's texts; the empty ones are left out.
struct Fields
{
    QString title = {};
    QString artist = {};
    QString album = {};
    QString year = {};
    QString track = {};
    QString genre = {};
    QString comment = {};
};

/// What a page that works on names needs: a list of real files, settings of its own, and short words for controls.
class NamingFixture : public QObject
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
        QDir(m_folder->path()).mkdir(QStringLiteral("music"));
    }
    /// As a later start of the program finds them.
    void reopenSettings() { m_settings = std::make_unique<Settings>(m_folder->filePath(QStringLiteral("ravlin.ini"))); }

    NamingContext context() { return {m_owner, m_state, m_store, m_captions, *m_settings}; }

    QString musicFolder() const { return QDir::toNativeSeparators(m_folder->filePath(QStringLiteral("music"))); }
    QString at(const QString &name) const { return QDir::toNativeSeparators(musicFolder() + u'/' + name); }
    /// A file of that name, which becomes the list's last row and is selected.
    QString addFile(const QString &name, const Fields &fields = {})
    {
        const QString path = writeFile(musicFolder(), name, tagOf(fields) + audio());
        m_owner.selected.insert(m_owner.rows.size());
        m_owner.rows << path;
        return path;
    }
    QStringList filesInMusic() const { return QDir(musicFolder()).entryList(QDir::Files, QDir::Name); }
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

    template <typename Control = QWidget>
    static Control *control(const QWidget *window, const QString &name)
    {
        auto *found = window->findChild<Control *>(name);
        if (!found)
            qFatal("no control %s", qPrintable(name));
        return found;
    }

    /// Waits for a modal window of that name to come up, and hands it over. To be called before what opens it.
    void whenOpened(const QString &name, const std::function<void(QWidget *)> &act)
    {
        QTimer::singleShot(0, this, [this, name, act] {
            QWidget *window = QApplication::activeModalWidget();
            if (window != nullptr && window->objectName() == name)
                act(window);
            else
                whenOpened(name, act);
        });
    }

private:
    static constexpr int Utf16 = 1; ///< the encoding of a frame's text

    static QByteArray tagOf(const Fields &fields)
    {
        QByteArray frames;
        const auto add = [&frames](const char *id, const QString &value) {
            if (!value.isEmpty())
                frames += textFrame(3, id, value, Utf16);
        };
        add("TIT2", fields.title);
        add("TPE1", fields.artist);
        add("TALB", fields.album);
        add("TYER", fields.year);
        add("TRCK", fields.track);
        add("TCON", fields.genre);
        if (!fields.comment.isEmpty())
            frames += commentFrame(3, fields.comment, {}, "eng", Utf16);
        return frames.isEmpty() ? QByteArray() : id3v2(3, frames);
    }
};

} // namespace ravlin::test
