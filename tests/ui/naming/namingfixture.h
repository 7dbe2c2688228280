// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/tags/pagefixture.h"

#include <QDir>
#include <QTimer>

#include <functional>

namespace ravlin::test {

/// A tag's texts. Empty ones are left out.
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

/// What a page that works on names needs: a list of real files, and short words for controls.
class NamingFixture : public PageFixture
{
protected:
    void startAfresh()
    {
        PageFixture::startAfresh();
        QDir(m_folder->path()).mkdir(QStringLiteral("music"));
    }

    QString musicFolder() const { return QDir::toNativeSeparators(m_folder->filePath(QStringLiteral("music"))); }
    QString at(const QString &name) const { return QDir::toNativeSeparators(musicFolder() + u'/' + name); }
    /// Adds a file, which becomes the list's last row and is selected.
    QString addFile(const QString &name, const Fields &fields = {})
    {
        const QString path = writeFile(musicFolder(), name, tagOf(fields) + audio());
        m_owner.selected.insert(m_owner.rows.size());
        m_owner.rows << path;
        return path;
    }
    QStringList filesInMusic() const { return QDir(musicFolder()).entryList(QDir::Files, QDir::Name); }
    /// Passes the modal window of that name to act once it opens. Call before opening it.
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
